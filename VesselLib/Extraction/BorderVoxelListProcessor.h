#ifndef BorderVoxelListProcessor_h
#define BorderVoxelListProcessor_h

#include "DistancePoint3D.h"
#include "VolumeAccessor.h"

#include <cstdint>

class SelleSimplePointEvaluator;

/** Deletes the simple voxels of one layer of border voxels from the binary volume (label 0). This base visits
 *  the list in its order, deleting at once, and repeats until a pass deletes nothing. Both volumes are borrowed;
 *  the simple point evaluator is owned. */
class BorderVoxelListProcessor
{
public:
  /** Ends the process when either volume is null. */
  BorderVoxelListProcessor(VolumeAccessor<unsigned char> * binaryVolume, VolumeAccessor<float> * distanceVolume);
  BorderVoxelListProcessor(const BorderVoxelListProcessor &) = delete;
  BorderVoxelListProcessor &
  operator=(const BorderVoxelListProcessor &) = delete;
  virtual ~BorderVoxelListProcessor();

  /** Deletes what can be deleted of the list and answers a new list (the caller deletes it) of the voxels that
   *  survived. The points themselves stay with their owner. */
  virtual DistancePoint3DList *
  processList(const DistancePoint3DList & list);

  /** Voxels deleted by the last processList. */
  std::int32_t
  getRemovedVoxels() const
  {
    return m_removedVoxels;
  }
  SelleSimplePointEvaluator *
  getSimplePointEvaluator() const
  {
    return m_simplePointEvaluator;
  }
  VolumeAccessor<unsigned char> *
  getBinaryVolume() const
  {
    return m_binaryVolume;
  }
  VolumeAccessor<float> *
  getDistanceVolume() const
  {
    return m_distanceVolume;
  }

protected:
  /** The simple point test on the voxel's current 26-neighbourhood, through the evaluator. */
  bool
  isSimple(const DistancePoint3D * point) const;

  VolumeAccessor<unsigned char> * m_binaryVolume;
  VolumeAccessor<float> * m_distanceVolume;
  SelleSimplePointEvaluator * m_simplePointEvaluator;
  std::int32_t m_removedVoxels{ 0 };
};

#endif
