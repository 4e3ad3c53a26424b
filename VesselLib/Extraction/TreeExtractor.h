#ifndef TreeExtractor_h
#define TreeExtractor_h

#include "ArVesselTree.h"
#include "DistancePoint3D.h"
#include "VolumeAccessor.h"

/** Base of the algorithms that turn a thinned vessel mask into a vessel tree. */
class TreeExtractor
{
public:
  TreeExtractor() = default;
  TreeExtractor(const TreeExtractor &) = delete;
  TreeExtractor &
  operator=(const TreeExtractor &) = delete;
  virtual ~TreeExtractor() = default;

  /** A new tree in voxel coordinates (index times voxel size), rooted at the start voxel: `skeleton` is the thinned
   * volume (non-zero voxels are the skeleton, voxel sizes set), `skeletalPoints` the skeleton voxels with their
   * distances to the background (borrowed; may be null when a distance volume is given another way). */
  virtual ArVesselTree
  getTree(VolumeAccessor<unsigned char> * skeleton, DistancePoint3DList * skeletalPoints, const Point3D & start) = 0;
};

#endif
