#include "lumoImagePayloadLimits.h"

#include "lumoFileNames.h"

#include <itkImageFileReaderException.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <vector>

namespace lumo
{
namespace
{
constexpr std::uint64_t Unbounded = std::numeric_limits<std::uint64_t>::max();

// Deflate emits at best one 258-byte match per two bits; zlib and gzip wrappers only add bytes.
constexpr std::uint64_t DeflateRatio = 1032;
// bzip2's run-length stages bound a block of 45,899,235 bytes by about one byte of output.
constexpr std::uint64_t Bzip2Ratio = 45899236;
// Above LZW's (about 2560:1 with 12-bit codes), deflate's and baseline JPEG's best ratios.
constexpr std::uint64_t CodecRatio = 4096;
// Header text read before giving up on finding its end; longer headers are not plausible.
constexpr std::uint64_t MaximumHeaderBytes = 16u << 20;
// Data files of a name pattern looked at; a pattern naming more must fill the image from these.
constexpr std::uint64_t MaximumPatternFiles = 1u << 20;

std::uint64_t
saturatingMultiply(std::uint64_t a, std::uint64_t b)
{
  if (a != 0 && b > Unbounded / a)
  {
    return Unbounded;
  }
  return a * b;
}

std::uint64_t
saturatingAdd(std::uint64_t a, std::uint64_t b)
{
  return b > Unbounded - a ? Unbounded : a + b;
}

std::uint64_t
fileSize(const std::string & path)
{
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? 0 : static_cast<std::uint64_t>(size);
}

bool
startsWithGzipMagic(const std::string & path)
{
  std::ifstream file(path, std::ios::binary);
  unsigned char magic[2] = { 0, 0 };
  file.read(reinterpret_cast<char *>(magic), 2);
  return file.gcount() == 2 && magic[0] == 0x1f && magic[1] == 0x8b;
}

// What one data file can decode to: gzip streams are recognised by their magic whatever the header says.
std::uint64_t
dataFileCapacity(const std::string & path, std::uint64_t declaredRatio)
{
  const std::uint64_t ratio = std::max(declaredRatio, startsWithGzipMagic(path) ? DeflateRatio : 1);
  return saturatingMultiply(fileSize(path), ratio);
}

std::string
trim(const std::string & text)
{
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos)
  {
    return std::string();
  }
  const auto last = text.find_last_not_of(" \t\r\n");
  return text.substr(first, last - first + 1);
}

std::string
lowerCase(std::string text)
{
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string
besideHeader(const std::string & header, const std::string & name)
{
  if (name.empty() || name.front() == '/')
  {
    return name;
  }
  const std::string folder = GetDirectoryOfPath(header);
  return folder.empty() ? name : folder + "/" + name;
}

/** The lines of a text header, bounded in size. */
std::vector<std::string>
headerLines(const std::string & path)
{
  std::vector<std::string> lines;
  std::ifstream file(path, std::ios::binary);
  std::uint64_t consumed = 0;
  std::string line;
  while (consumed < MaximumHeaderBytes && std::getline(file, line))
  {
    consumed += line.size() + 1;
    if (!line.empty() && line.back() == '\r')
    {
      line.pop_back();
    }
    lines.push_back(line);
  }
  return lines;
}

/** Sums the capacity of the data files a "<printf format> <min> <max> <step>" pattern names, relative to the header.
 *  Stops as soon as `needed` is reached. */
std::uint64_t
patternCapacity(const std::string & header, const std::string & pattern, std::uint64_t ratio, std::uint64_t needed)
{
  std::istringstream fields(pattern);
  std::string format;
  long long first = 0;
  long long last = 0;
  long long step = 0;
  if (!(fields >> format >> first >> last >> step) || step == 0 || format.find('%') == std::string::npos)
  {
    return 0;
  }
  std::uint64_t capacity = 0;
  std::uint64_t files = 0;
  for (long long index = first; (step > 0 ? index <= last : index >= last) && files < MaximumPatternFiles;
       index += step, ++files)
  {
    std::vector<char> name(format.size() + 32);
    std::snprintf(name.data(), name.size(), format.c_str(), index);
    capacity = saturatingAdd(capacity, dataFileCapacity(besideHeader(header, name.data()), ratio));
    if (capacity >= needed)
    {
      break;
    }
  }
  return capacity;
}

std::uint64_t
nrrdCapacity(const std::string & fileName, std::uint64_t needed, std::uint64_t valueBytes)
{
  // Only the header up to its empty line: attached data follows it.
  std::ifstream probe(fileName, std::ios::binary);
  std::string line;
  std::uint64_t consumed = 0;
  std::vector<std::string> listed;
  bool inList = false;
  std::string encoding = "raw";
  std::string dataFile;
  while (consumed < MaximumHeaderBytes && std::getline(probe, line))
  {
    consumed += line.size() + 1;
    if (!line.empty() && line.back() == '\r')
    {
      line.pop_back();
    }
    if (inList)
    {
      // After "data file: LIST" every further line names one data file.
      if (!line.empty())
      {
        listed.push_back(line);
      }
      continue;
    }
    if (line.empty())
    {
      break;
    }
    const auto colon = line.find(": ");
    if (line.front() == '#' || colon == std::string::npos)
    {
      continue;
    }
    const std::string key = lowerCase(trim(line.substr(0, colon)));
    const std::string value = trim(line.substr(colon + 2));
    if (key == "encoding")
    {
      encoding = lowerCase(value);
    }
    else if (key == "data file" || key == "datafile")
    {
      dataFile = value;
      inList = lowerCase(value).rfind("list", 0) == 0;
    }
  }

  std::uint64_t ratio = 1;
  if (encoding == "gzip" || encoding == "gz")
  {
    ratio = DeflateRatio;
  }
  else if (encoding == "bzip2" || encoding == "bz2")
  {
    ratio = Bzip2Ratio;
  }
  // Text: each value takes a character and a separator, each byte of hex two characters.
  auto decoded = [&](std::uint64_t fileBytes) {
    if (encoding == "ascii" || encoding == "text" || encoding == "txt")
    {
      return saturatingMultiply(fileBytes / 2 + 1, valueBytes);
    }
    if (encoding == "hex")
    {
      return fileBytes / 2;
    }
    return saturatingMultiply(fileBytes, ratio);
  };

  if (dataFile.empty())
  {
    const std::uint64_t size = fileSize(fileName);
    return decoded(size > consumed ? size - consumed : 0);
  }
  if (inList)
  {
    std::uint64_t capacity = 0;
    for (const std::string & name : listed)
    {
      capacity = saturatingAdd(capacity, decoded(fileSize(besideHeader(fileName, name))));
    }
    return capacity;
  }
  if (dataFile.find('%') != std::string::npos && dataFile.find(' ') != std::string::npos)
  {
    const bool text = encoding == "ascii" || encoding == "text" || encoding == "txt" || encoding == "hex";
    return patternCapacity(fileName, dataFile, text ? std::max<std::uint64_t>(valueBytes, 1) : ratio, needed);
  }
  return decoded(fileSize(besideHeader(fileName, dataFile)));
}

std::uint64_t
metaImageCapacity(const std::string & fileName, std::uint64_t needed)
{
  const std::vector<std::string> lines = headerLines(fileName);
  std::uint64_t ratio = 1;
  for (std::size_t i = 0; i < lines.size(); ++i)
  {
    const auto equals = lines[i].find('=');
    if (equals == std::string::npos)
    {
      continue;
    }
    const std::string key = lowerCase(trim(lines[i].substr(0, equals)));
    const std::string value = trim(lines[i].substr(equals + 1));
    if (key == "compresseddata" && lowerCase(value) == "true")
    {
      ratio = DeflateRatio;
    }
    else if (key == "elementdatafile")
    {
      // The last field: the data follow it in the same file (LOCAL), in the files listed after it (LIST), in the
      // files a pattern names, or in one named file.
      const std::string lower = lowerCase(value);
      if (lower == "local")
      {
        return dataFileCapacity(fileName, ratio);
      }
      if (lower.rfind("list", 0) == 0)
      {
        std::uint64_t capacity = 0;
        for (std::size_t j = i + 1; j < lines.size(); ++j)
        {
          if (!trim(lines[j]).empty())
          {
            capacity = saturatingAdd(capacity, dataFileCapacity(besideHeader(fileName, trim(lines[j])), ratio));
          }
        }
        return capacity;
      }
      if (value.find('%') != std::string::npos && value.find(' ') != std::string::npos)
      {
        return patternCapacity(fileName, value, ratio, needed);
      }
      return dataFileCapacity(besideHeader(fileName, value), ratio);
    }
  }
  return 0;
}

std::uint64_t
niftiCapacity(const std::string & fileName)
{
  // An Analyze-style pair keeps the voxels in the .img beside the .hdr.
  for (const auto & [header, image] :
       { std::pair<const char *, const char *>{ ".hdr.gz", ".img.gz" }, { ".hdr", ".img" } })
  {
    if (EndsWithNoCase(fileName, header))
    {
      const std::string data = fileName.substr(0, fileName.size() - std::string(header).size()) + image;
      return dataFileCapacity(data, 1);
    }
  }
  return dataFileCapacity(fileName, 1);
}

std::string
sizeText(const itk::ImageIOBase * io)
{
  std::string text;
  for (unsigned int d = 0; d < io->GetNumberOfDimensions(); ++d)
  {
    text += (d == 0 ? "" : " x ") + std::to_string(io->GetDimensions(d));
  }
  return text;
}
} // namespace

std::uint64_t
GetImagePixelBytes(const itk::ImageIOBase * io)
{
  std::uint64_t bytes = saturatingMultiply(io->GetNumberOfComponents(), io->GetComponentSize());
  for (unsigned int d = 0; d < io->GetNumberOfDimensions(); ++d)
  {
    bytes = saturatingMultiply(bytes, io->GetDimensions(d));
  }
  return bytes;
}

std::uint64_t
GetImagePayloadCapacity(const std::string & fileName, const itk::ImageIOBase * io)
{
  const std::string kind = io->GetNameOfClass();
  const std::uint64_t needed = GetImagePixelBytes(io);
  if (kind == "NrrdImageIO")
  {
    return nrrdCapacity(fileName, needed, io->GetComponentSize());
  }
  if (kind == "MetaImageIO")
  {
    return metaImageCapacity(fileName, needed);
  }
  if (kind == "NiftiImageIO")
  {
    return niftiCapacity(fileName);
  }
  if (kind == "PicImageIO")
  {
    return dataFileCapacity(fileName, 1);
  }
  return saturatingMultiply(fileSize(fileName), CodecRatio);
}

std::uint64_t
GetProcessMemoryLimit()
{
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long pageSize = ::sysconf(_SC_PAGESIZE);
  std::uint64_t limit =
    pages > 0 && pageSize > 0 ? saturatingMultiply(static_cast<std::uint64_t>(pages), pageSize) : Unbounded;
  for (const int resource : { RLIMIT_AS, RLIMIT_DATA })
  {
    struct rlimit bound;
    if (::getrlimit(resource, &bound) == 0 && bound.rlim_cur != RLIM_INFINITY)
    {
      limit = std::min<std::uint64_t>(limit, bound.rlim_cur);
    }
  }
  return limit;
}

void
CheckImagePayload(const std::string & fileName, const itk::ImageIOBase * io)
{
  const std::uint64_t needed = GetImagePixelBytes(io);
  std::string excess;
  const std::uint64_t capacity = GetImagePayloadCapacity(fileName, io);
  if (needed > capacity)
  {
    excess = "more than its data can hold (at most " + std::to_string(capacity) + " bytes)";
  }
  else
  {
    const std::uint64_t memory = GetProcessMemoryLimit();
    if (needed > memory)
    {
      excess = "more than this process can allocate (at most " + std::to_string(memory) + " bytes)";
    }
  }
  if (excess.empty())
  {
    return;
  }
  const std::size_t valueBytes = io->GetComponentSize() * io->GetNumberOfComponents();
  const std::string message = "Could not read image '" + fileName + "': the header promises " + sizeText(io) +
                              " voxels of " + std::to_string(valueBytes) + (valueBytes == 1 ? " byte" : " bytes") +
                              " (" + (needed == Unbounded ? "more than " : "") + std::to_string(needed) + " bytes), " +
                              excess;
  throw itk::ImageFileReaderException(__FILE__, __LINE__, message.c_str(), "lumo::ReadImageFile");
}
} // namespace lumo
