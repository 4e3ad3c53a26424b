#ifndef FuzzSupport_h
#define FuzzSupport_h
// Helpers shared by the fuzz entries. Every entry defines LLVMFuzzerTestOneInput and lumoFuzzAccepts; the latter says
// whether the reader under test accepts an input, so that the replay test can check what the seed names promise.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include <tinyxml2.h>

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size);

/** Whether the reader of the target accepts the input (the fuzz entry's own checks are not made). */
bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size);

namespace lumofuzz
{
/** A failed invariant must look like a crash to the fuzzer. */
inline void
require(bool condition)
{
  if (!condition)
  {
    std::abort();
  }
}

inline bool
startsWith(const std::string & text, const std::string & prefix)
{
  return text.compare(0, prefix.size(), prefix) == 0;
}

/** One anonymous in-memory file per process, rewritten for every input: nothing is left on disk however the process
 *  ends. Readers open it by its /proc path. */
class ScratchFile
{
public:
  explicit ScratchFile(const char * name)
    : m_Descriptor(::memfd_create(name, MFD_CLOEXEC))
  {
    require(m_Descriptor >= 0);
    m_Path = "/proc/self/fd/" + std::to_string(m_Descriptor);
  }

  const std::string &
  Path() const
  {
    return m_Path;
  }

  void
  Write(const std::uint8_t * data, std::size_t size) const
  {
    require(::ftruncate(m_Descriptor, 0) == 0);
    std::size_t done = 0;
    while (done < size)
    {
      const ssize_t put = ::pwrite(m_Descriptor, data + done, size - done, static_cast<off_t>(done));
      require(put > 0);
      done += static_cast<std::size_t>(put);
    }
  }

private:
  int m_Descriptor;
  std::string m_Path;
};

/** A folder of its own under the temporary directory, made on first use and removed when the process exits
 *  normally (libFuzzer exits through exit() when a run ends; a crashed run leaves it for the reproducer). */
class ScratchFolder
{
public:
  ScratchFolder()
  {
    std::string pattern = (std::filesystem::temp_directory_path() / "lumo-fuzz-XXXXXX").string();
    require(::mkdtemp(pattern.data()) != nullptr);
    m_Path = pattern;
  }
  ~ScratchFolder()
  {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
  }
  ScratchFolder(const ScratchFolder &) = delete;
  ScratchFolder &
  operator=(const ScratchFolder &) = delete;

  const std::filesystem::path &
  Path() const
  {
    return m_Path;
  }

private:
  std::filesystem::path m_Path;
};
/** The text tinyxml2 prints for the element that `make(document)` builds in a fresh document: the writers' form,
 *  compared by the round-trip checks. */
template <typename Make>
std::string
printedXml(Make make)
{
  tinyxml2::XMLDocument document;
  document.InsertEndChild(make(document));
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  return printer.CStr();
}
} // namespace lumofuzz

#endif
