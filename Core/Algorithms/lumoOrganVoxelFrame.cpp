#include "lumoOrganVoxelFrame.h"

#include <itkMultiThreaderBase.h>
#include <vtkMatrix4x4.h>
#include <vtkSmartPointer.h>

namespace lumo
{
OrganVoxelFrame::OrganVoxelFrame(const Image * organ)
  : m_Organ(organ)
  , m_Pic(lumoIpPicNew())
{
  m_Pic->data = const_cast<void *>(organ->GetData());
  m_Pic->type = organ->IsFloatingPoint() ? lumoIpPicFloat : organ->IsSignedInteger() ? lumoIpPicInt : lumoIpPicUInt;
  m_Pic->bpe = organ->GetBitsPerComponent();
  m_Pic->dim = organ->GetDimension();
  for (unsigned int axis = 0; axis < m_Pic->dim && axis < 3; ++axis)
  {
    m_Pic->n[axis] = organ->GetDimension(axis);
  }
}

OrganVoxelFrame::~OrganVoxelFrame()
{
  // The accessor does not own the descriptor; the voxels are the image's.
  m_Volume.reset();
  m_Pic->data = nullptr;
  lumoIpPicFree(m_Pic);
}

std::unique_ptr<SuppliedTissueClassifier>
OrganVoxelFrame::NewClassifier(const ArVesselTree & tree, itk::MultiThreaderBase * threader, unsigned int workUnits)
{
  const Vector3D spacing = m_Organ->GetSpacing();
  if (!m_Volume)
  {
    m_Volume = std::make_unique<ThreeDPicAccessor<unsigned char>>(m_Pic, false, 0);
    m_Volume->setVoxelSize(
      static_cast<float>(spacing[0]), static_cast<float>(spacing[1]), static_cast<float>(spacing[2]));
    m_Volume->setOrigin(0.0f, 0.0f, 0.0f);
  }

  // World to the voxel frame: the index-to-world matrix with the spacing divided out of its columns, inverted.
  auto matrix = vtkSmartPointer<vtkMatrix4x4>::New();
  m_Organ->GetGeometry(0)->GetIndexToWorldMatrix(matrix);
  for (int row = 0; row < 3; ++row)
  {
    for (int column = 0; column < 3; ++column)
    {
      matrix->SetElement(row, column, matrix->GetElement(row, column) / spacing[column]);
    }
  }
  matrix->Invert();
  double worldToVoxelFrame[4][4];
  for (int row = 0; row < 4; ++row)
  {
    for (int column = 0; column < 4; ++column)
    {
      worldToVoxelFrame[row][column] = matrix->GetElement(row, column);
    }
  }

  auto classifier = std::make_unique<SuppliedTissueClassifier>(m_Volume.get(), tree);
  classifier->setComputeDistance(false);
  classifier->setOwnsOrganVolume(false);
  classifier->setTransformation(worldToVoxelFrame);
  // The voxel loop's work units run on the threader (ITK's thread pool), each a whole share of the loop that
  // takes rows of voxel blocks until none are left.
  classifier->setWorkRunner(
    [threader](unsigned int units, const std::function<void(unsigned int)> & work) {
      threader->SetNumberOfWorkUnits(units);
      threader->ParallelizeArray(
        0, units, [&work](itk::SizeValueType unit) { work(static_cast<unsigned int>(unit)); }, nullptr);
    },
    workUnits);
  return classifier;
}
} // namespace lumo
