// The geometry of an image.

#include "lumoSlicedGeometry3D.h"

#include "lumoGeometry3D.h"

#include <vtkMatrix4x4.h>

namespace lumo
{
SlicedGeometry3D::SlicedGeometry3D() = default;

void
SlicedGeometry3D::InitializeImage(const SizeType & size,
                                  const Vector3D & spacing,
                                  const Point3D & origin,
                                  const DirectionType & direction)
{
  m_Size = size;
  m_Matrix->Identity();
  this->TransformChanged();
  this->SetSpacing(spacing);
  this->SetDirection(direction);
  this->SetOrigin(origin);
  BoundsArrayType bounds;
  for (unsigned int axis = 0; axis < 3; ++axis)
  {
    bounds[2 * axis] = -0.5;
    bounds[2 * axis + 1] = static_cast<ScalarType>(size[axis]) - 0.5;
  }
  m_Bounds = bounds;
  m_ImageGeometry = true;
  this->Modified();
}

void
SlicedGeometry3D::InitializeImage(const SizeType & size)
{
  Vector3D spacing;
  spacing.Fill(1.0);
  Point3D origin;
  origin.Fill(0.0);
  DirectionType direction;
  direction.SetIdentity();
  this->InitializeImage(size, spacing, origin, direction);
}

void
SlicedGeometry3D::Initialize()
{
  Superclass::Initialize();
  m_Size = { { 0, 0, 0 } };
}

void
SlicedGeometry3D::CopyValuesTo(Geometry3D * other) const
{
  Superclass::CopyValuesTo(other);
  auto * sliced = dynamic_cast<SlicedGeometry3D *>(other);
  if (sliced)
  {
    sliced->m_Size = m_Size;
  }
}

void
SlicedGeometry3D::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Size: " << m_Size[0] << " " << m_Size[1] << " " << m_Size[2] << std::endl;
}
} // namespace lumo
