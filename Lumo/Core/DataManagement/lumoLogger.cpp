// The toolkit's logging.

#include "lumoLogger.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace lumo
{
namespace
{
std::atomic<int> g_LogLevel{ static_cast<int>(Logger::Level::Info) };

std::mutex &
LogMutex()
{
  static std::mutex mutex;
  return mutex;
}

Logger::Sink &
LogSink()
{
  static Logger::Sink sink;
  return sink;
}
} // namespace

void
Logger::SetLevel(Level minimum)
{
  g_LogLevel = static_cast<int>(minimum);
}

Logger::Level
Logger::GetLevel()
{
  return static_cast<Level>(g_LogLevel.load());
}

void
Logger::SetSink(Sink sink)
{
  std::lock_guard<std::mutex> lock(LogMutex());
  LogSink() = std::move(sink);
}

bool
Logger::IsEnabled(Level level)
{
  return static_cast<int>(level) >= g_LogLevel.load();
}

const char *
Logger::GetLevelName(Level level)
{
  switch (level)
  {
    case Level::Info:
      return "info";
    case Level::Warning:
      return "warning";
    case Level::Error:
      return "error";
  }
  return "unknown";
}

std::string
Logger::FormatLine(Level level, const std::string & message)
{
  return std::string("[") + GetLevelName(level) + "] " + message;
}

void
Logger::Write(Level level, const std::string & message)
{
  if (!IsEnabled(level))
  {
    return;
  }
  Sink sink;
  {
    std::lock_guard<std::mutex> lock(LogMutex());
    sink = LogSink();
  }
  if (sink)
  {
    // Called without the lock held: a sink may log itself.
    sink(level, message);
    return;
  }
  const std::string line = FormatLine(level, message) + "\n";
  std::lock_guard<std::mutex> lock(LogMutex());
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}
} // namespace lumo
