#include "lumoVascularTerritoryRPG.h"

#include "lumoLabelImageSurfaceFilter.h"
#include "lumoOrganVoxelFrame.h"
#include "lumoSurface.h"
#include "lumoVesselTreeLookupTable.h"

#include "LinkedTreeWalk.h"
#include "VesselTreeSamplers.h"

#include <itkMultiThreaderBase.h>

#include <algorithm>
#include <memory>

namespace lumo
{
namespace
{
/** Whether the tree has a vessel of that type with at least one point (one that can supply tissue). */
bool
hasSupplyingVessel(const ArVesselTree & tree, std::int32_t type)
{
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || !linked->hasRoot())
  {
    return false;
  }
  using Walk = LinkedTreeWalk<ar<Vessel>>;
  VesselNode * root = linked->getRootNode();
  for (VesselNode * node = Walk::preorder(nullptr, root); node != nullptr; node = Walk::preorder(node, root))
  {
    const ar<Vessel> vessel = node->getData();
    if (!vessel.isNull() && vessel->getProperties().getBloodVesselType() == type && vessel->numberOfPoints() > 0)
    {
      return true;
    }
  }
  return false;
}

const char *
labelName(std::uint8_t label)
{
  switch (label)
  {
    case VascularTerritoryRPG::RemnantLabel:
      return "Remnant";
    case VascularTerritoryRPG::ResectedLabel:
      return "To be resected";
    default:
      return "Area at risk";
  }
}
} // namespace

VascularTerritoryRPG::VascularTerritoryRPG() = default;

VascularTerritoryRPG::~VascularTerritoryRPG() = default;

void
VascularTerritoryRPG::SetHepaticVesselTree(const VesselTreeData * tree)
{
  this->SetInput(3, const_cast<VesselTreeData *>(tree));
}

const VesselTreeData *
VascularTerritoryRPG::GetHepaticVesselTree()
{
  return dynamic_cast<const VesselTreeData *>(this->GetInput(3));
}

ResectionProposalDescriptorProperty *
VascularTerritoryRPG::GetResectionProposalDescriptor() const
{
  return m_Descriptor.GetPointer();
}

std::size_t
VascularTerritoryRPG::GetNumberOfVoxels(std::uint8_t label) const
{
  return label >= RemnantLabel && label <= AtRiskLabel ? m_Counts[label] : 0;
}

double
VascularTerritoryRPG::GetFutureLiverRemnantPercent() const
{
  const std::size_t base = m_NumberOfOrganVoxels - std::min(m_NumberOfOrganVoxels, m_NumberOfTumourVoxels);
  return base == 0 ? 0.0 : 100.0 * static_cast<double>(m_Counts[RemnantLabel]) / static_cast<double>(base);
}

void
VascularTerritoryRPG::GenerateOutputInformation()
{}

void
VascularTerritoryRPG::VerifyPreconditions() ITKv5_CONST
{}

const Image *
VascularTerritoryRPG::CheckedOrgan()
{
  const auto * organ = dynamic_cast<const Image *>(this->GetInput(0));
  if (organ == nullptr || !organ->IsInitialized())
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "No organ segmentation set", ITK_LOCATION);
  }
  if (organ->GetDimension() != 3 || organ->GetPixelType() != itk::IOComponentEnum::UCHAR)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Organ segmentation must be a 3-D unsigned 8-bit image", ITK_LOCATION);
  }
  return organ;
}

ArVesselTree
VascularTerritoryRPG::CheckedPortalTree()
{
  const VesselTreeData * data = this->GetVesselTree();
  ArVesselTree tree = data == nullptr ? ArVesselTree() : data->GetVesselTreeData(0);
  if (tree.isNull())
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "No portal tree set", ITK_LOCATION);
  }
  if (!hasSupplyingVessel(tree, PortalVein))
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Portal tree holds no portal vein with centre-line points", ITK_LOCATION);
  }
  return tree;
}

ArVesselTree
VascularTerritoryRPG::CheckedHepaticTree()
{
  const VesselTreeData * data = this->GetHepaticVesselTree();
  if (data == nullptr)
  {
    return ArVesselTree();
  }
  ArVesselTree tree = data->GetVesselTreeData(0);
  if (tree.isNull() || !hasSupplyingVessel(tree, HepaticVein))
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Hepatic tree holds no hepatic vein with centre-line points", ITK_LOCATION);
  }
  return tree;
}

