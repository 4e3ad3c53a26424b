// Runs a fuzz entry over its seed corpus and its regression inputs, so that every build (gcc included) exercises it,
// and checks that the inputs still mean what their names say: ok-* files are accepted, bad-* files refused.

#include "FuzzSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <vector>

namespace
{
std::vector<std::filesystem::path>
inputs(const char * folder)
{
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const auto & entry : std::filesystem::directory_iterator(folder, error))
  {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::uint8_t>
contents(const std::filesystem::path & path)
{
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/** Runs every input of the folder; the number of ok- and bad- inputs. */
std::pair<std::size_t, std::size_t>
replay(const char * folder)
{
  std::pair<std::size_t, std::size_t> counts;
  for (const std::filesystem::path & path : inputs(folder))
  {
    const std::string name = path.filename().string();
    SCOPED_TRACE(path.string());
    const std::vector<std::uint8_t> bytes = contents(path);
    EXPECT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
    const bool accepted = lumoFuzzAccepts(bytes.data(), bytes.size());
    if (lumofuzz::startsWith(name, "ok-"))
    {
      EXPECT_TRUE(accepted);
      ++counts.first;
    }
    else
    {
      EXPECT_TRUE(lumofuzz::startsWith(name, "bad-")) << "inputs are named ok-* or bad-*";
      EXPECT_FALSE(accepted);
      ++counts.second;
    }
  }
  return counts;
}
} // namespace

TEST(LUMO_FUZZ_SUITE, SeedsRunCleanAndKeepTheirMeaning)
{
  const auto [good, bad] = replay(LUMO_FUZZ_CORPUS_DIR);
  EXPECT_GE(good, 3u) << "seed corpus missing from " << LUMO_FUZZ_CORPUS_DIR;
  EXPECT_GE(bad, 1u);
}

TEST(LUMO_FUZZ_SUITE, RegressionInputsRunCleanAndKeepTheirMeaning)
{
  // Inputs that once found a fault (the folder exists once there was one).
  replay(LUMO_FUZZ_REGRESSION_DIR);
}
