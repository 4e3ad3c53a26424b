#ifndef lumoDoubleProperty_h
#define lumoDoubleProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A double-precision number; default 0. GetValueAsString: shortest round-trip form ("0.1", "2.5", "1e-07"). */
class DoubleProperty : public GenericProperty<double>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  DoubleProperty(const DoubleProperty &) = delete;
  DoubleProperty(DoubleProperty &&) = delete;
  DoubleProperty &
  operator=(DoubleProperty &&) = delete;
  DoubleProperty &
  operator=(const DoubleProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = DoubleProperty;
  using Superclass = GenericProperty<double>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(DoubleProperty, GenericProperty);
  lumoNewMacro1Param(DoubleProperty, const double &);

protected:
  DoubleProperty()
    : Superclass(0.0)
  {}
  explicit DoubleProperty(const double & value)
    : Superclass(value)
  {}
  ~DoubleProperty() override = default;
};
} // namespace lumo

#endif
