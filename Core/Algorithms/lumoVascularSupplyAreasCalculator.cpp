#include "lumoVascularSupplyAreasCalculator.h"

#include "SuppliedTissueClassifier.h"
#include "VesselIDRelabeling.h"
#include "VesselTreeSamplers.h"

#include <itkMultiThreaderBase.h>
#include <itkOutputWindow.h>
#include <vtkMatrix4x4.h>
#include <vtkSmartPointer.h>

#include <memory>
#include <sstream>

namespace lumo
{
namespace
{
const char * const generateDataSignature = "void lumo::VascularSupplyAreasCalculator::GenerateData()";

/** A Pic descriptor that shows the image's own voxels instead of a copy (the organ is read only), so that the
 *  computation holds no second organ volume. The voxels stay the image's: they are detached before the
 *  descriptor is freed. */
struct BorrowedPic
{
  explicit BorrowedPic(const Image * image)
    : pic(lumoIpPicNew())
  {
    pic->data = const_cast<void *>(image->GetData());
    pic->type = image->IsFloatingPoint() ? lumoIpPicFloat : image->IsSignedInteger() ? lumoIpPicInt : lumoIpPicUInt;
    pic->bpe = image->GetBitsPerComponent();
    pic->dim = image->GetDimension();
    for (unsigned int axis = 0; axis < pic->dim && axis < 3; ++axis)
    {
      pic->n[axis] = image->GetDimension(axis);
    }
  }
  ~BorrowedPic()
  {
    pic->data = nullptr;
    lumoIpPicFree(pic);
  }
  BorrowedPic(const BorrowedPic &) = delete;
  BorrowedPic &
  operator=(const BorrowedPic &) = delete;

