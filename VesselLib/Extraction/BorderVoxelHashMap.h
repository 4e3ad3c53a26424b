#ifndef BorderVoxelHashMap_h
#define BorderVoxelHashMap_h

#include "DistancePoint3D.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/** The set of current border voxels: a map from a voxel key to its DistancePoint3D. It owns its points and
 *  deletes those it still holds when it is destroyed. Iteration runs in insertion order, so the peeling order
 *  depends only on the algorithm, never on the key format or the hashing. */
class BorderVoxelHashMap
{
public:
  BorderVoxelHashMap();
  BorderVoxelHashMap(const BorderVoxelHashMap &) = delete;
  BorderVoxelHashMap &
  operator=(const BorderVoxelHashMap &) = delete;
  ~BorderVoxelHashMap();

  static std::uint64_t
  key(unsigned short x, unsigned short y, unsigned short z)
  {
    return (static_cast<std::uint64_t>(z) << 32) | (static_cast<std::uint64_t>(y) << 16) | x;
  }

  /** Takes the point unless its voxel is already present; answers whether it was taken. */
  bool
  insert(DistancePoint3D * point);
  /** The point of the voxel, or null. */
  DistancePoint3D *
  find(unsigned short x, unsigned short y, unsigned short z) const;
  /** A hint to the memory system that the voxel will be looked up or inserted soon; no effect on contents. */
  void
  prefetch(unsigned short x, unsigned short y, unsigned short z) const
  {
    __builtin_prefetch(&m_slots[slotOf(key(x, y, z))]);
  }
  std::size_t
  size() const
  {
    return m_points.size();
  }
  /** The points in insertion order. */
  const DistancePoint3DList &
  getPoints() const
  {
    return m_points;
  }
  /** Forgets every point without deleting it (their ownership has passed elsewhere). */
  void
  releaseAll();
  /** Room for that many points without rehashing. */
  void
  reserve(std::size_t count);

private:
  struct Slot
  {
    std::uint64_t key;
    DistancePoint3D * point;
  };
  static constexpr std::uint64_t emptyKey = ~static_cast<std::uint64_t>(0);

  std::size_t
  slotOf(std::uint64_t key) const
  {
    return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15ull) >> m_shift);
  }
  void
  rehash(std::size_t capacity);

  DistancePoint3DList m_points;
  std::vector<Slot> m_slots;
  int m_shift{ 64 };
};

#endif
