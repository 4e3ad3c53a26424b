#ifndef Skeletonizer_h
#define Skeletonizer_h

#include "VolumeAccessor.h"
#include "lumoIpPicDescriptor.h"

class BorderVoxelListProcessor;

/** Base of the thinning algorithms: owns the border voxel list processor, the binary volume (the input,
 *  unsigned 8-bit, thinned in place) and the float distance volume.
 *
 *  The skeletonizer takes over the pic it is given in every case: a pic that is not unsigned 8-bit is converted
 *  and the passed one freed. Neither volume owns its pic: after use the caller frees getBinaryPic() and
 *  getDistancePic() (the latter is null when no distance volume was asked for). */
class Skeletonizer
{
public:
  /** Ends the process on a null or non-3-D pic. With noDistanceVolume the distance volume is empty and writes to
   *  it are dropped; otherwise it is a zero-filled float pic of the same size. The list processor is an
   *  OrderedBorderVoxelListProcessor with the ordering flag. */
  Skeletonizer(lumoIpPicDescriptor * pic, bool ordering, bool noDistanceVolume);
  Skeletonizer(const Skeletonizer &) = delete;
  Skeletonizer &
  operator=(const Skeletonizer &) = delete;
  virtual ~Skeletonizer();

  /** Replaces the list processor and deletes the previous one; null is ignored. */
  virtual void
  setBorderVoxelListProcessor(BorderVoxelListProcessor * processor);
  virtual lumoIpPicDescriptor *
  getBinaryPic();
  virtual lumoIpPicDescriptor *
  getDistancePic();
  virtual VolumeAccessor<unsigned char> *
  getBinaryVolume();
  virtual VolumeAccessor<float> *
  getDistanceVolume();
  virtual BorderVoxelListProcessor *
  getBorderVoxelListProcessor();
  virtual void
  skeletonize() = 0;
  /** Set that voxel size on both volumes. */
  virtual void
  setVoxelSizeX(float size);
  virtual void
  setVoxelSizeY(float size);
  virtual void
  setVoxelSizeZ(float size);

protected:
  BorderVoxelListProcessor * m_borderVoxelListProcessor{ nullptr };
  VolumeAccessor<unsigned char> * m_binaryVolume{ nullptr };
  VolumeAccessor<float> * m_distanceVolume{ nullptr };
  bool m_noDistanceVolume;
};

#endif
