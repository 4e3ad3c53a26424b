#include "VesselLabelTransfer.h"

#include <nanoflann.hpp>

#include <map>
#include <vector>

namespace
{
/** The centre-line points of the source with the vessel each belongs to, as nanoflann's point cloud. */
struct SourcePoints
{
  std::vector<VesselPoint> points;
  std::vector<Vessel *> owners;

  std::size_t
  kdtree_get_point_count() const
  {
    return points.size();
  }
  float
  kdtree_get_pt(std::size_t index, std::size_t dimension) const
  {
    const VesselPoint & p = points[index];
    return dimension == 0 ? p.x : (dimension == 1 ? p.y : p.z);
  }
  template <class BoundingBox>
  bool
  kdtree_get_bbox(BoundingBox &) const
  {
    return false;
  }
};

using Index =
  nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, SourcePoints>, SourcePoints, 3, unsigned int>;
} // namespace

std::size_t
VesselLabelTransfer::transfer(const ArVesselTree & source, const ArVesselTree & target)
{
  if (source.isNull() || target.isNull())
  {
    return 0;
  }
  SourcePoints cloud;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(source->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull())
    {
      continue;
    }
    for (const VesselPoint & p : vessel->getPoints())
    {
      cloud.points.push_back(p);
      cloud.owners.push_back(vessel.get());
    }
  }
  if (cloud.points.empty())
  {
    return 0;
  }
  Index index(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
  index.buildIndex();

  std::size_t labelled = 0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> targets(target->newPreorderIterator());
  while (targets->hasNext())
  {
    ar<Vessel> vessel = targets->next();
    if (vessel.isNull() || vessel->numberOfPoints() == 0)
    {
      continue;
    }
    // Votes in the order the source vessels were first met, so that ties go to the earliest.
    std::map<Vessel *, std::size_t> votes;
    std::vector<Vessel *> order;
    for (const VesselPoint & p : vessel->getPoints())
    {
      const float query[3] = { p.x, p.y, p.z };
      unsigned int nearest = 0;
      float distance = 0.0f;
      index.knnSearch(query, 1, &nearest, &distance);
      Vessel * owner = cloud.owners[nearest];
      if (votes[owner]++ == 0)
      {
        order.push_back(owner);
      }
    }
    Vessel * best = order.front();
    for (Vessel * candidate : order)
    {
      if (votes[candidate] > votes[best])
      {
        best = candidate;
      }
    }
    VesselProperties & properties = vessel->getProperties();
    properties.setBloodVesselType(best->getProperties().getBloodVesselType());
    properties.setSegmentType(best->getProperties().getSegmentType());
    properties.setResectionStatus(best->getProperties().getResectionStatus());
    ++labelled;
  }
  return labelled;
}
