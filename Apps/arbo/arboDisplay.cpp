#include "arboDisplay.h"

#include "arboError.h"

#include "lumoDisplay.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

extern char ** environ;

namespace arbo
{
namespace
{
// Set in the environment of the re-run, so that a broken Xvfb cannot make arbo call itself forever.
const char * const rerunVariable = "ARBO_UNDER_XVFB";

bool
readSize(const std::string & text, int & width, int & height)
{
  const auto x = text.find('x');
  if (x == std::string::npos || x == 0 || x + 1 >= text.size())
  {
    return false;
  }
  try
  {
    std::size_t used = 0;
    width = std::stoi(text.substr(0, x), &used);
    if (used != x)
    {
      return false;
    }
    height = std::stoi(text.substr(x + 1), &used);
    if (used != text.size() - x - 1)
    {
      return false;
    }
  }
  catch (const std::exception &)
  {
    return false;
  }
  return width >= 16 && width <= 8192 && height >= 16 && height <= 8192;
}

std::string
findOnPath(const std::string & program)
{
  const char * path = std::getenv("PATH");
  std::istringstream folders(path ? path : "");
  std::string folder;
  while (std::getline(folders, folder, ':'))
  {
    if (folder.empty())
    {
      continue;
    }
    const std::filesystem::path candidate = std::filesystem::path(folder) / program;
    if (::access(candidate.c_str(), X_OK) == 0)
    {
      return candidate.string();
    }
  }
  return {};
}
} // namespace

void
parseSize(const std::string & text, int & width, int & height)
{
  if (!readSize(text, width, height))
  {
    throw Error("", "--size " + text + ": give WIDTHxHEIGHT in pixels, 16 to 8192 each (for example 1024x768)");
  }
}

CLI::Validator
sizeValidator()
{
  return CLI::Validator(
    [](std::string & text) {
      int width = 0, height = 0;
      return readSize(text, width, height)
               ? std::string()
               : std::string("give WIDTHxHEIGHT in pixels, 16 to 8192 each (for example 1024x768)");
    },
    "WIDTHxHEIGHT");
}

bool
needsVirtualDisplay(const Context & context, int & status)
{
  std::string why;
  if (lumo::IsDisplayAvailable(&why))
  {
    return false;
  }
  if (std::getenv(rerunVariable) != nullptr)
  {
    throw Error("", why + ", even under xvfb-run");
  }
  const std::string xvfbRun = findOnPath("xvfb-run");
  if (xvfbRun.empty())
  {
    throw Error("", why + ", and xvfb-run is not installed (the Debian package xvfb has it)");
  }
  // The program itself, not argv[0]: a relative name or one found on PATH may not resolve the same way again.
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error || self.filename() != "arbo")
  {
    throw Error("", why + "; run arbo under xvfb-run -a");
  }
  std::vector<std::string> arguments{
    xvfbRun, "-a", "-s", "-screen 0 1920x1080x24 -nolisten tcp -noreset", self.string()
  };
  arguments.insert(
    arguments.end(), context.arguments.begin() + (context.arguments.empty() ? 0 : 1), context.arguments.end());
  std::vector<char *> argv;
  for (std::string & argument : arguments)
  {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  ::setenv(rerunVariable, "1", 1);
  pid_t child = 0;
  const int spawned = ::posix_spawn(&child, xvfbRun.c_str(), nullptr, nullptr, argv.data(), environ);
  ::unsetenv(rerunVariable);
  if (spawned != 0)
  {
    throw Error("", why + ", and xvfb-run could not be started");
  }
  context.out.flush();
  context.err.flush();
  int result = 0;
  while (::waitpid(child, &result, 0) < 0)
  {
    if (errno != EINTR)
    {
      throw Error("", "lost the xvfb-run process");
    }
  }
  status = WIFEXITED(result) ? WEXITSTATUS(result) : 1;
  return true;
}
} // namespace arbo
