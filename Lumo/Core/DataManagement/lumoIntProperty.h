#ifndef lumoIntProperty_h
#define lumoIntProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A signed integer; default 0. GetValueAsString: decimal ("-12"). */
class IntProperty : public GenericProperty<int>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  IntProperty(const IntProperty &) = delete;
  IntProperty(IntProperty &&) = delete;
  IntProperty &
  operator=(IntProperty &&) = delete;
  IntProperty &
  operator=(const IntProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = IntProperty;
  using Superclass = GenericProperty<int>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(IntProperty, GenericProperty);
  lumoNewMacro1Param(IntProperty, const int &);

protected:
  IntProperty()
    : Superclass(0)
  {}
  explicit IntProperty(const int & value)
    : Superclass(value)
  {}
  ~IntProperty() override = default;
};
} // namespace lumo

#endif
