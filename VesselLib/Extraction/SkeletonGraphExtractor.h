#ifndef SkeletonGraphExtractor_h
#define SkeletonGraphExtractor_h

#include "Point3D.h"
#include "SkeletonGraph.h"
#include "VolumeAccessor.h"

/** Turns a thinned volume (non-zero voxels are the skeleton) into a SkeletonGraph under 26-adjacency:
 *  voxels with three or more neighbours are grouped into BranchingClusters, voxels with at most one are end points
 *  (isolated when they have none), and the chains between them become edges (found by a PathFinder). The start
 *  voxel becomes a node of its own when it lies inside a chain; when it is not a skeleton voxel, the nearest
 *  skeleton voxel (Euclidean in voxel units, the first in memory order of equals) is taken instead. Nodes are
 *  numbered in memory order of their first voxel, edges in the order they are found, so the graph does not depend
 *  on anything but the volume and the start. */
class SkeletonGraphExtractor
{
public:
  SkeletonGraphExtractor() = default;
  virtual ~SkeletonGraphExtractor() = default;

  /** A new graph (the caller deletes it); its start node is none for an empty skeleton. */
  virtual SkeletonGraph *
  extractGraph(const VolumeAccessor<unsigned char> & skeleton, const Point3D & start);

  /** The start voxel used by the last extraction, after snapping. */
  unsigned short
  getStartX() const
  {
    return m_startX;
  }
  unsigned short
  getStartY() const
  {
    return m_startY;
  }
  unsigned short
  getStartZ() const
  {
    return m_startZ;
  }
  /** Whether the given start was not a skeleton voxel and had to be moved. */
  bool
  getStartWasSnapped() const
  {
    return m_startWasSnapped;
  }

private:
  unsigned short m_startX{ 0 };
  unsigned short m_startY{ 0 };
  unsigned short m_startZ{ 0 };
  bool m_startWasSnapped{ false };
};

#endif
