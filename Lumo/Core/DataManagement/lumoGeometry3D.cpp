// Bounds and index-to-world transform of data objects.

#include "lumoGeometry3D.h"

#include <vtkMatrix4x4.h>
#include <vtkMatrixToLinearTransform.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumo
{
namespace
{
// Writes the upper 3 x 4 block (the last row is always 0 0 0 1) and answers whether an element changed, so that
// the setters mark the geometry modified only for a new value.
bool
AssignBlock(vtkMatrix4x4 * matrix, const double block[3][4])
{
  bool changed = false;
  for (int row = 0; row < 3; ++row)
  {
    for (int column = 0; column < 4; ++column)
    {
      if (matrix->GetElement(row, column) != block[row][column])
      {
        matrix->SetElement(row, column, block[row][column]);
        changed = true;
      }
    }
  }
  return changed;
}
} // namespace

Geometry3D::Geometry3D()
  : m_Matrix(vtkMatrix4x4::New())
  , m_Transform(vtkMatrixToLinearTransform::New())
{
  m_Transform->SetInput(m_Matrix);
}

Geometry3D::~Geometry3D()
{
  m_Transform->Delete();
  m_Matrix->Delete();
}

void
Geometry3D::Initialize()
{
  for (unsigned int i = 0; i < 6; ++i)
  {
    m_Bounds[i] = (i % 2 == 0) ? 0.0 : 1.0;
  }
  m_ImageGeometry = false;
  m_Matrix->Identity();
  this->TransformChanged();
}

void
Geometry3D::SetBounds(const BoundsArrayType & bounds)
{
  BoundsArrayType ordered = bounds;
  for (unsigned int axis = 0; axis < 3; ++axis)
  {
    if (ordered[2 * axis] > ordered[2 * axis + 1])
    {
      std::swap(ordered[2 * axis], ordered[2 * axis + 1]);
    }
  }
  if (ordered != m_Bounds)
  {
    m_Bounds = ordered;
    this->Modified();
  }
}

void
Geometry3D::SetFloatBounds(const double bounds[6])
{
  BoundsArrayType b;
  for (unsigned int i = 0; i < 6; ++i)
  {
    b[i] = bounds[i];
  }
  this->SetBounds(b);
}

void
Geometry3D::SetFloatBounds(const float bounds[6])
{
  BoundsArrayType b;
  for (unsigned int i = 0; i < 6; ++i)
  {
    b[i] = bounds[i];
  }
  this->SetBounds(b);
}

void
Geometry3D::UpdateBounds()
{}

ScalarType
Geometry3D::GetExtent(unsigned int direction) const
{
  if (direction > 2)
  {
    return 0.0;
  }
  return m_Bounds[2 * direction + 1] - m_Bounds[2 * direction];
}

ScalarType
Geometry3D::GetExtentInMM(unsigned int direction) const
{
  if (direction > 2)
  {
    return 0.0;
  }
  return this->GetExtent(direction) * m_Spacing[direction];
}

Point3D
Geometry3D::GetCornerPoint(unsigned int id) const
{
  Point3D index;
  index[0] = (id & 1u) ? m_Bounds[1] : m_Bounds[0];
  index[1] = (id & 2u) ? m_Bounds[3] : m_Bounds[2];
  index[2] = (id & 4u) ? m_Bounds[5] : m_Bounds[4];
  Point3D world;
  this->IndexToWorld(index, world);
  return world;
}

Point3D
Geometry3D::GetCenter() const
{
  Point3D index;
  for (unsigned int axis = 0; axis < 3; ++axis)
  {
    index[axis] = (m_Bounds[2 * axis] + m_Bounds[2 * axis + 1]) / 2.0;
  }
  Point3D world;
  this->IndexToWorld(index, world);
  return world;
}

Geometry3D::BoundsArrayType
Geometry3D::GetWorldBounds() const
{
  BoundsArrayType result;
  for (unsigned int axis = 0; axis < 3; ++axis)
  {
    result[2 * axis] = std::numeric_limits<ScalarType>::max();
    result[2 * axis + 1] = std::numeric_limits<ScalarType>::lowest();
  }
  for (unsigned int id = 0; id < 8; ++id)
  {
    const Point3D corner = this->GetCornerPoint(id);
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
      result[2 * axis] = std::min(result[2 * axis], corner[axis]);
      result[2 * axis + 1] = std::max(result[2 * axis + 1], corner[axis]);
    }
  }
  return result;
}

