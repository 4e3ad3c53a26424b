#include "arboTreeAnalysis.h"

#include "arboError.h"

#include "VesselLabelTransfer.h"
#include "VesselTreeStatistics.h"

namespace arbo
{
VesselTreeComparison::Result
compareVesselTrees(const ArVesselTree & truth,
                   const ArVesselTree & test,
                   const std::string & truthName,
                   const std::string & testName,
                   double voxelSize,
                   double minimumRadiusVoxels)
{
  for (const auto & [tree, name] : { std::make_pair(truth, truthName), std::make_pair(test, testName) })
  {
    if (tree.isNull() || VesselTreeStatistics(tree).numberOfPoints() == 0)
    {
      throw Error(name, "holds no centre-line points to compare");
    }
  }
  VesselTreeComparison comparison;
  comparison.setVoxelSize(voxelSize);
  comparison.setMinimumRadiusVoxels(minimumRadiusVoxels);
  return comparison.compare(truth, test);
}

std::size_t
transferLabelsFrom(const ArVesselTree & reference,
                   const ArVesselTree & tree,
                   const std::string & referenceName,
                   bool split,
                   std::size_t * splits)
{
  // A reference without points splits nothing, so the refusal below leaves the tree as it was.
  const std::size_t added = split ? VesselLabelTransfer::splitAtLabelChanges(reference, tree) : 0;
  const std::size_t labelled = VesselLabelTransfer::transfer(reference, tree);
  if (labelled == 0)
  {
    throw Error(referenceName, "holds no centre-line points to take labels from");
  }
  if (splits != nullptr)
  {
    *splits = added;
  }
  return labelled;
}
} // namespace arbo
