#ifndef lumoFloatProperty_h
#define lumoFloatProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A single-precision number; default 0. GetValueAsString: shortest round-trip form ("0.5", "0.1", "3"). */
class FloatProperty : public GenericProperty<float>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  FloatProperty(const FloatProperty &) = delete;
  FloatProperty(FloatProperty &&) = delete;
  FloatProperty &
  operator=(FloatProperty &&) = delete;
  FloatProperty &
  operator=(const FloatProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = FloatProperty;
  using Superclass = GenericProperty<float>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(FloatProperty, GenericProperty);
  lumoNewMacro1Param(FloatProperty, const float &);

protected:
  FloatProperty()
    : Superclass(0.0f)
  {}
  explicit FloatProperty(const float & value)
    : Superclass(value)
  {}
  ~FloatProperty() override = default;
};
} // namespace lumo

#endif
