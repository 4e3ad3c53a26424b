#ifndef SupplyTestSupport_h
#define SupplyTestSupport_h

// Builders shared by the supply-area tests: labelled vessels with points, small trees, organ volumes.

#include "ArVesselTree.h"
#include "VesselTestTree.h"
#include "ThreeDPicAccessor.h"
#include "VesselElement.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

namespace supply_test
{
using vessel_test::makeStar;
using vessel_test::makeVessel;
using vessel_test::VesselRecipe;

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
