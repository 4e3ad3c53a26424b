#ifndef lumoSurfaceVtkMapper3D_h
#define lumoSurfaceVtkMapper3D_h

#include <itkObjectFactory.h>
#include "lumoVtkMapper3D.h"

#include <vtkSmartPointer.h>

class vtkActor;
class vtkPolyDataMapper;

namespace lumo
{
/** Draws a lumo::Surface (time step 0) as a polygon mesh in the node's "color" and "opacity".
 *
 *  With the node's boolean "scalar visibility" on, the mesh's active point scalars are coloured through a
 *  lumo::LookupTableProperty "LookupTable" when the node has one (else VTK's default table); off (default) gives
 *  the plain colour. The node's "pickable" (default true) off lets picks pass through the surface to what lies
 *  behind it (a translucent organ in front of its vessels). */
class SurfaceVtkMapper3D : public VtkMapper3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SurfaceVtkMapper3D);

  using Self = SurfaceVtkMapper3D;
  using Superclass = VtkMapper3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(SurfaceVtkMapper3D, VtkMapper3D);

  vtkProp *
  GetVtkProp(BaseRenderer * renderer) override;

protected:
  SurfaceVtkMapper3D();
  ~SurfaceVtkMapper3D() override;

  void
  GenerateData() override;
  void
  GenerateDataForRenderer(BaseRenderer * renderer) override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  vtkSmartPointer<vtkPolyDataMapper> m_PolyDataMapper;
  vtkSmartPointer<vtkActor> m_Actor;
};
} // namespace lumo

#endif
