#ifndef lumoVector3DProperty_h
#define lumoVector3DProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A 3-D vector (x, y, z); default (0, 0, 0). GetValueAsString: "[x, y, z]" with the numbers in shortest
 *  round-trip form, for instance "[1, 2.5, -3]". */
class Vector3DProperty : public GenericProperty<Vector3D>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  Vector3DProperty(const Vector3DProperty &) = delete;
  Vector3DProperty(Vector3DProperty &&) = delete;
  Vector3DProperty &
  operator=(Vector3DProperty &&) = delete;
  Vector3DProperty &
  operator=(const Vector3DProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = Vector3DProperty;
  using Superclass = GenericProperty<Vector3D>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(Vector3DProperty, GenericProperty);
  lumoNewMacro1Param(Vector3DProperty, const Vector3D &);

protected:
  Vector3DProperty()
    : Superclass(Vector3D(0.0))
  {}
  explicit Vector3DProperty(const Vector3D & value)
    : Superclass(value)
  {}
  ~Vector3DProperty() override = default;
};
} // namespace lumo

#endif
