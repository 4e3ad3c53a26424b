#include "lumoVesselCentreLineRefinementFilter.h"

#include "lumoMaskCrossSection.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumo
{
namespace
{
/** Which ends of a vessel are free: the first point of the root and the last point of a terminal vessel. Other
 *  ends are branchings, shared with the parent or the children. */
struct FreeEnds
{
  bool first{ false };
  bool last{ false };
};

/** The points of one vessel moved to the centroids of their cross-sections, a round at a time. A cross-section at a
 *  free end is a cap, not a disc, so the end makes the move of its neighbour. */
Vessel::PointList
centred(const Vessel::PointList & points,
        FreeEnds ends,
        const MaskCrossSection & sections,
        unsigned int rounds,
        double halfThickness,
        double margin,
        double longest,
        double ratio)
{
  const std::size_t n = points.size();
  Vessel::PointList current = points;
  if (n < 3)
  {
    return current;
  }
  std::vector<float> diameters;
  diameters.reserve(n);
  for (const VesselPoint & p : points)
  {
    diameters.push_back(std::abs(p.diameter));
  }
  std::nth_element(diameters.begin(), diameters.begin() + n / 2, diameters.end());
  const double widest = ratio * 0.5 * diameters[n / 2];
  const double fine = sections.GetLargestSpacing();
  for (unsigned int round = 0; round < rounds; ++round)
  {
    Vessel::PointList next = current;
    for (std::size_t i = 1; i + 1 < n; ++i)
    {
      // The direction over two points on either side: thinning makes single steps jagged.
      const VesselPoint & a = current[i >= 2 ? i - 2 : 0];
      const VesselPoint & b = current[std::min(n - 1, i + 2)];
      double t[3] = { double(b.x) - a.x, double(b.y) - a.y, double(b.z) - a.z };
      const double length = std::sqrt(t[0] * t[0] + t[1] * t[1] + t[2] * t[2]);
      if (length <= 0.0)
      {
        continue;
      }
      for (double & c : t)
      {
        c /= length;
      }
      const VesselPoint & p = current[i];
      const double point[3] = { p.x, p.y, p.z };
      const double reach = std::max(0.5 * std::abs(p.diameter), 0.5 * fine) + margin;
      const MaskCrossSection::Measure measure = sections.Across(point, t, reach, halfThickness);
      if (measure.weight <= 0.0 || measure.radius > widest)
      {
        continue;
      }
      double shift[3] = { measure.offset[0], measure.offset[1], measure.offset[2] };
      const double norm = std::sqrt(shift[0] * shift[0] + shift[1] * shift[1] + shift[2] * shift[2]);
      if (norm > longest)
      {
        for (double & c : shift)
        {
          c *= longest / norm;
        }
      }
      next[i].x = static_cast<float>(p.x + shift[0]);
      next[i].y = static_cast<float>(p.y + shift[1]);
      next[i].z = static_cast<float>(p.z + shift[2]);
    }
    const auto follow = [&](std::size_t end, std::size_t neighbour) {
      next[end].x += next[neighbour].x - current[neighbour].x;
      next[end].y += next[neighbour].y - current[neighbour].y;
      next[end].z += next[neighbour].z - current[neighbour].z;
    };
    if (ends.first)
    {
      follow(0, 1);
    }
    if (ends.last)
    {
      follow(n - 1, n - 2);
    }
    current = std::move(next);
  }
  return current;
}

/** Passes of the (1/4, 1/2, 1/4) average over the interior points; the ends stay. */
void
smoothed(Vessel::PointList & points, unsigned int passes)
{
  const std::size_t n = points.size();
  for (unsigned int pass = 0; pass < passes && n >= 3; ++pass)
  {
    const Vessel::PointList before = points;
    for (std::size_t i = 1; i + 1 < n; ++i)
    {
      points[i].x = 0.25f * before[i - 1].x + 0.5f * before[i].x + 0.25f * before[i + 1].x;
      points[i].y = 0.25f * before[i - 1].y + 0.5f * before[i].y + 0.25f * before[i + 1].y;
      points[i].z = 0.25f * before[i - 1].z + 0.5f * before[i].z + 0.25f * before[i + 1].z;
    }
  }
}
} // namespace

VesselCentreLineRefinementFilter::VesselCentreLineRefinementFilter() = default;

VesselCentreLineRefinementFilter::~VesselCentreLineRefinementFilter() = default;

const char *
VesselCentreLineRefinementFilter::GetNameOfWhatIsRefined() const
{
  return "centre lines";
}

void
VesselCentreLineRefinementFilter::RefineVessel(const ArVesselTree & tree,
                                               ar<Vessel> & vessel,
                                               const MaskCrossSection & sections)
{
  if (vessel->numberOfPoints() < 3)
  {
    return;
  }
  const double fine = sections.GetLargestSpacing();
  FreeEnds ends;
  ends.first = vessel == tree->getRoot();
  ends.last = tree->isLeaf(vessel);
  Vessel::PointList points = centred(vessel->getPoints(),
                                     ends,
                                     sections,
                                     m_NumberOfIterations,
                                     m_SlabHalfThickness * fine,
                                     m_ReachMargin * fine,
                                     m_MaximumShift * fine,
                                     m_MaximumRadiusRatio);
  smoothed(points, m_NumberOfSmoothingIterations);
  vessel->setPoints(std::move(points));
}

void
VesselCentreLineRefinementFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "NumberOfIterations: " << m_NumberOfIterations << std::endl;
  os << indent << "SlabHalfThickness: " << m_SlabHalfThickness << std::endl;
  os << indent << "ReachMargin: " << m_ReachMargin << std::endl;
  os << indent << "MaximumShift: " << m_MaximumShift << std::endl;
  os << indent << "MaximumRadiusRatio: " << m_MaximumRadiusRatio << std::endl;
  os << indent << "NumberOfSmoothingIterations: " << m_NumberOfSmoothingIterations << std::endl;
}
} // namespace lumo
