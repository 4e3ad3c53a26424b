#include "lumoPointLocator.h"

#include <vtkPoints.h>

#include <nanoflann.hpp>

#include <cmath>
#include <cstdint>
#include <limits>

namespace lumo
{
namespace
{
/** The coordinates as nanoflann sees them. */
struct Cloud
{
  std::vector<double> coordinates;

  std::size_t
  kdtree_get_point_count() const
  {
    return coordinates.size() / 3;
  }
  double
  kdtree_get_pt(std::size_t index, std::size_t axis) const
  {
    return coordinates[3 * index + axis];
  }
  template <class Box>
  bool
  kdtree_get_bbox(Box &) const
  {
    return false;
  }
};

using Metric = nanoflann::L2_Simple_Adaptor<double, Cloud, double, std::size_t>;
using Tree = nanoflann::KDTreeSingleIndexAdaptor<Metric, Cloud, 3, std::size_t>;

/** The one formula for squared distances, so that equal distances compare equal. */
inline double
SquaredDistance(const double * a, const double * b)
{
  const double dx = a[0] - b[0];
  const double dy = a[1] - b[1];
  const double dz = a[2] - b[2];
  return dx * dx + dy * dy + dz * dz;
}

/** Keeps the nearest point, the lowest id among equally near ones. The tree's bound is widened a little beyond
 *  the best distance so that no point at that distance is pruned by rounding in the tree's bounds; the exact
 *  comparison uses SquaredDistance. */
class NearestLowestId
{
public:
  NearestLowestId(const Cloud & cloud, const double * query)
    : m_Cloud(cloud)
    , m_Query(query)
  {}
  std::size_t
  size() const
  {
    return m_Found ? 1 : 0;
  }
  bool
  full() const
  {
    return m_Found;
  }
  bool
  addPoint(double, std::size_t index)
  {
    const double squared = SquaredDistance(&m_Cloud.coordinates[3 * index], m_Query);
    if (!m_Found || squared < m_Best || (squared == m_Best && index < m_BestIndex))
    {
      m_Found = true;
      m_Best = squared;
      m_BestIndex = index;
    }
    return true;
  }
  double
  worstDist() const
  {
    return m_Found ? m_Best * (1.0 + 1e-9) + 1e-300 : std::numeric_limits<double>::infinity();
  }
  std::size_t
  GetIndex() const
  {
    return m_BestIndex;
  }
  double
  GetSquaredDistance() const
  {
    return m_Best;
  }

private:
  const Cloud & m_Cloud;
  const double * m_Query;
  bool m_Found{ false };
  double m_Best{ 0.0 };
  std::size_t m_BestIndex{ 0 };
};
} // namespace

struct PointLocator::Index
{
  explicit Index(std::vector<double> && coordinates)
    : cloud{ std::move(coordinates) }
    , tree(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10))
  {}
  Cloud cloud;
  Tree tree;
};

PointLocator::PointLocator() = default;

PointLocator::~PointLocator() = default;

void
PointLocator::Build(std::vector<double> && coordinates)
{
  m_Index.reset();
  for (std::size_t i = 0; i < coordinates.size(); ++i)
  {
    if (!std::isfinite(coordinates[i]))
    {
      this->Modified();
      throw itk::ExceptionObject(__FILE__,
                                 __LINE__,
                                 "PointLocator: point " + std::to_string(i / 3) + " is not finite",
                                 "lumo::PointLocator::SetPoints");
    }
  }
  if (!coordinates.empty())
  {
    m_Index = std::make_unique<Index>(std::move(coordinates));
  }
  this->Modified();
}

void
PointLocator::SetPoints(vtkPoints * points)
{
  std::vector<double> coordinates;
  if (points)
  {
    const vtkIdType count = points->GetNumberOfPoints();
    coordinates.resize(3 * static_cast<std::size_t>(count));
    for (vtkIdType i = 0; i < count; ++i)
    {
      points->GetPoint(i, &coordinates[3 * static_cast<std::size_t>(i)]);
    }
  }
  Build(std::move(coordinates));
}

void
PointLocator::SetPoints(const std::vector<Point3D> & points)
{
  std::vector<double> coordinates;
  coordinates.reserve(3 * points.size());
  for (const Point3D & point : points)
  {
    coordinates.insert(coordinates.end(), { point[0], point[1], point[2] });
  }
  Build(std::move(coordinates));
}

PointLocator::IdType
PointLocator::GetNumberOfPoints() const
{
  return m_Index ? static_cast<IdType>(m_Index->cloud.kdtree_get_point_count()) : 0;
}

PointLocator::IdType
PointLocator::FindClosestPoint(double x, double y, double z) const
{
  Point3D point;
  point[0] = x;
  point[1] = y;
  point[2] = z;
  return FindClosestPointAndDistance(point, nullptr);
}

PointLocator::IdType
PointLocator::FindClosestPoint(const Point3D & point) const
{
  return FindClosestPointAndDistance(point, nullptr);
}

PointLocator::IdType
PointLocator::FindClosestPointAndDistance(const Point3D & point, double * distance) const
{
  if (!m_Index || !std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2]))
  {
    return -1;
  }
  const double query[3] = { point[0], point[1], point[2] };
  NearestLowestId result(m_Index->cloud, query);
  m_Index->tree.findNeighbors(result, query, nanoflann::SearchParams());
  if (!result.size())
  {
    return -1;
  }
  if (distance)
  {
    *distance = std::sqrt(result.GetSquaredDistance());
  }
  return static_cast<IdType>(result.GetIndex());
}

void
PointLocator::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "NumberOfPoints: " << GetNumberOfPoints() << '\n';
}
} // namespace lumo
