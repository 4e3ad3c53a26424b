// The process-wide progress indicator.

#include "lumoProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <unistd.h>

namespace lumo
{
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
