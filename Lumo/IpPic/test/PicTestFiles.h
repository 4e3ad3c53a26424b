#ifndef PicTestFiles_h
#define PicTestFiles_h

// Helpers shared by the Pic tests: a scratch directory that cleans up after itself, a byte builder that assembles
// Pic files by hand (independently of the writer, so that hostile headers can be made), and gzip helpers.

#include <zlib.h>

#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

class ScratchDirectory
{
public:
  ScratchDirectory()
  {
    const char * base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/lumo-pic-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (::mkdtemp(name.data()) == nullptr)
    {
      ADD_FAILURE() << "cannot create a scratch directory";
    }
    m_Path = name.data();
  }

  ~ScratchDirectory() { removeTree(m_Path); }

  ScratchDirectory(const ScratchDirectory &) = delete;
  ScratchDirectory &
  operator=(const ScratchDirectory &) = delete;

  std::string
  path(const std::string & name) const
  {
    return m_Path + "/" + name;
  }

  // Names of the entries, sorted, without "." and "..".
  std::vector<std::string>
  entries() const
  {
    std::vector<std::string> names;
    if (DIR * dir = ::opendir(m_Path.c_str()))
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

private:
  static void
  removeTree(const std::string & path)
  {
    struct stat info
    {};
    if (::lstat(path.c_str(), &info) != 0)
    {
      return;
    }
    if (S_ISDIR(info.st_mode))
    {
      if (DIR * dir = ::opendir(path.c_str()))
      {
        while (const dirent * entry = ::readdir(dir))
        {
          const std::string name = entry->d_name;
          if (name != "." && name != "..")
          {
            removeTree(path + "/" + name);
          }
        }
        ::closedir(dir);
      }
      ::rmdir(path.c_str());
    }
    else
    {
      ::unlink(path.c_str());
    }
  }

  std::string m_Path;
};

inline void
writeBytes(const std::string & path, const Bytes & bytes)
{
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(out.good()) << path;
}

inline Bytes
readBytes(const std::string & path)
{
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline bool
fileExists(const std::string & path)
{
  struct stat info
  {};
  return ::stat(path.c_str(), &info) == 0;
}

// gzip-compresses bytes in memory, as the gzip tool would (one member, no file name).
inline Bytes
gzipBytes(const Bytes & plain)
{
  z_stream stream{};
  EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
  Bytes out(deflateBound(&stream, plain.size()) + 32);
  stream.next_in = const_cast<unsigned char *>(plain.data());
  stream.avail_in = static_cast<unsigned int>(plain.size());
  stream.next_out = out.data();
  stream.avail_out = static_cast<unsigned int>(out.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

inline Bytes
gunzipFile(const std::string & path)
{
  Bytes plain;
  gzFile gz = gzopen(path.c_str(), "rb");
  if (gz == nullptr)
  {
    ADD_FAILURE() << "cannot open " << path;
    return plain;
  }
  unsigned char chunk[4096];
  int got = 0;
  while ((got = gzread(gz, chunk, sizeof(chunk))) > 0)
  {
    plain.insert(plain.end(), chunk, chunk + got);
  }
  EXPECT_EQ(got, 0) << "gzread failed on " << path;
  gzclose(gz);
  return plain;
}

// Assembles a Pic file field by field. Nothing is checked: the point is to make files the writer never would.
class PicBytes
{
public:
  PicBytes &
  magic()
  {
    return raw({ 0x89, 'L', 'P', 'I', 'C', 0x0D, 0x0A, 0x1A });
  }

  PicBytes &
  u8(std::uint8_t v)
  {
    m_Bytes.push_back(v);
    return *this;
  }

  PicBytes &
  u16(std::uint16_t v)
  {
    return u8(static_cast<std::uint8_t>(v)).u8(static_cast<std::uint8_t>(v >> 8));
  }

  PicBytes &
  u32(std::uint32_t v)
  {
    return u16(static_cast<std::uint16_t>(v)).u16(static_cast<std::uint16_t>(v >> 16));
  }

  PicBytes &
  u64(std::uint64_t v)
  {
    return u32(static_cast<std::uint32_t>(v)).u32(static_cast<std::uint32_t>(v >> 32));
  }

  PicBytes &
  f64(double v)
  {
    unsigned char b[8];
    std::memcpy(b, &v, 8);
    return raw(Bytes(b, b + 8));
  }

  PicBytes &
  raw(const Bytes & bytes)
  {
    m_Bytes.insert(m_Bytes.end(), bytes.begin(), bytes.end());
    return *this;
  }

  PicBytes &
  text(const std::string & s)
  {
    return raw(Bytes(s.begin(), s.end()));
  }

  // Magic, version 1, no flags, kind, and the sizes with their count.
  PicBytes &
  header(std::uint32_t type, std::uint32_t bpe, const std::vector<std::uint32_t> & sizes)
  {
    magic().u16(1).u16(0).u32(type).u32(bpe).u32(static_cast<std::uint32_t>(sizes.size()));
    for (const std::uint32_t n : sizes)
    {
      u32(n);
    }
    return *this;
  }

  // Tag count, tag block bytes, voxel block bytes.
  PicBytes &
  counts(std::uint32_t tags, std::uint32_t tagBytes, std::uint64_t dataBytes)
  {
    return u32(tags).u32(tagBytes).u64(dataBytes);
  }

  // One tag record with a value of raw bytes.
  PicBytes &
  tag(const std::string & name, std::uint32_t type, std::uint32_t bpe, const Bytes & value)
  {
    u8(static_cast<std::uint8_t>(name.size())).text(name).u32(type).u32(bpe);
    return u32(static_cast<std::uint32_t>(value.size())).raw(value);
  }

  PicBytes &
  vectorTag(const std::string & name, double x, double y, double z)
  {
    u8(static_cast<std::uint8_t>(name.size())).text(name).u32(5).u32(64).u32(24);
    return f64(x).f64(y).f64(z);
  }

  Bytes
  bytes() const
  {
    return m_Bytes;
  }

private:
  Bytes m_Bytes;
};

#endif
