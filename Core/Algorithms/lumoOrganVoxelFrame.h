#ifndef lumoOrganVoxelFrame_h
#define lumoOrganVoxelFrame_h

#include "SuppliedTissueClassifier.h"
#include "lumoImage.h"

#include <memory>

namespace itk
{
class MultiThreaderBase;
}

namespace lumo
{
/** An organ image as the supplied-tissue classifier reads it: a Pic descriptor over the image's own voxels (read
 *  only, so that no second organ volume is held) and the classifier's voxel frame, index times spacing without
 *  origin. The voxels stay the image's: they are detached before the descriptor is freed. The image must outlive
 *  the frame, and the frame every classifier it made. */
class OrganVoxelFrame
{
public:
  explicit OrganVoxelFrame(const Image * organ);
  ~OrganVoxelFrame();
  OrganVoxelFrame(const OrganVoxelFrame &) = delete;
  OrganVoxelFrame &
  operator=(const OrganVoxelFrame &) = delete;

  /** The descriptor over the organ's voxels: its type and bits per element are the image's. */
  const lumoIpPicDescriptor *
  GetPic() const
  {
    return m_Pic;
  }

  /** A classifier of the organ's voxels (which must be unsigned 8-bit, 3-D) against the tree, given the world to
   *  voxel frame transform; its voxel loop runs on the threader's pool in that many work units. */
  std::unique_ptr<SuppliedTissueClassifier>
  NewClassifier(const ArVesselTree & tree, itk::MultiThreaderBase * threader, unsigned int workUnits);

private:
  const Image * m_Organ;
  lumoIpPicDescriptor * m_Pic;
  std::unique_ptr<ThreeDPicAccessor<unsigned char>> m_Volume;
};
} // namespace lumo

#endif
