// Base of the data objects.

#include "lumoBaseData.h"

#include <algorithm>

namespace lumo
{
BaseData::BaseData()
{
  // Not virtual here: subclasses call their own InitializeTimeSlicedGeometry in their constructors.
  m_TimeSlicedGeometry = TimeSlicedGeometry::New();
  m_TimeSlicedGeometry->InitializeEmpty(1);
}

BaseData::~BaseData() = default;

Geometry3D *
BaseData::GetGeometry(TimeStepType t) const
{
  return m_TimeSlicedGeometry ? m_TimeSlicedGeometry->GetGeometry3D(t) : nullptr;
}

Geometry3D *
BaseData::GetUpdatedGeometry(TimeStepType t)
{
  this->UpdateOutputInformation();
  return this->GetGeometry(t);
}

TimeSlicedGeometry *
BaseData::GetUpdatedTimeSlicedGeometry()
{
  this->UpdateOutputInformation();
  return m_TimeSlicedGeometry;
}

void
BaseData::SetGeometry(Geometry3D * geometry)
{
  if (!geometry)
  {
    return;
  }
  auto * timeSliced = dynamic_cast<TimeSlicedGeometry *>(geometry);
  if (timeSliced)
  {
    if (timeSliced == m_TimeSlicedGeometry)
    {
      return;
    }
    m_TimeSlicedGeometry = timeSliced;
  }
  else
  {
    const unsigned int steps = this->GetTimeSteps();
    TimeSlicedGeometry::Pointer newGeometry = TimeSlicedGeometry::New();
    newGeometry->InitializeEvenlyTimed(geometry, steps);
    m_TimeSlicedGeometry = newGeometry;
  }
  this->Modified();
}

bool
BaseData::SetGeometry(Geometry3D * geometry, TimeStepType t)
{
  const bool unchanged = geometry && m_TimeSlicedGeometry->GetGeometry3D(t) == geometry;
  if (!m_TimeSlicedGeometry->SetGeometry3D(geometry, t))
  {
    return false;
  }
  if (!unchanged)
  {
    this->Modified();
  }
  return true;
}

void
BaseData::SetClonedGeometry(const Geometry3D * geometry)
{
  if (!geometry)
  {
    return;
  }
  Geometry3D::Pointer clone = geometry->Clone();
  this->SetGeometry(clone);
}

unsigned int
BaseData::GetTimeSteps() const
{
  return m_TimeSlicedGeometry ? m_TimeSlicedGeometry->GetTimeSteps() : 0;
}

void
BaseData::Expand(unsigned int timeSteps)
{
  if (timeSteps > this->GetTimeSteps())
  {
    m_TimeSlicedGeometry->Expand(timeSteps);
    this->Modified();
  }
}

bool
BaseData::IsEmptyTimeStep(TimeStepType t) const
{
  return t >= this->GetTimeSteps();
}

bool
BaseData::IsEmpty() const
{
  for (TimeStepType t = 0; t < this->GetTimeSteps(); ++t)
  {
    if (!this->IsEmptyTimeStep(t))
    {
      return false;
    }
  }
  return true;
}

void
BaseData::Clear()
{
  this->InitializeTimeSlicedGeometry(1);
  m_Initialized = false;
  this->Modified();
}

void
BaseData::ExecuteOperation(Operation *)
{}

void
BaseData::SetRequestedRegionToLargestPossibleRegion()
{}

bool
BaseData::RequestedRegionIsOutsideOfTheBufferedRegion()
{
  return false;
}

bool
BaseData::VerifyRequestedRegion()
{
  return true;
}

void
BaseData::SetRequestedRegion(const itk::DataObject *)
{}

void
BaseData::CopyInformation(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const BaseData *>(data);
  if (other && other != this && other->m_TimeSlicedGeometry)
  {
    m_TimeSlicedGeometry = other->m_TimeSlicedGeometry->Clone();
    this->Modified();
  }
}

void
BaseData::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const BaseData *>(data);
  if (other && other != this)
  {
    m_TimeSlicedGeometry = other->m_TimeSlicedGeometry->Clone();
    m_Initialized = other->m_Initialized;
    this->Modified();
  }
}

void
BaseData::UpdateOutputInformation()
{
  Superclass::UpdateOutputInformation();
  if (m_TimeSlicedGeometry)
  {
    m_TimeSlicedGeometry->UpdateBounds();
  }
}

itk::ModifiedTimeType
BaseData::GetMTime() const
{
  itk::ModifiedTimeType time = Superclass::GetMTime();
  if (m_TimeSlicedGeometry)
  {
    time = std::max(time, m_TimeSlicedGeometry->GetMTime());
  }
  return time;
}

void
BaseData::InitializeTimeSlicedGeometry(unsigned int timeSteps)
{
  TimeSlicedGeometry::Pointer geometry = TimeSlicedGeometry::New();
  geometry->InitializeEmpty(timeSteps);
  m_TimeSlicedGeometry = geometry;
}

void
BaseData::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Initialized: " << m_Initialized << std::endl;
  os << indent << "TimeSteps: " << this->GetTimeSteps() << std::endl;
}
} // namespace lumo
