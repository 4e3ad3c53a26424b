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

void
BaseProperty::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  // Every property prints its value here in its own text form; subclasses add what that form leaves out.
  os << indent << "Value: " << this->GetValueAsString() << std::endl;
}
} // namespace lumo
