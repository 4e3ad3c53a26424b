#include "VesselLabelTransfer.h"

#include <nanoflann.hpp>

#include <algorithm>
#include <map>
#include <tuple>
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

void
collectPoints(const ArVesselTree & source, SourcePoints & cloud)
{
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
}

using Labels = std::tuple<std::int32_t, std::int32_t, std::int32_t>;

Labels
labelsOf(const Vessel & vessel)
{
  const VesselProperties & p = vessel.getProperties();
  return { p.getBloodVesselType(), p.getSegmentType(), p.getResectionStatus() };
}

/** A stretch of a vessel's points, [first, last), whose nearest source vessels carry the same labels. */
struct Run
{
  std::size_t first;
  std::size_t last;
  Labels labels;
};
} // namespace

std::size_t
VesselLabelTransfer::splitAtLabelChanges(const ArVesselTree & source,
                                         const ArVesselTree & target,
                                         std::size_t minimumPoints)
{
  LinkedVesselTree * linked = asLinkedVesselTree(target);
  if (source.isNull() || linked == nullptr || linked->getRootNode() == nullptr)
  {
    return 0;
  }
  SourcePoints cloud;
  collectPoints(source, cloud);
  if (cloud.points.empty())
  {
    return 0;
  }
  Index index(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
  index.buildIndex();

  std::vector<VesselNode *> nodes;
  std::int32_t largestId = 0;
  std::vector<VesselNode *> stack{ linked->getRootNode() };
  while (!stack.empty())
  {
    VesselNode * node = stack.back();
    stack.pop_back();
    nodes.push_back(node);
    if (!node->getData().isNull())
    {
      largestId = std::max(largestId, node->getData()->getVesselId());
    }
    for (VesselNode * child : node->children())
    {
      stack.push_back(child);
    }
  }
  std::size_t added = 0;
  for (VesselNode * node : nodes)
  {
    ar<Vessel> vessel = node->getData();
    if (vessel.isNull() || vessel->numberOfPoints() < 2 * minimumPoints)
    {
      continue;
    }
    const Vessel::PointList & points = vessel->getPoints();
    std::vector<Run> runs;
    for (std::size_t i = 0; i < points.size(); ++i)
    {
      const float query[3] = { points[i].x, points[i].y, points[i].z };
      unsigned int nearest = 0;
      float distance = 0.0f;
      index.knnSearch(query, 1, &nearest, &distance);
      const Labels labels = labelsOf(*cloud.owners[nearest]);
      if (runs.empty() || runs.back().labels != labels)
      {
        runs.push_back(Run{ i, i + 1, labels });
      }
      else
      {
        runs.back().last = i + 1;
      }
    }
    // Short runs are noise where two source vessels meet: they join the run before them (the first, the next).
    std::vector<Run> kept;
    for (const Run & run : runs)
    {
      if (run.last - run.first >= minimumPoints || kept.empty())
      {
        if (!kept.empty() && kept.back().labels == run.labels)
        {
          kept.back().last = run.last;
        }
        else if (!kept.empty() && kept.back().last - kept.back().first < minimumPoints)
        {
          // A short first run gives way to the first long one.
          kept.back() = Run{ kept.back().first, run.last, run.labels };
        }
        else
        {
          kept.push_back(run);
        }
      }
      else
      {
        kept.back().last = run.last;
      }
    }
    if (kept.size() < 2 || kept.back().last - kept.back().first < minimumPoints)
    {
      continue;
    }
    // The vessel keeps the first run; each further run hangs below the previous one.
    const std::vector<VesselNode *> children = node->children();
    VesselNode * last = node;
    for (std::size_t r = 1; r < kept.size(); ++r)
    {
      const std::size_t end = r + 1 < kept.size() ? kept[r].last : points.size();
      ar<Vessel> part(new Vessel());
      part->getProperties() = vessel->getProperties();
      part->setPoints(Vessel::PointList(points.begin() + static_cast<std::ptrdiff_t>(kept[r].first - 1),
                                        points.begin() + static_cast<std::ptrdiff_t>(end)));
      part->setVesselId(++largestId);
      auto * partNode = new VesselNode(last, part);
      last->addChild(partNode);
      last = partNode;
      ++added;
    }
    for (VesselNode * child : children)
    {
      node->removeChild(child);
      child->setParent(last);
      last->addChild(child);
    }
    vessel->setPoints(Vessel::PointList(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(kept[0].last)));
  }
  return added;
}

std::size_t
VesselLabelTransfer::transfer(const ArVesselTree & source, const ArVesselTree & target)
{
  if (source.isNull() || target.isNull())
  {
    return 0;
  }
  SourcePoints cloud;
  collectPoints(source, cloud);
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
