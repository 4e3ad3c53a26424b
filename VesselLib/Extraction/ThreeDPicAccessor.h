#ifndef ThreeDPicAccessor_h
#define ThreeDPicAccessor_h

#include "lumoIpPicDescriptor.h"

#include <cstdint>

/** Voxel access by integer coordinates to a three-dimensional Pic volume, with a per-axis voxel size and origin.
 *  Coordinates are unsigned 16-bit values compared as signed 16-bit, so that x - 1 at x = 0 (65535) reads as
 *  outside. Reads outside the volume yield the outside value, writes outside are dropped.
 *  Instantiated for unsigned char, unsigned short and float. */
template <class T>
class ThreeDPicAccessor
{
public:
  /** Ends the process when pic is null or not three-dimensional. With ownsPic the destructor frees the pic. */
  ThreeDPicAccessor(lumoIpPicDescriptor * pic, bool ownsPic, T outsideValue);
  ThreeDPicAccessor(const ThreeDPicAccessor &) = delete;
  ThreeDPicAccessor &
  operator=(const ThreeDPicAccessor &) = delete;

  virtual ~ThreeDPicAccessor();

  virtual T
  getVoxel(const unsigned short & x, const unsigned short & y, const unsigned short & z) const;
  virtual void
  setVoxel(const unsigned short & x, const unsigned short & y, const unsigned short & z, const T & value);
  virtual bool
  getOwnsPic() const;
  virtual T
  getOutsideValue() const;
  virtual lumoIpPicDescriptor *
  getPic() const;
  /** A new array of 26 values (the caller deletes it with delete[]), in the order of NeighbourhoodOrder. */
  virtual T *
  get26Neighbourhood(const unsigned short & x, const unsigned short & y, const unsigned short & z) const;
  /** A new array of 6 values (caller deletes): z + 1, z - 1, x - 1, x + 1, y + 1, y - 1. */
  virtual T *
  get6Neighbourhood(const unsigned short & x, const unsigned short & y, const unsigned short & z) const;
  virtual std::uint32_t
  getSizeX() const;
  virtual std::uint32_t
  getSizeY() const;
  virtual std::uint32_t
  getSizeZ() const;
  virtual void
  setVoxelSizeX(const float & size);
  virtual void
  setVoxelSizeY(const float & size);
  virtual void
  setVoxelSizeZ(const float & size);
  virtual void
  setVoxelSize(const float & x, const float & y, const float & z);
  virtual float
  getVoxelSizeX() const;
  virtual float
  getVoxelSizeY() const;
  virtual float
  getVoxelSizeZ() const;
  virtual void
  setOriginX(const float & origin);
  virtual void
  setOriginY(const float & origin);
  virtual void
  setOriginZ(const float & origin);
  virtual void
  setOrigin(const float & x, const float & y, const float & z);
  virtual float
  getOriginX() const;
  virtual float
  getOriginY() const;
  virtual float
  getOriginZ() const;

private:
  bool
  isInside(unsigned short x, unsigned short y, unsigned short z) const;

  std::uint32_t m_sizeX;
  std::uint32_t m_sizeY;
  std::uint32_t m_sizeZ;
  float m_voxelSizeX{ 1.0f };
  float m_voxelSizeY{ 1.0f };
  float m_voxelSizeZ{ 1.0f };
  float m_originX{ 0.0f };
  float m_originY{ 0.0f };
  float m_originZ{ 0.0f };
  bool m_ownsPic;
  lumoIpPicDescriptor * m_pic;
  T m_outsideValue;
};

extern template class ThreeDPicAccessor<unsigned char>;
extern template class ThreeDPicAccessor<unsigned short>;
extern template class ThreeDPicAccessor<float>;

#endif
