#include "BorderVoxelHashMap.h"

BorderVoxelHashMap::BorderVoxelHashMap()
{
  rehash(64);
}

BorderVoxelHashMap::~BorderVoxelHashMap()
{
  for (DistancePoint3D * point : m_points)
  {
    delete point;
  }
}

void
BorderVoxelHashMap::rehash(std::size_t capacity)
{
  std::size_t slots = 64;
  int shift = 58;
  while (slots < capacity)
  {
    slots *= 2;
    --shift;
  }
  m_slots.assign(slots, Slot{ emptyKey, nullptr });
  m_shift = shift;
  for (DistancePoint3D * point : m_points)
  {
    const std::uint64_t k = key(point->getX(), point->getY(), point->getZ());
    std::size_t slot = slotOf(k);
    while (m_slots[slot].key != emptyKey)
    {
      slot = (slot + 1) & (m_slots.size() - 1);
    }
    m_slots[slot] = Slot{ k, point };
  }
}

void
BorderVoxelHashMap::reserve(std::size_t count)
{
  m_points.reserve(count);
  if (2 * count > m_slots.size())
  {
    rehash(2 * count);
  }
}

bool
BorderVoxelHashMap::insert(DistancePoint3D * point)
{
  if (2 * (m_points.size() + 1) > m_slots.size())
  {
    m_points.reserve(2 * m_points.size() + 1);
    rehash(4 * (m_points.size() + 1));
  }
  const std::uint64_t k = key(point->getX(), point->getY(), point->getZ());
  std::size_t slot = slotOf(k);
  while (m_slots[slot].key != emptyKey)
  {
    if (m_slots[slot].key == k)
    {
      return false;
    }
    slot = (slot + 1) & (m_slots.size() - 1);
  }
  m_slots[slot] = Slot{ k, point };
  m_points.push_back(point);
  return true;
}

DistancePoint3D *
BorderVoxelHashMap::find(unsigned short x, unsigned short y, unsigned short z) const
{
  const std::uint64_t k = key(x, y, z);
  std::size_t slot = slotOf(k);
  while (m_slots[slot].key != emptyKey)
  {
    if (m_slots[slot].key == k)
    {
      return m_slots[slot].point;
    }
    slot = (slot + 1) & (m_slots.size() - 1);
  }
  return nullptr;
}

void
BorderVoxelHashMap::releaseAll()
{
  m_points.clear();
  m_slots.assign(m_slots.size(), Slot{ emptyKey, nullptr });
}
