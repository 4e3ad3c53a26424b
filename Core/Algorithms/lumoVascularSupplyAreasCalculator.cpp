#include "lumoVascularSupplyAreasCalculator.h"

#include "lumoOrganVoxelFrame.h"

#include "VesselIDRelabeling.h"
#include "VesselTreeSamplers.h"

#include <itkOutputWindow.h>

#include <memory>
#include <sstream>

namespace lumo
{
namespace
{
const char * const generateDataSignature = "void lumo::VascularSupplyAreasCalculator::GenerateData()";
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
  OrganVoxelFrame organFrame(organ);
  if (organFrame.GetPic()->dim != 3)
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "Organ segmentation has wrong dimension", generateDataSignature);
  }
  if (organFrame.GetPic()->type != lumoIpPicUInt || organFrame.GetPic()->bpe != 8)
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

  auto classifier = organFrame.NewClassifier(tree, this->GetMultiThreader(), this->GetNumberOfWorkUnits());
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
