#include "SelleSkeletonizer.h"

#include "BorderVoxelHashMap.h"
#include "BorderVoxelListProcessor.h"

#include <algorithm>
#include <cstdlib>
#include <cmath>
#include <cstring>
#include <iostream>
#include <vector>

namespace
{
constexpr unsigned char borderLabel = 1;
constexpr unsigned char interiorLabel = 3;

// Face neighbours in the order in which the border grows and neighbours are looked up.
constexpr int growthOrder[6][3] = { { -1, 0, 0 }, { 1, 0, 0 }, { 0, -1, 0 }, { 0, 1, 0 }, { 0, 0, -1 }, { 0, 0, 1 } };

// Axes by increasing voxel size for each axis order code (0 = x, 1 = y, 2 = z).
constexpr int axesBySize[6][3] = { { 0, 1, 2 }, { 0, 2, 1 }, { 1, 0, 2 }, { 1, 2, 0 }, { 2, 0, 1 }, { 2, 1, 0 } };

// The two entries of a 6-neighbourhood (z + 1, z - 1, x - 1, x + 1, y + 1, y - 1) on each axis.
constexpr int faceEntries[3][2] = { { 2, 3 }, { 4, 5 }, { 0, 1 } };

// A set of point addresses (open addressing), small enough for the cache when it holds one layer's survivors.
class PointSet
{
public:
  explicit PointSet(const DistancePoint3DList & points)
  {
    std::size_t capacity = 16;
    while (capacity < 2 * points.size())
    {
      capacity *= 2;
    }
    m_slots.assign(capacity, nullptr);
    for (const DistancePoint3D * point : points)
    {
      std::size_t slot = slotOf(point);
      while (m_slots[slot] != nullptr && m_slots[slot] != point)
      {
        slot = (slot + 1) & (m_slots.size() - 1);
      }
      m_slots[slot] = point;
    }
  }
  bool
  contains(const DistancePoint3D * point) const
  {
    for (std::size_t slot = slotOf(point); m_slots[slot] != nullptr; slot = (slot + 1) & (m_slots.size() - 1))
    {
      if (m_slots[slot] == point)
      {
        return true;
      }
    }
    return false;
  }

private:
  std::size_t
  slotOf(const DistancePoint3D * point) const
  {
    return static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(point) >> 4) * 0x9E3779B97F4A7C15ull) &
           (m_slots.size() - 1);
  }
  std::vector<const DistancePoint3D *> m_slots;
};
} // namespace

SelleSkeletonizer::SelleSkeletonizer(lumoIpPicDescriptor * pic, bool ordering, bool noDistanceVolume)
  : Skeletonizer(pic, ordering, noDistanceVolume)
  , m_borderVoxels(new BorderVoxelHashMap)
{
  updateMinimumVoxelSize();
}

SelleSkeletonizer::~SelleSkeletonizer()
{
  delete m_resultList;
  delete m_previousBorderVoxels;
  delete m_borderVoxels;
  delete m_spareBorderVoxels;
}

void
SelleSkeletonizer::updateMinimumVoxelSize()
{
  switch (m_binaryVolume->getAxisOrder())
  {
    case 0:
    case 1:
      m_minimumVoxelSize = m_binaryVolume->getVoxelSizeX();
      break;
    case 2:
    case 3:
      m_minimumVoxelSize = m_binaryVolume->getVoxelSizeY();
      break;
    default:
      m_minimumVoxelSize = m_binaryVolume->getVoxelSizeZ();
      break;
  }
}

void
SelleSkeletonizer::setVoxelSizeX(float size)
{
  m_binaryVolume->setVoxelSizeX(size);
  updateMinimumVoxelSize();
}

void
SelleSkeletonizer::setVoxelSizeY(float size)
{
  m_binaryVolume->setVoxelSizeY(size);
  updateMinimumVoxelSize();
}

void
SelleSkeletonizer::setVoxelSizeZ(float size)
{
  m_binaryVolume->setVoxelSizeZ(size);
  updateMinimumVoxelSize();
}

bool
SelleSkeletonizer::isBorderVoxel(const unsigned char * sixNeighbourhood)
{
  for (int i = 0; i < 6; ++i)
  {
    if (sixNeighbourhood[i] == 0)
    {
      return true;
    }
  }
  return false;
}

DistancePoint3DList *
SelleSkeletonizer::getResultList()
{
  return m_resultList;
}

void
SelleSkeletonizer::afterLayer(DistancePoint3DList &)
{}

