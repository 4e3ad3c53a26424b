// arbo on hostile files under a bounded address space: image headers promising more than their data can hold,
// and every hostile input the project's tests build. Not a sanitizer test: RLIMIT_AS does not work under
// AddressSanitizer, whose shadow memory alone takes terabytes of address space.

#include "ArboTestSupport.h"

#include "lumoImage.h"
#include "lumoImageIO.h"
#include "lumoVesselTreeLookupTablePropertySerializer.h"

#include <HostileInputs.h>
#include <tinyxml2.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <new>

using namespace arbo_test;

namespace
{
/** Address space the process has mapped now (VmSize), in bytes. */
std::uint64_t
mappedBytes()
{
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
  {
    if (line.rfind("VmSize:", 0) == 0)
    {
      return std::stoull(line.substr(7)) * 1024;
    }
  }
  return 0;
}

struct LimitedRun
{
  ArboRun run;
  bool exited{ false };
  int signal{ 0 };
  std::uint64_t limit{ 0 };
};

/** Runs arbo in a forked child whose address space may grow by at most `headroom` bytes beyond what it has mapped
 *  at the fork; the child's standard error comes back through a pipe. */
/** Exit status of a child in which an allocation failed (whether or not the failure was caught). */
constexpr int AllocationFailed = 42;

void
exitOnFailedAllocation()
{
  ::_exit(AllocationFailed);
}

LimitedRun
runArboLimited(const std::vector<std::string> & arguments, std::uint64_t headroom, bool absolute = false)
{
  LimitedRun result;
  result.limit = absolute ? headroom : mappedBytes() + headroom;
  int pipeEnds[2];
  if (::pipe(pipeEnds) != 0)
  {
    ADD_FAILURE() << "pipe: " << std::strerror(errno);
    return result;
  }
  const pid_t child = ::fork();
  if (child == 0)
  {
    ::close(pipeEnds[0]);
    const struct rlimit bound = { result.limit, result.limit };
    ::setrlimit(RLIMIT_AS, &bound);
    std::set_new_handler(exitOnFailedAllocation);
    const ArboRun run = runArbo(arguments);
    std::size_t written = 0;
    while (written < run.err.size())
    {
      const ssize_t n = ::write(pipeEnds[1], run.err.data() + written, run.err.size() - written);
      if (n <= 0)
      {
        break;
      }
      written += static_cast<std::size_t>(n);
    }
    ::_exit(run.status);
  }
  ::close(pipeEnds[1]);
  char buffer[4096];
  for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof(buffer))) > 0;)
  {
    result.run.err.append(buffer, static_cast<std::size_t>(n));
  }
  ::close(pipeEnds[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  result.exited = WIFEXITED(status);
  result.run.status = result.exited ? WEXITSTATUS(status) : -1;
  result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return result;
}

void
replaceOnce(const std::filesystem::path & file, const std::string & from, const std::string & to)
{
  std::string content = readFile(file);
  const auto at = content.find(from);
  ASSERT_NE(at, std::string::npos) << from << " not in " << file;
  content.replace(at, from.size(), to);
  writeFile(file, content);
}

std::string
gunzip(const std::filesystem::path & file)
{
  gzFile gz = gzopen(file.c_str(), "rb");
  std::string content;
  char buffer[4096];
  for (int n; (n = gzread(gz, buffer, sizeof(buffer))) > 0;)
  {
    content.append(buffer, static_cast<std::size_t>(n));
  }
  gzclose(gz);
  return content;
}

void
gzipTo(const std::filesystem::path & file, const std::string & content)
{
  gzFile gz = gzopen(file.c_str(), "wb9");
  gzwrite(gz, content.data(), static_cast<unsigned>(content.size()));
  gzclose(gz);
}

void
putU16(std::string & bytes, std::size_t at, std::uint16_t value)
{
  bytes[at] = static_cast<char>(value & 0xff);
  bytes[at + 1] = static_cast<char>(value >> 8);
}

void
putU32(std::string & bytes, std::size_t at, std::uint32_t value)
{
  for (int i = 0; i < 4; ++i)
  {
    bytes[at + i] = static_cast<char>((value >> (8 * i)) & 0xff);
  }
}

class ArboImageHeaderLimitTest : public ArboTest
{
protected:
  /** A valid 4 x 4 x 4 image of unsigned char written by the toolkit, and the payload it holds. */
  std::filesystem::path
  writeSmallImage(const std::string & name, bool compressed)
  {
    lumo::Image::Pointer image = lumo::Image::New();
    image->Initialize(itk::IOComponentEnum::UCHAR, { { 4, 4, 4 } });
    lumo::WriteImageFile(image, path(name), compressed);
    return path(name);
  }

  static std::string
  promise(std::uint64_t capacity)
  {
    return "the header promises 4000 x 4000 x 1250 voxels of 1 byte (20000000000 bytes), more than its data can "
           "hold (at most " +
           std::to_string(capacity) + " bytes)";
  }

  /** arbo info fails on `file` with exactly `message`, under 200 MB of extra address space. */
  void
  expectRefused(const std::filesystem::path & file, const std::string & message)
  {
    const LimitedRun limited = runArboLimited({ "info", file.string() }, 200u << 20);
    EXPECT_TRUE(limited.exited) << file << " killed by signal " << limited.signal;
    EXPECT_EQ(limited.run.status, 1) << file;
    EXPECT_EQ(limited.run.err, "arbo: " + file.string() + ": " + message + "\n");
  }
};

// Each format, raw and compressed: the header is edited to promise 20 GB, the data stay as they were.
TEST_F(ArboImageHeaderLimitTest, EveryFormatRefusesAHeaderPromisingMoreThanItsData)
{
  for (const bool compressed : { false, true })
  {
    SCOPED_TRACE(compressed ? "compressed" : "raw");
    const std::string z = compressed ? "z" : "";

    const auto nrrd = writeSmallImage("attached" + z + ".nrrd", compressed);
    ASSERT_EQ(runArbo({ "info", nrrd.string() }).status, 0);
    const std::uint64_t nrrdData =
      compressed ? 1032 * (std::filesystem::file_size(nrrd) - readFile(nrrd).find("\n\n") - 2) : 64;
    replaceOnce(nrrd, "sizes: 4 4 4", "sizes: 4000 4000 1250");
    expectRefused(nrrd, promise(nrrdData));

    const auto nhdr = writeSmallImage("detached" + z + ".nhdr", compressed);
    const auto nhdrData = path(compressed ? "detached" + z + ".raw.gz" : "detached" + z + ".raw");
    ASSERT_TRUE(std::filesystem::exists(nhdrData));
    replaceOnce(nhdr, "sizes: 4 4 4", "sizes: 4000 4000 1250");
    expectRefused(nhdr, promise((compressed ? 1032 : 1) * std::filesystem::file_size(nhdrData)));

    const auto mha = writeSmallImage("local" + z + ".mha", compressed);
    replaceOnce(mha, "DimSize = 4 4 4", "DimSize = 4000 4000 1250");
    expectRefused(mha, promise((compressed ? 1032 : 1) * std::filesystem::file_size(mha)));

    const auto mhd = writeSmallImage("detached" + z + ".mhd", compressed);
    const auto mhdData = path(compressed ? "detached" + z + ".zraw" : "detached" + z + ".raw");
    ASSERT_TRUE(std::filesystem::exists(mhdData));
    replaceOnce(mhd, "DimSize = 4 4 4", "DimSize = 4000 4000 1250");
    expectRefused(mhd, promise((compressed ? 1032 : 1) * std::filesystem::file_size(mhdData)));

    // NIfTI: dim[1..3] are little-endian 16-bit integers at bytes 42, 44 and 46 of the header.
    const auto nii = writeSmallImage(compressed ? "image.nii.gz" : "image.nii", false);
    std::string header = compressed ? gunzip(nii) : readFile(nii);
    putU16(header, 42, 4000);
    putU16(header, 44, 4000);
    putU16(header, 46, 1250);
    compressed ? gzipTo(nii, header) : writeFile(nii, header);
    expectRefused(nii, promise((compressed ? 1032 : 1) * std::filesystem::file_size(nii)));

    // Pic: its reader bounds the voxel block itself (sizes at bytes 24, 28, 32, voxel bytes at 44).
    const auto pic = writeSmallImage(compressed ? "image.pic.gz" : "image.pic", false);
    std::string pichdr = compressed ? gunzip(pic) : readFile(pic);
    putU32(pichdr, 24, 4000);
    putU32(pichdr, 28, 4000);
    putU32(pichdr, 32, 1250);
    putU32(pichdr, 44, 20000000000ull & 0xffffffffu);
    putU32(pichdr, 48, static_cast<std::uint32_t>(20000000000ull >> 32));
    compressed ? gzipTo(pic, pichdr) : writeFile(pic, pichdr);
    const LimitedRun limited = runArboLimited({ "info", pic.string() }, 200u << 20);
    EXPECT_EQ(limited.run.status, 1);
    EXPECT_NE(limited.run.err.find("20000000000 bytes"), std::string::npos) << limited.run.err;
    EXPECT_EQ(std::count(limited.run.err.begin(), limited.run.err.end(), '\n'), 1) << limited.run.err;
  }
}

// The limits are inclusive: a payload holding exactly the promised bytes reads, one byte less does not.
TEST_F(ArboImageHeaderLimitTest, APayloadOfExactlyThePromisedBytesStillReads)
{
  const std::string header = "NRRD0004\ntype: unsigned char\ndimension: 3\nsizes: 64 64 64\nencoding: raw\n\n";
  writeFile(path("exact.nrrd"), header + std::string(64 * 64 * 64, '\1'));
  const ArboRun exact = runArbo({ "info", path("exact.nrrd") });
  EXPECT_EQ(exact.status, 0) << exact.err;
  EXPECT_EQ(exact.err, "");

  writeFile(path("short.nrrd"), header + std::string(64 * 64 * 64 - 1, '\1'));
  const ArboRun shortRun = runArbo({ "info", path("short.nrrd") });
  EXPECT_EQ(shortRun.status, 1);
  EXPECT_EQ(shortRun.err,
            "arbo: " + path("short.nrrd") +
              ": the header promises 64 x 64 x 64 voxels of 1 byte (262144 bytes), more than its data can hold (at "
              "most 262143 bytes)\n");
}

// A header whose data are there but do not fit the process: a sparse 1 GB data file read with 200 MB to spare.
TEST_F(ArboImageHeaderLimitTest, AnImageLargerThanTheProcessMayAllocateIsRefusedBeforeAllocating)
{
  writeFile(path("large.mhd"),
            "ObjectType = Image\nNDims = 3\nDimSize = 1024 1024 1024\nElementType = MET_UCHAR\n"
            "ElementDataFile = large.raw\n");
  std::filesystem::resize_file((writeFile(path("large.raw"), ""), path("large.raw")), 1u << 30);
  const LimitedRun limited = runArboLimited({ "info", path("large.mhd") }, 200u << 20);
  EXPECT_TRUE(limited.exited) << "killed by signal " << limited.signal;
  EXPECT_EQ(limited.run.status, 1);
  EXPECT_EQ(limited.run.err,
            "arbo: " + path("large.mhd") +
              ": the header promises 1024 x 1024 x 1024 voxels of 1 byte (1073741824 bytes), more "
              "than this process can allocate (at most " +
              std::to_string(limited.limit) + " bytes)\n");
  EXPECT_EQ(files(), (std::vector<std::string>{ "large.mhd", "large.raw" }));
}

// Every hostile input of the project's tests, each read in a child whose address space is limited to 2 GiB: a
// clean failure with one line naming the file, never a kill and never an allocation that fails.
class ArboHostileInputsTest : public ArboTest
{
protected:
  static constexpr std::uint64_t AddressSpace = 2ull << 30;

  void
  expectCleanFailure(const std::vector<std::string> & arguments, const std::string & file)
  {
    const LimitedRun limited = runArboLimited(arguments, AddressSpace, true);
    EXPECT_TRUE(limited.exited) << "killed by signal " << limited.signal;
    EXPECT_NE(limited.run.status, AllocationFailed) << "an allocation failed";
    EXPECT_EQ(limited.run.status, 1) << limited.run.err;
    EXPECT_EQ(limited.run.err.rfind("arbo: " + file + ": ", 0), 0u) << limited.run.err;
  }
};

TEST_F(ArboHostileInputsTest, DataFilesFailCleanlyWithinTwoGibibytes)
{
  ASSERT_LT(mappedBytes(), AddressSpace / 2) << "the test process itself maps too much for the limit to mean much";
  std::vector<lumotest::HostileInput> inputs = lumotest::hostileVesselTrees();
  for (const auto & group : { lumotest::hostileImages(), lumotest::hostilePointSets() })
  {
    inputs.insert(inputs.end(), group.begin(), group.end());
  }
  for (const lumotest::HostileInput & input : inputs)
  {
    SCOPED_TRACE(input.name);
    writeFile(path(input.fileName), input.content);
    expectCleanFailure({ "info", path(input.fileName) }, path(input.fileName));
    const std::vector<std::string> names = files();
    EXPECT_EQ(std::count(names.begin(), names.end(), input.fileName), 1);
    EXPECT_EQ(readFile(path(input.fileName)), input.content);
  }
}

TEST_F(ArboHostileInputsTest, ScenesFailCleanlyWithinTwoGibibytes)
{
  for (const lumotest::HostileInput & input : lumotest::hostileScenes())
  {
    SCOPED_TRACE(input.name);
    writeFile(path(input.fileName), input.content);
    // Refused with the loader's reasons and a last line naming the file, or loaded without the broken property.
    const LimitedRun limited = runArboLimited({ "scene", "info", path(input.fileName) }, AddressSpace, true);
    EXPECT_TRUE(limited.exited) << "killed by signal " << limited.signal;
    EXPECT_NE(limited.run.status, AllocationFailed) << "an allocation failed";
    const std::string & err = limited.run.err;
    const std::size_t lastLine = err.size() > 1 ? err.rfind('\n', err.size() - 2) : std::string::npos;
    if (limited.run.status == 1)
    {
      EXPECT_EQ(err.compare(lastLine == std::string::npos ? 0 : lastLine + 1,
                            std::string::npos,
                            "arbo: " + path(input.fileName) + ": is not a scene that can be loaded\n"),
                0)
        << err;
    }
    else
    {
      EXPECT_EQ(limited.run.status, 0);
      EXPECT_EQ(err.find("rror"), std::string::npos) << err;
    }
    EXPECT_EQ(readFile(path(input.fileName)), input.content);
  }
}

TEST_F(ArboHostileInputsTest, LookupTablePropertiesAreRefusedWithinTwoGibibytes)
{
  for (const lumotest::HostileInput & input : lumotest::hostileLookupTableXml())
  {
    SCOPED_TRACE(input.name);
    const pid_t child = ::fork();
    if (child == 0)
    {
      const struct rlimit bound = { AddressSpace, AddressSpace };
      ::setrlimit(RLIMIT_AS, &bound);
      std::set_new_handler(exitOnFailedAllocation);
      std::cerr.setstate(std::ios::failbit); // the serializer's warning is checked by its own tests
      tinyxml2::XMLDocument document;
      document.Parse(input.content.c_str());
      auto property = lumo::VesselTreeLookupTablePropertySerializer::New()->Deserialize(document.RootElement());
      ::_exit(property.IsNull() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status)) << "killed by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0) << (WEXITSTATUS(status) == AllocationFailed ? "an allocation failed" : "read");
  }
}
} // namespace