bool
Geometry3D::IsInside(const Point3D & world) const
{
  Point3D index;
  this->WorldToIndex(world, index);
  for (unsigned int axis = 0; axis < 3; ++axis)
  {
    // A little tolerance for the rounding of the inverse transform.
    const ScalarType tolerance = 1e-9 * std::max<ScalarType>(1.0, std::abs(index[axis]));
    if (index[axis] < m_Bounds[2 * axis] - tolerance || index[axis] > m_Bounds[2 * axis + 1] + tolerance)
    {
      return false;
    }
  }
  return true;
}

vtkLinearTransform *
Geometry3D::GetVtkTransform() const
{
  return m_Transform;
}

void
Geometry3D::GetIndexToWorldMatrix(vtkMatrix4x4 * matrix) const
{
  if (matrix)
  {
    matrix->DeepCopy(m_Matrix);
  }
}

void
Geometry3D::GetIndexToWorldMatrix(double elements[16]) const
{
  for (int row = 0; row < 4; ++row)
  {
    for (int column = 0; column < 4; ++column)
    {
      elements[4 * row + column] = m_Matrix->GetElement(row, column);
    }
  }
}

void
Geometry3D::SetIndexToWorldTransformByVtkMatrix(vtkMatrix4x4 * matrix)
{
  if (!matrix)
  {
    return;
  }
  double elements[16];
  for (int row = 0; row < 4; ++row)
  {
    for (int column = 0; column < 4; ++column)
    {
      elements[4 * row + column] = matrix->GetElement(row, column);
    }
  }
  this->SetIndexToWorldMatrix(elements);
}

void
Geometry3D::SetIndexToWorldMatrix(const double elements[16])
{
  double block[3][4];
  for (int row = 0; row < 3; ++row)
  {
    for (int column = 0; column < 4; ++column)
    {
      block[row][column] = elements[4 * row + column];
    }
  }
  if (AssignBlock(m_Matrix, block))
  {
    this->TransformChanged();
  }
}

void
Geometry3D::SetIdentity()
{
  m_Matrix->Identity();
  this->TransformChanged();
}

void
Geometry3D::Translate(const Vector3D & vector)
{
  for (int row = 0; row < 3; ++row)
  {
    m_Matrix->SetElement(row, 3, m_Matrix->GetElement(row, 3) + vector[row]);
  }
  this->TransformChanged();
}

void
Geometry3D::SetSpacing(const Vector3D & spacing)
{
  for (unsigned int axis = 0; axis < 3; ++axis)
  {
    if (!(spacing[axis] > 0.0) || !std::isfinite(spacing[axis]))
    {
      throw itk::InvalidArgumentError(
        __FILE__, __LINE__, "Geometry3D: spacing components must be positive", "lumo::Geometry3D::SetSpacing");
    }
  }
  const DirectionType direction = this->GetDirection();
  double block[3][4];
  for (int row = 0; row < 3; ++row)
  {
    for (int column = 0; column < 3; ++column)
    {
      block[row][column] = direction[row][column] * spacing[column];
    }
    block[row][3] = m_Matrix->GetElement(row, 3);
  }
  if (!AssignBlock(m_Matrix, block) && m_Spacing == spacing)
  {
    return;
  }
  this->TransformChanged();
  // Keep exactly the given numbers (the column norms may differ in the last bit).
  m_Spacing = spacing;
}

void
Geometry3D::SetSpacing(const ScalarType spacing[3])
{
  Vector3D v;
  v[0] = spacing[0];
  v[1] = spacing[1];
  v[2] = spacing[2];
  this->SetSpacing(v);
}

Point3D
Geometry3D::GetOrigin() const
{
  Point3D origin;
  for (int row = 0; row < 3; ++row)
  {
    origin[row] = m_Matrix->GetElement(row, 3);
  }
  return origin;
}

void
Geometry3D::SetOrigin(const Point3D & origin)
{
  bool changed = false;
  for (int row = 0; row < 3; ++row)
  {
    if (m_Matrix->GetElement(row, 3) != origin[row])
    {
      m_Matrix->SetElement(row, 3, origin[row]);
      changed = true;
    }
  }
  if (changed)
  {
    m_Matrix->Modified();
    this->Modified();
  }
}

