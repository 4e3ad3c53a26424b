#include "lumoIpPicFile.h"

#include "lumoTemporaryFileGuard.h"

#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Voxels and tag values are stored as the machine holds them; the header fields are assembled byte by byte.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the Pic file code assumes a little-endian machine");

namespace
{
// magic, version, flags, type, bpe, dimension count
constexpr std::size_t fixedHeaderBytes = 24;
// tag count, tag block bytes, voxel block bytes; follow the sizes
constexpr std::size_t headerTailBytes = 16;
// name length byte, then type, bpe and value length
constexpr std::size_t tagFixedBytes = 1 + 12;
// Deflate cannot expand more than 1032:1 (one 258-byte match per two bits), so a gzip stream of c bytes cannot hold
// more than 1032 * c bytes. This bounds what a .pic.gz can make us allocate.
constexpr std::uint64_t deflateMaxRatio = 1032;
// Reads and writes are split into pieces of this size: zlib counts in unsigned int, read() in ssize_t.
constexpr std::size_t ioChunk = std::size_t{ 1 } << 30;

// ---------------------------------------------------------------- little-endian fields

std::uint16_t
getU16(const unsigned char * p)
{
  return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

std::uint32_t
getU32(const unsigned char * p)
{
  return std::uint32_t{ p[0] } | (std::uint32_t{ p[1] } << 8) | (std::uint32_t{ p[2] } << 16) |
         (std::uint32_t{ p[3] } << 24);
}

std::uint64_t
getU64(const unsigned char * p)
{
  return std::uint64_t{ getU32(p) } | (std::uint64_t{ getU32(p + 4) } << 32);
}

void
putU16(std::vector<unsigned char> & out, std::uint16_t v)
{
  out.push_back(static_cast<unsigned char>(v));
  out.push_back(static_cast<unsigned char>(v >> 8));
}

void
putU32(std::vector<unsigned char> & out, std::uint32_t v)
{
  for (int shift = 0; shift < 32; shift += 8)
  {
    out.push_back(static_cast<unsigned char>(v >> shift));
  }
}

void
putU64(std::vector<unsigned char> & out, std::uint64_t v)
{
  putU32(out, static_cast<std::uint32_t>(v));
  putU32(out, static_cast<std::uint32_t>(v >> 32));
}

std::string
osError()
{
  return std::strerror(errno);
}

std::string
bytesText(std::uint64_t n)
{
  return std::to_string(n) + (n == 1 ? " byte" : " bytes");
}

// zlib prefixes its messages with the file name, which for a descriptor is "<fd:N>"; the caller adds the real path.
std::string
gzMessage(gzFile gz, int * code)
{
  std::string text = gzerror(gz, code);
  const std::size_t colon = text.find(": ");
  if (text.compare(0, 4, "<fd:") == 0 && colon != std::string::npos)
  {
    text.erase(0, colon + 2);
  }
  return text;
}

// ---------------------------------------------------------------- byte sources

// A stream of file bytes, plain or inflated. read() returns fewer bytes than asked only at the end of the stream or
// on an error, which it leaves in failure.
class Source
{
public:
  virtual ~Source() = default;

  virtual std::size_t
  read(void * dst, std::size_t n) = 0;

  // Most bytes that can still follow. Exact for plain sources, an upper bound for gzip streams.
  virtual std::uint64_t
  remainingBound() const = 0;

  virtual bool
  isExact() const = 0;

  // For messages: what the bound is made of.
  virtual std::uint64_t
  storedBytes() const = 0;

  std::string failure;
  // Set by gzip sources whose stream stops before its end (and its checksum), also when every byte asked for came.
  bool cutShort{ false };
};

class MemorySource : public Source
{
public:
  MemorySource(const unsigned char * bytes, std::size_t size)
    : m_Bytes(bytes)
    , m_Size(size)
  {}

  std::size_t
  read(void * dst, std::size_t n) override
  {
    const std::size_t count = std::min(n, m_Size - m_Offset);
    if (count > 0)
    {
      std::memcpy(dst, m_Bytes + m_Offset, count);
    }
    m_Offset += count;
    return count;
  }

  std::uint64_t
  remainingBound() const override
  {
    return m_Size - m_Offset;
  }

  bool
  isExact() const override
  {
    return true;
  }

  std::uint64_t
  storedBytes() const override
  {
    return m_Size;
  }

private:
  const unsigned char * m_Bytes;
  std::size_t m_Size;
  std::size_t m_Offset{ 0 };
};

class FileSource : public Source
{
public:
  FileSource(int fd, std::uint64_t size)
    : m_Fd(fd)
    , m_Size(size)
  {}

  std::size_t
  read(void * dst, std::size_t n) override
  {
    auto * out = static_cast<unsigned char *>(dst);
    std::size_t done = 0;
    while (done < n)
    {
      const ssize_t got = ::read(m_Fd, out + done, std::min(n - done, ioChunk));
      if (got < 0 && errno == EINTR)
      {
        continue;
      }
      if (got < 0)
      {
        failure = "read error: " + osError();
        break;
      }
      if (got == 0)
      {
        break;
      }
      done += static_cast<std::size_t>(got);
    }
    m_Offset += done;
    return done;
  }

  std::uint64_t
  remainingBound() const override
  {
    return m_Offset < m_Size ? m_Size - m_Offset : 0;
  }

  bool
  isExact() const override
  {
    return true;
  }

  std::uint64_t
  storedBytes() const override
  {
    return m_Size;
  }

private:
  int m_Fd;
  std::uint64_t m_Size;
  std::uint64_t m_Offset{ 0 };
};

std::uint64_t
inflatedBound(std::uint64_t compressed)
{
  if (compressed > std::numeric_limits<std::uint64_t>::max() / deflateMaxRatio)
  {
    return std::numeric_limits<std::uint64_t>::max();
  }
  return compressed * deflateMaxRatio;
}

// A gzip file read through zlib's gz* functions, which also handle several concatenated members.
class GzFileSource : public Source
{
public:
  GzFileSource(gzFile gz, std::uint64_t compressedSize)
    : m_Gz(gz)
    , m_Bound(inflatedBound(compressedSize))
    , m_Compressed(compressedSize)
  {}

  ~GzFileSource() override { gzclose_r(m_Gz); }

  GzFileSource(const GzFileSource &) = delete;
  GzFileSource &
  operator=(const GzFileSource &) = delete;

  std::size_t
  read(void * dst, std::size_t n) override
  {
    auto * out = static_cast<unsigned char *>(dst);
    std::size_t done = 0;
    while (done < n)
    {
      const unsigned int ask = static_cast<unsigned int>(std::min(n - done, ioChunk));
      const int got = gzread(m_Gz, out + done, ask);
      if (got < 0)
      {
        int code = Z_OK;
        const std::string text = gzMessage(m_Gz, &code);
        failure = code == Z_ERRNO ? "read error: " + osError() : "corrupt gzip stream: " + text;
        break;
      }
      if (got == 0)
      {
        int code = Z_OK;
        gzerror(m_Gz, &code);
        cutShort = code == Z_BUF_ERROR; // zlib's "unexpected end of file"
        break;
      }
      done += static_cast<std::size_t>(got);
    }
    m_Offset += done;
    return done;
  }

  std::uint64_t
  remainingBound() const override
  {
    return m_Offset < m_Bound ? m_Bound - m_Offset : 0;
  }

  bool
  isExact() const override
  {
    return false;
  }

  std::uint64_t
  storedBytes() const override
  {
    return m_Compressed;
  }

private:
  gzFile m_Gz;
  std::uint64_t m_Bound;
  std::uint64_t m_Compressed;
  std::uint64_t m_Offset{ 0 };
};

// A gzip stream held in memory, inflated on demand. Like gzread it continues into a following gzip member and
// ignores anything after the last one.
class GzMemorySource : public Source
{
public:
  GzMemorySource(const unsigned char * bytes, std::size_t size)
    : m_Bound(inflatedBound(size))
    , m_Compressed(size)
  {
    m_Stream.next_in = const_cast<unsigned char *>(bytes); // zlib does not write through next_in
    m_Stream.avail_in = 0;
    m_Input = bytes;
    m_InputLeft = size;
    // 16 + 15: a gzip wrapper and the largest window.
    m_Ready = inflateInit2(&m_Stream, 16 + MAX_WBITS) == Z_OK;
    if (!m_Ready)
    {
      failure = "cannot start zlib";
    }
  }

  ~GzMemorySource() override
  {
    if (m_Ready)
    {
      inflateEnd(&m_Stream);
    }
  }

  GzMemorySource(const GzMemorySource &) = delete;
  GzMemorySource &
  operator=(const GzMemorySource &) = delete;

  std::size_t
  read(void * dst, std::size_t n) override
  {
    auto * out = static_cast<unsigned char *>(dst);
    std::size_t done = 0;
    while (m_Ready && !m_Finished && done < n)
    {
      refill();
      const unsigned int ask = static_cast<unsigned int>(std::min(n - done, ioChunk));
      m_Stream.next_out = out + done;
      m_Stream.avail_out = ask;
      const int code = inflate(&m_Stream, Z_NO_FLUSH);
      done += ask - m_Stream.avail_out;
      if (code == Z_STREAM_END)
      {
        refill();
        const bool anotherMember = m_Stream.avail_in >= 2 && m_Stream.next_in[0] == 0x1f && m_Stream.next_in[1] == 0x8b;
        if (!anotherMember || inflateReset(&m_Stream) != Z_OK)
        {
          m_Finished = true;
        }
      }
      else if (code == Z_BUF_ERROR)
      {
        // No progress possible: the input is used up in the middle of a member.
        if (m_Stream.avail_in == 0 && m_InputLeft == 0)
        {
          m_Finished = true;
          cutShort = true;
        }
      }
      else if (code != Z_OK)
      {
        failure = std::string("corrupt gzip stream: ") + (m_Stream.msg != nullptr ? m_Stream.msg : "inflate error");
        m_Finished = true;
      }
    }
    m_Offset += done;
    return done;
  }

  std::uint64_t
  remainingBound() const override
  {
    return m_Offset < m_Bound ? m_Bound - m_Offset : 0;
  }

  bool
  isExact() const override
  {
    return false;
  }

  std::uint64_t
  storedBytes() const override
  {
    return m_Compressed;
  }

private:
  // Hands zlib the next piece of input; avail_in is an unsigned int, the buffer may be larger.
  void
  refill()
  {
    if (m_Stream.avail_in == 0 && m_InputLeft > 0)
    {
      const std::size_t piece = std::min(m_InputLeft, ioChunk);
      m_Stream.next_in = const_cast<unsigned char *>(m_Input);
      m_Stream.avail_in = static_cast<unsigned int>(piece);
      m_Input += piece;
      m_InputLeft -= piece;
    }
  }

  z_stream m_Stream{};
  const unsigned char * m_Input{ nullptr };
  std::size_t m_InputLeft{ 0 };
  std::uint64_t m_Bound;
  std::uint64_t m_Compressed;
  std::uint64_t m_Offset{ 0 };
  bool m_Ready{ false };
  bool m_Finished{ false };
};

bool
looksGzipped(const unsigned char * bytes, std::size_t size)
{
  return size >= 2 && bytes[0] == 0x1f && bytes[1] == 0x8b;
}

// An open file as a source: plain or gzip by the first two bytes, whatever the name says.
class OpenedFile
{
public:
  ~OpenedFile()
  {
    m_Source.reset(); // gzclose_r closes its own descriptor
    if (m_Fd >= 0)
    {
      ::close(m_Fd);
    }
  }

  bool
  open(const std::string & path, std::string & error)
  {
    do
    {
      m_Fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    } while (m_Fd < 0 && errno == EINTR);
    if (m_Fd < 0)
    {
      error = "cannot open: " + osError();
      return false;
    }
    struct stat info
    {};
    if (::fstat(m_Fd, &info) != 0)
    {
      error = "cannot examine: " + osError();
      return false;
    }
    if (!S_ISREG(info.st_mode))
    {
      error = "not a regular file";
      return false;
    }
    const auto size = static_cast<std::uint64_t>(info.st_size);
    unsigned char lead[2] = { 0, 0 };
    const ssize_t got = ::pread(m_Fd, lead, sizeof(lead), 0);
    if (got < 0)
    {
      error = "read error: " + osError();
      return false;
    }
    if (!looksGzipped(lead, static_cast<std::size_t>(got)))
    {
      m_Source = std::make_unique<FileSource>(m_Fd, size);
      return true;
    }
    const int gzFd = ::dup(m_Fd);
    gzFile gz = gzFd >= 0 ? gzdopen(gzFd, "rb") : nullptr;
    if (gz == nullptr)
    {
      if (gzFd >= 0)
      {
        ::close(gzFd);
      }
      error = "cannot start zlib";
      return false;
    }
    gzbuffer(gz, 1u << 17);
    m_Source = std::make_unique<GzFileSource>(gz, size);
    return true;
  }

  Source &
  source()
  {
    return *m_Source;
  }

private:
  int m_Fd{ -1 };
  std::unique_ptr<Source> m_Source;
};

// ---------------------------------------------------------------- checks shared by reader and writer

std::string
kindText(std::uint32_t type, std::uint32_t bpe)
{
  return "type " + std::to_string(type) + " with " + std::to_string(bpe) + " bits per element";
}

bool
checkHeaderFields(std::uint32_t type,
                  std::uint32_t bpe,
                  std::uint32_t dim,
                  const std::uint32_t * n,
                  std::uint64_t * dataBytes,
                  std::string & error)
{
  if (type > lumoIpPicFloat || !lumoIpPicKindIsSupported(static_cast<lumoIpPicType>(type), bpe))
  {
    error = "unsupported element kind: " + kindText(type, bpe);
    return false;
  }
  if (dim < 1 || dim > lumoIpPicMaxDim)
  {
    error = "dimension count " + std::to_string(dim) + " is outside 1.." + std::to_string(lumoIpPicMaxDim);
    return false;
  }
  std::uint64_t elements = 1;
  for (std::uint32_t i = 0; i < dim; ++i)
  {
    if (n[i] == 0)
    {
      error = "size of dimension " + std::to_string(i) + " is 0";
      return false;
    }
    if (__builtin_mul_overflow(elements, std::uint64_t{ n[i] }, &elements))
    {
      error = "element count overflows 64 bits";
      return false;
    }
  }
  if (__builtin_mul_overflow(elements, std::uint64_t{ bpe / 8 }, dataBytes))
  {
    error = "voxel byte count overflows 64 bits";
    return false;
  }
  if (*dataBytes > lumoIpPicFileMaxDataBytes)
  {
    error = "voxel block of " + std::to_string(*dataBytes) + " bytes exceeds the limit of " +
            std::to_string(lumoIpPicFileMaxDataBytes) + " bytes";
    return false;
  }
  return true;
}

bool
allFinite(const double * v, std::size_t count)
{
  return std::all_of(v, v + count, [](double x) { return std::isfinite(x); });
}

// Spacing, origin and direction are read by every consumer of a volume; malformed ones are refused here once.
bool
checkGeometryTag(const lumoIpPicTag & tag, std::string & error)
{
  const bool isSpacing = tag.name == lumoIpPicTagSpacing;
  const bool isOrigin = tag.name == lumoIpPicTagOrigin;
  const bool isDirection = tag.name == lumoIpPicTagDirection;
  if (!isSpacing && !isOrigin && !isDirection)
  {
    return true;
  }
  const std::size_t count = isDirection ? 9 : 3;
  double v[9] = {};
  bool ok = tag.type == lumoIpPicFloat && tag.bpe == 64 && tag.value.size() == count * sizeof(double);
  if (ok)
  {
    std::memcpy(v, tag.value.data(), count * sizeof(double));
    ok = allFinite(v, count);
  }
  if (ok && isSpacing)
  {
    ok = v[0] > 0 && v[1] > 0 && v[2] > 0;
  }
  if (ok && isDirection)
  {
    const double det =
      v[0] * (v[4] * v[8] - v[5] * v[7]) - v[1] * (v[3] * v[8] - v[5] * v[6]) + v[2] * (v[3] * v[7] - v[4] * v[6]);
    ok = std::isfinite(det) && det != 0.0;
  }
  if (!ok)
  {
    error = "tag '" + tag.name + "' must hold " +
            (isSpacing  ? "three finite positive 64-bit floats"
             : isOrigin ? "three finite 64-bit floats"
                        : "nine finite 64-bit floats forming an invertible matrix");
  }
  return ok;
}

// Checks the tag at position index of tags (the earlier ones are for the duplicate test).
bool
checkTag(const std::vector<lumoIpPicTag> & tags, std::size_t index, std::string & error)
{
  const lumoIpPicTag & tag = tags[index];
  const std::string where = "tag " + std::to_string(index);
  if (tag.name.empty() || tag.name.size() > lumoIpPicMaxTagName)
  {
    error = where + ": name length " + std::to_string(tag.name.size()) + " is outside 1.." +
            std::to_string(lumoIpPicMaxTagName);
    return false;
  }
  for (const char c : tag.name)
  {
    if (c < 0x20 || c > 0x7e)
    {
      error = where + ": name has a byte outside printable ASCII";
      return false;
    }
  }
  const std::string named = where + " ('" + tag.name + "')";
  const auto type = static_cast<std::uint32_t>(tag.type);
  const bool opaque = tag.type == lumoIpPicUnknown && tag.bpe == 8;
  if (!opaque && (type > lumoIpPicFloat || !lumoIpPicKindIsSupported(tag.type, tag.bpe)))
  {
    error = named + ": unsupported kind: " + kindText(type, tag.bpe);
    return false;
  }
  if (tag.value.size() % (tag.bpe / 8) != 0)
  {
    error = named + ": value of " + bytesText(tag.value.size()) + " is not a whole number of " +
            std::to_string(tag.bpe) + "-bit elements";
    return false;
  }
  for (std::size_t i = 0; i < index; ++i)
  {
    if (tags[i].name == tag.name)
    {
      error = named + ": duplicate name";
      return false;
    }
  }
  return checkGeometryTag(tag, error);
}

// ---------------------------------------------------------------- reading

struct ReadState
{
  std::uint64_t dataBytes{ 0 };
};

// Reads exactly n bytes or explains why not: the stream's own failure, or `what` ended early.
bool
readExactly(Source & source, void * dst, std::size_t n, const char * what, std::string & error)
{
  const std::size_t got = source.read(dst, n);
  if (got == n)
  {
    return true;
  }
  if (!source.failure.empty())
  {
    error = source.failure;
  }
  else
  {
    error = std::string("truncated ") + what + ": got " + std::to_string(got) + " of " + bytesText(n);
  }
  return false;
}

bool
parseTags(const std::vector<unsigned char> & block, std::uint32_t count, lumoIpPicDescriptor & pic, std::string & error)
{
  std::size_t at = 0;
  const std::size_t end = block.size();
  for (std::uint32_t i = 0; i < count; ++i)
  {
    const std::string where = "tag " + std::to_string(i);
    if (end - at < 1)
    {
      error = where + " runs past the end of the tag block";
      return false;
    }
    const std::size_t nameLength = block[at];
    if (nameLength < 1 || nameLength > lumoIpPicMaxTagName)
    {
      error =
        where + ": name length " + std::to_string(nameLength) + " is outside 1.." + std::to_string(lumoIpPicMaxTagName);
      return false;
    }
    if (end - at < tagFixedBytes + nameLength)
    {
      error = where + " runs past the end of the tag block";
      return false;
    }
    lumoIpPicTag tag;
    tag.name.assign(reinterpret_cast<const char *>(block.data() + at + 1), nameLength);
    const unsigned char * fields = block.data() + at + 1 + nameLength;
    const std::uint32_t type = getU32(fields);
    tag.bpe = getU32(fields + 4);
    const std::uint32_t valueBytes = getU32(fields + 8);
    at += tagFixedBytes + nameLength;
    // Out-of-range codes become a code the tag check refuses, keeping the enum within its declared values.
    tag.type = type <= lumoIpPicFloat ? static_cast<lumoIpPicType>(type) : lumoIpPicUnknown;
    if (type > lumoIpPicFloat)
    {
      error = where + " ('" + tag.name + "'): unsupported kind: " + kindText(type, tag.bpe);
      return false;
    }
    if (valueBytes > end - at)
    {
      error =
        where + " ('" + tag.name + "'): value of " + bytesText(valueBytes) + " runs past the end of the tag block";
      return false;
    }
    tag.value.assign(block.begin() + static_cast<std::ptrdiff_t>(at),
                     block.begin() + static_cast<std::ptrdiff_t>(at + valueBytes));
    at += valueBytes;
    pic.tags.push_back(std::move(tag));
    if (!checkTag(pic.tags, i, error))
    {
      return false;
    }
  }
  if (at != end)
  {
    error = "tag block has " + bytesText(end - at) + " after the last tag";
    return false;
  }
  return true;
}

// Reads and checks everything up to the voxel block. Nothing is allocated from a count before the count has been
// checked against its limit and against the bytes that can still follow.
bool
readHeader(Source & source, lumoIpPicDescriptor & pic, ReadState & state, std::string & error)
{
  unsigned char fixed[fixedHeaderBytes];
  const std::size_t got = source.read(fixed, sizeof(fixed));
  if (!source.failure.empty())
  {
    error = source.failure;
    return false;
  }
  if (got == 0)
  {
    error = "empty file";
    return false;
  }
  if (std::memcmp(fixed, lumoIpPicFileMagic, std::min(got, sizeof(lumoIpPicFileMagic))) != 0)
  {
    error = "not a Pic file (bad magic bytes)";
    return false;
  }
  if (got < sizeof(fixed))
  {
    error = "truncated header: the file ends after " + bytesText(got);
    return false;
  }
  const std::uint16_t version = getU16(fixed + 8);
  if (version != lumoIpPicFileVersion)
  {
    error = "unsupported format version " + std::to_string(version) + " (this reader knows version " +
            std::to_string(lumoIpPicFileVersion) + ")";
    return false;
  }
  const std::uint16_t flags = getU16(fixed + 10);
  if (flags != 0)
  {
    error = "unsupported header flags " + std::to_string(flags);
    return false;
  }
  const std::uint32_t type = getU32(fixed + 12);
  const std::uint32_t bpe = getU32(fixed + 16);
  const std::uint32_t dim = getU32(fixed + 20);
  if (dim < 1 || dim > lumoIpPicMaxDim)
  {
    error = "dimension count " + std::to_string(dim) + " is outside 1.." + std::to_string(lumoIpPicMaxDim);
    return false;
  }
  unsigned char rest[4 * lumoIpPicMaxDim + headerTailBytes];
  const std::size_t restBytes = 4 * dim + headerTailBytes;
  const std::size_t gotRest = source.read(rest, restBytes);
  if (!source.failure.empty())
  {
    error = source.failure;
    return false;
  }
  if (gotRest < restBytes)
  {
    error = "truncated header: the file ends after " + bytesText(fixedHeaderBytes + gotRest);
    return false;
  }
  std::uint32_t n[lumoIpPicMaxDim] = {};
  for (std::uint32_t i = 0; i < dim; ++i)
  {
    n[i] = getU32(rest + 4 * i);
  }
  std::uint64_t dataBytes = 0;
  if (!checkHeaderFields(type, bpe, dim, n, &dataBytes, error))
  {
    return false;
  }
  const unsigned char * tail = rest + 4 * dim;
  const std::uint32_t tagCount = getU32(tail);
  const std::uint32_t tagBytes = getU32(tail + 4);
  const std::uint64_t declaredDataBytes = getU64(tail + 8);
  if (declaredDataBytes != dataBytes)
  {
    error = "header declares " + std::to_string(declaredDataBytes) + " voxel bytes but the sizes give " +
            std::to_string(dataBytes);
    return false;
  }
  if (tagCount > lumoIpPicFileMaxTags)
  {
    error = "too many tags: " + std::to_string(tagCount) + " (at most " + std::to_string(lumoIpPicFileMaxTags) + ")";
    return false;
  }
  if (tagBytes > lumoIpPicFileMaxTagBytes)
  {
    error = "tag block of " + std::to_string(tagBytes) + " bytes exceeds the limit of " +
            std::to_string(lumoIpPicFileMaxTagBytes) + " bytes";
    return false;
  }
  // Both are below their limits, so the sum cannot overflow.
  const std::uint64_t announced = std::uint64_t{ tagBytes } + dataBytes;
  const std::uint64_t left = source.remainingBound();
  if (source.isExact())
  {
    if (tagBytes > left)
    {
      error = "tag block of " + bytesText(tagBytes) + " is larger than the " + bytesText(left) + " left in the file";
      return false;
    }
    if (announced > left)
    {
      error = "voxel block of " + bytesText(dataBytes) + " is larger than the " + bytesText(left - tagBytes) +
              " left in the file";
      return false;
    }
    if (announced < left)
    {
      error = bytesText(left - announced) + " of trailing data after the voxel block";
      return false;
    }
  }
  else if (announced > left)
  {
    error = "header announces " + bytesText(announced) + " of tags and voxels, more than a gzip stream of " +
            bytesText(source.storedBytes()) + " can hold";
    return false;
  }

  std::vector<unsigned char> block(tagBytes);
  if (!readExactly(source, block.data(), block.size(), "tag block", error) || !parseTags(block, tagCount, pic, error))
  {
    return false;
  }
  pic.type = static_cast<lumoIpPicType>(type);
  pic.bpe = bpe;
  pic.dim = dim;
  std::copy(n, n + lumoIpPicMaxDim, pic.n);
  state.dataBytes = dataBytes;
  return true;
}

bool
readVoxels(Source & source, void * buffer, std::uint64_t bytes, std::string & error)
{
  if (!readExactly(source, buffer, static_cast<std::size_t>(bytes), "voxel block", error))
  {
    return false;
  }
  // A gzip stream may hold more than the header says; a plain file was measured before.
  unsigned char extra = 0;
  if (source.read(&extra, 1) != 0)
  {
    error = "trailing data after the voxel block";
    return false;
  }
  if (!source.failure.empty())
  {
    error = source.failure;
    return false;
  }
  if (source.cutShort)
  {
    error = "truncated gzip stream: it ends before its checksum";
    return false;
  }
  return true;
}

enum class ReadPart
{
  HeaderOnly,
  Everything
};

lumoIpPicDescriptor *
readPic(Source & source, ReadPart part, std::string & error)
{
  std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)> pic(lumoIpPicNew(), lumoIpPicFree);
  if (!pic)
  {
    error = "out of memory";
    return nullptr;
  }
  ReadState state;
  try
  {
    if (!readHeader(source, *pic, state, error))
    {
      return nullptr;
    }
  }
  catch (const std::bad_alloc &)
  {
    error = "out of memory";
    return nullptr;
  }
  if (part == ReadPart::Everything)
  {
    if (!lumoIpPicAllocateData(pic.get()))
    {
      error = "out of memory for a voxel block of " + std::to_string(state.dataBytes) + " bytes";
      return nullptr;
    }
    if (!readVoxels(source, pic->data, state.dataBytes, error))
    {
      return nullptr;
    }
  }
  return pic.release();
}

void
setError(std::string * error, const std::string & prefix, const std::string & text)
{
  if (error != nullptr)
  {
    *error = prefix.empty() ? text : prefix + ": " + text;
  }
}

lumoIpPicDescriptor *
readPath(const std::string & path, ReadPart part, std::string * error)
{
  OpenedFile file;
  std::string text;
  lumoIpPicDescriptor * pic = file.open(path, text) ? readPic(file.source(), part, text) : nullptr;
  if (pic == nullptr)
  {
    setError(error, path, text);
  }
  return pic;
}

// ---------------------------------------------------------------- writing

// The header and tag block of a valid descriptor, or false with the reason.
bool
encodeHeader(const lumoIpPicDescriptor * pic, std::vector<unsigned char> & out, std::string & error)
{
  if (pic == nullptr)
  {
    error = "no descriptor";
    return false;
  }
  std::uint64_t dataBytes = 0;
  if (!checkHeaderFields(static_cast<std::uint32_t>(pic->type), pic->bpe, pic->dim, pic->n, &dataBytes, error))
  {
    return false;
  }
  if (pic->data == nullptr)
  {
    error = "the descriptor has no voxel data";
    return false;
  }
  if (pic->tags.size() > lumoIpPicFileMaxTags)
  {
    error =
      "too many tags: " + std::to_string(pic->tags.size()) + " (at most " + std::to_string(lumoIpPicFileMaxTags) + ")";
    return false;
  }
  std::uint64_t tagBytes = 0;
  for (std::size_t i = 0; i < pic->tags.size(); ++i)
  {
    if (!checkTag(pic->tags, i, error))
    {
      return false;
    }
    tagBytes += tagFixedBytes + pic->tags[i].name.size() + pic->tags[i].value.size();
  }
  if (tagBytes > lumoIpPicFileMaxTagBytes)
  {
    error = "tag block of " + std::to_string(tagBytes) + " bytes exceeds the limit of " +
            std::to_string(lumoIpPicFileMaxTagBytes) + " bytes";
    return false;
  }
  out.insert(out.end(), lumoIpPicFileMagic, lumoIpPicFileMagic + sizeof(lumoIpPicFileMagic));
  putU16(out, lumoIpPicFileVersion);
  putU16(out, 0);
  putU32(out, static_cast<std::uint32_t>(pic->type));
  putU32(out, pic->bpe);
  putU32(out, pic->dim);
  for (std::uint32_t i = 0; i < pic->dim; ++i)
  {
    putU32(out, pic->n[i]);
  }
  putU32(out, static_cast<std::uint32_t>(pic->tags.size()));
  putU32(out, static_cast<std::uint32_t>(tagBytes));
  putU64(out, dataBytes);
  for (const lumoIpPicTag & tag : pic->tags)
  {
    out.push_back(static_cast<unsigned char>(tag.name.size()));
    out.insert(out.end(), tag.name.begin(), tag.name.end());
    putU32(out, static_cast<std::uint32_t>(tag.type));
    putU32(out, tag.bpe);
    putU32(out, static_cast<std::uint32_t>(tag.value.size()));
    out.insert(out.end(), tag.value.begin(), tag.value.end());
  }
  return true;
}

bool
writeAll(int fd, const void * bytes, std::size_t n, std::string & error)
{
  const auto * p = static_cast<const unsigned char *>(bytes);
  while (n > 0)
  {
    const ssize_t put = ::write(fd, p, std::min(n, ioChunk));
    if (put < 0 && errno == EINTR)
    {
      continue;
    }
    if (put <= 0)
    {
      error = "write error: " + (put < 0 ? osError() : std::string("nothing written"));
      return false;
    }
    p += put;
    n -= static_cast<std::size_t>(put);
  }
  return true;
}

bool
gzWriteAll(gzFile gz, const void * bytes, std::size_t n, std::string & error)
{
  const auto * p = static_cast<const unsigned char *>(bytes);
  while (n > 0)
  {
    const unsigned int piece = static_cast<unsigned int>(std::min(n, ioChunk));
    const int put = gzwrite(gz, p, piece);
    if (put <= 0)
    {
      int code = Z_OK;
      const std::string text = gzMessage(gz, &code);
      error = "write error: " + (code == Z_ERRNO ? osError() : text);
      return false;
    }
    p += put;
    n -= static_cast<std::size_t>(put);
  }
  return true;
}

bool
writeCompressed(int fd,
                const std::vector<unsigned char> & header,
                const void * data,
                std::size_t dataBytes,
                int level,
                std::string & error)
{
  // zlib closes the descriptor it is given; the caller still needs fd for fsync.
  const int gzFd = ::dup(fd);
  if (gzFd < 0)
  {
    error = "write error: " + osError();
    return false;
  }
  const std::string mode = "wb" + std::to_string(std::clamp(level, 1, 9));
  gzFile gz = gzdopen(gzFd, mode.c_str());
  if (gz == nullptr)
  {
    ::close(gzFd);
    error = "cannot start zlib";
    return false;
  }
  gzbuffer(gz, 1u << 17);
  bool ok = gzWriteAll(gz, header.data(), header.size(), error) && gzWriteAll(gz, data, dataBytes, error);
  errno = 0;
  const int closed = gzclose_w(gz);
  if (ok && closed != Z_OK)
  {
    error = "write error: " + (closed == Z_ERRNO && errno != 0 ? osError() : std::string("zlib could not finish"));
    ok = false;
  }
  return ok;
}

bool
endsWithGz(const std::string & path)
{
  if (path.size() < 3)
  {
    return false;
  }
  const std::string tail = path.substr(path.size() - 3);
  return tail[0] == '.' && (tail[1] == 'g' || tail[1] == 'G') && (tail[2] == 'z' || tail[2] == 'Z');
}

std::string
directoryOf(const std::string & path)
{
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos)
  {
    return ".";
  }
  return slash == 0 ? "/" : path.substr(0, slash);
}

