#ifndef lumoVtkMapper3D_h
#define lumoVtkMapper3D_h

#include "lumoMapper3D.h"

class vtkActor;
class vtkProp;

namespace lumo
{
/** A 3-D mapper whose output is a VTK prop, which the renderer adds to its vtkRenderer. */
class VtkMapper3D : public Mapper3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VtkMapper3D);

  using Self = VtkMapper3D;
  using Superclass = Mapper3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(VtkMapper3D, Mapper3D);

  /** The prop that shows the node in that renderer; the same object for the mapper's whole life. */
  virtual vtkProp *
  GetVtkProp(BaseRenderer * renderer) = 0;

  /** Puts the node's "color" and "opacity" (general or renderer-specific) onto the actor's property. */
  void
  ApplyColorAndOpacity(vtkActor * actor, const BaseRenderer * renderer) const;

protected:
  VtkMapper3D() = default;
  ~VtkMapper3D() override = default;
};
} // namespace lumo

#endif
