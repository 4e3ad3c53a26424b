#include "lumoSkeletonizationBasedImageToVesselTreeFilter.h"

#include "lumoLegacyAdaptors.h"
#include "lumoTransformVesselTreeFilter.h"

#include "BreadthFirstTreeExtractor.h"
#include "CleaningSelleSkeletonizer.h"

#include <vtkLinearTransform.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace lumo
{
SkeletonizationBasedImageToVesselTreeFilter::SkeletonizationBasedImageToVesselTreeFilter()
{
  // Without inputs the filter has nothing to do, which is not an error.
  this->SetNumberOfRequiredInputs(0);
  m_Startpoint.Fill(0u);
  m_Spacing.Fill(1.0f);
}

SkeletonizationBasedImageToVesselTreeFilter::~SkeletonizationBasedImageToVesselTreeFilter() = default;

void
SkeletonizationBasedImageToVesselTreeFilter::SetInput(DataObjectPointerArraySizeType index, const Image * image)
{
  Superclass::SetInput(index, image);
  if (this->GetNumberOfIndexedOutputs() < index + 1)
  {
    this->ResizeOutputs(index + 1);
  }
}

namespace
{
/** Skeleton voxels that the thinning's last layer does not list with a distance. */
std::size_t
CountSkeletonVoxelsWithoutDistance(SelleSkeletonizer * skeletonizer)
{
  VolumeAccessor<unsigned char> * skeleton = skeletonizer->getBinaryVolume();
  const DistancePoint3DList * points = skeletonizer->getResultList();
  const unsigned char * data = skeleton->getData();
  if (data == nullptr)
  {
    return 0;
  }
  const std::size_t sizeX = skeleton->getSizeX();
  const std::size_t sizeY = skeleton->getSizeY();
  const std::size_t count = sizeX * sizeY * skeleton->getSizeZ();
  std::vector<char> hasDistance(count, 0);
  if (points != nullptr)
  {
    for (const DistancePoint3D * point : *points)
    {
      const std::size_t index = point->getX() + sizeX * (point->getY() + sizeY * point->getZ());
      if (index < count)
      {
        hasDistance[index] = 1;
      }
    }
  }
  std::size_t missing = 0;
  for (std::size_t i = 0; i < count; ++i)
  {
    missing += data[i] != 0 && hasDistance[i] == 0 ? 1 : 0;
  }
  return missing;
}
} // namespace

void
SkeletonizationBasedImageToVesselTreeFilter::GenerateData()
{
  for (DataObjectPointerArraySizeType i = 0; i < this->GetNumberOfIndexedInputs(); ++i)
  {
    const Image * image = this->GetInput(i);
    if (image == nullptr)
    {
      itkWarningMacro(<< i << "'th input image is null!");
      return;
    }
    lumoIpPicDescriptor * pic = CastToIpPicDescriptor(image);
    if (pic == nullptr || pic->type != lumoIpPicUInt || pic->bpe != 8 || pic->dim != 3)
    {
      itkWarningMacro("Strange: pic file has wrong type...");
      lumoIpPicFree(pic);
      return;
    }

    // The thinning's layers grow by the smallest voxel size: it must be a positive, finite number.
    for (unsigned int a = 0; a < 3; ++a)
    {
      if (!(m_Spacing[a] > 0.0f) || !std::isfinite(m_Spacing[a]))
      {
        lumoIpPicFree(pic);
        std::ostringstream message;
        message << "voxel sizes must be positive and finite, not " << m_Spacing[0] << " x " << m_Spacing[1] << " x "
                << m_Spacing[2] << " mm";
        throw itk::ExceptionObject(__FILE__, __LINE__, message.str(), ITK_LOCATION);
      }
    }
    // The skeletonizer takes over the clone it is given.
    auto * skeletonizer =
      new CleaningSelleSkeletonizer(lumoIpPicClone(pic), !m_EndpointSuppression, m_NumberOfCleanedIterations, true);
    skeletonizer->setVoxelSizeX(m_Spacing[0]);
    skeletonizer->setVoxelSizeY(m_Spacing[1]);
    skeletonizer->setVoxelSizeZ(m_Spacing[2]);
    skeletonizer->skeletonize();
    lumoIpPicFree(skeletonizer->getDistancePic());

    // The tree extractor ends the process on a skeleton voxel without a distance: refuse such a skeleton here.
    const std::size_t withoutDistance = CountSkeletonVoxelsWithoutDistance(skeletonizer);
    if (withoutDistance > 0)
    {
      lumoIpPicFree(pic);
      lumoIpPicFree(skeletonizer->getBinaryPic());
      delete skeletonizer;
      throw itk::ExceptionObject(__FILE__,
                                 __LINE__,
                                 "the thinning left " + std::to_string(withoutDistance) +
                                   " skeleton voxel(s) without a distance value, so no diameter can be given there",
                                 ITK_LOCATION);
    }

    auto * extractor = new BreadthFirstTreeExtractor;
    extractor->setStartAtThickestEndPoint(m_StartAtThickestEndPoint);
    // 16-bit voxel coordinates: larger indices wrap, deliberately.
    const ::Point3D start(static_cast<unsigned short>(m_Startpoint[0]),
                          static_cast<unsigned short>(m_Startpoint[1]),
                          static_cast<unsigned short>(m_Startpoint[2]));
    const ArVesselTree tree = extractor->getTree(skeletonizer->getBinaryVolume(), skeletonizer->getResultList(), start);
    m_NumberOfSkeletonVoxels = extractor->getNumberOfSkeletonVoxels();
    m_NumberOfLeftOutParts = extractor->getNumberOfLeftOutParts();
    m_NumberOfLeftOutVoxels = extractor->getNumberOfLeftOutVoxels();
    if (m_NumberOfLeftOutParts > 0)
    {
      itkWarningMacro(<< m_NumberOfLeftOutParts << " skeleton part(s) with " << m_NumberOfLeftOutVoxels
                      << " voxel(s) not connected to the start point were left out");
    }
    // Index to world in place on a working object that the transform may take over; the output then holds the
    // same (moved) tree and stays this filter's.
    auto voxelTree = VesselTreeData::New();
    voxelTree->initialize(tree);
    auto transform = TransformVesselTreeFilter::New();
    transform->SetInput(voxelTree);
    transform->SetInPlace(true);
    transform->SetVtkTransform(image->GetGeometry()->GetVtkTransform());
    const Vector3D spacing = image->GetGeometry()->GetSpacing();
    itk::Vector<float, 3> floatSpacing;
    for (unsigned int a = 0; a < 3; ++a)
    {
      floatSpacing[a] = static_cast<float>(spacing[a]);
    }
    transform->DeductSpacingFromTransform(floatSpacing);
    transform->Update();
    this->GetOutput(i)->initialize(tree);

    lumoIpPicFree(pic);
    lumoIpPicFree(skeletonizer->getBinaryPic());
    delete skeletonizer;
    delete extractor;
  }
}

void
SkeletonizationBasedImageToVesselTreeFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Startpoint: " << m_Startpoint << std::endl;
  os << indent << "Spacing: " << m_Spacing << std::endl;
  os << indent << "EndpointSuppression: " << m_EndpointSuppression << std::endl;
  os << indent << "NumberOfCleanedIterations: " << m_NumberOfCleanedIterations << std::endl;
  os << indent << "DefaultBloodVesselType: " << m_DefaultBloodVesselType << std::endl;
  os << indent << "StartAtThickestEndPoint: " << m_StartAtThickestEndPoint << std::endl;
}
} // namespace lumo
