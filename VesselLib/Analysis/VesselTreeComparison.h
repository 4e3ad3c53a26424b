#ifndef VesselTreeComparison_h
#define VesselTreeComparison_h

#include "ArVesselTree.h"

#include <cstddef>

/** Accuracy of a vessel tree against a true one (see docs/accuracy.md).
 *
 *  Both centre lines are sampled densely (every sampleSpacing mm along each segment, plus each vessel's last
 *  point); every sample is matched with the nearest point of the other tree's centre line (exact point-to-segment
 *  distance over the segments near it). A true vessel is found when more than half of its samples lie within
 *  max(voxel size, its local radius) of the test tree; a test vessel is correct when more than half of its samples
 *  lie within max(voxel size, the true radius at the nearest true point) of the true tree. */
class VesselTreeComparison
{
public:
  /** Not-a-number stands for a value that has nothing to be computed from (no vessel considered for recall). */
  struct Result
  {
    double truthToTestMean{ 0.0 }; // mm, mean over the true samples of the distance to the test tree
    double truthToTestP95{ 0.0 };  // mm, 95th percentile (nearest rank)
    double testToTruthMean{ 0.0 };
    double testToTruthP95{ 0.0 };
    std::size_t trueVessels{ 0 };
    std::size_t testVessels{ 0 };
    std::size_t trueBifurcations{ 0 };
    std::size_t testBifurcations{ 0 };
    std::size_t trueVesselsConsidered{ 0 }; // true vessels thick enough to count for recall
    std::size_t trueVesselsFound{ 0 };
    double recall{ 0.0 }; // found / considered
    std::size_t testVesselsCorrect{ 0 };
    double precision{ 0.0 };           // correct / test vessels
    std::size_t matchedSamples{ 0 };   // true samples within their tolerance of the test tree
    double radiusErrorMedian{ 0.0 };   // mm, median |r_test - r_true| over the matched true samples
    double radiusErrorRelative{ 0.0 }; // median |r_test - r_true| / r_true over the same samples
  };

  VesselTreeComparison() = default;

  /** Distance in mm between consecutive samples of a centre line; default 0.2; > 0. */
  void
  setSampleSpacing(double millimetres)
  {
    m_sampleSpacing = millimetres;
  }
  double
  getSampleSpacing() const
  {
    return m_sampleSpacing;
  }
  /** The image's voxel size in mm, the least matching tolerance; default 1; > 0. */
  void
  setVoxelSize(double millimetres)
  {
    m_voxelSize = millimetres;
  }
  double
  getVoxelSize() const
  {
    return m_voxelSize;
  }
  /** Recall counts only true vessels whose mean radius is at least this many voxels; default 0 (all). */
  void
  setMinimumRadiusVoxels(double voxels)
  {
    m_minimumRadiusVoxels = voxels;
  }
  double
  getMinimumRadiusVoxels() const
  {
    return m_minimumRadiusVoxels;
  }

  /** Throws std::invalid_argument when a tree is null or has no centre-line point, or a setting is out of range. */
  Result
  compare(const ArVesselTree & truth, const ArVesselTree & test) const;

private:
  double m_sampleSpacing{ 0.2 };
  double m_voxelSize{ 1.0 };
  double m_minimumRadiusVoxels{ 0.0 };
};

#endif