void
SelleSkeletonizer::skeletonize()
{
  m_iterationCounter = 1;
  bool idleIterationSeen = false;
  initialize();
  for (;;)
  {
    splitLayer();
    // Border voxels farther than this layer's reach wait for a later one. With anisotropic voxels the reach grows
    // by the smallest voxel size per iteration, so several iterations may pass before the thicker axes' voxels
    // join a layer: such an iteration removes nothing without being idle. Ending there would leave voxels in the
    // skeleton that never were in a layer and so have no distance.
    // A reach that does not grow (voxel size 0 or not a number) would make them wait for ever.
    const bool voxelsWaiting = !m_deferred.empty() && m_minimumVoxelSize > 0.0f && std::isfinite(m_minimumVoxelSize);
    delete m_resultList;
    m_resultList = m_borderVoxelListProcessor->processList(m_currentLayer);
    afterLayer(*m_resultList);
    updateBorder();
    ++m_iterationCounter;
    if (m_borderVoxelListProcessor->getRemovedVoxels() == 0 && !voxelsWaiting)
    {
      // Never cleared again: thinning ends at the second idle iteration, consecutive or not.
      if (idleIterationSeen)
      {
        break;
      }
      idleIterationSeen = true;
    }
  }
}

void
SelleSkeletonizer::initialize()
{
  VolumeAccessor<unsigned char> & volume = *m_binaryVolume;
  const std::uint32_t sizeX = volume.getSizeX();
  const std::uint32_t sizeY = volume.getSizeY();
  const std::uint32_t sizeZ = volume.getSizeZ();
  unsigned char * data = volume.getData();
  if (data == nullptr)
  {
    return;
  }

  // Labelling does not depend on the scan order (labels 1 and 3 are both foreground to later reads), so the
  // volume is scanned in memory order, skipping empty stretches a word at a time; the border is then put into
  // the map in the order of a scan with x outermost and z innermost. A border voxel's key keeps which of its
  // face neighbours are background (entries of the 6-neighbourhood), in the bits below the coordinates, which
  // leaves the order by x, y, z intact.
  std::vector<std::uint64_t> border;
  unsigned char faces[6];
  for (std::uint32_t z = 0; z < sizeZ; ++z)
  {
    for (std::uint32_t y = 0; y < sizeY; ++y)
    {
      unsigned char * row = data + (static_cast<std::size_t>(z) * sizeY + y) * sizeX;
      for (std::uint32_t x = 0; x < sizeX; ++x)
      {
        std::uint64_t word = 0;
        while (x + 8 <= sizeX && (std::memcpy(&word, row + x, 8), word == 0))
        {
          x += 8;
        }
        if (x >= sizeX)
        {
          break;
        }
        if (row[x] == 0)
        {
          continue;
        }
        volume.read6Neighbourhood(
          static_cast<unsigned short>(x), static_cast<unsigned short>(y), static_cast<unsigned short>(z), faces);
        if (isBorderVoxel(faces))
        {
          std::uint64_t background = 0;
          for (int i = 0; i < 6; ++i)
          {
            background |= static_cast<std::uint64_t>(faces[i] == 0) << i;
          }
          border.push_back((static_cast<std::uint64_t>(x) << 40) | (static_cast<std::uint64_t>(y) << 24) |
                           (static_cast<std::uint64_t>(z) << 8) | background);
        }
        else
        {
          row[x] = interiorLabel;
        }
      }
    }
  }
  std::sort(border.begin(), border.end());

  const float voxelSize[3] = { volume.getVoxelSizeX(), volume.getVoxelSizeY(), volume.getVoxelSizeZ() };
  const int * axes = axesBySize[volume.getAxisOrder()];
  m_borderVoxels->reserve(border.size());
  for (std::size_t i = 0; i < border.size(); ++i)
  {
    if (i + 8 < border.size())
    {
      const std::uint64_t next = border[i + 8];
      m_borderVoxels->prefetch(static_cast<unsigned short>(next >> 40),
                               static_cast<unsigned short>((next >> 24) & 0xFFFFu),
                               static_cast<unsigned short>((next >> 8) & 0xFFFFu));
    }
    const std::uint64_t key = border[i];
    const auto x = static_cast<unsigned short>(key >> 40);
    const auto y = static_cast<unsigned short>((key >> 24) & 0xFFFFu);
    const auto z = static_cast<unsigned short>((key >> 8) & 0xFFFFu);
    float vector[3] = { 0.0f, 0.0f, 0.0f };
    for (int a = 0; a < 3; ++a)
    {
      const int axis = axes[a];
      if (((key >> faceEntries[axis][0]) & 1u) != 0 || ((key >> faceEntries[axis][1]) & 1u) != 0)
      {
        vector[axis] = voxelSize[axis];
        break;
      }
    }
    auto * point = new DistancePoint3D(x, y, z, vector[0], vector[1], vector[2]);
    m_borderVoxels->insert(point);
    volume.setVoxel(x, y, z, borderLabel);
    m_distanceVolume->setVoxel(x, y, z, point->getDistance());
  }
}