const std::vector<std::uint16_t> &
VascularTerritoryRPG::PortalTerritories()
{
  return this->TerritoriesOf(m_Portal, this->GetVesselTree(), PortalVein);
}

const std::vector<std::uint16_t> &
VascularTerritoryRPG::HepaticTerritories()
{
  const VesselTreeData * hepatic = this->GetHepaticVesselTree();
  if (hepatic == nullptr)
  {
    m_Hepatic = Territories();
    return m_Hepatic.ids;
  }
  return this->TerritoriesOf(m_Hepatic, hepatic, HepaticVein);
}

const std::vector<std::uint16_t> &
VascularTerritoryRPG::TerritoriesOf(Territories & cache, const VesselTreeData * data, std::int32_t vesselType)
{
  const Image * organ = this->CheckedOrgan();
  if (cache.organ == organ && cache.organTime == organ->GetMTime() && cache.tree == data &&
      cache.treeTime == data->GetMTime() && !cache.ids.empty())
  {
    return cache.ids;
  }
  cache = Territories();

  OrganVoxelFrame organFrame(organ);
  auto classifier =
    organFrame.NewClassifier(data->GetVesselTreeData(0), this->GetMultiThreader(), this->GetNumberOfWorkUnits());
  if (vesselType == PortalVein)
  {
    classifier->setVesselTreeSampler(new PortaVesselTreeSampler());
  }
  else
  {
    classifier->setVesselTreeSampler(new HepaVesselTreeSampler());
  }
  classifier->cumputeSuppliedTissue();

  const auto * ids = static_cast<const std::uint16_t *>(classifier->getVesselIDVolume()->getPic()->data);
  for (const OrganRun & run : this->OrganRuns())
  {
    cache.ids.insert(cache.ids.end(), ids + run.start, ids + run.start + run.length);
  }
  cache.organ = organ;
  cache.organTime = organ->GetMTime();
  cache.tree = data;
  cache.treeTime = data->GetMTime();
  ++m_NumberOfTerritoryComputations;
  return cache.ids;
}

const std::vector<VascularTerritoryRPG::OrganRun> &
VascularTerritoryRPG::OrganRuns()
{
  const Image * organ = this->CheckedOrgan();
  if (m_RunsOrgan == organ && m_RunsOrganTime == organ->GetMTime())
  {
    return m_OrganRuns;
  }
  m_OrganRuns.clear();
  const auto * voxels = static_cast<const unsigned char *>(organ->GetData());
  const auto * end = voxels + organ->GetNumberOfVoxels();
  for (const auto * first = std::find_if(voxels, end, [](unsigned char v) { return v != 0; }); first != end;)
  {
    const auto * last = std::find(first, end, static_cast<unsigned char>(0));
    m_OrganRuns.push_back({ static_cast<std::size_t>(first - voxels), static_cast<std::size_t>(last - first) });
    first = std::find_if(last, end, [](unsigned char v) { return v != 0; });
  }
  m_RunsOrgan = organ;
  m_RunsOrganTime = organ->GetMTime();
  return m_OrganRuns;
}

std::vector<std::uint8_t>
VascularTerritoryRPG::TableById(const ArVesselTree & tree, const std::function<std::uint8_t(const Vessel &)> & value)
{
  std::vector<std::uint8_t> table(65536, 0);
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || !linked->hasRoot())
  {
    return table;
  }
  using Walk = LinkedTreeWalk<ar<Vessel>>;
  VesselNode * root = linked->getRootNode();
  for (VesselNode * node = Walk::preorder(nullptr, root); node != nullptr; node = Walk::preorder(node, root))
  {
    const ar<Vessel> vessel = node->getData();
    if (!vessel.isNull())
    {
      table[static_cast<std::uint16_t>(vessel->getVesselId())] = value(*vessel);
    }
  }
  return table;
}

unsigned char *
VascularTerritoryRPG::StartResectionImage(const Image * organ)
{
  Image * output = this->GetResectionImage();
  output->Initialize(
    itk::IOComponentEnum::UCHAR, organ->GetSize(), organ->GetSpacing(), organ->GetOrigin(), organ->GetDirection(), 3);
  return static_cast<unsigned char *>(output->GetData());
}

