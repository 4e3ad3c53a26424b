#include "arboAtomicFile.h"

#include "arboError.h"

#include "lumoTemporaryFileGuard.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace arbo
{
namespace
{
std::string
temporaryPathBeside(const std::string & target)
{
  static std::atomic<unsigned> counter{ 0 };
  const std::filesystem::path path(target);
  const std::string name =
    ".arbo-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-" + path.filename().string();
  return (path.parent_path() / name).string();
}
} // namespace

void
writeAtomically(const std::string & target, const std::function<void(const std::string & temporaryPath)> & writer)
{
  const std::filesystem::path parent = std::filesystem::path(target).parent_path();
  std::error_code ec;
  if (!parent.empty() && !std::filesystem::is_directory(parent, ec))
  {
    throw Error(target, "the folder " + parent.string() + " does not exist");
  }
  if (std::filesystem::is_directory(target, ec))
  {
    throw Error(target, "is a folder, not a file");
  }
  const std::string temporary = temporaryPathBeside(target);
  // An interrupt while writing removes the temporary file; the target is untouched until the rename.
  lumo::TemporaryFileGuard::InstallSignalHandlers();
  const lumo::TemporaryFileGuard guard(temporary);
  try
  {
    writer(temporary);
  }
  catch (...)
  {
    std::filesystem::remove(temporary, ec);
    throw;
  }
  if (std::rename(temporary.c_str(), target.c_str()) != 0)
  {
    const std::string reason = std::strerror(errno);
    std::filesystem::remove(temporary, ec);
    throw Error(target, "cannot be written (" + reason + ")");
  }
}

std::string
formatExtension(const std::string & path)
{
  std::string name = std::filesystem::path(path).filename().string();
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  for (const char * compressed : { ".nii.gz", ".pic.gz", ".seq.gz" })
  {
    const std::string ending(compressed);
    if (name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0)
    {
      return ending;
    }
  }
  const auto dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot);
}
} // namespace arbo