void
SelleSkeletonizer::splitLayer()
{
  m_currentLayer.clear();
  m_deferred.clear();
  const float reach = static_cast<float>(m_iterationCounter) * m_minimumVoxelSize;
  for (DistancePoint3D * point : m_borderVoxels->getPoints())
  {
    if (reach >= point->getDistance())
    {
      m_currentLayer.push_back(point);
    }
    else
    {
      m_deferred.push_back(point);
    }
  }
}

void
SelleSkeletonizer::carriedVector(const DistancePoint3D & from,
                                 unsigned short x,
                                 unsigned short y,
                                 unsigned short z,
                                 float & dx,
                                 float & dy,
                                 float & dz) const
{
  const int stepX = std::abs(static_cast<int>(from.getX()) - static_cast<int>(x));
  const int stepY = std::abs(static_cast<int>(from.getY()) - static_cast<int>(y));
  const int stepZ = std::abs(static_cast<int>(from.getZ()) - static_cast<int>(z));
  dx = static_cast<float>(stepX) * m_binaryVolume->getVoxelSizeX() + from.getVectorX();
  dy = static_cast<float>(stepY) * m_binaryVolume->getVoxelSizeY() + from.getVectorY();
  dz = static_cast<float>(stepZ) * m_binaryVolume->getVoxelSizeZ() + from.getVectorZ();
}

DistancePoint3D *
SelleSkeletonizer::getNextNeighbour(unsigned short x, unsigned short y, unsigned short z)
{
  DistancePoint3D * nearest = nullptr;
  float nearestSquared = 0.0f;
  if (m_previousBorderVoxels != nullptr)
  {
    // The six lookups are independent: let their memory accesses overlap.
    for (const int * step : growthOrder)
    {
      m_previousBorderVoxels->prefetch(static_cast<unsigned short>(x + step[0]),
                                       static_cast<unsigned short>(y + step[1]),
                                       static_cast<unsigned short>(z + step[2]));
    }
    for (const int * step : growthOrder)
    {
      DistancePoint3D * candidate = m_previousBorderVoxels->find(static_cast<unsigned short>(x + step[0]),
                                                                 static_cast<unsigned short>(y + step[1]),
                                                                 static_cast<unsigned short>(z + step[2]));
      if (candidate == nullptr)
      {
        continue;
      }
      float dx = 0.0f;
      float dy = 0.0f;
      float dz = 0.0f;
      carriedVector(*candidate, x, y, z, dx, dy, dz);
      const float squared = DistancePoint3D::squaredLength(dx, dy, dz);
      if (nearest == nullptr || squared < nearestSquared)
      {
        nearest = candidate;
        nearestSquared = squared;
      }
    }
  }
  if (nearest == nullptr)
  {
    std::cout << "Error in Selle Skeletonizer::getNextNeighbour(...): Point has no neighbours!" << std::endl;
  }
  return nearest;
}