void
VascularTerritoryRPG::FinishResectionImage(const Image * organ, std::size_t tumourVoxelsInOrgan)
{
  Image * output = this->GetResectionImage();
  const auto * labels = static_cast<const unsigned char *>(output->GetData());
  std::fill(std::begin(m_Counts), std::end(m_Counts), 0);
  for (const OrganRun & run : this->OrganRuns())
  {
    for (std::size_t i = run.start; i < run.start + run.length; ++i)
    {
      ++m_Counts[labels[i] < 5 ? labels[i] : 0];
    }
  }
  m_NumberOfOrganVoxels = m_Counts[RemnantLabel] + m_Counts[ResectedLabel] + m_Counts[AtRiskLabel];
  m_NumberOfTumourVoxels = tumourVoxelsInOrgan;
  const Vector3D spacing = organ->GetSpacing();
  m_VoxelMillilitres = spacing[0] * spacing[1] * spacing[2] / 1000.0;
  output->Modified();

  VesselTreeLookupTable::ConstPointer table = this->GetVesselTreeLookupTable();
  if (table.IsNull())
  {
    table = VesselTreeLookupTable::New().GetPointer();
  }
  const VesselTreeLookupTable::ColorVectorType colours = table->GetColorByResectionStatus();

  m_Descriptor = ResectionProposalDescriptorProperty::New();
  m_Descriptor->SetResectionProposalName(m_ProposalName);
  std::vector<std::uint8_t> present;
  for (std::uint8_t label : { RemnantLabel, ResectedLabel, AtRiskLabel })
  {
    if (m_Counts[label] == 0)
    {
      continue;
    }
    ResectionProposalDescriptorProperty::LabelDescriptor descriptor;
    descriptor.Label = label;
    descriptor.Name = labelName(label);
    descriptor.ResectionType = static_cast<ResectionProposalDescriptorProperty::ResectionType>(label);
    descriptor.Volume = static_cast<float>(static_cast<double>(m_Counts[label]) * m_VoxelMillilitres);
    descriptor.SurfaceOutputIndex = static_cast<int>(present.size());
    if (label < colours.size())
    {
      for (unsigned int c = 0; c < 3; ++c)
      {
        descriptor.Color[c] = static_cast<float>(colours[label][c]);
      }
    }
    m_Descriptor->AddLabelDescriptor(descriptor);
    present.push_back(label);
  }
  this->MakeSurfaces(output, present);
}

void
VascularTerritoryRPG::MakeSurfaces(const Image * resection, const std::vector<std::uint8_t> & labels)
{
  // One surface output per label present (at least one, as the source requires).
  this->ResizeOutputs(1 + std::max<std::size_t>(1, labels.size()));
  for (unsigned int i = 0; i < this->GetNumberOfResectionSurfaces(); ++i)
  {
    this->GetResectionSurface(i)->Clear();
  }
  if (!m_GenerateSurfaces || labels.empty())
  {
    return;
  }
  auto surfaces = LabelImageSurfaceFilter::New();
  surfaces->SetInput(resection);
  surfaces->SetLabels(LabelImageSurfaceFilter::LabelVector(labels.begin(), labels.end()));
  surfaces->Update();
  for (unsigned int i = 0; i < labels.size(); ++i)
  {
    this->GetResectionSurface(i)->Graft(surfaces->GetOutput(i));
  }
}

void
VascularTerritoryRPG::StatusesWritten(const VesselTreeData * tree)
{
  const itk::ModifiedTimeType before = tree->GetMTime();
  const_cast<VesselTreeData *>(tree)->AttributesModified();
  for (Territories * cache : { &m_Portal, &m_Hepatic })
  {
    if (cache->tree == tree && cache->treeTime == before)
    {
      cache->treeTime = tree->GetMTime();
    }
  }
}

void
VascularTerritoryRPG::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "GenerateSurfaces: " << (m_GenerateSurfaces ? "On" : "Off") << std::endl;
  os << indent << "ProposalName: " << m_ProposalName << std::endl;
  os << indent << "NumberOfTerritoryComputations: " << m_NumberOfTerritoryComputations << std::endl;
}
} // namespace lumo
