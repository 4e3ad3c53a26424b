// The grey-value window of image displays.

#include "lumoLevelWindow.h"

#include <cmath>

namespace lumo
{
LevelWindow::LevelWindow(ScalarType level, ScalarType window)
  : m_Level(level)
  , m_Window(std::abs(window))
  , m_DefaultLevel(level)
  , m_DefaultWindow(std::abs(window))
{}

void
LevelWindow::SetLevelWindow(ScalarType level, ScalarType window)
{
  if (m_Fixed)
  {
    return;
  }
  m_Level = level;
  m_Window = std::abs(window);
}

void
LevelWindow::SetWindowBounds(ScalarType lower, ScalarType upper)
{
  if (lower > upper)
  {
    std::swap(lower, upper);
  }
  this->SetLevelWindow((lower + upper) / 2.0, upper - lower);
}

void
LevelWindow::SetDefaultLevelWindow(ScalarType level, ScalarType window)
{
  m_DefaultLevel = level;
  m_DefaultWindow = std::abs(window);
}

void
LevelWindow::ResetDefaultLevelWindow()
{
  m_DefaultLevel = m_Level;
  m_DefaultWindow = m_Window;
}

void
LevelWindow::SetRangeMinMax(ScalarType minimum, ScalarType maximum)
{
  if (minimum > maximum)
  {
    std::swap(minimum, maximum);
  }
  m_RangeMin = minimum;
  m_RangeMax = maximum;
}

bool
LevelWindow::operator==(const LevelWindow & other) const
{
  return m_Level == other.m_Level && m_Window == other.m_Window && m_DefaultLevel == other.m_DefaultLevel &&
         m_DefaultWindow == other.m_DefaultWindow && m_RangeMin == other.m_RangeMin && m_RangeMax == other.m_RangeMax &&
         m_Fixed == other.m_Fixed;
}
} // namespace lumo
