// The lookup table property.

#include "lumoLookupTableProperty.h"

#include <typeinfo>

namespace lumo
{
void
LookupTableProperty::SetLookupTable(LookupTable * table)
{
  if (m_LookupTable != table)
  {
    m_LookupTable = table;
    this->Modified();
  }
}

bool
LookupTableProperty::IsEqual(const BaseProperty & other) const
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  const LookupTable * otherTable = static_cast<const LookupTableProperty &>(other).m_LookupTable;
  if (m_LookupTable.IsNull() || otherTable == nullptr)
  {
    return m_LookupTable.IsNull() && otherTable == nullptr;
  }
  return *m_LookupTable == *otherTable;
}

bool
LookupTableProperty::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->SetLookupTable(static_cast<const LookupTableProperty &>(other).m_LookupTable);
  return true;
}

std::string
LookupTableProperty::GetValueAsString() const
{
  if (m_LookupTable.IsNull())
  {
    return "no lookup table";
  }
  return std::to_string(m_LookupTable->GetNumberOfColors()) + " colors";
}

itk::LightObject::Pointer
LookupTableProperty::InternalClone() const
{
  Pointer clone = Self::New();
  if (m_LookupTable.IsNotNull())
  {
    clone->m_LookupTable = dynamic_cast<LookupTable *>(m_LookupTable->Clone().GetPointer());
  }
  return clone.GetPointer();
}
} // namespace lumo
