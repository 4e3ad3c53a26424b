// Logging, unique ids and the progress bar.

#include "lumoLogger.h"
#include "lumoProgressBar.h"
#include "lumoUIDGenerator.h"

#include <itkMacro.h>

#include <algorithm>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <random>
#include <unordered_set>
#include <unistd.h>

namespace lumo
{
// ---------------------------------------------------------------------------------------------------------------
// Logger

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

LogStream::LogStream(Logger::Level level)
  : m_Level(level)
  , m_Enabled(Logger::IsEnabled(level))
{}

LogStream::~LogStream()
{
  if (m_Enabled)
  {
    Logger::Write(m_Level, m_Stream.str());
  }
}

// ---------------------------------------------------------------------------------------------------------------
// UIDGenerator

namespace
{
std::mutex &
UIDMutex()
{
  static std::mutex mutex;
  return mutex;
}

std::unordered_set<std::string> &
IssuedUIDs()
{
  static std::unordered_set<std::string> issued;
  return issued;
}

std::mt19937_64 &
UIDEngine()
{
  static std::mt19937_64 engine = [] {
    std::random_device device;
    std::seed_seq seed{ static_cast<std::uint64_t>(device()),
                        static_cast<std::uint64_t>(device()),
                        static_cast<std::uint64_t>(
                          std::chrono::high_resolution_clock::now().time_since_epoch().count()),
                        static_cast<std::uint64_t>(::getpid()) };
    return std::mt19937_64(seed);
  }();
  return engine;
}
} // namespace

UIDGenerator::UIDGenerator(const char * prefix, unsigned int length)
  : m_Prefix(prefix ? prefix : "")
  , m_Length(length)
{
  if (length == 0)
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "UIDGenerator: the length of the random part must be > 0",
                                    "lumo::UIDGenerator::UIDGenerator");
  }
}

std::string
UIDGenerator::GetUID()
{
  static const char alphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::lock_guard<std::mutex> lock(UIDMutex());
  std::uniform_int_distribution<int> pick(0, static_cast<int>(sizeof(alphabet)) - 2);
  for (;;)
  {
    std::string uid = m_Prefix;
    uid.reserve(m_Prefix.size() + m_Length);
    for (unsigned int i = 0; i < m_Length; ++i)
    {
      uid += alphabet[pick(UIDEngine())];
    }
    if (IssuedUIDs().insert(uid).second)
    {
      return uid;
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------
// ProgressBar

namespace
{
std::mutex &
ProgressMutex()
{
  static std::mutex mutex;
  return mutex;
}
} // namespace

ProgressBar *
ProgressBar::GetInstance()
{
  static ProgressBar instance;
  return &instance;
}

void
ProgressBar::AddStepsToDo(unsigned int steps)
{
  std::lock_guard<std::mutex> lock(ProgressMutex());
  m_TotalSteps += steps;
  this->Draw();
}

void
ProgressBar::Progress(unsigned int steps)
{
  std::lock_guard<std::mutex> lock(ProgressMutex());
  m_StepsDone = std::min(m_TotalSteps, m_StepsDone + steps);
  this->Draw();
  if (m_TotalSteps > 0 && m_StepsDone >= m_TotalSteps)
  {
    // All announced work is done: finish the line and start again.
    if (m_LineOpen)
    {
      std::fputc('\n', stderr);
      std::fflush(stderr);
      m_LineOpen = false;
    }
    m_TotalSteps = 0;
    m_StepsDone = 0;
    m_LastPercent = -1;
  }
}

void
ProgressBar::Reset()
{
  std::lock_guard<std::mutex> lock(ProgressMutex());
  if (m_LineOpen)
  {
    std::fputc('\n', stderr);
    std::fflush(stderr);
    m_LineOpen = false;
  }
  m_TotalSteps = 0;
  m_StepsDone = 0;
  m_LastPercent = -1;
}

void
ProgressBar::SetQuiet(bool quiet)
{
  std::lock_guard<std::mutex> lock(ProgressMutex());
  m_Quiet = quiet;
}

bool
ProgressBar::GetQuiet() const
{
  return m_Quiet;
}

bool
ProgressBar::IsDrawing() const
{
  return !m_Quiet && ::isatty(STDERR_FILENO) == 1;
}

unsigned int
ProgressBar::GetTotalSteps() const
{
  return m_TotalSteps;
}

unsigned int
ProgressBar::GetStepsDone() const
{
  return m_StepsDone;
}

void
ProgressBar::Draw()
{
  if (!this->IsDrawing() || m_TotalSteps == 0)
  {
    return;
  }
  const int percent = static_cast<int>((100.0 * m_StepsDone) / m_TotalSteps);
  if (percent == m_LastPercent)
  {
    return;
  }
  m_LastPercent = percent;
  constexpr int width = 40;
  const int filled = percent * width / 100;
  char line[width + 16];
  int pos = 0;
  line[pos++] = '\r';
  line[pos++] = '[';
  for (int i = 0; i < width; ++i)
  {
    line[pos++] = i < filled ? '#' : '.';
  }
  pos += std::snprintf(line + pos, sizeof(line) - pos, "] %3d%%", percent);
  std::fwrite(line, 1, pos, stderr);
  std::fflush(stderr);
  m_LineOpen = true;
}
} // namespace lumo
