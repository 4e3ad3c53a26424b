#include "lumoIpPicFile.h"

#include "PicTestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <memory>
#include <numeric>

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace
{
using PicPointer = std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)>;

PicPointer
owned(lumoIpPicDescriptor * pic)
{
  return PicPointer(pic, lumoIpPicFree);
}

// A volume whose bytes run 0, 1, 2, ... (wrapping), with geometry and one text tag.
PicPointer
sampleVolume(lumoIpPicType type, std::uint32_t bpe, std::vector<std::uint32_t> sizes)
{
  PicPointer pic = owned(lumoIpPicNewVolume(type, bpe, static_cast<std::uint32_t>(sizes.size()), sizes.data()));
  auto * bytes = static_cast<unsigned char *>(pic->data);
  const std::size_t count = lumoIpPicSize(pic.get());
  for (std::size_t i = 0; i < count; ++i)
  {
    bytes[i] = static_cast<unsigned char>(i * 7 + 3);
  }
  if (type == lumoIpPicFloat)
  {
    // Byte patterns above would include NaNs; round trips must keep those too, but give some plain values as well.
    std::memset(bytes, 0, std::min<std::size_t>(count, 8));
  }
  const double spacing[3] = { 0.7, 0.7, 2.5 };
  const double origin[3] = { -120.0, 35.5, 1000.125 };
  lumoIpPicSetVectorTag(pic.get(), lumoIpPicTagSpacing, spacing);
  lumoIpPicSetVectorTag(pic.get(), lumoIpPicTagOrigin, origin);
  lumoIpPicTag note;
  note.name = "PATIENT NOTE";
  note.type = lumoIpPicASCII;
  note.bpe = 8;
  note.value = { 'h', 'i' };
  lumoIpPicAddTag(pic.get(), note);
  return pic;
}

void
expectSamePic(const lumoIpPicDescriptor * expected, const lumoIpPicDescriptor * actual, bool withData)
{
  ASSERT_NE(actual, nullptr);
  EXPECT_EQ(actual->type, expected->type);
  EXPECT_EQ(actual->bpe, expected->bpe);
  ASSERT_EQ(actual->dim, expected->dim);
  for (std::uint32_t i = 0; i < expected->dim; ++i)
  {
    EXPECT_EQ(actual->n[i], expected->n[i]) << "dimension " << i;
  }
  ASSERT_EQ(actual->tags.size(), expected->tags.size());
  for (std::size_t i = 0; i < expected->tags.size(); ++i)
  {
    EXPECT_EQ(actual->tags[i].name, expected->tags[i].name);
    EXPECT_EQ(actual->tags[i].type, expected->tags[i].type);
    EXPECT_EQ(actual->tags[i].bpe, expected->tags[i].bpe);
    EXPECT_EQ(actual->tags[i].value, expected->tags[i].value) << actual->tags[i].name;
  }
  if (withData)
  {
    ASSERT_NE(actual->data, nullptr);
    EXPECT_EQ(std::memcmp(actual->data, expected->data, lumoIpPicSize(expected)), 0);
  }
  else
  {
    EXPECT_EQ(actual->data, nullptr);
  }
}

// Incompressible bytes from a fixed xorshift sequence.
void
fillRandom(lumoIpPicDescriptor * pic)
{
  std::uint64_t state = 0x9E3779B97F4A7C15ull;
  auto * bytes = static_cast<unsigned char *>(pic->data);
  for (std::size_t i = 0; i < lumoIpPicSize(pic); ++i)
  {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    bytes[i] = static_cast<unsigned char>(state >> 24);
  }
}

struct Kind
{
  lumoIpPicType type;
  std::uint32_t bpe;
  bool compressed;
};

std::string
kindName(const ::testing::TestParamInfo<Kind> & info)
{
  const char * names[] = { "Unknown", "Bool", "ASCII", "Int", "UInt", "Float" };
  return std::string(names[info.param.type]) + std::to_string(info.param.bpe) + (info.param.compressed ? "Gz" : "");
}

