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
 *  returns how many vessels were labelled. With `split`, a vessel along two differently labelled reference vessels
 *  is first split where their labels change (VesselLabelTransfer::splitAtLabelChanges), and `splits`, when given,
 *  receives the number of parts added. Throws arbo::Error naming the reference when it holds no centre-line point;
 *  the tree is then left as it was. */
std::size_t
transferLabelsFrom(const ArVesselTree & reference,
                   const ArVesselTree & tree,
                   const std::string & referenceName,
                   bool split = true,
                   std::size_t * splits = nullptr);
} // namespace arbo

#endif
