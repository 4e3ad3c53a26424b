#include "VesselTreeComparison.h"

#include "VesselTreeStatistics.h"

#include <nanoflann.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
using Vec = std::array<double, 3>;

/** A straight piece of a centre line with the radii at its ends. */
struct Piece
{
  Vec a;
  Vec b;
  double ra;
  double rb;
};

struct Sample
{
  Vec p;
  double radius;
  std::size_t vessel;
  std::size_t piece;
};

struct SampledTree
{
  std::vector<Piece> pieces;
  std::vector<Sample> samples;
  std::vector<std::size_t> samplesPerVessel;
  std::vector<double> meanRadius;
};

Vec
pointOf(const VesselPoint & p)
{
  return { p.x, p.y, p.z };
}

SampledTree
sampleTree(const ArVesselTree & tree, double spacing)
{
  SampledTree sampled;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    const std::size_t v = sampled.samplesPerVessel.size();
    const std::size_t before = sampled.samples.size();
    static const Vessel::PointList none;
    const Vessel::PointList & points = vessel ? vessel->getPoints() : none;
    // A lone point is a piece of no length; otherwise each pair of consecutive points is one.
    const std::size_t pieces = points.size() <= 1 ? points.size() : points.size() - 1;
    for (std::size_t m = 0; m < pieces; ++m)
    {
      const VesselPoint & p = points[m];
      const VesselPoint & q = points[points.size() == 1 ? m : m + 1];
      const Piece piece{ pointOf(p), pointOf(q), 0.5 * p.diameter, 0.5 * q.diameter };
      sampled.pieces.push_back(piece);
      double length2 = 0.0;
      for (int k = 0; k < 3; ++k)
      {
        length2 += (piece.b[k] - piece.a[k]) * (piece.b[k] - piece.a[k]);
      }
      const std::size_t steps =
        std::max<std::size_t>(1, static_cast<std::size_t>(std::ceil(std::sqrt(length2) / spacing)));
      // The last piece also gives the vessel's end point.
      const std::size_t count = m + 1 == pieces && length2 > 0.0 ? steps + 1 : steps;
      for (std::size_t j = 0; j < count; ++j)
      {
        const double t = length2 > 0.0 ? static_cast<double>(j) / static_cast<double>(steps) : 0.0;
        Sample s;
        for (int k = 0; k < 3; ++k)
        {
          s.p[k] = piece.a[k] + t * (piece.b[k] - piece.a[k]);
        }
        s.radius = piece.ra + t * (piece.rb - piece.ra);
        s.vessel = v;
        s.piece = sampled.pieces.size() - 1;
        sampled.samples.push_back(s);
        if (length2 == 0.0)
        {
          break;
        }
      }
    }
    const std::size_t count = sampled.samples.size() - before;
    double sum = 0.0;
    for (std::size_t i = before; i < sampled.samples.size(); ++i)
    {
      sum += sampled.samples[i].radius;
    }
    sampled.samplesPerVessel.push_back(count);
    sampled.meanRadius.push_back(count > 0 ? sum / static_cast<double>(count) : 0.0);
  }
  return sampled;
}

/** The samples as a point cloud for nanoflann. */
struct Cloud
{
  const std::vector<Sample> & samples;
  std::size_t
  kdtree_get_point_count() const
  {
    return samples.size();
  }
  double
  kdtree_get_pt(std::size_t index, std::size_t dimension) const
  {
    return samples[index].p[dimension];
  }
  template <class Box>
  bool
  kdtree_get_bbox(Box &) const
  {
    return false;
  }
};

struct Nearest
{
  double distance;
  double radius; // interpolated at the nearest centre-line point
};

/** Nearest centre-line point of a sampled tree: the nearest samples find the candidate pieces, which are then
 *  measured exactly. */
class CentreLineIndex
{
public:
  explicit CentreLineIndex(const SampledTree & tree)
    : m_Tree(tree)
    , m_Cloud{ tree.samples }
    , m_Index(3, m_Cloud, nanoflann::KDTreeSingleIndexAdaptorParams(16))
  {
    m_Index.buildIndex();
  }

  Nearest
  nearest(const Vec & p) const
  {
    constexpr std::size_t wanted = 8;
    std::array<std::uint32_t, wanted> indices{};
    std::array<double, wanted> distances{};
    const std::size_t found = m_Index.knnSearch(p.data(), wanted, indices.data(), distances.data());
    Nearest best{ std::numeric_limits<double>::infinity(), 0.0 };
    for (std::size_t n = 0; n < found; ++n)
    {
      const Piece & piece = m_Tree.pieces[m_Tree.samples[indices[n]].piece];
      Vec ab;
      Vec ap;
      for (int k = 0; k < 3; ++k)
      {
        ab[k] = piece.b[k] - piece.a[k];
        ap[k] = p[k] - piece.a[k];
      }
      const double ll = ab[0] * ab[0] + ab[1] * ab[1] + ab[2] * ab[2];
      double t = ll > 0.0 ? (ap[0] * ab[0] + ap[1] * ab[1] + ap[2] * ab[2]) / ll : 0.0;
      t = std::clamp(t, 0.0, 1.0);
      double d2 = 0.0;
      for (int k = 0; k < 3; ++k)
      {
        const double d = ap[k] - t * ab[k];
        d2 += d * d;
      }
      const double distance = std::sqrt(d2);
      if (distance < best.distance)
      {
        best = { distance, piece.ra + t * (piece.rb - piece.ra) };
      }
    }
    return best;
  }

private:
  using Index = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Cloud>, Cloud, 3>;
  const SampledTree & m_Tree;
  Cloud m_Cloud;
  Index m_Index;
};

