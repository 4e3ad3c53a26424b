// The property protocol.

#include "lumoBaseProperty.h"

namespace lumo
{
std::string
BaseProperty::GetValueAsString() const
{
  return "n/a";
}

itk::LightObject::Pointer
BaseProperty::InternalClone() const
{
  itk::LightObject::Pointer clone = this->CreateAnother();
  auto * property = dynamic_cast<BaseProperty *>(clone.GetPointer());
  if (property)
  {
    property->Assign(*this);
  }
  return clone;
}
} // namespace lumo
