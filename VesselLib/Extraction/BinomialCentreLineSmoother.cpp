#include "BinomialCentreLineSmoother.h"

#include <algorithm>

BinomialCentreLineSmoother::BinomialCentreLineSmoother(float centreWeight)
  : m_centreWeight(std::min(1.0f, std::max(0.0f, centreWeight)))
{}

void
BinomialCentreLineSmoother::setCentreWeight(float weight)
{
  const float clamped = std::min(1.0f, std::max(0.0f, weight));
  if (clamped != m_centreWeight)
  {
    m_centreWeight = clamped;
    modified();
  }
}

void
BinomialCentreLineSmoother::smooth(Vessel::PointList & points, unsigned int iterations) const
{
  if (points.size() < 3)
  {
    return;
  }
  const float side = 0.5f * (1.0f - m_centreWeight);
  Vessel::PointList next = points;
  for (unsigned int i = 0; i < iterations; ++i)
  {
    for (std::size_t p = 1; p + 1 < points.size(); ++p)
    {
      const VesselPoint & a = points[p - 1];
      const VesselPoint & b = points[p];
      const VesselPoint & c = points[p + 1];
      next[p].x = side * a.x + m_centreWeight * b.x + side * c.x;
      next[p].y = side * a.y + m_centreWeight * b.y + side * c.y;
      next[p].z = side * a.z + m_centreWeight * b.z + side * c.z;
      next[p].diameter = side * a.diameter + m_centreWeight * b.diameter + side * c.diameter;
    }
    points.swap(next);
    next.front() = points.front();
    next.back() = points.back();
  }
}
