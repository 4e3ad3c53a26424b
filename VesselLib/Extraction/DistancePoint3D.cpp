#include "DistancePoint3D.h"

#include <cmath>

DistancePoint3D::DistancePoint3D(unsigned short x, unsigned short y, unsigned short z, float dx, float dy, float dz)
  : Point3D(x, y, z)
  , m_vectorX(dx)
  , m_vectorY(dy)
  , m_vectorZ(dz)
{
  m_squaredDistance = squaredLength(m_vectorX, m_vectorY, m_vectorZ);
  m_distance = std::sqrt(m_squaredDistance);
}

void
DistancePoint3D::updateDistance()
{
  m_squaredDistance = squaredLength(m_vectorX, m_vectorY, m_vectorZ);
  m_distance = std::sqrt(m_squaredDistance);
}

void
DistancePoint3D::setVectorX(float dx)
{
  m_vectorX = dx;
  updateDistance();
}

void
DistancePoint3D::setVectorY(float dy)
{
  m_vectorY = dy;
  updateDistance();
}

void
DistancePoint3D::setVectorZ(float dz)
{
  m_vectorZ = dz;
  updateDistance();
}

void
DistancePoint3D::setVector(float dx, float dy, float dz)
{
  m_vectorX = dx;
  m_vectorY = dy;
  m_vectorZ = dz;
  updateDistance();
}