class PicFileRoundTrip : public ::testing::TestWithParam<Kind>
{};

// The reference file of the format description: 2 x 1 x 1 unsigned bytes 07 FF with one text tag "ID" = "ab".
const Bytes tinyFile = {
  0x89, 0x4C, 0x50, 0x49, 0x43, 0x0D, 0x0A, 0x1A,                         // magic
  0x01, 0x00, 0x00, 0x00,                                                 // version 1, flags 0
  0x04, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00,                         // type 4 (unsigned), 8 bits
  0x03, 0x00, 0x00, 0x00,                                                 // 3 dimensions
  0x02, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, // sizes 2, 1, 1
  0x01, 0x00, 0x00, 0x00, 0x11, 0x00, 0x00, 0x00,                         // 1 tag in 17 bytes
  0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,                         // 2 voxel bytes
  0x02, 'I',  'D',  0x02, 0x00, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00,       // "ID", type 2 (ASCII), 8 bits
  0x02, 0x00, 0x00, 0x00, 'a',  'b',                                      // 2 value bytes
  0x07, 0xFF                                                              // voxels
};

PicPointer
tinyPic()
{
  const std::uint32_t sizes[3] = { 2, 1, 1 };
  PicPointer pic = owned(lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes));
  static_cast<unsigned char *>(pic->data)[0] = 0x07;
  static_cast<unsigned char *>(pic->data)[1] = 0xFF;
  lumoIpPicTag id;
  id.name = "ID";
  id.type = lumoIpPicASCII;
  id.bpe = 8;
  id.value = { 'a', 'b' };
  lumoIpPicAddTag(pic.get(), id);
  return pic;
}
} // namespace

