#include "arboPhantomDegradation.h"

#include "lumoImageAccess.h"
#include "lumoLiverPhantomSource.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace arbo
{
namespace
{
using MaskType = itk::Image<unsigned char, 3>;
using PointType = itk::Point<double, 3>;

struct CentrePoint
{
  PointType p;
  double radius;
};

std::vector<CentrePoint>
centrePoints(const ArVesselTree & tree)
{
  std::vector<CentrePoint> points;
  if (tree.isNull())
  {
    return points;
  }
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull())
    {
      continue;
    }
    for (const VesselPoint & v : vessel->getPoints())
    {
      PointType p;
      p[0] = v.x;
      p[1] = v.y;
      p[2] = v.z;
      points.push_back({ p, 0.5 * v.diameter });
    }
  }
  return points;
}

/** Sets every voxel whose centre lies within `radius` of the segment a-b to `value`. */
void
drawTube(MaskType * mask, const PointType & a, const PointType & b, double radius, unsigned char value)
{
  const MaskType::SizeType size = mask->GetLargestPossibleRegion().GetSize();
  itk::ContinuousIndex<double, 3> ia;
  itk::ContinuousIndex<double, 3> ib;
  mask->TransformPhysicalPointToContinuousIndex(a, ia);
  mask->TransformPhysicalPointToContinuousIndex(b, ib);
  const MaskType::SpacingType spacing = mask->GetSpacing();
  long low[3];
  long high[3];
  for (unsigned int d = 0; d < 3; ++d)
  {
    const double reach = radius / spacing[d] + 1.0;
    low[d] = std::max(0L, static_cast<long>(std::floor(std::min(ia[d], ib[d]) - reach)));
    high[d] = std::min(static_cast<long>(size[d]) - 1, static_cast<long>(std::ceil(std::max(ia[d], ib[d]) + reach)));
  }
  const itk::Vector<double, 3> ab = b - a;
  const double length2 = ab.GetSquaredNorm();
  for (long z = low[2]; z <= high[2]; ++z)
    for (long y = low[1]; y <= high[1]; ++y)
      for (long x = low[0]; x <= high[0]; ++x)
      {
        const MaskType::IndexType index{ { x, y, z } };
        PointType p;
        mask->TransformIndexToPhysicalPoint(index, p);
        const double t = length2 > 0.0 ? std::clamp((p - a) * ab / length2, 0.0, 1.0) : 0.0;
        if (p.SquaredEuclideanDistanceTo(a + ab * t) <= radius * radius)
        {
          mask->SetPixel(index, value);
        }
      }
}

/** Whether any mask voxel lies within `reach` of the point. */
bool
near(const MaskType * mask, const PointType & p, double reach)
{
  const MaskType::SizeType size = mask->GetLargestPossibleRegion().GetSize();
  itk::ContinuousIndex<double, 3> c;
  mask->TransformPhysicalPointToContinuousIndex(p, c);
  const MaskType::SpacingType spacing = mask->GetSpacing();
  long low[3];
  long high[3];
  for (unsigned int d = 0; d < 3; ++d)
  {
    low[d] = std::max(0L, static_cast<long>(std::floor(c[d] - reach / spacing[d])));
    high[d] = std::min(static_cast<long>(size[d]) - 1, static_cast<long>(std::ceil(c[d] + reach / spacing[d])));
  }
  for (long z = low[2]; z <= high[2]; ++z)
    for (long y = low[1]; y <= high[1]; ++y)
      for (long x = low[0]; x <= high[0]; ++x)
      {
        const MaskType::IndexType index{ { x, y, z } };
        PointType q;
        mask->TransformIndexToPhysicalPoint(index, q);
        if (mask->GetPixel(index) != 0 && q.SquaredEuclideanDistanceTo(p) <= reach * reach)
        {
          return true;
        }
      }
  return false;
}

void
addTouching(MaskType * portal,
            MaskType * hepatic,
            const std::vector<CentrePoint> & portalPoints,
            const std::vector<CentrePoint> & hepaticPoints,
            unsigned int count)
{
  struct Pair
  {
    double gap;
    std::size_t p;
    std::size_t h;
  };
  std::vector<Pair> pairs;
  for (std::size_t i = 0; i < portalPoints.size(); ++i)
  {
    for (std::size_t j = 0; j < hepaticPoints.size(); ++j)
    {
      const double d = portalPoints[i].p.EuclideanDistanceTo(hepaticPoints[j].p);
      const double gap = d - portalPoints[i].radius - hepaticPoints[j].radius;
      if (gap > 0.0 && gap < 10.0 && std::min(portalPoints[i].radius, hepaticPoints[j].radius) >= 2.0)
      {
        pairs.push_back({ gap, i, j });
      }
    }
  }
  std::sort(pairs.begin(), pairs.end(), [](const Pair & a, const Pair & b) {
    return a.gap < b.gap || (a.gap == b.gap && (a.p < b.p || (a.p == b.p && a.h < b.h)));
  });
  std::vector<PointType> chosen;
  for (const Pair & pair : pairs)
  {
    if (chosen.size() >= count)
    {
      break;
    }
    const CentrePoint & a = portalPoints[pair.p];
    const CentrePoint & b = hepaticPoints[pair.h];
    if (std::any_of(
          chosen.begin(), chosen.end(), [&](const PointType & c) { return c.EuclideanDistanceTo(a.p) < 20.0; }))
    {
      continue;
    }
    chosen.push_back(a.p);
    const double bridge = 0.5 * std::min(a.radius, b.radius);
    drawTube(portal, a.p, b.p, bridge, 1);
    drawTube(portal, b.p, b.p, b.radius, 1);
    drawTube(hepatic, b.p, a.p, bridge, 1);
    drawTube(hepatic, a.p, a.p, a.radius, 1);
  }
}

