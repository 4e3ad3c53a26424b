#include "VolumeAccessor.h"

#include "FatalExit.h"
#include "NeighbourhoodOrder.h"

template <class T>
VolumeAccessor<T>::VolumeAccessor(lumoIpPicDescriptor * pic, T outsideValue, bool ownsPic)
  : m_outsideValue(outsideValue)
  , m_empty(false)
{
  if (pic == nullptr)
  {
    fatalExit("VolumeAccessor::VolumeAccessor(...): thePic == null or pic->dim!=3! ");
  }
  if (pic->dim != 3)
  {
    return; // deliberately left without voxels; the skeletonizer refuses such pics before it gets here
  }
  m_sizeX = pic->n[0];
  m_sizeY = pic->n[1];
  m_sizeZ = pic->n[2];
  m_ownsPic = ownsPic;
  m_pic = pic;
  m_data = static_cast<T *>(pic->data);
}

template <class T>
VolumeAccessor<T>::VolumeAccessor(T outsideValue)
  : m_outsideValue(outsideValue)
  , m_empty(true)
{}

template <class T>
VolumeAccessor<T>::~VolumeAccessor()
{
  if (m_ownsPic)
  {
    lumoIpPicFree(m_pic);
  }
}

template <class T>
void
VolumeAccessor<T>::read26Neighbourhood(unsigned short x, unsigned short y, unsigned short z, T * values) const
{
  for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
  {
    const int * offset = NeighbourhoodOrder::offsets26[i];
    values[i] = getVoxel(static_cast<unsigned short>(x + offset[0]),
                         static_cast<unsigned short>(y + offset[1]),
                         static_cast<unsigned short>(z + offset[2]));
  }
}

template <class T>
void
VolumeAccessor<T>::read6Neighbourhood(unsigned short x, unsigned short y, unsigned short z, T * values) const
{
  for (int i = 0; i < NeighbourhoodOrder::size6; ++i)
  {
    const int * offset = NeighbourhoodOrder::offsets6[i];
    values[i] = getVoxel(static_cast<unsigned short>(x + offset[0]),
                         static_cast<unsigned short>(y + offset[1]),
                         static_cast<unsigned short>(z + offset[2]));
  }
}

template <class T>
T *
VolumeAccessor<T>::get26Neighbourhood(const unsigned short & x,
                                      const unsigned short & y,
                                      const unsigned short & z) const
{
  T * values = new T[NeighbourhoodOrder::size26];
  read26Neighbourhood(x, y, z, values);
  return values;
}

template <class T>
T *
VolumeAccessor<T>::get6Neighbourhood(const unsigned short & x, const unsigned short & y, const unsigned short & z) const
{
  T * values = new T[NeighbourhoodOrder::size6];
  read6Neighbourhood(x, y, z, values);
  return values;
}

template <class T>
void
VolumeAccessor<T>::setVoxelSizeX(const float & size)
{
  m_voxelSizeX = size;
  updateAxisOrder();
}

template <class T>
void
VolumeAccessor<T>::setVoxelSizeY(const float & size)
{
  m_voxelSizeY = size;
  updateAxisOrder();
}

template <class T>
void
VolumeAccessor<T>::setVoxelSizeZ(const float & size)
{
  m_voxelSizeZ = size;
  updateAxisOrder();
}

template <class T>
void
VolumeAccessor<T>::setVoxelSize(const float & x, const float & y, const float & z)
{
  m_voxelSizeX = x;
  m_voxelSizeY = y;
  m_voxelSizeZ = z;
  updateAxisOrder();
}

template <class T>
void
VolumeAccessor<T>::updateAxisOrder()
{
  const float sx = m_voxelSizeX;
  const float sy = m_voxelSizeY;
  const float sz = m_voxelSizeZ;
  // The order of the tests is the tie rule. With a NaN size no test holds and both fields stay as they were.
  if (sx <= sy && sy <= sz)
  {
    m_axisOrder = 0;
    m_minimumVoxelSize = sx;
  }
  else if (sx <= sz && sz <= sy)
  {
    m_axisOrder = 1;
    m_minimumVoxelSize = sx;
  }
  else if (sy <= sx && sx <= sz)
  {
    m_axisOrder = 2;
    m_minimumVoxelSize = sy;
  }
  else if (sy <= sz && sz <= sx)
  {
    m_axisOrder = 3;
    m_minimumVoxelSize = sy;
  }
  else if (sz <= sx && sx <= sy)
  {
    m_axisOrder = 4;
    m_minimumVoxelSize = sz;
  }
  else if (sz <= sy && sy <= sx)
  {
    m_axisOrder = 5;
    m_minimumVoxelSize = sz;
  }
}

template class VolumeAccessor<unsigned char>;
template class VolumeAccessor<float>;