  lumoIpPicDescriptor * pic;
};
} // namespace

VascularSupplyAreasCalculator::VascularSupplyAreasCalculator()
{
  this->SetNumberOfRequiredInputs(2);
}

VascularSupplyAreasCalculator::~VascularSupplyAreasCalculator() = default;

void
VascularSupplyAreasCalculator::SetOrganSegmentation(const Image * organ)
{
  this->SetInput(0, organ);
}

const Image *
VascularSupplyAreasCalculator::GetOrganSegmentation()
{
  return dynamic_cast<const Image *>(this->GetInput(0));
}

void
VascularSupplyAreasCalculator::SetVesselTree(const VesselTreeData * tree)
{
  this->SetInput(1, tree);
}

const VesselTreeData *
VascularSupplyAreasCalculator::GetVesselTree()
{
  return dynamic_cast<const VesselTreeData *>(this->GetInput(1));
}

void
VascularSupplyAreasCalculator::SetInput(const Image * organ)
{
  this->SetInput(0, organ);
}

void
VascularSupplyAreasCalculator::SetInput(DataObjectPointerArraySizeType index, const itk::DataObject * input)
{
  if (index + 1 > this->GetNumberOfIndexedInputs())
  {
    this->SetNumberOfIndexedInputs(index + 1);
  }
  this->SetNthInput(index, const_cast<itk::DataObject *>(input));
}

const itk::DataObject *
VascularSupplyAreasCalculator::GetInput(DataObjectPointerArraySizeType index)
{
  if (index >= this->GetNumberOfIndexedInputs())
  {
    return nullptr;
  }
  return this->ProcessObject::GetInput(index);
}

int
VascularSupplyAreasCalculator::GetOutputType()
{
  return lumoIpPicUInt;
}

int
VascularSupplyAreasCalculator::GetOutputBpe()
{
  return 8;
}

void
VascularSupplyAreasCalculator::GenerateOutputInformation()
{}

void
VascularSupplyAreasCalculator::VerifyPreconditions() ITKv5_CONST
{}

void
VascularSupplyAreasCalculator::Warn(int line, const char * message) const
{
  if (!itk::Object::GetGlobalWarningDisplay())
  {
    return;
  }
  std::ostringstream text;
  text << "WARNING: In " << __FILE__ << ", line " << line << "\n"
       << this->GetNameOfClass() << " (" << this << "): " << message << "\n\n";
  itk::OutputWindowDisplayWarningText(text.str().c_str());
}

void
VascularSupplyAreasCalculator::GenerateData()
{
  const Image * organ = this->GetOrganSegmentation();
  if (organ == nullptr || !organ->IsInitialized())
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "No valid organ segmentation found", generateDataSignature);
  }
  BorrowedPic organPic(organ);
  if (organPic.pic->dim != 3)
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "Organ segmentation has wrong dimension", generateDataSignature);
  }
  if (organPic.pic->type != lumoIpPicUInt || organPic.pic->bpe != 8)
  {
    throw itk::ExceptionObject(
      __FILE__, __LINE__, "Organ segmentation has wrong type ( should be lumoIpUInt1_t)", generateDataSignature);
  }
  const VesselTreeData * treeData = this->GetVesselTree();
  if (treeData == nullptr)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "VascularSupplyAreasCalculator: No VesselTreeData found", generateDataSignature);
  }
  ArVesselTree tree = treeData->GetVesselTreeData(0);
  if (tree.isNull())
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "VascularSupplyAreasCalculator: No legacy vessel tree found inside VesselTreeData",
                                    generateDataSignature);
  }

  // Voxels are classified at index times spacing, without origin.
  const Vector3D spacing = organ->GetSpacing();
  auto organVolume = std::make_unique<ThreeDPicAccessor<unsigned char>>(organPic.pic, false, 0);
  organVolume->setVoxelSize(
    static_cast<float>(spacing[0]), static_cast<float>(spacing[1]), static_cast<float>(spacing[2]));
  organVolume->setOrigin(0.0f, 0.0f, 0.0f);

  // World to that frame: the index-to-world matrix with the spacing divided out of its columns, inverted.
  auto matrix = vtkSmartPointer<vtkMatrix4x4>::New();
  organ->GetGeometry(0)->GetIndexToWorldMatrix(matrix);
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

  auto classifier = std::make_unique<SuppliedTissueClassifier>(organVolume.get(), tree);
  classifier->setComputeDistance(false);
  classifier->setOwnsOrganVolume(false);
  classifier->setTransformation(worldToVoxelFrame);
  // The voxel loop's work units run on the filter's multi-threader (ITK's thread pool), each a whole share of
  // the loop that takes rows of voxel blocks until none are left.
  itk::MultiThreaderBase * threader = this->GetMultiThreader();
  classifier->setWorkRunner(
    [threader](unsigned int units, const std::function<void(unsigned int)> & work) {
      threader->SetNumberOfWorkUnits(units);
      threader->ParallelizeArray(
        0, units, [&work](itk::SizeValueType unit) { work(static_cast<unsigned int>(unit)); }, nullptr);
    },
    this->GetNumberOfWorkUnits());
  classifier->setProgressCallback([this](double done) { this->UpdateProgress(static_cast<float>(done)); });

  AbstractVesselTreeSampler * sampler = nullptr;
  switch (m_CalculationMode)
  {
    case PortalDefinedSegments:
      sampler = new OnlyDefinedPortaVesselTreeSampler();
      break;
    case PortalSegments:
      sampler = new PortaVesselTreeSampler();
      break;
    case HepaticDefinedSegments:
      sampler = new OnlyDefinedHepaVesselTreeSampler();
      break;
    case HepaticSegments:
      sampler = new HepaVesselTreeSampler();
      break;
    case AllVesselsSegments:
    case AllVesselsTypes:
      sampler = new EntireVesselTreeSampler();
      break;
    case PortalResectionStatus:
    case PortalDefinedResectionStatus:
    case HepaticResectionStatus:
    case HepaticDefinedResectionStatus:
    {
      auto * statusSampler = new ResectionStatusVesselTreeSampler();
      const bool portal =
        m_CalculationMode == PortalResectionStatus || m_CalculationMode == PortalDefinedResectionStatus;
      const bool ignoreUndefined =
        m_CalculationMode == PortalDefinedResectionStatus || m_CalculationMode == HepaticDefinedResectionStatus;
      statusSampler->setVesselType(portal ? PortalVein : HepaticVein);
      statusSampler->setIgnoreUndefinedStatus(ignoreUndefined);
      sampler = statusSampler;
      break;
    }
    default:
      this->Warn(__LINE__, "unknown calculation mode encountered!");
      return;
  }
  classifier->setVesselTreeSampler(sampler);
  classifier->cumputeSuppliedTissue();

  std::unique_ptr<AbstractRelabelingRule> rule;
  if (m_CalculationMode <= AllVesselsSegments)
  {
    rule = std::make_unique<IdToSegmentRelabelingRule>(tree);
  }
  else if (m_CalculationMode == AllVesselsTypes)
  {
    rule = std::make_unique<IdToTypeRelabelingRule>(tree);
  }
  else
  {
    rule = std::make_unique<IdToResectionStatusRelabelingRule>(tree);
  }
  lumoIpPicDescriptor * labels =
    VesselIDRelabeling::relabel(classifier->getVesselIDVolume()->getPic(), rule.get(), false);
  if (labels == nullptr)
  {
    this->Warn(__LINE__, "labeledOrganSegmentation is NULL!");
    return;
  }

  // Labels reach at most 27 (segments), so the 8-bit output holds them; it is written straight from the 16-bit
  // volume, without an intermediate copy.
  Image * output = this->GetOutput();
  output->Initialize(
    itk::IOComponentEnum::UCHAR, organ->GetSize(), organ->GetSpacing(), organ->GetOrigin(), organ->GetDirection(), 3);
  const auto * source = static_cast<const std::uint16_t *>(labels->data);
  auto * target = static_cast<unsigned char *>(output->GetData());
  const std::size_t voxels = lumoIpPicElements(labels);
  for (std::size_t i = 0; i < voxels; ++i)
  {
    target[i] = static_cast<unsigned char>(source[i]);
  }
  output->Modified();
}

void
VascularSupplyAreasCalculator::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "CalculationMode: " << static_cast<int>(m_CalculationMode) << std::endl;
}
} // namespace lumo