Geometry3D::DirectionType
Geometry3D::GetDirection() const
{
  DirectionType direction;
  for (int column = 0; column < 3; ++column)
  {
    const ScalarType length = m_Spacing[column];
    for (int row = 0; row < 3; ++row)
    {
      direction[row][column] = length > 0.0 ? m_Matrix->GetElement(row, column) / length : 0.0;
    }
  }
  return direction;
}

void
Geometry3D::SetDirection(const DirectionType & direction)
{
  const Vector3D spacing = m_Spacing;
  double block[3][4];
  for (int row = 0; row < 3; ++row)
  {
    for (int column = 0; column < 3; ++column)
    {
      block[row][column] = direction[row][column] * spacing[column];
    }
    block[row][3] = m_Matrix->GetElement(row, 3);
  }
  if (!AssignBlock(m_Matrix, block))
  {
    return;
  }
  this->TransformChanged();
  m_Spacing = spacing;
}

void
Geometry3D::IndexToWorld(const Point3D & index, Point3D & world) const
{
  Point3D result;
  for (int row = 0; row < 3; ++row)
  {
    result[row] = m_Matrix->GetElement(row, 0) * index[0] + m_Matrix->GetElement(row, 1) * index[1] +
                  m_Matrix->GetElement(row, 2) * index[2] + m_Matrix->GetElement(row, 3);
  }
  world = result;
}

void
Geometry3D::IndexToWorld(const Vector3D & index, Vector3D & world) const
{
  Vector3D result;
  for (int row = 0; row < 3; ++row)
  {
    result[row] = m_Matrix->GetElement(row, 0) * index[0] + m_Matrix->GetElement(row, 1) * index[1] +
                  m_Matrix->GetElement(row, 2) * index[2];
  }
  world = result;
}

void
Geometry3D::WorldToIndex(const Point3D & world, Point3D & index) const
{
  double inverse[16];
  vtkMatrix4x4::Invert(m_Matrix->GetData(), inverse);
  Point3D result;
  for (int row = 0; row < 3; ++row)
  {
    result[row] = inverse[4 * row] * world[0] + inverse[4 * row + 1] * world[1] + inverse[4 * row + 2] * world[2] +
                  inverse[4 * row + 3];
  }
  index = result;
}

void
Geometry3D::WorldToIndex(const Vector3D & world, Vector3D & index) const
{
  double inverse[16];
  vtkMatrix4x4::Invert(m_Matrix->GetData(), inverse);
  Vector3D result;
  for (int row = 0; row < 3; ++row)
  {
    result[row] = inverse[4 * row] * world[0] + inverse[4 * row + 1] * world[1] + inverse[4 * row + 2] * world[2];
  }
  index = result;
}

void
Geometry3D::TransformChanged()
{
  for (int column = 0; column < 3; ++column)
  {
    ScalarType sum = 0.0;
    for (int row = 0; row < 3; ++row)
    {
      sum += m_Matrix->GetElement(row, column) * m_Matrix->GetElement(row, column);
    }
    m_Spacing[column] = std::sqrt(sum);
  }
  m_Matrix->Modified();
  this->Modified();
}

itk::LightObject::Pointer
Geometry3D::InternalClone() const
{
  itk::LightObject::Pointer clone = this->CreateAnother();
  auto * geometry = dynamic_cast<Geometry3D *>(clone.GetPointer());
  if (geometry)
  {
    this->CopyValuesTo(geometry);
  }
  return clone;
}

void
Geometry3D::CopyValuesTo(Geometry3D * other) const
{
  other->m_Bounds = m_Bounds;
  other->m_Matrix->DeepCopy(m_Matrix);
  other->m_Spacing = m_Spacing;
  other->m_ImageGeometry = m_ImageGeometry;
  other->Modified();
}

void
Geometry3D::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Bounds: " << m_Bounds << std::endl;
  os << indent << "Spacing: " << m_Spacing << std::endl;
  os << indent << "Origin: " << this->GetOrigin() << std::endl;
  os << indent << "ImageGeometry: " << m_ImageGeometry << std::endl;
}
} // namespace lumo
