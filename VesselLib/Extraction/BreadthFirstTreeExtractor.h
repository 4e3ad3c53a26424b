#ifndef BreadthFirstTreeExtractor_h
#define BreadthFirstTreeExtractor_h

#include "SkeletonGraph.h"
#include "TreeExtractor.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

class SkeletonGraphExtractor;

/** Builds the vessel tree by a breadth-first walk over the skeleton graph from the start voxel's node.
 *
 *  Every edge becomes one vessel: its first point is the node it is reached from (so a child starts exactly at its
 *  parent's end point), then the chain voxels, then the far node. An edge that leads back to a node already
 *  reached closes a loop: it still becomes a vessel, but one that ends before that node, so the tree holds no
 *  cycle and loses no centre line. The root vessel is the start node's only edge when it has exactly one; otherwise
 *  (start on a branching, inside a chain, or alone) the root is the start point by itself and every edge of the
 *  start node is its child. Vessel ids start at 1 and follow the order of the walk. Skeleton parts that do not
 *  touch the start's part are left out and counted.
 *
 *  Points are in the voxel frame: voxel index times the skeleton volume's voxel size, so that lengths and diameters
 *  share their units and a geometry transform without the spacing takes the tree to world coordinates.
 *
 *  Diameters: with a float distance volume, 2 x (distance at the voxel - 0.5 x the skeleton volume's voxel size in
 *  x); otherwise, from the skeletal points, 2 x (the voxel's distance - 0.5 x the skeleton volume's minimum voxel
 *  size). A voxel missing from the skeletal points, or neither source, ends the process with a message. */
class BreadthFirstTreeExtractor : public TreeExtractor
{
public:
  BreadthFirstTreeExtractor();
  ~BreadthFirstTreeExtractor() override;

  ArVesselTree
  getTree(VolumeAccessor<unsigned char> * skeleton,
          DistancePoint3DList * skeletalPoints,
          const Point3D & start) override;

  /** A float distance volume to take diameters from instead of the skeletal points (borrowed; null for none). */
  void
  setDistanceVolume(VolumeAccessor<float> * distanceVolume)
  {
    m_distanceVolume = distanceVolume;
  }
  /** Ignore the given start and begin at the skeleton end point (one skeleton neighbour) farthest from the
   *  background, by the skeletal points (the first in memory order of equals; any skeletal point when no end point
   *  exists). Roots found this way lie where the thickest vessel ends, usually where it enters the organ. */
  void
  setStartAtThickestEndPoint(bool on)
  {
    m_startAtThickestEndPoint = on;
  }
  bool
  getStartAtThickestEndPoint() const
  {
    return m_startAtThickestEndPoint;
  }
  /** Replaces the graph extractor and deletes the previous one; null is ignored. */
  void
  setGraphExtractor(SkeletonGraphExtractor * extractor);
  SkeletonGraphExtractor *
  getGraphExtractor() const
  {
    return m_graphExtractor;
  }

  /** Diameter (physical units) at a voxel, by the rule above. */
  virtual float
  getDiameter(unsigned short x, unsigned short y, unsigned short z);

  /** Of the last getTree: skeleton parts (26-connected) not connected to the start, and their voxels. */
  std::size_t
  getNumberOfLeftOutParts() const
  {
    return m_leftOutParts;
  }
  std::size_t
  getNumberOfLeftOutVoxels() const
  {
    return m_leftOutVoxels;
  }
  /** Of the last getTree: the number of skeleton voxels. */
  std::size_t
  getNumberOfSkeletonVoxels() const
  {
    return m_skeletonVoxels;
  }

private:
  VesselPoint
  nodePoint(const SkeletonGraph & graph, std::size_t node);
  VesselPoint
  voxelPoint(const SkeletonGraph & graph, std::size_t voxel);
  Point3D
  thickestEndPoint(const VolumeAccessor<unsigned char> & skeleton,
                   const DistancePoint3DList & points,
                   const Point3D & fallback) const;
  void
  countLeftOut(const SkeletonGraph & graph, const std::vector<char> & reached);

  SkeletonGraphExtractor * m_graphExtractor;
  VolumeAccessor<unsigned char> * m_skeleton{ nullptr };
  VolumeAccessor<float> * m_distanceVolume{ nullptr };
  std::unordered_map<std::uint64_t, float> m_distances; // skeletal points by voxel key
  bool m_haveDistances{ false };
  bool m_startAtThickestEndPoint{ false };
  std::size_t m_leftOutParts{ 0 };
  std::size_t m_leftOutVoxels{ 0 };
  std::size_t m_skeletonVoxels{ 0 };
};

#endif