void
SelleSkeletonizer::updateBorder()
{
  delete m_previousBorderVoxels;
  m_previousBorderVoxels = m_borderVoxels;
  m_borderVoxels = m_spareBorderVoxels != nullptr ? m_spareBorderVoxels : new BorderVoxelHashMap;
  m_spareBorderVoxels = nullptr;
  m_borderVoxels->reserve(m_previousBorderVoxels->size() + m_currentLayer.size());

  // The loops below walk the border in its (spatially scattered) order; each looks a few voxels ahead and asks
  // for the memory it will need, which changes nothing but the waiting.
  constexpr std::size_t ahead = 8;
  for (std::size_t i = 0; i < m_deferred.size(); ++i)
  {
    DistancePoint3D * point = m_deferred[i];
    if (i + 2 * ahead < m_deferred.size())
    {
      __builtin_prefetch(m_deferred[i + 2 * ahead]);
    }
    if (i + ahead < m_deferred.size())
    {
      const DistancePoint3D * next = m_deferred[i + ahead];
      m_borderVoxels->prefetch(next->getX(), next->getY(), next->getZ());
    }
    const DistancePoint3D * neighbour = getNextNeighbour(point->getX(), point->getY(), point->getZ());
    if (neighbour != nullptr)
    {
      float dx = 0.0f;
      float dy = 0.0f;
      float dz = 0.0f;
      carriedVector(*neighbour, point->getX(), point->getY(), point->getZ(), dx, dy, dz);
      if (DistancePoint3D::squaredLength(dx, dy, dz) < point->getSquaredDistance())
      {
        point->setVector(dx, dy, dz);
        m_distanceVolume->setVoxel(point->getX(), point->getY(), point->getZ(), point->getDistance());
      }
    }
    m_borderVoxels->insert(point);
  }

  if (m_resultList != nullptr)
  {
    const DistancePoint3DList & survivors = *m_resultList;
    for (std::size_t i = 0; i < survivors.size(); ++i)
    {
      if (i + 2 * ahead < survivors.size())
      {
        __builtin_prefetch(survivors[i + 2 * ahead]);
      }
      if (i + ahead < survivors.size())
      {
        const DistancePoint3D * next = survivors[i + ahead];
        m_borderVoxels->prefetch(next->getX(), next->getY(), next->getZ());
      }
      m_borderVoxels->insert(survivors[i]);
    }
  }

  const unsigned char * labels = m_binaryVolume->getData();
  const std::size_t rowSize = m_binaryVolume->getSizeX();
  const std::size_t planeSize = rowSize * m_binaryVolume->getSizeY();
  const std::size_t elements = planeSize * m_binaryVolume->getSizeZ();
  for (std::size_t i = 0; i < m_currentLayer.size(); ++i)
  {
    const DistancePoint3D * layerPoint = m_currentLayer[i];
    if (i + 2 * ahead < m_currentLayer.size())
    {
      __builtin_prefetch(m_currentLayer[i + 2 * ahead]);
    }
    if (labels != nullptr && i + ahead < m_currentLayer.size())
    {
      const DistancePoint3D * next = m_currentLayer[i + ahead];
      const std::size_t centre = m_binaryVolume->linearIndex(next->getX(), next->getY(), next->getZ());
      const std::size_t around[5] = {
        centre - 1, centre - rowSize, centre + rowSize, centre - planeSize, centre + planeSize
      };
      for (std::size_t index : around)
      {
        if (index < elements) // wrapped indices at the volume's faces are simply skipped
        {
          __builtin_prefetch(labels + index);
        }
      }
    }
    for (const int * step : growthOrder)
    {
      const auto x = static_cast<unsigned short>(layerPoint->getX() + step[0]);
      const auto y = static_cast<unsigned short>(layerPoint->getY() + step[1]);
      const auto z = static_cast<unsigned short>(layerPoint->getZ() + step[2]);
      if (m_binaryVolume->getVoxel(x, y, z) != interiorLabel)
      {
        continue;
      }
      m_borderVoxels->prefetch(x, y, z);
      auto * point = new DistancePoint3D(x, y, z, 0.0f, 0.0f, 0.0f);
      const DistancePoint3D * neighbour = getNextNeighbour(x, y, z);
      if (neighbour != nullptr)
      {
        float dx = 0.0f;
        float dy = 0.0f;
        float dz = 0.0f;
        carriedVector(*neighbour, x, y, z, dx, dy, dz);
        point->setVector(dx, dy, dz);
      }
      m_binaryVolume->setVoxel(x, y, z, borderLabel);
      m_distanceVolume->setVoxel(x, y, z, point->getDistance());
      m_borderVoxels->insert(point);
    }
  }

  // The previous border owned every point; those not carried over are the voxels deleted in this layer. When the
  // previous border is exactly the layer plus the deferred voxels (as splitLayer leaves it), those are the layer
  // voxels missing from the result list; otherwise every point is looked up in the new border.
  if (m_resultList != nullptr && m_previousBorderVoxels->size() == m_currentLayer.size() + m_deferred.size())
  {
    const PointSet survivors(*m_resultList);
    for (DistancePoint3D * point : m_currentLayer)
    {
      if (!survivors.contains(point))
      {
        delete point;
      }
    }
  }
  else
  {
    for (DistancePoint3D * point : m_previousBorderVoxels->getPoints())
    {
      if (m_borderVoxels->find(point->getX(), point->getY(), point->getZ()) != point)
      {
        delete point;
      }
    }
  }
  m_previousBorderVoxels->releaseAll();
  m_spareBorderVoxels = m_previousBorderVoxels;
  m_previousBorderVoxels = nullptr;
  // The layer lists may name deleted points now.
  m_currentLayer.clear();
  m_deferred.clear();
}
