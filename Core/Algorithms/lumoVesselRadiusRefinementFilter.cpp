#include "lumoVesselRadiusRefinementFilter.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumo
{
namespace
{
/** World and index frames of the mask: world = origin + D S index, with D orthonormal. */
struct MaskFrame
{
  const unsigned char * voxels{ nullptr };
  long size[3]{ 0, 0, 0 };
  double spacing[3]{ 1, 1, 1 };
  double origin[3]{ 0, 0, 0 };
  double direction[3][3]{ { 1, 0, 0 }, { 0, 1, 0 }, { 0, 0, 1 } };

  void
  toWorld(const double index[3], double world[3]) const
  {
    for (int r = 0; r < 3; ++r)
    {
      world[r] = origin[r];
      for (int c = 0; c < 3; ++c)
      {
        world[r] += direction[r][c] * spacing[c] * index[c];
      }
    }
  }
  void
  toIndex(const double world[3], double index[3]) const
  {
    for (int c = 0; c < 3; ++c)
    {
      double sum = 0.0;
      for (int r = 0; r < 3; ++r)
      {
        sum += direction[r][c] * (world[r] - origin[r]);
      }
      index[c] = sum / spacing[c];
    }
  }
};

/** Radius of the cross-section of the mask at p across the unit direction t; negative when the slab is empty. */
double
crossSectionRadius(const MaskFrame & frame, const double p[3], const double t[3], double reach, double halfThickness)
{
  double centre[3];
  frame.toIndex(p, centre);
  const double extent = std::sqrt(reach * reach + halfThickness * halfThickness);
  long low[3];
  long high[3];
  for (int a = 0; a < 3; ++a)
  {
    low[a] = std::max<long>(0, static_cast<long>(std::floor(centre[a] - extent / frame.spacing[a])));
    high[a] = std::min<long>(frame.size[a] - 1, static_cast<long>(std::ceil(centre[a] + extent / frame.spacing[a])));
  }
  // Voxels are weighted by a tent along the axis (1 at the point, 0 at the slab's faces): the tent's sum over a
  // lattice hardly depends on how the lattice planes fall, where a hard-edged slab counts whole planes or none.
  double weight = 0.0;
  for (long z = low[2]; z <= high[2]; ++z)
  {
    for (long y = low[1]; y <= high[1]; ++y)
    {
      const unsigned char * row = frame.voxels + (z * frame.size[1] + y) * frame.size[0];
      for (long x = low[0]; x <= high[0]; ++x)
      {
        if (row[x] == 0)
        {
          continue;
        }
        const double index[3] = { static_cast<double>(x), static_cast<double>(y), static_cast<double>(z) };
        double q[3];
        frame.toWorld(index, q);
        const double d[3] = { q[0] - p[0], q[1] - p[1], q[2] - p[2] };
        const double axial = d[0] * t[0] + d[1] * t[1] + d[2] * t[2];
        if (std::abs(axial) >= halfThickness)
        {
          continue;
        }
        const double radial2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2] - axial * axial;
        if (radial2 <= reach * reach)
        {
          weight += 1.0 - std::abs(axial) / halfThickness;
        }
      }
    }
  }
  if (weight <= 0.0)
  {
    return -1.0;
  }
  const double voxelVolume = frame.spacing[0] * frame.spacing[1] * frame.spacing[2];
  const double area = weight * voxelVolume / halfThickness;
  return std::sqrt(area / M_PI);
}
} // namespace

VesselRadiusRefinementFilter::VesselRadiusRefinementFilter()
{
  this->SetNumberOfRequiredInputs(2);
}

VesselRadiusRefinementFilter::~VesselRadiusRefinementFilter() = default;

void
VesselRadiusRefinementFilter::SetMask(const Image * mask)
{
  this->SetNthInput(1, const_cast<Image *>(mask));
}

const Image *
VesselRadiusRefinementFilter::GetMask()
{
  return dynamic_cast<const Image *>(this->ProcessObject::GetInput(1));
}

void
VesselRadiusRefinementFilter::GenerateData()
{
  const VesselTreeData * input = this->GetInput();
  const Image * mask = this->GetMask();
  if (input == nullptr || mask == nullptr)
  {
    itkWarningMacro("a vessel tree and a mask are needed");
    return;
  }
  if (mask->GetPixelType() != itk::IOComponentEnum::UCHAR || mask->GetDimension() != 3 || mask->GetData() == nullptr)
  {
    itkWarningMacro("the mask must be a 3-D unsigned 8-bit image; diameters are kept");
    this->GetOutput()->Graft(input);
    return;
  }
  MaskFrame frame;
  frame.voxels = static_cast<const unsigned char *>(mask->GetData());
  const Vector3D spacing = mask->GetSpacing();
  const Point3D origin = mask->GetOrigin();
  const auto direction = mask->GetDirection();
  for (unsigned int a = 0; a < 3; ++a)
  {
    frame.size[a] = mask->GetDimension(a);
    frame.spacing[a] = spacing[a];
    frame.origin[a] = origin[a];
    for (unsigned int c = 0; c < 3; ++c)
    {
      frame.direction[a][c] = direction[a][c];
    }
  }
  const double largestSpacing = std::max({ frame.spacing[0], frame.spacing[1], frame.spacing[2] });
  const double halfThickness = m_SlabHalfThickness * largestSpacing;

  ArVesselTree tree = cloneVesselTree(input->GetVesselTreeData(0));
  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      const std::size_t n = vessel.isNull() ? 0 : vessel->numberOfPoints();
      if (n < 2)
      {
        continue;
      }
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
        radii[i] = crossSectionRadius(frame, point, t, reach, halfThickness);
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
  }
  VesselTreeData * output = this->GetOutput();
  output->SetVesselTreeData(tree, 0);
}

void
VesselRadiusRefinementFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "SlabHalfThickness: " << m_SlabHalfThickness << std::endl;
  os << indent << "MedianWindow: " << m_MedianWindow << std::endl;
}
} // namespace lumo
