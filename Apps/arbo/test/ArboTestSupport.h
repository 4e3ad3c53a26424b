#ifndef ArboTestSupport_h
#define ArboTestSupport_h

#include "arboApplication.h"

#include <LumoTestUtilities.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace arbo_test
{
/** What one run of the command line gave. */
struct ArboRun
{
  int status{ -1 };
  std::string out;
  std::string err;
};

inline ArboRun
runArbo(std::vector<std::string> arguments)
{
  arguments.insert(arguments.begin(), "arbo");
  std::vector<const char *> argv;
  for (const std::string & argument : arguments)
  {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  ArboRun run;
  run.status = arbo::runApplication(static_cast<int>(argv.size()), argv.data(), out, err);
  run.out = out.str();
  run.err = err.str();
  return run;
}

inline std::string
readFile(const std::filesystem::path & path)
{
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

inline void
writeFile(const std::filesystem::path & path, const std::string & content)
{
  std::ofstream file(path, std::ios::binary);
  file << content;
}

inline std::string
dataFile(const std::string & name)
{
  return std::string(LUMO_TEST_DATA_DIR) + "/" + name;
}

/** A fresh folder per test, removed afterwards. */
class ArboTest : public ::testing::Test
{
protected:
  std::string
  path(const std::string & name) const
  {
    return m_Directory.File(name);
  }
  /** Names of the files in the test folder, sorted. */
  std::vector<std::string>
  files() const
  {
    std::vector<std::string> names;
    for (const auto & entry : std::filesystem::directory_iterator(m_Folder))
    {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  lumotest::TemporaryDirectory m_Directory;
  const std::filesystem::path & m_Folder{ m_Directory.Path() };
};
} // namespace arbo_test

#endif
