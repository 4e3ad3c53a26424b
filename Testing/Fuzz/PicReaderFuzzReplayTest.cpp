// Runs the fuzz entry over the committed seed corpus, so that every build (gcc included) exercises it, and checks that
// the seeds still mean what their names say: ok-* files are read, bad-* files are refused.

#include "lumoIpPicFile.h"

#include <gtest/gtest.h>

#include <dirent.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size);

namespace
{
std::vector<std::string>
corpusFiles()
{
  std::vector<std::string> names;
  if (DIR * dir = ::opendir(LUMO_PIC_CORPUS_DIR))
  {
    while (const dirent * entry = ::readdir(dir))
    {
      const std::string name = entry->d_name;
      if (name != "." && name != "..")
      {
        names.push_back(name);
      }
    }
    ::closedir(dir);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::uint8_t>
contents(const std::string & name)
{
  std::ifstream in(std::string(LUMO_PIC_CORPUS_DIR) + "/" + name, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
} // namespace

TEST(PicReaderFuzzReplay, SeedCorpusRunsCleanAndKeepsItsMeaning)
{
  const std::vector<std::string> names = corpusFiles();
  ASSERT_GE(names.size(), 10u) << "seed corpus missing from " << LUMO_PIC_CORPUS_DIR;
  std::size_t good = 0;
  for (const std::string & name : names)
  {
    SCOPED_TRACE(name);
    const std::vector<std::uint8_t> bytes = contents(name);
    EXPECT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
    std::string error;
    lumoIpPicDescriptor * pic = lumoIpPicGetFromMemory(bytes.data(), bytes.size(), &error);
    if (name.rfind("ok-", 0) == 0)
    {
      EXPECT_NE(pic, nullptr) << error;
      good += pic != nullptr;
    }
    else
    {
      EXPECT_EQ(name.rfind("bad-", 0), 0u) << "seed names start with ok- or bad-";
      EXPECT_EQ(pic, nullptr);
      EXPECT_FALSE(error.empty());
    }
    lumoIpPicFree(pic);
  }
  EXPECT_GE(good, 3u);
}