// A new file beside the target, created exclusively so that two writers never share one. Its name is listed for
// removal on interrupts before the file exists: a signal may be handled by another thread at any moment.
int
createTemporary(const std::string & path,
                std::string & temporary,
                std::optional<lumo::TemporaryFileGuard> & guard,
                std::string & error)
{
  static std::atomic<unsigned> counter{ 0 };
  for (int attempt = 0; attempt < 100; ++attempt)
  {
    temporary = path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
    guard.emplace(temporary);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0)
    {
      return fd;
    }
    const int failure = errno;
    guard.reset();
    if (failure != EEXIST && failure != EINTR)
    {
      errno = failure;
      error = "cannot create a temporary file beside it: " + osError();
      return -1;
    }
  }
  error = "cannot create a temporary file beside it: too many left-overs";
  return -1;
}

bool
writeFile(const std::string & path, const lumoIpPicDescriptor * pic, int level, std::string & error)
{
  if (path.empty())
  {
    error = "empty file name";
    return false;
  }
  std::vector<unsigned char> header;
  try
  {
    if (!encodeHeader(pic, header, error))
    {
      return false;
    }
  }
  catch (const std::bad_alloc &)
  {
    error = "out of memory";
    return false;
  }
  const std::size_t dataBytes = lumoIpPicSize(pic);
  std::string temporary;
  std::optional<lumo::TemporaryFileGuard> guard;
  const int fd = createTemporary(path, temporary, guard, error);
  if (fd < 0)
  {
    return false;
  }
  bool ok = endsWithGz(path)
              ? writeCompressed(fd, header, pic->data, dataBytes, level, error)
              : writeAll(fd, header.data(), header.size(), error) && writeAll(fd, pic->data, dataBytes, error);
  // The rename must not reach the disk before the bytes do, or a crash could leave a short target.
  if (ok && ::fsync(fd) != 0)
  {
    error = "cannot flush to disk: " + osError();
    ok = false;
  }
  if (::close(fd) != 0 && ok)
  {
    error = "write error: " + osError();
    ok = false;
  }
  if (ok && std::rename(temporary.c_str(), path.c_str()) != 0)
  {
    error = "cannot replace the file: " + osError();
    ok = false;
  }
  if (!ok)
  {
    ::unlink(temporary.c_str());
    return false;
  }
  const int dirFd = ::open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dirFd >= 0)
  {
    ::fsync(dirFd); // best effort: makes the rename itself durable
    ::close(dirFd);
  }
  return true;
}
} // namespace

