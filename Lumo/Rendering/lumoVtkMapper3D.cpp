#include "lumoVtkMapper3D.h"

#include "lumoBaseRenderer.h"

#include <vtkActor.h>
#include <vtkProperty.h>

namespace lumo
{
void
VtkMapper3D::ApplyColorAndOpacity(vtkActor * actor, const BaseRenderer * renderer) const
{
  const DataNode * node = this->GetDataNode();
  if (actor == nullptr || node == nullptr)
  {
    return;
  }
  const std::string name = renderer ? renderer->GetName() : std::string();
  float rgb[3];
  if (node->GetColor(rgb, name))
  {
    actor->GetProperty()->SetColor(rgb[0], rgb[1], rgb[2]);
  }
  float opacity = 1.0f;
  if (node->GetOpacity(opacity, name))
  {
    actor->GetProperty()->SetOpacity(opacity);
  }
}
} // namespace lumo
