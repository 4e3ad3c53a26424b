#ifndef arboTreeAnalysis_h
#define arboTreeAnalysis_h

#include "ArVesselTree.h"
#include "VesselTreeComparison.h"

#include <cstddef>
#include <string>

namespace arbo
{
/** The accuracy of `test` against `truth` (voxel size and least radius in voxels as for VesselTreeComparison).
 *  Throws arbo::Error naming the tree that holds no centre-line point. */
VesselTreeComparison::Result
compareVesselTrees(const ArVesselTree & truth,
                   const ArVesselTree & test,
                   const std::string & truthName,
                   const std::string & testName,
                   double voxelSize,
                   double minimumRadiusVoxels);

/** Gives every vessel of `tree` the type, segment and resection status of the nearest vessel of `reference`;
 *  returns how many vessels were labelled. Throws arbo::Error naming the reference when it holds no centre-line
 *  point. */
std::size_t
transferLabelsFrom(const ArVesselTree & reference, const ArVesselTree & tree, const std::string & referenceName);
} // namespace arbo

#endif