lumoIpPicDescriptor *
lumoIpPicGet(const std::string & path, std::string * error)
{
  return readPath(path, ReadPart::Everything, error);
}

lumoIpPicDescriptor *
lumoIpPicGetHeader(const std::string & path, std::string * error)
{
  return readPath(path, ReadPart::HeaderOnly, error);
}

bool
lumoIpPicGetData(const std::string & path,
                 void * buffer,
                 std::size_t bytes,
                 lumoIpPicDescriptor * header,
                 std::string * error)
{
  OpenedFile file;
  std::string text;
  std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)> pic(lumoIpPicNew(), lumoIpPicFree);
  ReadState state;
  bool ok = pic != nullptr && buffer != nullptr;
  if (!ok)
  {
    text = pic == nullptr ? "out of memory" : "no buffer";
  }
  try
  {
    ok = ok && file.open(path, text) && readHeader(file.source(), *pic, state, text);
  }
  catch (const std::bad_alloc &)
  {
    text = "out of memory";
    ok = false;
  }
  if (ok && state.dataBytes != bytes)
  {
    text =
      "the voxel block has " + std::to_string(state.dataBytes) + " bytes but the buffer has " + std::to_string(bytes);
    ok = false;
  }
  ok = ok && readVoxels(file.source(), buffer, state.dataBytes, text);
  if (ok && header != nullptr && lumoIpPicCopyHeader(pic.get(), header) == nullptr)
  {
    text = "out of memory";
    ok = false;
  }
  if (!ok)
  {
    setError(error, path, text);
  }
  return ok;
}

