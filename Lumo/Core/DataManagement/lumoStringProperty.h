#ifndef lumoStringProperty_h
#define lumoStringProperty_h

#include "lumoGenericProperty.h"

#include <string>

namespace lumo
{
/** A string; default empty. GetValueAsString: the string itself. */
class StringProperty : public GenericProperty<std::string>
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  StringProperty(const StringProperty &) = delete;
  StringProperty(StringProperty &&) = delete;
  StringProperty &
  operator=(StringProperty &&) = delete;
  StringProperty &
  operator=(const StringProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = StringProperty;
  using Superclass = GenericProperty<std::string>;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(StringProperty, GenericProperty);
  lumoNewMacro1Param(StringProperty, const std::string &);

protected:
  StringProperty()
    : Superclass(std::string())
  {}
  explicit StringProperty(const std::string & value)
    : Superclass(value)
  {}
  ~StringProperty() override = default;
};
} // namespace lumo

#endif
