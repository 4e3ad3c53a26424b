#ifndef BranchingCluster_h
#define BranchingCluster_h

#include <cstddef>
#include <vector>

/** A 26-connected group of junction voxels (voxels with three or more skeleton neighbours) of a skeleton. Thinning
 *  rarely leaves a branching as a single voxel, so the whole group stands for one branching point: its centre is
 *  the mean of the voxels, and the voxel nearest to the centre (the first of equals) represents it where a voxel is
 *  needed, for example for the diameter. Voxels are indices into a SkeletonGraph's voxel list. */
class BranchingCluster
{
public:
  BranchingCluster() = default;

  void
  addVoxel(std::size_t voxel, float x, float y, float z);
  const std::vector<std::size_t> &
  getVoxels() const
  {
    return m_voxels;
  }
  std::size_t
  numberOfVoxels() const
  {
    return m_voxels.size();
  }
  float
  getCentreX() const;
  float
  getCentreY() const;
  float
  getCentreZ() const;
  /** The voxel nearest to the centre; the first added wins a tie. */
  std::size_t
  getRepresentative() const;

private:
  std::vector<std::size_t> m_voxels;
  std::vector<float> m_positions; // x, y, z per voxel
  double m_sum[3]{ 0.0, 0.0, 0.0 };
};

#endif