TEST_P(PicFileRoundTrip, KeepsBytesSizesAndTags)
{
  const Kind kind = GetParam();
  ScratchDirectory dir;
  const std::string path = dir.path(kind.compressed ? "volume.pic.gz" : "volume.pic");
  const PicPointer pic = sampleVolume(kind.type, kind.bpe, { 5, 4, 3 });
  std::string error;
  ASSERT_TRUE(lumoIpPicPut(path, pic.get(), &error)) << error;
  EXPECT_EQ(dir.entries(), std::vector<std::string>{ kind.compressed ? "volume.pic.gz" : "volume.pic" });

  const PicPointer read = owned(lumoIpPicGet(path, &error));
  ASSERT_TRUE(read) << error;
  expectSamePic(pic.get(), read.get(), true);
  double spacing[3] = {};
  double origin[3] = {};
  ASSERT_TRUE(lumoIpPicGetVectorTag(read.get(), lumoIpPicTagSpacing, spacing));
  ASSERT_TRUE(lumoIpPicGetVectorTag(read.get(), lumoIpPicTagOrigin, origin));
  EXPECT_EQ(spacing[0], 0.7);
  EXPECT_EQ(spacing[2], 2.5);
  EXPECT_EQ(origin[0], -120.0);
  EXPECT_EQ(origin[2], 1000.125);

  const PicPointer header = owned(lumoIpPicGetHeader(path, &error));
  expectSamePic(pic.get(), header.get(), false);

  // The compressed file holds exactly the bytes of the plain one.
  std::vector<unsigned char> plain;
  ASSERT_TRUE(lumoIpPicPutToMemory(pic.get(), &plain, &error)) << error;
  const Bytes onDisk = kind.compressed ? gunzipFile(path) : readBytes(path);
  EXPECT_EQ(onDisk, plain);
  if (kind.compressed)
  {
    EXPECT_EQ(readBytes(path)[0], 0x1f) << "gzip magic";
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds,
                         PicFileRoundTrip,
                         ::testing::Values(Kind{ lumoIpPicUInt, 8, false },
                                           Kind{ lumoIpPicUInt, 8, true },
                                           Kind{ lumoIpPicInt, 16, false },
                                           Kind{ lumoIpPicInt, 16, true },
                                           Kind{ lumoIpPicUInt, 32, true },
                                           Kind{ lumoIpPicInt, 64, false },
                                           Kind{ lumoIpPicFloat, 32, false },
                                           Kind{ lumoIpPicFloat, 32, true },
                                           Kind{ lumoIpPicFloat, 64, true },
                                           Kind{ lumoIpPicBool, 8, false },
                                           Kind{ lumoIpPicASCII, 8, true }),
                         kindName);

TEST(PicFileLayout, TinyFileHasExactlyTheDocumentedBytes)
{
  ScratchDirectory dir;
  const PicPointer pic = tinyPic();
  std::string error;
  ASSERT_TRUE(lumoIpPicPut(dir.path("tiny.pic"), pic.get(), &error)) << error;
  EXPECT_EQ(readBytes(dir.path("tiny.pic")), tinyFile);
  ASSERT_TRUE(lumoIpPicPut(dir.path("tiny.pic.gz"), pic.get(), &error)) << error;
  EXPECT_EQ(gunzipFile(dir.path("tiny.pic.gz")), tinyFile);
  std::vector<unsigned char> memory = { 0xAA };
  ASSERT_TRUE(lumoIpPicPutToMemory(pic.get(), &memory, &error));
  EXPECT_EQ(Bytes(memory.begin() + 1, memory.end()), tinyFile) << "appends";

  // Read back from a hand-made file, plain and compressed, from disk and from memory.
  writeBytes(dir.path("hand.pic"), tinyFile);
  writeBytes(dir.path("hand.pic.gz"), gzipBytes(tinyFile));
  for (const std::string name : { "hand.pic", "hand.pic.gz" })
  {
    expectSamePic(pic.get(), owned(lumoIpPicGet(dir.path(name), &error)).get(), true);
  }
  expectSamePic(pic.get(), owned(lumoIpPicGetFromMemory(tinyFile.data(), tinyFile.size(), &error)).get(), true);
  const Bytes packed = gzipBytes(tinyFile);
  expectSamePic(pic.get(), owned(lumoIpPicGetFromMemory(packed.data(), packed.size(), &error)).get(), true);
  EXPECT_TRUE(lumoIpPicFileHasMagic(dir.path("hand.pic.gz")));
}

TEST(PicFileLayout, GzipIsRecognisedByContentNotByName)
{
  ScratchDirectory dir;
  writeBytes(dir.path("packed.pic"), gzipBytes(tinyFile));
  writeBytes(dir.path("plain.pic.gz"), tinyFile);
  std::string error;
  EXPECT_TRUE(owned(lumoIpPicGet(dir.path("packed.pic"), &error))) << error;
  EXPECT_TRUE(owned(lumoIpPicGet(dir.path("plain.pic.gz"), &error))) << error;
  // Two gzip members read as one stream, as the gzip tool does.
  Bytes twoMembers = gzipBytes(Bytes(tinyFile.begin(), tinyFile.begin() + 30));
  const Bytes second = gzipBytes(Bytes(tinyFile.begin() + 30, tinyFile.end()));
  twoMembers.insert(twoMembers.end(), second.begin(), second.end());
  writeBytes(dir.path("members.pic.gz"), twoMembers);
  EXPECT_TRUE(owned(lumoIpPicGet(dir.path("members.pic.gz"), &error))) << error;
  EXPECT_TRUE(owned(lumoIpPicGetFromMemory(twoMembers.data(), twoMembers.size(), &error))) << error;
}

TEST(PicFileData, ReadsIntoTheCallersBufferOfTheRightSizeOnly)
{
  ScratchDirectory dir;
  writeBytes(dir.path("tiny.pic.gz"), gzipBytes(tinyFile));
  unsigned char buffer[3] = { 0, 0, 0x55 };
  lumoIpPicDescriptor header;
  std::string error;
  ASSERT_TRUE(lumoIpPicGetData(dir.path("tiny.pic.gz"), buffer, 2, &header, &error)) << error;
  EXPECT_EQ(buffer[0], 0x07);
  EXPECT_EQ(buffer[1], 0xFF);
  EXPECT_EQ(buffer[2], 0x55);
  EXPECT_EQ(header.n[0], 2u);
  EXPECT_EQ(header.data, nullptr);
  ASSERT_EQ(header.tags.size(), 1u);
  EXPECT_FALSE(lumoIpPicGetData(dir.path("tiny.pic.gz"), buffer, 3, nullptr, &error));
  EXPECT_EQ(error, dir.path("tiny.pic.gz") + ": the voxel block has 2 bytes but the buffer has 3");
}

// ---------------------------------------------------------------- hostile files

namespace
{
struct Hostile
{
  const char * name;
  Bytes bytes;
  std::string message;   // for a plain file and for the same bytes in memory
  std::string gzMessage; // for the same bytes gzip-compressed, when it differs; %GZ% stands for its size
  bool headerAlsoFails{ true };
};

Bytes
withoutLast(Bytes bytes, std::size_t count)
{
  bytes.resize(bytes.size() - count);
  return bytes;
}

std::vector<Hostile>
hostileFiles()
{
  const std::uint32_t most = 0xFFFFFFFFu;
  Bytes magicOnly(tinyFile.begin(), tinyFile.begin() + 8);
  Bytes badMagic = tinyFile;
  badMagic[1] = 'X';
  Bytes version2 = tinyFile;
  version2[8] = 2;
  Bytes flags = tinyFile;
  flags[10] = 4;
  Bytes trailing = tinyFile;
  trailing.insert(trailing.end(), { 1, 2, 3 });
  return {
    { "empty", {}, "empty file", "empty file" },
    { "magicOnly", magicOnly, "truncated header: the file ends after 8 bytes", "" },
    { "cutInSizes",
      withoutLast(Bytes(tinyFile.begin(), tinyFile.begin() + 30), 0),
      "truncated header: the file ends after 30 bytes",
      "" },
    { "badMagic", badMagic, "not a Pic file (bad magic bytes)", "" },
    { "version2", version2, "unsupported format version 2 (this reader knows version 1)", "" },
    { "flags", flags, "unsupported header flags 4", "" },
    { "dim200",
      PicBytes().magic().u16(1).u16(0).u32(4).u32(8).u32(200).u32(1).bytes(),
      "dimension count 200 is outside 1..8",
      "" },
    { "dim0", PicBytes().header(4, 8, {}).counts(0, 0, 0).bytes(), "dimension count 0 is outside 1..8", "" },
    { "float16",
      PicBytes().header(5, 16, { 2 }).counts(0, 0, 4).u32(0).bytes(),
      "unsupported element kind: type 5 with 16 bits per element",
      "" },
    { "sizeZero", PicBytes().header(4, 8, { 2, 0 }).counts(0, 0, 0).bytes(), "size of dimension 1 is 0", "" },
    { "elementOverflow",
      PicBytes().header(4, 8, { most, most, most }).counts(0, 0, 0).bytes(),
      "element count overflows 64 bits",
      "" },
    { "byteOverflow",
      PicBytes().header(5, 64, { most, 1u << 31 }).counts(0, 0, 0).bytes(),
      "voxel byte count overflows 64 bits",
      "" },
    { "overLimit",
      PicBytes().header(4, 8, { 65536, 65536, 8 }).counts(0, 0, std::uint64_t{ 1 } << 35).bytes(),
      "voxel block of 34359738368 bytes exceeds the limit of 17179869184 bytes",
      "" },
    { "byteCountMismatch",
      PicBytes().header(4, 8, { 2 }).counts(0, 0, 3).u8(1).u8(2).u8(3).bytes(),
      "header declares 3 voxel bytes but the sizes give 2",
      "" },
    { "sizeLargerThanFile",
      PicBytes().header(4, 8, { 1000, 1000, 1000 }).counts(0, 0, 1000000000).u8(1).u8(2).bytes(),
      "voxel block of 1000000000 bytes is larger than the 2 bytes left in the file",
      "header announces 1000000000 bytes of tags and voxels, more than a gzip stream of %GZ% bytes can hold" },
    { "truncatedVoxels",
      withoutLast(tinyFile, 1),
      "voxel block of 2 bytes is larger than the 1 byte left in the file",
      "truncated voxel block: got 1 of 2 bytes",
      false },
    { "trailingData",
      trailing,
      "3 bytes of trailing data after the voxel block",
      "trailing data after the voxel block",
      false },
    { "tooManyTags",
      PicBytes().header(4, 8, { 1 }).counts(300, 0, 1).u8(0).bytes(),
      "too many tags: 300 (at most 256)",
      "" },
    { "tagBlockOverLimit",
      PicBytes().header(4, 8, { 1 }).counts(1, 2000000, 1).u8(0).bytes(),
      "tag block of 2000000 bytes exceeds the limit of 1048576 bytes",
      "" },
    { "tagBlockLargerThanFile",
      PicBytes().header(4, 8, { 1 }).counts(1, 5000, 1).u8(0).bytes(),
      "tag block of 5000 bytes is larger than the 1 byte left in the file",
      "truncated tag block: got 1 of 5000 bytes" },
    { "tagValuePastEnd",
      PicBytes().header(4, 8, { 1 }).counts(1, 17, 1).u8(2).text("ID").u32(2).u32(8).u32(1000).text("ab").u8(9).bytes(),
      "tag 0 ('ID'): value of 1000 bytes runs past the end of the tag block",
      "" },
    { "tagNameTooLong",
      PicBytes().header(4, 8, { 1 }).counts(1, 60, 1).u8(40).raw(Bytes(59, 'A')).u8(0).bytes(),
      "tag 0: name length 40 is outside 1..32",
      "" },
    { "tagCountPastBlock",
      PicBytes().header(4, 8, { 1 }).counts(2, 17, 1).tag("ID", 2, 8, { 'a', 'b' }).u8(0).bytes(),
      "tag 1 runs past the end of the tag block",
      "" },
    { "tagBlockSlack",
      PicBytes().header(4, 8, { 1 }).counts(1, 19, 1).tag("ID", 2, 8, { 'a', 'b' }).u8(0).u8(0).u8(0).bytes(),
      "tag block has 2 bytes after the last tag",
      "" },
    { "tagOddValue",
      PicBytes().header(4, 8, { 1 }).counts(1, 23, 1).tag("W", 3, 64, Bytes(9, 0)).u8(0).bytes(),
      "tag 0 ('W'): value of 9 bytes is not a whole number of 64-bit elements",
      "" },
    { "tagBadKind",
      PicBytes().header(4, 8, { 1 }).counts(1, 14, 1).tag("K", 77, 8, {}).u8(0).bytes(),
      "tag 0 ('K'): unsupported kind: type 77 with 8 bits per element",
      "" },
    { "tagUnprintable",
      PicBytes().header(4, 8, { 1 }).counts(1, 16, 1).tag("A\nB", 2, 8, {}).u8(0).bytes(),
      "tag 0: name has a byte outside printable ASCII",
      "" },
    { "tagDuplicate",
      PicBytes().header(4, 8, { 1 }).counts(2, 30, 1).tag("ID", 2, 8, {}).tag("ID", 2, 8, {}).u8(0).bytes(),
      "tag 1 ('ID'): duplicate name",
      "" },
    { "negativeSpacing",
      PicBytes().header(4, 8, { 1 }).counts(1, 44, 1).vectorTag("SPACING", 1, -1, 1).u8(0).bytes(),
      "tag 'SPACING' must hold three finite positive 64-bit floats",
      "" },
    { "nanOrigin",
      PicBytes().header(4, 8, { 1 }).counts(1, 43, 1).vectorTag("ORIGIN", 0, std::nan(""), 0).u8(0).bytes(),
      "tag 'ORIGIN' must hold three finite 64-bit floats",
      "" },
    { "shortSpacing",
      PicBytes().header(4, 8, { 1 }).counts(1, 28, 1).tag("SPACING", 5, 64, Bytes(8, 0)).u8(0).bytes(),
      "tag 'SPACING' must hold three finite positive 64-bit floats",
      "" },
  };
}
} // namespace

TEST(PicFileHostile, EveryDamagedFileIsRefusedWithItsReason)
{
  ScratchDirectory dir;
  for (const Hostile & h : hostileFiles())
  {
    SCOPED_TRACE(h.name);
    const std::string path = dir.path(std::string(h.name) + ".pic");
    writeBytes(path, h.bytes);
    std::string error;
    EXPECT_EQ(lumoIpPicGet(path, &error), nullptr);
    EXPECT_EQ(error, path + ": " + h.message);
    if (h.headerAlsoFails)
    {
      error.clear();
      EXPECT_EQ(lumoIpPicGetHeader(path, &error), nullptr);
      EXPECT_EQ(error, path + ": " + h.message);
    }
    error.clear();
    EXPECT_EQ(lumoIpPicGetFromMemory(h.bytes.data(), h.bytes.size(), &error), nullptr);
    EXPECT_EQ(error, h.message);

    // The same bytes inside a gzip stream fail the same way, except where the plain reader knew the exact size.
    std::string expected = h.gzMessage.empty() ? h.message : h.gzMessage;
    const Bytes packed = gzipBytes(h.bytes);
    if (const std::size_t at = expected.find("%GZ%"); at != std::string::npos)
    {
      expected.replace(at, 4, std::to_string(packed.size()));
    }
    const std::string gzPath = path + ".gz";
    writeBytes(gzPath, packed);
    error.clear();
    EXPECT_EQ(lumoIpPicGet(gzPath, &error), nullptr);
    EXPECT_EQ(error, gzPath + ": " + expected);
    error.clear();
    EXPECT_EQ(lumoIpPicGetFromMemory(packed.data(), packed.size(), &error), nullptr);
    EXPECT_EQ(error, expected);
  }
}

TEST(PicFileHostile, GzipStreamsAreBoundedDamagedOrCut)
{
  ScratchDirectory dir;
  std::string error;
  // 1 GB of voxels announced in a few dozen compressed bytes: refused before anything is allocated.
  const Bytes bomb = gzipBytes(PicBytes().header(4, 8, { 1000, 1000, 1000 }).counts(0, 0, 1000000000).bytes());
  writeBytes(dir.path("bomb.pic.gz"), bomb);
  EXPECT_EQ(lumoIpPicGetHeader(dir.path("bomb.pic.gz"), &error), nullptr);
  EXPECT_EQ(error,
            dir.path("bomb.pic.gz") + ": header announces 1000000000 bytes of tags and voxels, more than a " +
              "gzip stream of " + std::to_string(bomb.size()) + " bytes can hold");

  // A real volume whose compressed file is cut short or damaged in the middle.
  const PicPointer pic = sampleVolume(lumoIpPicFloat, 32, { 64, 64, 8 });
  fillRandom(pic.get());
  ASSERT_TRUE(lumoIpPicPut(dir.path("whole.pic.gz"), pic.get(), &error)) << error;
  const Bytes whole = readBytes(dir.path("whole.pic.gz"));
  writeBytes(dir.path("cut.pic.gz"), Bytes(whole.begin(), whole.begin() + static_cast<long>(whole.size() / 2)));
  EXPECT_EQ(lumoIpPicGet(dir.path("cut.pic.gz"), &error), nullptr);
  EXPECT_THAT(error, StartsWith(dir.path("cut.pic.gz") + ": truncated voxel block: got "));
  EXPECT_THAT(error, HasSubstr(" of 131072 bytes"));

  // Complete voxels but no checksum: the gzip trailer (CRC and length, 8 bytes) is missing.
  const Bytes small = gzipBytes(tinyFile);
  const Bytes noTrailer(small.begin(), small.end() - 8);
  writeBytes(dir.path("notrailer.pic.gz"), noTrailer);
  EXPECT_EQ(lumoIpPicGet(dir.path("notrailer.pic.gz"), &error), nullptr);
  EXPECT_EQ(error, dir.path("notrailer.pic.gz") + ": truncated gzip stream: it ends before its checksum");
  EXPECT_EQ(lumoIpPicGetFromMemory(noTrailer.data(), noTrailer.size(), &error), nullptr);
  EXPECT_EQ(error, "truncated gzip stream: it ends before its checksum");

  Bytes damaged = whole;
  // In the middle of the voxels, so that the header still parses and the stream's own check must catch it.
  for (std::size_t i = whole.size() / 2; i < whole.size() / 2 + 60; ++i)
  {
    damaged[i] = static_cast<unsigned char>(damaged[i] ^ 0x5A);
  }
  writeBytes(dir.path("damaged.pic.gz"), damaged);
  EXPECT_EQ(lumoIpPicGet(dir.path("damaged.pic.gz"), &error), nullptr);
  EXPECT_THAT(error, StartsWith(dir.path("damaged.pic.gz") + ": corrupt gzip stream: "));
  EXPECT_EQ(lumoIpPicGetFromMemory(damaged.data(), damaged.size(), &error), nullptr);
  EXPECT_THAT(error, StartsWith("corrupt gzip stream: "));
}

TEST(PicFileHostile, MissingFilesAndDirectoriesAreRefused)
{
  ScratchDirectory dir;
  std::string error;
  EXPECT_EQ(lumoIpPicGet(dir.path("absent.pic"), &error), nullptr);
  EXPECT_EQ(error, dir.path("absent.pic") + ": cannot open: No such file or directory");
  ASSERT_EQ(::mkdir(dir.path("folder.pic").c_str(), 0700), 0);
  EXPECT_EQ(lumoIpPicGetHeader(dir.path("folder.pic"), &error), nullptr);
  EXPECT_EQ(error, dir.path("folder.pic") + ": not a regular file");
  EXPECT_FALSE(lumoIpPicFileHasMagic(dir.path("folder.pic")));
  EXPECT_FALSE(lumoIpPicFileHasMagic(dir.path("absent.pic")));
  EXPECT_EQ(lumoIpPicGetFromMemory(nullptr, 0, &error), nullptr);
  EXPECT_EQ(error, "empty file");
  EXPECT_EQ(lumoIpPicGet(dir.path("absent.pic")), nullptr) << "the error text is optional";
}

// ---------------------------------------------------------------- writing

TEST(PicFileWrite, RefusesWhatTheFormatCannotHoldAndWritesNothing)
{
  ScratchDirectory dir;
  const std::string path = dir.path("out.pic");
  std::string error;

  PicPointer pic = tinyPic();
  pic->dim = 0;
  EXPECT_FALSE(lumoIpPicPut(path, pic.get(), &error));
  EXPECT_EQ(error, path + ": dimension count 0 is outside 1..8");
  pic = tinyPic();
  pic->type = lumoIpPicFloat;
  EXPECT_FALSE(lumoIpPicPut(path, pic.get(), &error));
  EXPECT_EQ(error, path + ": unsupported element kind: type 5 with 8 bits per element");
  pic = tinyPic();
  lumoIpPicFreeData(pic.get());
  EXPECT_FALSE(lumoIpPicPut(path, pic.get(), &error));
  EXPECT_EQ(error, path + ": the descriptor has no voxel data");
  pic = tinyPic();
  pic->tags[0].name = std::string(33, 'T'); // bypasses lumoIpPicAddTag
  EXPECT_FALSE(lumoIpPicPut(path, pic.get(), &error));
  EXPECT_EQ(error, path + ": tag 0: name length 33 is outside 1..32");
  pic = tinyPic();
  pic->tags.push_back(pic->tags[0]);
  EXPECT_FALSE(lumoIpPicPut(path, pic.get(), &error));
  EXPECT_EQ(error, path + ": tag 1 ('ID'): duplicate name");
  pic = tinyPic();
  const double zeroSpacing[3] = { 1, 0, 1 };
  lumoIpPicSetVectorTag(pic.get(), lumoIpPicTagSpacing, zeroSpacing);
  EXPECT_FALSE(lumoIpPicPut(path + ".gz", pic.get(), &error));
  EXPECT_EQ(error, path + ".gz: tag 'SPACING' must hold three finite positive 64-bit floats");
  pic = tinyPic();
  pic->tags.resize(257, pic->tags[0]);
  for (std::size_t i = 0; i < pic->tags.size(); ++i)
  {
    pic->tags[i].name = "T" + std::to_string(i);
  }
  EXPECT_FALSE(lumoIpPicPut(path, pic.get(), &error));
  EXPECT_EQ(error, path + ": too many tags: 257 (at most 256)");
  EXPECT_FALSE(lumoIpPicPut(path, nullptr, &error));
  EXPECT_EQ(error, path + ": no descriptor");
  EXPECT_FALSE(lumoIpPicPut("", tinyPic().get(), &error));
  EXPECT_EQ(error, "empty file name");
  std::vector<unsigned char> memory;
  EXPECT_FALSE(lumoIpPicPutToMemory(nullptr, &memory, &error));
  EXPECT_EQ(error, "no descriptor");
  EXPECT_TRUE(memory.empty());

  EXPECT_EQ(dir.entries(), std::vector<std::string>{}) << "no target and no temporary file";
}

TEST(PicFileWrite, FailedWritesLeaveNoFileAndKeepTheOldTarget)
{
  ScratchDirectory dir;
  std::string error;
  const PicPointer pic = tinyPic();

  EXPECT_FALSE(lumoIpPicPut(dir.path("missing/out.pic"), pic.get(), &error));
  EXPECT_EQ(error,
            dir.path("missing/out.pic") + ": cannot create a temporary file beside it: No such file or directory");

  ASSERT_EQ(::mkdir(dir.path("taken.pic").c_str(), 0700), 0);
  EXPECT_FALSE(lumoIpPicPut(dir.path("taken.pic"), pic.get(), &error));
  EXPECT_EQ(error, dir.path("taken.pic") + ": cannot replace the file: Is a directory");
  EXPECT_EQ(dir.entries(), std::vector<std::string>{ "taken.pic" }) << "temporary removed, directory kept";

  // A disk that fills up halfway: the file size limit makes write() fail with EFBIG.
  const Bytes old = { 'o', 'l', 'd' };
  writeBytes(dir.path("big.pic"), old);
  writeBytes(dir.path("big.pic.gz"), old);
  const PicPointer big = sampleVolume(lumoIpPicFloat, 32, { 128, 128, 4 });
  fillRandom(big.get()); // so that the gzip stream outgrows the limit too
  struct rlimit saved
  {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
  const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit small = saved;
  small.rlim_cur = 4096;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  std::string plainError;
  std::string gzError;
  const bool plainWritten = lumoIpPicPut(dir.path("big.pic"), big.get(), &plainError);
  const bool gzWritten = lumoIpPicPut(dir.path("big.pic.gz"), big.get(), &gzError, 1);
  ::setrlimit(RLIMIT_FSIZE, &saved);
  std::signal(SIGXFSZ, previousHandler);

  EXPECT_FALSE(plainWritten);
  EXPECT_EQ(plainError, dir.path("big.pic") + ": write error: File too large");
  EXPECT_FALSE(gzWritten);
  EXPECT_EQ(gzError, dir.path("big.pic.gz") + ": write error: File too large");
  EXPECT_EQ(readBytes(dir.path("big.pic")), old);
  EXPECT_EQ(readBytes(dir.path("big.pic.gz")), old);
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{ "big.pic", "big.pic.gz", "taken.pic" }));

  // Without the limit the same write replaces the old file whole.
  ASSERT_TRUE(lumoIpPicPut(dir.path("big.pic"), big.get(), &error)) << error;
  EXPECT_EQ(readBytes(dir.path("big.pic")).size(), 52u + 44u + 43u + 27u + 128u * 128u * 4u * 4u);
}
