// Base of data with a voxel grid.

#include "lumoSlicedData.h"

namespace lumo
{
SlicedData::SlicedData()
{
  this->InitializeTimeSlicedGeometry(1);
}

SlicedData::~SlicedData() = default;

SlicedGeometry3D *
SlicedData::GetSlicedGeometry(TimeStepType t) const
{
  return dynamic_cast<SlicedGeometry3D *>(this->GetGeometry(t));
}

void
SlicedData::SetGeometry(Geometry3D * geometry)
{
  if (!geometry || dynamic_cast<TimeSlicedGeometry *>(geometry) || dynamic_cast<SlicedGeometry3D *>(geometry))
  {
    Superclass::SetGeometry(geometry);
    return;
  }
  SlicedGeometry3D::Pointer sliced = SlicedGeometry3D::New();
  double matrix[16];
  geometry->GetIndexToWorldMatrix(matrix);
  sliced->SetIndexToWorldMatrix(matrix);
  sliced->SetBounds(geometry->GetBounds());
  sliced->SetImageGeometry(geometry->GetImageGeometry());
  Superclass::SetGeometry(sliced);
}

void
SlicedData::InitializeTimeSlicedGeometry(unsigned int timeSteps)
{
  TimeSlicedGeometry::Pointer geometry = TimeSlicedGeometry::New();
  geometry->InitializeEvenlyTimed(SlicedGeometry3D::New(), timeSteps);
  m_TimeSlicedGeometry = geometry;
}
} // namespace lumo
