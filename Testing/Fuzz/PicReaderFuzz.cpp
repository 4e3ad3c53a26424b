// libFuzzer entry for the Pic reader. Every input goes through the memory reader and, written to a scratch file,
// through the file reader; both must accept or refuse it alike, and for plain input with the same reason (zlib's file
// reader inflates ahead, so for gzip input it may meet a damaged checksum before the header's own fault). An accepted
// file must be canonical: writing it again gives the same bytes (after decompression for gzip input) and reading those
// gives the same descriptor.

#include "lumoIpPicFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{
// A failed invariant must look like a crash to the fuzzer.
void
require(bool condition)
{
  if (!condition)
  {
    std::abort();
  }
}

// One scratch file per process, rewritten for every input. It lives in memory and has no name on disk, so nothing is
// left behind however the process ends; the file reader opens it through /proc.
int
scratchFile()
{
  static const int fd = ::memfd_create("pic-fuzz", MFD_CLOEXEC);
  require(fd >= 0);
  return fd;
}

const std::string &
scratchPath()
{
  static const std::string path = "/proc/self/fd/" + std::to_string(scratchFile());
  return path;
}

void
writeScratch(const std::uint8_t * data, std::size_t size)
{
  const int fd = scratchFile();
  require(::ftruncate(fd, 0) == 0);
  std::size_t done = 0;
  while (done < size)
  {
    const ssize_t put = ::pwrite(fd, data + done, size - done, static_cast<off_t>(done));
    require(put > 0);
    done += static_cast<std::size_t>(put);
  }
}

bool
sameDescriptor(const lumoIpPicDescriptor * a, const lumoIpPicDescriptor * b)
{
  if (a->type != b->type || a->bpe != b->bpe || a->dim != b->dim || a->tags.size() != b->tags.size())
  {
    return false;
  }
  for (std::uint32_t i = 0; i < a->dim; ++i)
  {
    if (a->n[i] != b->n[i])
    {
      return false;
    }
  }
  for (std::size_t i = 0; i < a->tags.size(); ++i)
  {
    const lumoIpPicTag & s = a->tags[i];
    const lumoIpPicTag & t = b->tags[i];
    if (s.name != t.name || s.type != t.type || s.bpe != t.bpe || s.value != t.value)
    {
      return false;
    }
  }
  return std::memcmp(a->data, b->data, lumoIpPicSize(a)) == 0;
}
} // namespace

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  std::string error;
  lumoIpPicDescriptor * pic = lumoIpPicGetFromMemory(data, size, &error);

  writeScratch(data, size);
  std::string fileError;
  lumoIpPicDescriptor * fromFile = lumoIpPicGet(scratchPath(), &fileError);
  require((pic == nullptr) == (fromFile == nullptr));
  const bool gzipped = size >= 2 && data[0] == 0x1f && data[1] == 0x8b;

  if (pic == nullptr)
  {
    // Every refusal says why.
    require(!error.empty() && !fileError.empty());
    require(gzipped || fileError == scratchPath() + ": " + error);
    return 0;
  }
  require(error.empty() && fileError.empty());
  require(lumoIpPicHeaderIsValid(pic) && pic->data != nullptr && lumoIpPicSize(pic) > 0);
  require(sameDescriptor(pic, fromFile));
  lumoIpPicFree(fromFile);

  std::vector<unsigned char> again;
  require(lumoIpPicPutToMemory(pic, &again, &error));
  if (!gzipped)
  {
    require(again.size() == size && std::memcmp(again.data(), data, size) == 0);
  }
  lumoIpPicDescriptor * reread = lumoIpPicGetFromMemory(again.data(), again.size(), &error);
  require(reread != nullptr && sameDescriptor(pic, reread));
  lumoIpPicFree(reread);
  lumoIpPicFree(pic);
  return 0;
}
