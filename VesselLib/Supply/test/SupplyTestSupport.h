#ifndef SupplyTestSupport_h
#define SupplyTestSupport_h

// Builders shared by the supply-area tests: labelled vessels with points, small trees, organ volumes.

#include "ArVesselTree.h"
#include "ThreeDPicAccessor.h"
#include "VesselElement.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

namespace supply_test
{
struct VesselRecipe
{
  std::int32_t id;
  std::int32_t type;
  std::int32_t segment;
  std::int32_t status;
  std::vector<VesselPoint> points;
};

inline ar<Vessel>
makeVessel(const VesselRecipe & recipe)
{
  ar<Vessel> vessel(new Vessel());
  vessel->setVesselId(recipe.id);
  vessel->getProperties().setBloodVesselType(recipe.type);
  vessel->getProperties().setSegmentType(recipe.segment);
  vessel->getProperties().setResectionStatus(recipe.status);
  for (const VesselPoint & p : recipe.points)
  {
    vessel->appendPoint(p);
  }
  return vessel;
}

/** A root with the given children, each child a leaf. */
inline ArVesselTree
makeStar(const VesselRecipe & root, const std::vector<VesselRecipe> & children)
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  tree->setRoot(makeVessel(root));
  for (const VesselRecipe & child : children)
  {
    auto * node = new VesselNode(tree->getRootNode(), makeVessel(child));
    tree->getRootNode()->addChild(node);
  }
  return handle;
}

inline std::vector<std::uint16_t>
idsOf(const VesselElementList & list)
{
  std::vector<std::uint16_t> ids;
  for (const VesselElement & e : list)
  {
    ids.push_back(e.vesselId);
  }
  return ids;
}

/** A zeroed unsigned 8-bit organ volume. */
inline lumoIpPicDescriptor *
newOrgan(std::uint32_t sizeX, std::uint32_t sizeY, std::uint32_t sizeZ)
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  return lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes);
}

template <class T>
T &
voxel(lumoIpPicDescriptor * pic, std::uint32_t x, std::uint32_t y, std::uint32_t z)
{
  return static_cast<T *>(pic->data)[(static_cast<std::size_t>(z) * pic->n[1] + y) * pic->n[0] + x];
}
} // namespace supply_test

#endif
