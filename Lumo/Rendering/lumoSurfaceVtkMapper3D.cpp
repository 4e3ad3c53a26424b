#include "lumoSurfaceVtkMapper3D.h"

#include "lumoBaseRenderer.h"
#include "lumoLookupTable.h"
#include "lumoLookupTableProperty.h"
#include "lumoSurface.h"

#include <vtkActor.h>
#include <vtkLookupTable.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>

namespace lumo
{
SurfaceVtkMapper3D::SurfaceVtkMapper3D()
  : m_PolyDataMapper(vtkSmartPointer<vtkPolyDataMapper>::New())
  , m_Actor(vtkSmartPointer<vtkActor>::New())
{
  m_PolyDataMapper->ScalarVisibilityOff();
  m_Actor->SetMapper(m_PolyDataMapper);
}

SurfaceVtkMapper3D::~SurfaceVtkMapper3D() = default;

vtkProp *
SurfaceVtkMapper3D::GetVtkProp(BaseRenderer *)
{
  return m_Actor;
}

void
SurfaceVtkMapper3D::GenerateData()
{
  const auto * surface = dynamic_cast<const Surface *>(this->GetData());
  m_PolyDataMapper->SetInputData(surface ? surface->GetVtkPolyData(0) : nullptr);
}

void
SurfaceVtkMapper3D::GenerateDataForRenderer(BaseRenderer * renderer)
{
  const bool visible = this->IsVisible(renderer) && dynamic_cast<const Surface *>(this->GetData()) != nullptr;
  m_Actor->SetVisibility(visible);
  if (!visible)
  {
    return;
  }
  this->ApplyColorAndOpacity(m_Actor, renderer);
  const DataNode * node = this->GetDataNode();
  m_Actor->SetPickable(node->IsOn("pickable", renderer ? renderer->GetName() : std::string(), true));
  bool scalars = false;
  node->GetBoolProperty("scalar visibility", scalars, renderer ? renderer->GetName() : std::string());
  m_PolyDataMapper->SetScalarVisibility(scalars);
  if (scalars)
  {
    const auto * property = dynamic_cast<const LookupTableProperty *>(node->GetProperty("LookupTable"));
    if (property != nullptr && property->GetLookupTable() != nullptr)
    {
      vtkLookupTable * table = property->GetLookupTable()->GetVtkLookupTable();
      m_PolyDataMapper->SetLookupTable(table);
      m_PolyDataMapper->SetScalarRange(table->GetTableRange());
      m_PolyDataMapper->UseLookupTableScalarRangeOn();
    }
  }
}

void
SurfaceVtkMapper3D::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Actor: " << m_Actor.GetPointer() << '\n';
}
} // namespace lumo
