#include "lumoDeformablePlaneRPG.h"

#include "lumoPointLocator.h"

#include "LinkedTreeWalk.h"

#include <algorithm>
#include <unordered_map>

namespace lumo
{
namespace
{
const char * const sourcePath = "Core/Algorithms/lumoDeformablePlaneRPG.cpp";

/** Calls f(vessel, point) for every point of every vessel of the tree, vessels in pre-order. */
template <typename F>
void
forEachPoint(const ArVesselTree & tree, F && f)
{
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || !linked->hasRoot())
  {
    return;
  }
  using Walk = LinkedTreeWalk<ar<Vessel>>;
  VesselNode * root = linked->getRootNode();
  for (VesselNode * node = Walk::preorder(nullptr, root); node != nullptr; node = Walk::preorder(node, root))
  {
    f(node, root);
  }
}

Point3D
worldPoint(const VesselPoint & p)
{
  Point3D world;
  world[0] = p.x;
  world[1] = p.y;
  world[2] = p.z;
  return world;
}
} // namespace

DeformablePlaneRPG::DeformablePlaneRPG() = default;

DeformablePlaneRPG::~DeformablePlaneRPG() = default;

void
DeformablePlaneRPG::SetCuttingPlane(const DeformablePlane * plane)
{
  this->SetInput(4, const_cast<DeformablePlane *>(plane));
}

const DeformablePlane *
DeformablePlaneRPG::GetCuttingPlane()
{
  return dynamic_cast<const DeformablePlane *>(this->GetInput(4));
}

void
DeformablePlaneRPG::SetTumourMask(const Image * tumour)
{
  this->SetSafetyMargin(const_cast<Image *>(tumour));
}

const std::vector<std::uint32_t> &
DeformablePlaneRPG::Territories(PointTerritories & cache,
                                const Image * organ,
                                const VesselTreeData * data,
                                std::int32_t vesselType)
{
  if (cache.organ == organ && cache.organTime == organ->GetMTime() && cache.tree == data &&
      cache.treeTime == data->GetMTime())
  {
    return cache.nearest;
  }
  cache = PointTerritories();
  std::vector<Point3D> points;
  forEachPoint(data->GetVesselTreeData(0), [&](VesselNode * node, VesselNode *) {
    const ar<Vessel> vessel = node->getData();
    if (!vessel.isNull() && vessel->getProperties().getBloodVesselType() == vesselType)
    {
      for (const VesselPoint & p : vessel->getPoints())
      {
        points.push_back(worldPoint(p));
      }
    }
  });
  auto locator = PointLocator::New();
  locator->SetPoints(points);

  const auto size = organ->GetSize();
  const auto * voxels = static_cast<const unsigned char *>(organ->GetData());
  const Geometry3D * geometry = organ->GetGeometry(0);
  for (unsigned int z = 0, i = 0; z < size[2]; ++z)
  {
    for (unsigned int y = 0; y < size[1]; ++y)
    {
      for (unsigned int x = 0; x < size[0]; ++x, ++i)
      {
        if (voxels[i] == 0)
        {
          continue;
        }
        Point3D index, world;
        index[0] = x;
        index[1] = y;
        index[2] = z;
        geometry->IndexToWorld(index, world);
        cache.nearest.push_back(static_cast<std::uint32_t>(locator->FindClosestPoint(world)));
      }
    }
  }
  cache.organ = organ;
  cache.organTime = organ->GetMTime();
  cache.tree = data;
  cache.treeTime = data->GetMTime();
  ++m_NumberOfPointTerritoryComputations;
  return cache.nearest;
}

