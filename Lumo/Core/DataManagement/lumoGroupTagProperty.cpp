// The group tag property.

#include "lumoGroupTagProperty.h"

#include <typeinfo>

namespace lumo
{
bool
GroupTagProperty::IsEqual(const BaseProperty & other) const
{
  return typeid(*this) == typeid(other);
}

bool
GroupTagProperty::Assign(const BaseProperty & other)
{
  return typeid(*this) == typeid(other);
}

std::string
GroupTagProperty::GetValueAsString() const
{
  return std::string();
}
} // namespace lumo