lumoIpPicDescriptor *
lumoIpPicGetFromMemory(const void * bytes, std::size_t size, std::string * error)
{
  const auto * p = static_cast<const unsigned char *>(bytes);
  if (p == nullptr && size > 0)
  {
    setError(error, "", "no bytes");
    return nullptr;
  }
  std::unique_ptr<Source> source;
  if (looksGzipped(p, size))
  {
    source = std::make_unique<GzMemorySource>(p, size);
  }
  else
  {
    source = std::make_unique<MemorySource>(p, size);
  }
  std::string text;
  lumoIpPicDescriptor * pic = source->failure.empty() ? readPic(*source, ReadPart::Everything, text) : nullptr;
  if (pic == nullptr)
  {
    setError(error, "", text.empty() ? source->failure : text);
  }
  return pic;
}

bool
lumoIpPicPut(const std::string & path, const lumoIpPicDescriptor * pic, std::string * error, int compressionLevel)
{
  std::string text;
  if (!writeFile(path, pic, compressionLevel, text))
  {
    setError(error, path, text);
    return false;
  }
  return true;
}

bool
lumoIpPicPutToMemory(const lumoIpPicDescriptor * pic, std::vector<unsigned char> * out, std::string * error)
{
  std::string text;
  if (out == nullptr)
  {
    setError(error, "", "no output buffer");
    return false;
  }
  try
  {
    std::vector<unsigned char> bytes;
    if (!encodeHeader(pic, bytes, text))
    {
      setError(error, "", text);
      return false;
    }
    const auto * data = static_cast<const unsigned char *>(pic->data);
    bytes.insert(bytes.end(), data, data + lumoIpPicSize(pic));
    out->insert(out->end(), bytes.begin(), bytes.end());
  }
  catch (const std::bad_alloc &)
  {
    setError(error, "", "out of memory");
    return false;
  }
  return true;
}

bool
lumoIpPicFileHasMagic(const std::string & path)
{
  OpenedFile file;
  std::string ignored;
  unsigned char lead[sizeof(lumoIpPicFileMagic)] = {};
  return file.open(path, ignored) && file.source().read(lead, sizeof(lead)) == sizeof(lead) &&
         std::memcmp(lead, lumoIpPicFileMagic, sizeof(lead)) == 0;
}
