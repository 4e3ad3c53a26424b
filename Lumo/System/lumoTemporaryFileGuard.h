#ifndef lumoTemporaryFileGuard_h
#define lumoTemporaryFileGuard_h

#include <csignal>
#include <cstddef>
#include <string>

namespace lumo
{
/** \brief Keeps a temporary file (or a staging folder) on the list of what an interrupted process removes.
 *
 *  Writers that go through a temporary file and rename it into place leave nothing half-written when they fail,
 *  but an interrupt (SIGINT, SIGTERM, SIGHUP) ends the process without unwinding. While a guard lives, its path is
 *  on a process-wide list; once InstallSignalHandlers() has run, these signals remove the listed files, then the
 *  listed folders (empty by then when their files were listed), restore the default action and raise the signal
 *  again, so that the exit status still says the process was killed by it. The guard itself removes nothing.
 *
 *  The list has a fixed number of slots (256) and paths up to 4095 bytes, so that the handler touches no allocator;
 *  a path that does not fit is not listed (IsListed() tells). */
class TemporaryFileGuard
{
public:
  /** Lists `path` as a file (or as a folder, removed after the files) until the guard is destroyed. */
  explicit TemporaryFileGuard(const std::string & path, bool folder = false);
  ~TemporaryFileGuard();
  TemporaryFileGuard(const TemporaryFileGuard &) = delete;
  TemporaryFileGuard &
  operator=(const TemporaryFileGuard &) = delete;

  /** Whether the path got a slot. */
  bool
  IsListed() const
  {
    return m_Slot >= 0;
  }

  /** Installs the handlers of SIGINT, SIGTERM and SIGHUP, once per process whoever calls it; a signal that was
   *  ignored when this is first called stays ignored. Thread-safe. */
  static void
  InstallSignalHandlers();

  /** Holds the handled signals back while it lives (in the calling thread), for steps that must not be cut in
   *  two, such as moving a set of finished files into place; a signal that came meanwhile acts when it ends. */
  class DeferInterrupts
  {
  public:
    DeferInterrupts();
    ~DeferInterrupts();
    DeferInterrupts(const DeferInterrupts &) = delete;
    DeferInterrupts &
    operator=(const DeferInterrupts &) = delete;

  private:
    sigset_t m_Previous;
  };

  /** Number of paths listed now. */
  static std::size_t
  GetNumberOfListedPaths();

private:
  int m_Slot{ -1 };
};
} // namespace lumo

#endif