double
mean(const std::vector<double> & values)
{
  double sum = 0.0;
  for (double v : values)
  {
    sum += v;
  }
  return values.empty() ? std::numeric_limits<double>::quiet_NaN() : sum / static_cast<double>(values.size());
}

/** Nearest rank: the smallest value that at least the given fraction of the values do not exceed. */
double
percentile(std::vector<double> values, double fraction)
{
  if (values.empty())
  {
    return std::numeric_limits<double>::quiet_NaN();
  }
  std::sort(values.begin(), values.end());
  const auto rank = static_cast<std::size_t>(std::ceil(fraction * static_cast<double>(values.size())));
  return values[std::max<std::size_t>(rank, 1) - 1];
}

double
median(std::vector<double> values)
{
  if (values.empty())
  {
    return std::numeric_limits<double>::quiet_NaN();
  }
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return n % 2 == 1 ? values[n / 2] : 0.5 * (values[n / 2 - 1] + values[n / 2]);
}

void
requireTree(const ArVesselTree & tree, const SampledTree & sampled, const char * which)
{
  if (sampled.samples.empty())
  {
    throw std::invalid_argument(std::string("the ") + which + " tree has no centre-line points");
  }
  (void)tree;
}
} // namespace

VesselTreeComparison::Result
VesselTreeComparison::compare(const ArVesselTree & truth, const ArVesselTree & test) const
{
  if (!(m_sampleSpacing > 0.0) || !(m_voxelSize > 0.0) || !(m_minimumRadiusVoxels >= 0.0))
  {
    throw std::invalid_argument("sample spacing and voxel size must be positive, the minimum radius not negative");
  }
  if (truth.isNull() || test.isNull())
  {
    throw std::invalid_argument(std::string("the ") + (truth.isNull() ? "true" : "test") + " tree is missing");
  }
  const SampledTree trueSamples = sampleTree(truth, m_sampleSpacing);
  const SampledTree testSamples = sampleTree(test, m_sampleSpacing);
  requireTree(truth, trueSamples, "true");
  requireTree(test, testSamples, "test");
  const CentreLineIndex trueIndex(trueSamples);
  const CentreLineIndex testIndex(testSamples);

  Result result;
  const VesselTreeStatistics trueStatistics(truth);
  const VesselTreeStatistics testStatistics(test);
  result.trueVessels = trueStatistics.numberOfVessels();
  result.testVessels = testStatistics.numberOfVessels();
  result.trueBifurcations = trueStatistics.numberOfBifurcations();
  result.testBifurcations = testStatistics.numberOfBifurcations();

  std::vector<double> distances;
  std::vector<double> radiusErrors;
  std::vector<double> relativeErrors;
  std::vector<std::size_t> within(trueSamples.samplesPerVessel.size(), 0);
  // The figures measured from the truth's side cover the true vessels of the minimum radius only.
  auto considered = [&](std::size_t vessel) {
    return trueSamples.meanRadius[vessel] >= m_minimumRadiusVoxels * m_voxelSize;
  };
  for (const Sample & s : trueSamples.samples)
  {
    if (!considered(s.vessel))
    {
      continue;
    }
    const Nearest n = testIndex.nearest(s.p);
    distances.push_back(n.distance);
    if (n.distance <= std::max(m_voxelSize, s.radius))
    {
      ++within[s.vessel];
      radiusErrors.push_back(std::abs(n.radius - s.radius));
      if (s.radius > 0.0)
      {
        relativeErrors.push_back(std::abs(n.radius - s.radius) / s.radius);
      }
    }
  }
  result.truthToTestMean = mean(distances);
  result.truthToTestP95 = percentile(distances, 0.95);
  result.matchedSamples = radiusErrors.size();
  result.radiusErrorMedian = median(radiusErrors);
  result.radiusErrorRelative = median(relativeErrors);
  for (std::size_t v = 0; v < within.size(); ++v)
  {
    const std::size_t total = trueSamples.samplesPerVessel[v];
    if (total == 0 || !considered(v))
    {
      continue;
    }
    ++result.trueVesselsConsidered;
    result.trueVesselsFound += 2 * within[v] > total ? 1 : 0;
  }
  result.recall = result.trueVesselsConsidered > 0
                    ? static_cast<double>(result.trueVesselsFound) / static_cast<double>(result.trueVesselsConsidered)
                    : std::numeric_limits<double>::quiet_NaN();

  distances.clear();
  std::vector<std::size_t> correct(testSamples.samplesPerVessel.size(), 0);
  for (const Sample & s : testSamples.samples)
  {
    const Nearest n = trueIndex.nearest(s.p);
    distances.push_back(n.distance);
    if (n.distance <= std::max(m_voxelSize, n.radius))
    {
      ++correct[s.vessel];
    }
  }
  result.testToTruthMean = mean(distances);
  result.testToTruthP95 = percentile(distances, 0.95);
  for (std::size_t v = 0; v < correct.size(); ++v)
  {
    result.testVesselsCorrect += 2 * correct[v] > testSamples.samplesPerVessel[v] ? 1 : 0;
  }
  // Vessels without points cannot be confirmed, so they count against precision.
  result.precision = result.testVessels > 0
                       ? static_cast<double>(result.testVesselsCorrect) / static_cast<double>(result.testVessels)
                       : std::numeric_limits<double>::quiet_NaN();
  return result;
}
