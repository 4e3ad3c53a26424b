#ifndef VolumeAccessor_h
#define VolumeAccessor_h

#include "lumoIpPicDescriptor.h"

#include <cstddef>
#include <cstdint>

/** Non-virtual voxel access to a three-dimensional Pic volume, for the inner loops of the skeletonizer. Besides
 *  the voxel sizes it keeps the smallest of them and an axis order code (0 to 5) saying which axis has the
 *  smallest, middle and largest voxel size:
 *    0: x <= y <= z   1: x <= z <= y   2: y <= x <= z   3: y <= z <= x   4: z <= x <= y   5: z <= y <= x
 *  (the first row that holds wins, so ties fall to the earlier row).
 *  Coordinates are unsigned 16-bit compared as signed 16-bit; reads outside yield the outside value and writes
 *  outside are dropped. Instantiated for unsigned char and float. */
template <class T>
class VolumeAccessor
{
public:
  /** Ends the process when pic is null. A pic that is not three-dimensional is not rejected (the skeletonizer
   *  rejects such volumes first): the accessor then has no voxels, owns nothing and reads the outside value. */
  VolumeAccessor(lumoIpPicDescriptor * pic, T outsideValue, bool ownsPic);
  /** An empty accessor without a pic: all sizes 0, so every write is dropped. */
  explicit VolumeAccessor(T outsideValue);
  VolumeAccessor(const VolumeAccessor &) = delete;
  VolumeAccessor &
  operator=(const VolumeAccessor &) = delete;
  /** Frees the pic when it owns it. */
  ~VolumeAccessor();

  bool
  isInside(unsigned short x, unsigned short y, unsigned short z) const
  {
    return inRange(x, m_sizeX) && inRange(y, m_sizeY) && inRange(z, m_sizeZ);
  }
  T
  getVoxel(const unsigned short & x, const unsigned short & y, const unsigned short & z) const
  {
    return isInside(x, y, z) ? m_data[linearIndex(x, y, z)] : m_outsideValue;
  }
  void
  setVoxel(const unsigned short & x, const unsigned short & y, const unsigned short & z, const T & value)
  {
    if (isInside(x, y, z))
    {
      m_data[linearIndex(x, y, z)] = value;
    }
  }
  /** Index into getData() of an inside voxel. */
  std::size_t
  linearIndex(unsigned short x, unsigned short y, unsigned short z) const
  {
    return (static_cast<std::size_t>(z) * m_sizeY + y) * m_sizeX + x;
  }
  /** The voxel buffer (null for an empty accessor). */
  T *
  getData() const
  {
    return m_data;
  }

  /** A new array of 26 values (caller deletes with delete[]) in the order of NeighbourhoodOrder. */
  T *
  get26Neighbourhood(const unsigned short & x, const unsigned short & y, const unsigned short & z) const;
  /** A new array of 6 values (caller deletes): z + 1, z - 1, x - 1, x + 1, y + 1, y - 1. */
  T *
  get6Neighbourhood(const unsigned short & x, const unsigned short & y, const unsigned short & z) const;
  /** Same order as get26Neighbourhood, written into the caller's array instead of a new one. */
  void
  read26Neighbourhood(unsigned short x, unsigned short y, unsigned short z, T * values) const;
  /** Same order as get6Neighbourhood, written into the caller's array. */
  void
  read6Neighbourhood(unsigned short x, unsigned short y, unsigned short z, T * values) const;

  std::uint32_t
  getSizeX() const
  {
    return m_sizeX;
  }
  std::uint32_t
  getSizeY() const
  {
    return m_sizeY;
  }
  std::uint32_t
  getSizeZ() const
  {
    return m_sizeZ;
  }

  /** Each voxel size setter recomputes the minimum voxel size and the axis order code. */
  void
  setVoxelSizeX(const float & size);
  void
  setVoxelSizeY(const float & size);
  void
  setVoxelSizeZ(const float & size);
  void
  setVoxelSize(const float & x, const float & y, const float & z);
  float
  getVoxelSizeX() const
  {
    return m_voxelSizeX;
  }
  float
  getVoxelSizeY() const
  {
    return m_voxelSizeY;
  }
  float
  getVoxelSizeZ() const
  {
    return m_voxelSizeZ;
  }
  float
  getMinimumVoxelSize() const
  {
    return m_minimumVoxelSize;
  }
  std::int32_t
  getAxisOrder() const
  {
    return m_axisOrder;
  }

  void
  setOriginX(const float & origin)
  {
    m_originX = origin;
  }
  void
  setOriginY(const float & origin)
  {
    m_originY = origin;
  }
  void
  setOriginZ(const float & origin)
  {
    m_originZ = origin;
  }
  void
  setOrigin(const float & x, const float & y, const float & z)
  {
    m_originX = x;
    m_originY = y;
    m_originZ = z;
  }
  float
  getOriginX() const
  {
    return m_originX;
  }
  float
  getOriginY() const
  {
    return m_originY;
  }
  float
  getOriginZ() const
  {
    return m_originZ;
  }

  bool
  getOwnsPic() const
  {
    return m_ownsPic;
  }
  lumoIpPicDescriptor *
  getPic() const
  {
    return m_pic;
  }
  T
  getOutsideValue() const
  {
    return m_outsideValue;
  }
  bool
  isEmpty() const
  {
    return m_empty;
  }

private:
  static bool
  inRange(unsigned short coordinate, std::uint32_t size)
  {
    const std::int64_t signedCoordinate = static_cast<std::int16_t>(coordinate);
    return signedCoordinate >= 0 && signedCoordinate <= static_cast<std::int64_t>(size) - 1;
  }
  void
  updateAxisOrder();

  std::uint32_t m_sizeX{ 0 };
  std::uint32_t m_sizeY{ 0 };
  std::uint32_t m_sizeZ{ 0 };
  float m_voxelSizeX{ 1.0f };
  float m_voxelSizeY{ 1.0f };
  float m_voxelSizeZ{ 1.0f };
  float m_minimumVoxelSize{ 1.0f };
  float m_originX{ 0.0f };
  float m_originY{ 0.0f };
  float m_originZ{ 0.0f };
  std::int32_t m_axisOrder{ 0 };
  bool m_ownsPic{ false };
  lumoIpPicDescriptor * m_pic{ nullptr };
  T m_outsideValue;
  bool m_empty;
  T * m_data{ nullptr };
};

extern template class VolumeAccessor<unsigned char>;
extern template class VolumeAccessor<float>;

#endif
