#ifndef lumoBoolProperty_h
#define lumoBoolProperty_h

#include "lumoGenericProperty.h"

namespace lumo
{
/** A boolean; default false. GetValueAsString: "true" or "false". */
class BoolProperty : public GenericProperty<bool>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  BoolProperty(const BoolProperty &) = delete;
  BoolProperty(BoolProperty &&) = delete;
  BoolProperty &
  operator=(BoolProperty &&) = delete;
  BoolProperty &
  operator=(const BoolProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = BoolProperty;
  using Superclass = GenericProperty<bool>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(BoolProperty, GenericProperty);
  lumoNewMacro1Param(BoolProperty, const bool &);

protected:
  BoolProperty()
    : Superclass(false)
  {}
  explicit BoolProperty(const bool & value)
    : Superclass(value)
  {}
  ~BoolProperty() override = default;
};
} // namespace lumo

#endif
