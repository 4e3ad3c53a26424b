#include "KDTreeNextVesselEstimator.h"

#include <nanoflann.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <numeric>
#include <stdexcept>

void
AbstractNextVesselEstimator::estimateGroup(const float * positions,
                                           std::size_t count,
                                           std::uint16_t * vesselIds,
                                           float * distances,
                                           NextVesselWorkspace &)
{
  for (std::size_t i = 0; i < count; ++i)
  {
    TissueElement element(positions[3 * i], positions[3 * i + 1], positions[3 * i + 2], 0);
    estimate(element);
    vesselIds[i] = element.getVesselId();
    distances[i] = element.getDistance();
  }
}

namespace
{
/** The samples as nanoflann sees them: double coordinates read from the float storage. */
struct SampleCloud
{
  const std::vector<float> * points;

  std::size_t
  kdtree_get_point_count() const
  {
    return points->size() / 3;
  }
  double
  kdtree_get_pt(std::size_t index, std::size_t axis) const
  {
    return (*points)[3 * index + axis];
  }
  template <class Box>
  bool
  kdtree_get_bbox(Box &) const
  {
    return false;
  }
};

using Metric = nanoflann::L2_Simple_Adaptor<double, SampleCloud, double, std::uint32_t>;
using Tree = nanoflann::KDTreeSingleIndexAdaptor<Metric, SampleCloud, 3, std::uint32_t>;

/** Collects every sample within a squared radius, the boundary included. */
class WithinRadius
{
public:
  WithinRadius(double squaredRadius, std::vector<std::pair<std::uint32_t, double>> & matches)
    : m_squaredRadius(squaredRadius)
    , m_matches(matches)
  {
    m_matches.clear();
  }
  std::size_t
  size() const
  {
    return m_matches.size();
  }
  bool
  full() const
  {
    return true;
  }
  bool
  addPoint(double squaredDistance, std::uint32_t index)
  {
    if (squaredDistance <= m_squaredRadius)
    {
      m_matches.emplace_back(index, squaredDistance);
    }
    return true;
  }
  double
  worstDist() const
  {
    // nanoflann passes points only when they are strictly nearer than this; the boundary must stay in.
    return std::nextafter(m_squaredRadius, std::numeric_limits<double>::infinity());
  }

private:
  double m_squaredRadius;
  std::vector<std::pair<std::uint32_t, double>> & m_matches;
};

/** Squared distance of a float position to a sample, the one formula every comparison uses. */
inline double
squaredDistance(const float * a, const float * b)
{
  const double dx = static_cast<double>(a[0]) - static_cast<double>(b[0]);
  const double dy = static_cast<double>(a[1]) - static_cast<double>(b[1]);
  const double dz = static_cast<double>(a[2]) - static_cast<double>(b[2]);
  return dx * dx + dy * dy + dz * dz;
}

/** Generous bound for the rounding of the distances used only to choose candidates (relative error of a few
 *  units in the last place of a double); the exact comparison never depends on it. */
inline double
widened(double distance)
{
  return distance * (1.0 + 1e-9) + 1e-9;
}
} // namespace

struct KDTreeNextVesselEstimator::Index
{
  explicit Index(const std::vector<float> & points)
    : cloud{ &points }
    , tree(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(8))
  {}
  SampleCloud cloud;
  Tree tree;
};

KDTreeNextVesselEstimator::KDTreeNextVesselEstimator() = default;

KDTreeNextVesselEstimator::~KDTreeNextVesselEstimator()
{
  releaseIndex();
  delete m_measure;
}

AbstractDistanceMeasure *
KDTreeNextVesselEstimator::getDistanceMeasure()
{
  return m_measure;
}

void
KDTreeNextVesselEstimator::setDistanceMeasure(AbstractDistanceMeasure * measure)
{
  if (measure == nullptr)
  {
    throw std::runtime_error("Error in KDTreeNextVesselEstimator::setDistanceMeasure(...): measure == NULL");
  }
  m_measure = measure;
}

void
KDTreeNextVesselEstimator::setVesselElementList(VesselElementList * list)
{
  if (list == nullptr)
  {
    throw std::runtime_error("Error in KDTreeNextVesselEstimator::setVesselElementLIst(): theList == NULL!");
  }
  if (list->empty())
  {
    throw std::runtime_error("Error in KDTreeNextVesselEstimator::setVesselElementList: theList->size() == 0!");
  }
  if (m_initialised)
  {
    releaseIndex();
  }
  m_list = list;
  initANN();
}

VesselElementList *
KDTreeNextVesselEstimator::getVesselElementList()
{
  return m_list;
}

void
KDTreeNextVesselEstimator::initANN()
{
  m_k = static_cast<int>(std::min<std::size_t>(3, m_list->size()));
  if (m_list->empty())
  {
    std::cerr << "Empty vessel tree provided in KDTreeNextVesselEstimator::initANN. Aborting" << std::endl;
    throw std::logic_error("Empty vessel tree provided in KDTreeNextVesselEstimator::initANN.");
  }
  m_dimension = 3;
  const std::size_t n = m_list->size();
  m_points.resize(3 * n);
  m_vesselIds.resize(n);
  std::size_t i = 0;
  for (const VesselElement & element : *m_list)
  {
    m_points[3 * i] = element.x;
    m_points[3 * i + 1] = element.y;
    m_points[3 * i + 2] = element.z;
    m_vesselIds[i] = element.vesselId;
    ++i;
  }
  m_index = std::make_unique<Index>(m_points);
  m_initialised = true;
}