void
addHoles(MaskType * mask, const std::vector<CentrePoint> & points, unsigned int count, std::mt19937_64 & random)
{
  std::vector<CentrePoint> thick;
  std::copy_if(
    points.begin(), points.end(), std::back_inserter(thick), [](const CentrePoint & c) { return c.radius >= 1.5; });
  if (thick.empty())
  {
    return;
  }
  const MaskType::SpacingType spacing = mask->GetSpacing();
  const double voxel = std::min({ spacing[0], spacing[1], spacing[2] });
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  for (unsigned int n = 0; n < count; ++n)
  {
    const CentrePoint & c = thick[std::uniform_int_distribution<std::size_t>(0, thick.size() - 1)(random)];
    PointType centre = c.p;
    for (unsigned int d = 0; d < 3; ++d)
    {
      centre[d] += 0.3 * c.radius * unit(random);
    }
    drawTube(mask, centre, centre, std::max(0.5 * voxel, 0.3 * c.radius), 0);
  }
}

void
addFragments(MaskType * mask,
             const MaskType * other,
             const MaskType * organ,
             unsigned int count,
             std::mt19937_64 & random)
{
  const MaskType::SizeType size = organ->GetLargestPossibleRegion().GetSize();
  std::uniform_int_distribution<long> along[3] = { std::uniform_int_distribution<long>(0, size[0] - 1),
                                                   std::uniform_int_distribution<long>(0, size[1] - 1),
                                                   std::uniform_int_distribution<long>(0, size[2] - 1) };
  std::uniform_real_distribution<double> radii(1.0, 2.5);
  unsigned int made = 0;
  for (unsigned int attempt = 0; attempt < 1000 * count && made < count; ++attempt)
  {
    const MaskType::IndexType index{ { along[0](random), along[1](random), along[2](random) } };
    const double radius = radii(random);
    PointType p;
    organ->TransformIndexToPhysicalPoint(index, p);
    if (lumo::LiverPhantomSource::EvaluateOrgan(p[0], p[1], p[2]) > -(radius + 3.0) || near(mask, p, radius + 5.0) ||
        near(other, p, radius + 5.0))
    {
      continue;
    }
    drawTube(mask, p, p, radius, 1);
    ++made;
  }
}

void
addNoise(MaskType * mask, double percent, std::mt19937_64 & random)
{
  const MaskType::SizeType size = mask->GetLargestPossibleRegion().GetSize();
  const std::size_t sx = size[0];
  const std::size_t sxy = size[0] * size[1];
  const unsigned char * data = mask->GetBufferPointer();
  std::vector<std::size_t> boundary;
  for (std::size_t z = 0; z < size[2]; ++z)
    for (std::size_t y = 0; y < size[1]; ++y)
      for (std::size_t x = 0; x < size[0]; ++x)
      {
        const std::size_t i = z * sxy + y * sx + x;
        const unsigned char v = data[i];
        const bool differs = (x > 0 && data[i - 1] != v) || (x + 1 < size[0] && data[i + 1] != v) ||
                             (y > 0 && data[i - sx] != v) || (y + 1 < size[1] && data[i + sx] != v) ||
                             (z > 0 && data[i - sxy] != v) || (z + 1 < size[2] && data[i + sxy] != v);
        if (differs)
        {
          boundary.push_back(i);
        }
      }
  // Decided on the boundary as it was, so that a flip does not make its neighbours boundary voxels.
  std::bernoulli_distribution flip(percent / 100.0);
  unsigned char * out = mask->GetBufferPointer();
  for (const std::size_t i : boundary)
  {
    if (flip(random))
    {
      out[i] = out[i] != 0 ? 0 : 1;
    }
  }
}
} // namespace

void
degradePhantom(lumo::Image * organ,
               lumo::Image * portal,
               lumo::Image * hepatic,
               const ArVesselTree & portalTree,
               const ArVesselTree & hepaticTree,
               const Degradation & degradation,
               std::uint64_t seed)
{
  const auto organMask = lumo::ImageToItkImage<unsigned char>(organ);
  const auto portalMask = lumo::ImageToItkImage<unsigned char>(portal);
  const auto hepaticMask = lumo::ImageToItkImage<unsigned char>(hepatic);
  const std::vector<CentrePoint> portalPoints = centrePoints(portalTree);
  const std::vector<CentrePoint> hepaticPoints = centrePoints(hepaticTree);
  // One stream per kind of damage: adding one kind leaves the others as they were.
  auto stream = [seed](std::uint64_t kind) { return std::mt19937_64(seed * 0x9E3779B97F4A7C15ull + kind); };
  if (degradation.touching > 0)
  {
    addTouching(portalMask, hepaticMask, portalPoints, hepaticPoints, degradation.touching);
  }
  if (degradation.holes > 0)
  {
    auto random = stream(1);
    addHoles(portalMask, portalPoints, degradation.holes, random);
    addHoles(hepaticMask, hepaticPoints, degradation.holes, random);
  }
  if (degradation.fragments > 0)
  {
    auto random = stream(2);
    addFragments(portalMask, hepaticMask, organMask, degradation.fragments, random);
    addFragments(hepaticMask, portalMask, organMask, degradation.fragments, random);
  }
  if (degradation.noise > 0.0)
  {
    auto random = stream(3);
    addNoise(organMask, degradation.noise, random);
    addNoise(portalMask, degradation.noise, random);
    addNoise(hepaticMask, degradation.noise, random);
  }
}
} // namespace arbo
