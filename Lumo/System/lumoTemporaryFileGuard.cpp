#include "lumoTemporaryFileGuard.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>

#include <pthread.h>

#include <unistd.h>

namespace lumo
{
namespace
{
constexpr int NumberOfSlots = 256;
constexpr std::size_t MaximumPathBytes = 4096;

enum SlotState : int
{
  Free = 0,
  Claimed = 1, // being filled or emptied: the handler skips it
  File = 2,
  Folder = 3
};

// Plain static storage: the handler reads it with nothing but atomic loads and unlink/rmdir, which are
// async-signal-safe.
struct Slot
{
  std::atomic<int> state{ Free };
  char path[MaximumPathBytes];
};
Slot slots[NumberOfSlots];

constexpr int HandledSignals[] = { SIGINT, SIGTERM, SIGHUP };

extern "C" void
RemoveListedPathsAndReraise(int signalNumber)
{
  const int savedErrno = errno;
  for (const int kind : { File, Folder })
  {
    for (Slot & slot : slots)
    {
      if (slot.state.load(std::memory_order_acquire) == kind)
      {
        if (kind == File)
        {
          ::unlink(slot.path);
        }
        else
        {
          ::rmdir(slot.path);
        }
      }
    }
  }
  struct sigaction defaultAction;
  std::memset(&defaultAction, 0, sizeof(defaultAction));
  defaultAction.sa_handler = SIG_DFL;
  sigemptyset(&defaultAction.sa_mask);
  ::sigaction(signalNumber, &defaultAction, nullptr);
  errno = savedErrno;
  // Blocked while this handler runs: delivered, with the default action, as soon as it returns.
  ::raise(signalNumber);
}
} // namespace

TemporaryFileGuard::TemporaryFileGuard(const std::string & path, bool folder)
{
  if (path.empty() || path.size() >= MaximumPathBytes)
  {
    return;
  }
  for (int i = 0; i < NumberOfSlots; ++i)
  {
    int expected = Free;
    if (slots[i].state.compare_exchange_strong(expected, Claimed, std::memory_order_acq_rel))
    {
      std::memcpy(slots[i].path, path.c_str(), path.size() + 1);
      slots[i].state.store(folder ? Folder : File, std::memory_order_release);
      m_Slot = i;
      return;
    }
  }
}

TemporaryFileGuard::~TemporaryFileGuard()
{
  if (m_Slot >= 0)
  {
    slots[m_Slot].state.store(Free, std::memory_order_release);
  }
}

void
TemporaryFileGuard::InstallSignalHandlers()
{
  static std::once_flag once;
  std::call_once(once, [] {
    for (const int signalNumber : HandledSignals)
    {
      struct sigaction current;
      if (::sigaction(signalNumber, nullptr, &current) != 0 || current.sa_handler == SIG_IGN)
      {
        continue;
      }
      struct sigaction action;
      std::memset(&action, 0, sizeof(action));
      action.sa_handler = RemoveListedPathsAndReraise;
      sigemptyset(&action.sa_mask);
      for (const int other : HandledSignals)
      {
        sigaddset(&action.sa_mask, other); // one cleanup at a time
      }
      ::sigaction(signalNumber, &action, nullptr);
    }
  });
}

TemporaryFileGuard::DeferInterrupts::DeferInterrupts()
{
  sigset_t handled;
  sigemptyset(&handled);
  for (const int signalNumber : HandledSignals)
  {
    sigaddset(&handled, signalNumber);
  }
  ::pthread_sigmask(SIG_BLOCK, &handled, &m_Previous);
}

TemporaryFileGuard::DeferInterrupts::~DeferInterrupts()
{
  ::pthread_sigmask(SIG_SETMASK, &m_Previous, nullptr);
}

std::size_t
TemporaryFileGuard::GetNumberOfListedPaths()
{
  std::size_t count = 0;
  for (const Slot & slot : slots)
  {
    const int state = slot.state.load(std::memory_order_acquire);
    count += state == File || state == Folder ? 1 : 0;
  }
  return count;
}
} // namespace lumo
