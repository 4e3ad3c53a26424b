#ifndef lumoLevelWindow_h
#define lumoLevelWindow_h

#include "lumoCommon.h"

namespace lumo
{
/** Grey-value window of an image display: the current level (centre) and window (width), the default level and
 *  window (what a reset goes back to), the range of the data (what a slider may cover) and a fixed flag.
 *  A fixed level window ignores SetLevelWindow and SetWindowBounds. Values are not clamped to the range; a
 *  negative window is stored as its absolute value. Default: level 127.5, window 255, range [0, 255]. */
class LevelWindow
{
public:
  LevelWindow(ScalarType level = 127.5, ScalarType window = 255.0);

  ScalarType
  GetLevel() const
  {
    return m_Level;
  }
  ScalarType
  GetWindow() const
  {
    return m_Window;
  }
  /** level - window / 2 */
  ScalarType
  GetLowerWindowBound() const
  {
    return m_Level - m_Window / 2.0;
  }
  /** level + window / 2 */
  ScalarType
  GetUpperWindowBound() const
  {
    return m_Level + m_Window / 2.0;
  }
  void
  SetLevelWindow(ScalarType level, ScalarType window);
  /** Sets level and window from the lower and upper grey value (swapped when given the wrong way round). */
  void
  SetWindowBounds(ScalarType lower, ScalarType upper);

  ScalarType
  GetDefaultLevel() const
  {
    return m_DefaultLevel;
  }
  ScalarType
  GetDefaultWindow() const
  {
    return m_DefaultWindow;
  }
  void
  SetDefaultLevelWindow(ScalarType level, ScalarType window);
  /** Current level and window become the default ones (also when fixed). */
  void
  ResetDefaultLevelWindow();

  ScalarType
  GetRangeMin() const
  {
    return m_RangeMin;
  }
  ScalarType
  GetRangeMax() const
  {
    return m_RangeMax;
  }
  ScalarType
  GetRange() const
  {
    return m_RangeMax - m_RangeMin;
  }
  /** Swapped when given the wrong way round. */
  void
  SetRangeMinMax(ScalarType minimum, ScalarType maximum);

  bool
  IsFixed() const
  {
    return m_Fixed;
  }
  void
  SetFixed(bool fixed)
  {
    m_Fixed = fixed;
  }

  bool
  operator==(const LevelWindow & other) const;
  bool
  operator!=(const LevelWindow & other) const
  {
    return !(*this == other);
  }

private:
  ScalarType m_Level;
  ScalarType m_Window;
  ScalarType m_DefaultLevel;
  ScalarType m_DefaultWindow;
  ScalarType m_RangeMin{ 0.0 };
  ScalarType m_RangeMax{ 255.0 };
  bool m_Fixed{ false };
};
} // namespace lumo

#endif