void
DeformablePlaneRPG::GenerateData()
{
  m_Notes.clear();
  const Image * organ = this->CheckedOrgan();
  ArVesselTree portal = this->CheckedPortalTree();
  ArVesselTree hepatic = this->CheckedHepaticTree();
  const DeformablePlane * plane = this->GetCuttingPlane();
  if (plane == nullptr)
  {
    throw itk::InvalidArgumentError(sourcePath, __LINE__, "No cutting plane set", ITK_LOCATION);
  }

  // The resected side, and the tumour's voxels inside the organ for the remnant's share.
  int resected = m_ResectSide == ResectSideType::Back ? -1 : 1;
  std::size_t tumourInOrgan = 0;
  if (m_ResectSide == ResectSideType::Tumour)
  {
    const auto * tumour = dynamic_cast<const Image *>(this->GetSafetyMargin());
    if (tumour == nullptr || !tumour->IsInitialized())
    {
      throw itk::InvalidArgumentError(sourcePath, __LINE__, "No tumour mask set", ITK_LOCATION);
    }
    if (tumour->GetSize() != organ->GetSize() || tumour->GetPixelType() != itk::IOComponentEnum::UCHAR)
    {
      throw itk::InvalidArgumentError(
        sourcePath, __LINE__, "Tumour mask and organ segmentation differ in size", ITK_LOCATION);
    }
    const DeformablePlane::SideCounts inTumour = plane->CountSides(tumour);
    if (inTumour.Front + inTumour.Back + inTumour.OnSurface == 0)
    {
      throw itk::InvalidArgumentError(sourcePath, __LINE__, "Tumour mask holds no tumour voxel", ITK_LOCATION);
    }
    resected = inTumour.Back > inTumour.Front ? -1 : 1;
    const std::uint64_t left = (resected > 0 ? inTumour.Back : inTumour.Front) + inTumour.OnSurface;
    if (left > 0)
    {
      m_Notes.push_back("The cutting plane runs through the tumour: " + std::to_string(left) +
                        " tumour voxels are not on the resected side");
    }
    const auto * t = static_cast<const unsigned char *>(tumour->GetData());
    const auto * o = static_cast<const unsigned char *>(organ->GetData());
    for (std::size_t i = 0; i < organ->GetNumberOfVoxels(); ++i)
    {
      tumourInOrgan += (t[i] != 0 && o[i] != 0) ? 1 : 0;
    }
  }
  m_ResectedSide = resected;

  // Refused before anything is written.
  const DeformablePlane::SideCounts inOrgan = plane->CountSides(organ);
  const std::uint64_t onResectedSide = resected > 0 ? inOrgan.Front : inOrgan.Back;
  if (onResectedSide == 0 || onResectedSide == inOrgan.Front + inOrgan.Back + inOrgan.OnSurface)
  {
    throw itk::InvalidArgumentError(sourcePath, __LINE__, "The cutting plane misses the organ", ITK_LOCATION);
  }

  // Nearest points before the statuses change: they depend on the trees' points only.
  const VesselTreeData * portalData = this->GetVesselTree();
  const VesselTreeData * hepaticData = this->GetHepaticVesselTree();
  const std::vector<std::uint32_t> & portalNearest = this->Territories(m_PortalPoints, organ, portalData, PortalVein);
  static const std::vector<std::uint32_t> none;
  const std::vector<std::uint32_t> & hepaticNearest =
    hepatic.isNull() ? none : this->Territories(m_HepaticPoints, organ, hepaticData, HepaticVein);

  // Walks a tree: per point of a vessel of the type (in the order of the territories) whether it lost its supply
  // or drainage, and the vessels' statuses. A path changes side when one of its points is not on the root's side.
  auto walk = [&](const ArVesselTree & tree, std::int32_t vesselType, const char * note) {
    std::vector<std::uint8_t> lost;
    std::unordered_map<const VesselNode *, bool> changedAtEnd;
    bool haveRoot = false;
    bool rootResected = false;
    forEachPoint(tree, [&](VesselNode * node, VesselNode * root) {
      bool changed = node != root && changedAtEnd[node->getParent()];
      const ar<Vessel> vessel = node->getData();
      if (vessel.isNull())
      {
        changedAtEnd[node] = changed;
        return;
      }
      bool anyRemnantLost = false;
      bool allResected = vessel->numberOfPoints() > 0;
      for (const VesselPoint & p : vessel->getPoints())
      {
        const bool pointResected = plane->GetSide(worldPoint(p)) == resected;
        if (!haveRoot)
        {
          haveRoot = true;
          rootResected = pointResected;
        }
        changed = changed || pointResected != rootResected;
        anyRemnantLost = anyRemnantLost || (changed && !pointResected);
        allResected = allResected && pointResected;
        if (vessel->getProperties().getBloodVesselType() == vesselType)
        {
          lost.push_back(changed ? 1 : 0);
        }
      }
      changedAtEnd[node] = changed;
      vessel->getProperties().setResectionStatus(anyRemnantLost ? AreaAtRisk
                                                                : (allResected ? ToBeResected : NotToBeResected));
    });
    if (rootResected)
    {
      m_Notes.push_back(note);
    }
    return lost;
  };
  auto statusesWritten = [&](const VesselTreeData * data, PointTerritories & cache) {
    const itk::ModifiedTimeType before = data->GetMTime();
    this->StatusesWritten(data);
    if (cache.tree == data && cache.treeTime == before)
    {
      cache.treeTime = data->GetMTime();
    }
  };
  const std::vector<std::uint8_t> portalLost =
    walk(portal, PortalVein, "The portal root lies on the resected side: the whole remnant loses its portal supply");
  statusesWritten(portalData, m_PortalPoints);
  std::vector<std::uint8_t> hepaticLost;
  if (!hepatic.isNull())
  {
    hepaticLost =
      walk(hepatic, HepaticVein, "The hepatic root lies on the resected side: the whole remnant loses its drainage");
    statusesWritten(hepaticData, m_HepaticPoints);
  }

  // The side test writes 3 and 2 straight into the resection image; remnant voxels whose supply or drainage was
  // cut become 4. The territories hold one point index per organ voxel, in scan order (k counts the organ
  // voxels); walking the organ's runs skips the background instead of reading the whole mask again.
  unsigned char * labels = this->StartResectionImage(organ);
  plane->LabelSides(organ,
                    organ,
                    labels,
                    resected > 0 ? ResectedLabel : RemnantLabel,
                    resected > 0 ? RemnantLabel : ResectedLabel,
                    RemnantLabel);
  const bool withHepatic = !hepaticLost.empty();
  std::size_t k = 0;
  for (const OrganRun & run : this->OrganRuns())
  {
    for (std::size_t i = run.start; i < run.start + run.length; ++i, ++k)
    {
      if (labels[i] == RemnantLabel &&
          (portalLost[portalNearest[k]] != 0 || (withHepatic && hepaticLost[hepaticNearest[k]] != 0)))
      {
        labels[i] = AtRiskLabel;
      }
    }
  }
  this->FinishResectionImage(organ, tumourInOrgan);
}

void
DeformablePlaneRPG::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "ResectSide: "
     << (m_ResectSide == ResectSideType::Front ? "front" : (m_ResectSide == ResectSideType::Back ? "back" : "tumour"))
     << std::endl;
  os << indent << "ResectedSide: " << m_ResectedSide << std::endl;
  os << indent << "NumberOfPointTerritoryComputations: " << m_NumberOfPointTerritoryComputations << std::endl;
}
} // namespace lumo
