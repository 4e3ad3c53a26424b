// A surface mesh per time step.

#include "lumoSurface.h"

#include <vtkPolyData.h>

namespace lumo
{
Surface::Surface()
  : m_PolyDatas(1, nullptr)
{}

Surface::~Surface()
{
  for (vtkPolyData * polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Delete();
    }
  }
}

vtkPolyData *
Surface::GetVtkPolyData(TimeStepType t) const
{
  return t < m_PolyDatas.size() ? m_PolyDatas[t] : nullptr;
}

void
Surface::SetVtkPolyData(vtkPolyData * polyData, TimeStepType t)
{
  if (t >= m_PolyDatas.size())
  {
    this->Expand(t + 1);
  }
  if (m_PolyDatas[t] == polyData)
  {
    return;
  }
  if (polyData)
  {
    polyData->Register(nullptr);
  }
  if (m_PolyDatas[t])
  {
    m_PolyDatas[t]->Delete();
  }
  m_PolyDatas[t] = polyData;
  m_Initialized = true;
  this->CalculateBounds(t);
  this->Modified();
}

bool
Surface::IsEmptyTimeStep(TimeStepType t) const
{
  const vtkPolyData * polyData = this->GetVtkPolyData(t);
  return !polyData || const_cast<vtkPolyData *>(polyData)->GetNumberOfPoints() == 0;
}

void
Surface::Expand(unsigned int timeSteps)
{
  Superclass::Expand(timeSteps);
  if (timeSteps > m_PolyDatas.size())
  {
    m_PolyDatas.resize(timeSteps, nullptr);
  }
}

void
Surface::Clear()
{
  for (vtkPolyData *& polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Delete();
    }
    polyData = nullptr;
  }
  m_PolyDatas.assign(1, nullptr);
  Superclass::Clear();
}

void
Surface::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const Surface *>(data);
  if (!other || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  for (vtkPolyData * polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Delete();
    }
  }
  m_PolyDatas = other->m_PolyDatas;
  for (vtkPolyData * polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Register(nullptr);
    }
  }
}

void
Surface::UpdateOutputInformation()
{
  for (TimeStepType t = 0; t < m_PolyDatas.size(); ++t)
  {
    this->CalculateBounds(t);
  }
  Superclass::UpdateOutputInformation();
}

void
Surface::CalculateBounds(TimeStepType t)
{
  Geometry3D * geometry = this->GetGeometry(t);
  if (!geometry)
  {
    return;
  }
  double bounds[6] = { 0, 0, 0, 0, 0, 0 };
  vtkPolyData * polyData = this->GetVtkPolyData(t);
  if (polyData && polyData->GetNumberOfPoints() > 0)
  {
    polyData->ComputeBounds();
    polyData->GetBounds(bounds);
  }
  geometry->SetFloatBounds(bounds);
}

void
Surface::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  for (TimeStepType t = 0; t < m_PolyDatas.size(); ++t)
  {
    os << indent << "Time step " << t << ": "
       << (m_PolyDatas[t] ? std::to_string(m_PolyDatas[t]->GetNumberOfPoints()) + " points" : "no poly data")
       << std::endl;
  }
}
} // namespace lumo
