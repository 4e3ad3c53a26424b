// One geometry per time step.

#include "lumoTimeSlicedGeometry.h"

#include "lumoGeometry3D.h"

#include <vtkMatrix4x4.h>

#include <algorithm>

namespace lumo
{
TimeSlicedGeometry::TimeSlicedGeometry()
{
  this->InitializeEmpty(1);
}

void
TimeSlicedGeometry::InitializeEvenlyTimed(Geometry3D * geometry, unsigned int timeSteps)
{
  timeSteps = std::max(1u, timeSteps);
  m_Geometries.clear();
  if (!geometry)
  {
    this->InitializeEmpty(timeSteps);
    return;
  }
  m_Geometries.reserve(timeSteps);
  m_Geometries.push_back(geometry);
  for (unsigned int t = 1; t < timeSteps; ++t)
  {
    m_Geometries.push_back(geometry->Clone());
  }
  this->Modified();
}

void
TimeSlicedGeometry::InitializeEmpty(unsigned int timeSteps)
{
  timeSteps = std::max(1u, timeSteps);
  m_Geometries.clear();
  for (unsigned int t = 0; t < timeSteps; ++t)
  {
    m_Geometries.push_back(Geometry3D::New());
  }
  this->Modified();
}

Geometry3D *
TimeSlicedGeometry::GetGeometry3D(TimeStepType t) const
{
  return t < m_Geometries.size() ? m_Geometries[t].GetPointer() : nullptr;
}

bool
TimeSlicedGeometry::SetGeometry3D(Geometry3D * geometry, TimeStepType t)
{
  if (!geometry || t >= m_Geometries.size())
  {
    return false;
  }
  if (m_Geometries[t] != geometry)
  {
    m_Geometries[t] = geometry;
    this->Modified();
  }
  return true;
}

void
TimeSlicedGeometry::Expand(unsigned int timeSteps)
{
  if (timeSteps <= m_Geometries.size())
  {
    return;
  }
  while (m_Geometries.size() < timeSteps)
  {
    if (m_Geometries.empty())
    {
      m_Geometries.push_back(Geometry3D::New());
    }
    else
    {
      m_Geometries.push_back(m_Geometries.back()->Clone());
    }
  }
  this->Modified();
}

void
TimeSlicedGeometry::UpdateBounds()
{
  BoundsArrayType total;
  bool first = true;
  for (const auto & geometry : m_Geometries)
  {
    geometry->UpdateBounds();
    const BoundsArrayType world = geometry->GetWorldBounds();
    for (unsigned int i = 0; i < 6; ++i)
    {
      if (first)
      {
        total[i] = world[i];
      }
      else
      {
        total[i] = (i % 2 == 0) ? std::min(total[i], world[i]) : std::max(total[i], world[i]);
      }
    }
    first = false;
  }
  if (!m_Matrix->IsIdentity())
  {
    m_Matrix->Identity();
    this->TransformChanged();
  }
  if (!first)
  {
    this->SetBounds(total);
  }
}

void
TimeSlicedGeometry::Initialize()
{
  Superclass::Initialize();
  this->InitializeEmpty(1);
}

itk::ModifiedTimeType
TimeSlicedGeometry::GetMTime() const
{
  itk::ModifiedTimeType time = Superclass::GetMTime();
  for (const auto & geometry : m_Geometries)
  {
    time = std::max(time, geometry->GetMTime());
  }
  return time;
}

void
TimeSlicedGeometry::CopyValuesTo(Geometry3D * other) const
{
  Superclass::CopyValuesTo(other);
  auto * timeSliced = dynamic_cast<TimeSlicedGeometry *>(other);
  if (timeSliced)
  {
    timeSliced->m_Geometries.clear();
    for (const auto & geometry : m_Geometries)
    {
      timeSliced->m_Geometries.push_back(geometry->Clone());
    }
  }
}

void
TimeSlicedGeometry::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "TimeSteps: " << m_Geometries.size() << std::endl;
}
} // namespace lumo