void
KDTreeNextVesselEstimator::releaseIndex()
{
  m_index.reset();
  m_points.clear();
  m_points.shrink_to_fit();
  m_initialised = false;
}

void
KDTreeNextVesselEstimator::estimate(TissueElement & element)
{
  float position[3];
  position[0] = element.getPosition()[0];
  position[1] = element.getPosition()[1];
  position[2] = element.getPosition()[2];
  std::uint16_t id = 0;
  float distance = 0.0f;
  search(position, 1, &id, &distance, m_workspace);
  element.setVesselId(id);
  element.setDistance(distance);
}

void
KDTreeNextVesselEstimator::estimateGroup(const float * positions,
                                         std::size_t count,
                                         std::uint16_t * vesselIds,
                                         float * distances,
                                         NextVesselWorkspace & workspace)
{
  search(positions, count, vesselIds, distances, workspace);
}

void
KDTreeNextVesselEstimator::search(const float * positions,
                                  std::size_t count,
                                  std::uint16_t * vesselIds,
                                  float * distances,
                                  NextVesselWorkspace & workspace) const
{
  if (count == 0)
  {
    return;
  }
  if (!m_initialised)
  {
    throw std::logic_error("KDTreeNextVesselEstimator::estimate called before setVesselElementList");
  }
  // Centre of the group's bounding box and each position's distance to it.
  double low[3] = { positions[0], positions[1], positions[2] };
  double high[3] = { low[0], low[1], low[2] };
  for (std::size_t i = 1; i < count; ++i)
  {
    for (int a = 0; a < 3; ++a)
    {
      low[a] = std::min<double>(low[a], positions[3 * i + a]);
      high[a] = std::max<double>(high[a], positions[3 * i + a]);
    }
  }
  const double centre[3] = { 0.5 * (low[0] + high[0]), 0.5 * (low[1] + high[1]), 0.5 * (low[2] + high[2]) };
  workspace.radii.resize(count);
  for (std::size_t i = 0; i < count; ++i)
  {
    const double dx = positions[3 * i] - centre[0];
    const double dy = positions[3 * i + 1] - centre[1];
    const double dz = positions[3 * i + 2] - centre[2];
    workspace.radii[i] = std::sqrt(dx * dx + dy * dy + dz * dz);
  }

  // The sample nearest to the centre bounds every position's nearest distance: d(v) <= |v - s0|. A sample at
  // that distance from v lies within |v - s0| + |v - c| of the centre, so that ball holds all candidates.
  std::uint32_t nearest = 0;
  double nearestSquared = 0.0;
  m_index->tree.knnSearch(centre, 1, &nearest, &nearestSquared);
  const float * s0 = &m_points[3 * static_cast<std::size_t>(nearest)];
  double radius = 0.0;
  for (std::size_t i = 0; i < count; ++i)
  {
    radius = std::max(radius, std::sqrt(squaredDistance(positions + 3 * i, s0)) + workspace.radii[i]);
  }
  radius = widened(radius);
  WithinRadius within(radius * radius, workspace.matches);
  m_index->tree.findNeighbors(within, centre, nanoflann::SearchParams());
  std::sort(workspace.matches.begin(), workspace.matches.end(), [](const auto & a, const auto & b) {
    return a.second < b.second || (a.second == b.second && a.first < b.first);
  });

  const std::size_t candidates = workspace.matches.size();
  workspace.candidates.resize(3 * candidates);
  workspace.indices.resize(candidates);
  workspace.centreDistances.resize(candidates);
  for (std::size_t j = 0; j < candidates; ++j)
  {
    const std::uint32_t index = workspace.matches[j].first;
    workspace.indices[j] = index;
    workspace.centreDistances[j] = std::sqrt(workspace.matches[j].second);
    std::copy_n(&m_points[3 * static_cast<std::size_t>(index)], 3, &workspace.candidates[3 * j]);
  }

  for (std::size_t i = 0; i < count; ++i)
  {
    const float * p = positions + 3 * i;
    const double r = workspace.radii[i];
    double best = std::numeric_limits<double>::max();
    std::uint32_t bestIndex = std::numeric_limits<std::uint32_t>::max();
    double bound = std::numeric_limits<double>::infinity();
    for (std::size_t j = 0; j < candidates; ++j)
    {
      // Candidates come by distance to the centre: once even the nearest possible one is farther than the best,
      // no later one can beat or tie it.
      if (workspace.centreDistances[j] - r > bound)
      {
        break;
      }
      const double d = squaredDistance(p, &workspace.candidates[3 * j]);
      const std::uint32_t index = workspace.indices[j];
      if (d < best || (d == best && index < bestIndex))
      {
        if (d < best)
        {
          bound = widened(std::sqrt(d));
        }
        best = d;
        bestIndex = index;
      }
    }
    vesselIds[i] = m_vesselIds.at(bestIndex);
    distances[i] = static_cast<float>(std::sqrt(best));
  }
}
