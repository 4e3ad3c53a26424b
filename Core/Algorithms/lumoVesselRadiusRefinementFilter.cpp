#include "lumoVesselRadiusRefinementFilter.h"

#include "lumoMaskCrossSection.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumo
{
VesselRadiusRefinementFilter::VesselRadiusRefinementFilter() = default;

VesselRadiusRefinementFilter::~VesselRadiusRefinementFilter() = default;

const char *
VesselRadiusRefinementFilter::GetNameOfWhatIsRefined() const
{
  return "diameters";
}

void
VesselRadiusRefinementFilter::RefineVessel(const ArVesselTree &, ar<Vessel> & vessel, const MaskCrossSection & sections)
{
  const std::size_t n = vessel->numberOfPoints();
  if (n < 2)
  {
    return;
  }
  const double largestSpacing = sections.GetLargestSpacing();
  const double halfThickness = m_SlabHalfThickness * largestSpacing;
  std::vector<double> radii(n, -1.0);
  for (std::size_t i = 0; i < n; ++i)
  {
    const VesselPoint & a = vessel->getPoint(i == 0 ? 0 : i - 1);
    const VesselPoint & b = vessel->getPoint(i + 1 == n ? n - 1 : i + 1);
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
    const VesselPoint & p = vessel->getPoint(i);
    const double point[3] = { p.x, p.y, p.z };
    // Far enough for the wall even where the first estimate is short, near enough to leave neighbours out.
    const double reach = std::max(0.5 * std::abs(p.diameter), 0.5 * largestSpacing) + 2.0 * largestSpacing;
    const MaskCrossSection::Measure measure = sections.Across(point, t, reach, halfThickness);
    radii[i] = measure.weight > 0.0 ? measure.radius : -1.0;
  }
  const std::size_t half = std::max(1u, m_MedianWindow) / 2;
  for (std::size_t i = 0; i < n; ++i)
  {
    std::vector<double> window;
    for (std::size_t j = (i >= half ? i - half : 0); j <= std::min(n - 1, i + half); ++j)
    {
      if (radii[j] > 0.0)
      {
        window.push_back(radii[j]);
      }
    }
    if (window.empty())
    {
      continue;
    }
    std::nth_element(window.begin(), window.begin() + window.size() / 2, window.end());
    VesselPoint p = vessel->getPoint(i);
    p.diameter = static_cast<float>(2.0 * window[window.size() / 2]);
    vessel->setPoint(i, p);
  }
}

void
VesselRadiusRefinementFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "SlabHalfThickness: " << m_SlabHalfThickness << std::endl;
  os << indent << "MedianWindow: " << m_MedianWindow << std::endl;
}
} // namespace lumo
