#include "ThreeDPicAccessor.h"

#include "FatalExit.h"
#include "NeighbourhoodOrder.h"

namespace
{
// Validates before any field is read, so that the fields can be initialised from the pic.
lumoIpPicDescriptor *
checkedPic(lumoIpPicDescriptor * pic)
{
  if (pic == nullptr)
  {
    fatalExit("ThreeDPicAccessor::ThreeDPicAccessor(...): thePic == null!");
  }
  if (pic->dim != 3)
  {
    fatalExit("ThreeDPicAccessor::ThreeDPicAccessor(...): pic->dim!=3! ");
  }
  return pic;
}

bool
inRange(unsigned short coordinate, std::uint32_t size)
{
  const std::int64_t signedCoordinate = static_cast<std::int16_t>(coordinate);
  return signedCoordinate >= 0 && signedCoordinate <= static_cast<std::int64_t>(size) - 1;
}
} // namespace

template <class T>
ThreeDPicAccessor<T>::ThreeDPicAccessor(lumoIpPicDescriptor * pic, bool ownsPic, T outsideValue)
  : m_sizeX(checkedPic(pic)->n[0])
  , m_sizeY(pic->n[1])
  , m_sizeZ(pic->n[2])
  , m_ownsPic(ownsPic)
  , m_pic(pic)
  , m_outsideValue(outsideValue)
{}

template <class T>
ThreeDPicAccessor<T>::~ThreeDPicAccessor()
{
  if (m_ownsPic)
  {
    lumoIpPicFree(m_pic);
  }
}

template <class T>
bool
ThreeDPicAccessor<T>::isInside(unsigned short x, unsigned short y, unsigned short z) const
{
  return inRange(x, m_sizeX) && inRange(y, m_sizeY) && inRange(z, m_sizeZ);
}

template <class T>
T
ThreeDPicAccessor<T>::getVoxel(const unsigned short & x, const unsigned short & y, const unsigned short & z) const
{
  if (!isInside(x, y, z))
  {
    return m_outsideValue;
  }
  const std::size_t index = (static_cast<std::size_t>(z) * m_sizeY + y) * m_sizeX + x;
  return static_cast<const T *>(m_pic->data)[index];
}

template <class T>
void
ThreeDPicAccessor<T>::setVoxel(const unsigned short & x,
                               const unsigned short & y,
                               const unsigned short & z,
                               const T & value)
{
  if (!isInside(x, y, z))
  {
    return;
  }
  const std::size_t index = (static_cast<std::size_t>(z) * m_sizeY + y) * m_sizeX + x;
  static_cast<T *>(m_pic->data)[index] = value;
}

template <class T>
bool
ThreeDPicAccessor<T>::getOwnsPic() const
{
  return m_ownsPic;
}

template <class T>
T
ThreeDPicAccessor<T>::getOutsideValue() const
{
  return m_outsideValue;
}

template <class T>
lumoIpPicDescriptor *
ThreeDPicAccessor<T>::getPic() const
{
  return m_pic;
}

template <class T>
T *
ThreeDPicAccessor<T>::get26Neighbourhood(const unsigned short & x,
                                         const unsigned short & y,
                                         const unsigned short & z) const
{
  T * values = new T[NeighbourhoodOrder::size26];
  for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
  {
    const int * offset = NeighbourhoodOrder::offsets26[i];
    values[i] = getVoxel(static_cast<unsigned short>(x + offset[0]),
                         static_cast<unsigned short>(y + offset[1]),
                         static_cast<unsigned short>(z + offset[2]));
  }
  return values;
}

template <class T>
T *
ThreeDPicAccessor<T>::get6Neighbourhood(const unsigned short & x,
                                        const unsigned short & y,
                                        const unsigned short & z) const
{
  T * values = new T[NeighbourhoodOrder::size6];
  for (int i = 0; i < NeighbourhoodOrder::size6; ++i)
  {
    const int * offset = NeighbourhoodOrder::offsets6[i];
    values[i] = getVoxel(static_cast<unsigned short>(x + offset[0]),
                         static_cast<unsigned short>(y + offset[1]),
                         static_cast<unsigned short>(z + offset[2]));
  }
  return values;
}

template <class T>
std::uint32_t
ThreeDPicAccessor<T>::getSizeX() const
{
  return m_sizeX;
}

template <class T>
std::uint32_t
ThreeDPicAccessor<T>::getSizeY() const
{
  return m_sizeY;
}

template <class T>
std::uint32_t
ThreeDPicAccessor<T>::getSizeZ() const
{
  return m_sizeZ;
}

template <class T>
void
ThreeDPicAccessor<T>::setVoxelSizeX(const float & size)
{
  m_voxelSizeX = size;
}

template <class T>
void
ThreeDPicAccessor<T>::setVoxelSizeY(const float & size)
{
  m_voxelSizeY = size;
}

template <class T>
void
ThreeDPicAccessor<T>::setVoxelSizeZ(const float & size)
{
  m_voxelSizeZ = size;
}

template <class T>
void
ThreeDPicAccessor<T>::setVoxelSize(const float & x, const float & y, const float & z)
{
  m_voxelSizeX = x;
  m_voxelSizeY = y;
  m_voxelSizeZ = z;
}

template <class T>
float
ThreeDPicAccessor<T>::getVoxelSizeX() const
{
  return m_voxelSizeX;
}

template <class T>
float
ThreeDPicAccessor<T>::getVoxelSizeY() const
{
  return m_voxelSizeY;
}

template <class T>
float
ThreeDPicAccessor<T>::getVoxelSizeZ() const
{
  return m_voxelSizeZ;
}

template <class T>
void
ThreeDPicAccessor<T>::setOriginX(const float & origin)
{
  m_originX = origin;
}

template <class T>
void
ThreeDPicAccessor<T>::setOriginY(const float & origin)
{
  m_originY = origin;
}

template <class T>
void
ThreeDPicAccessor<T>::setOriginZ(const float & origin)
{
  m_originZ = origin;
}

template <class T>
void
ThreeDPicAccessor<T>::setOrigin(const float & x, const float & y, const float & z)
{
  m_originX = x;
  m_originY = y;
  m_originZ = z;
}

template <class T>
float
ThreeDPicAccessor<T>::getOriginX() const
{
  return m_originX;
}

template <class T>
float
ThreeDPicAccessor<T>::getOriginY() const
{
  return m_originY;
}

template <class T>
float
ThreeDPicAccessor<T>::getOriginZ() const
{
  return m_originZ;
}

template class ThreeDPicAccessor<unsigned char>;
template class ThreeDPicAccessor<unsigned short>;
template class ThreeDPicAccessor<float>;
