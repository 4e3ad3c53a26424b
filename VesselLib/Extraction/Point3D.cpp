#include "Point3D.h"

Point3D::Point3D(unsigned short x, unsigned short y, unsigned short z)
  : m_x(x)
  , m_y(y)
  , m_z(z)
{}

Point3D::~Point3D() = default;

void
Point3D::set(unsigned short x, unsigned short y, unsigned short z)
{
  m_x = x;
  m_y = y;
  m_z = z;
}

void
Point3D::setX(unsigned short x)
{
  m_x = x;
}

unsigned short
Point3D::getX() const
{
  return m_x;
}

void
Point3D::setY(unsigned short y)
{
  m_y = y;
}

unsigned short
Point3D::getY() const
{
  return m_y;
}

void
Point3D::setZ(unsigned short z)
{
  m_z = z;
}

unsigned short
Point3D::getZ() const
{
  return m_z;
}
