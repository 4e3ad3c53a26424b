#ifndef CentreLineSmoother_h
#define CentreLineSmoother_h

#include "Vessel.h"

#include <cstdint>

/** Base of the algorithms that smooth one centre line (positions and diameters). Smoothers keep the first and the
 *  last point as they are, so that smoothed branches stay attached to their parents. The modification count goes
 *  up with every parameter change, so that a filter holding a smoother can tell that its result is stale. */
class CentreLineSmoother
{
public:
  CentreLineSmoother() = default;
  CentreLineSmoother(const CentreLineSmoother &) = delete;
  CentreLineSmoother &
  operator=(const CentreLineSmoother &) = delete;
  virtual ~CentreLineSmoother() = default;

  /** Smooths the points in place, `iterations` times. */
  virtual void
  smooth(Vessel::PointList & points, unsigned int iterations) const = 0;

  std::uint64_t
  getModificationCount() const
  {
    return m_modificationCount;
  }

protected:
  void
  modified()
  {
    ++m_modificationCount;
  }

private:
  std::uint64_t m_modificationCount{ 0 };
};

#endif
