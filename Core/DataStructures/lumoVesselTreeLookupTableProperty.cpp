#include "lumoVesselTreeLookupTableProperty.h"

namespace lumo
{
VesselTreeLookupTableProperty::VesselTreeLookupTableProperty() = default;

VesselTreeLookupTableProperty::~VesselTreeLookupTableProperty() = default;

VesselTreeLookupTableProperty::Pointer
VesselTreeLookupTableProperty::New(VesselTreeLookupTable * table)
{
  Pointer property = Self::New();
  property->m_VesselTreeLookupTable = table;
  return property;
}

void
VesselTreeLookupTableProperty::SetVesselTreeLookupTable(VesselTreeLookupTable * table)
{
  if (m_VesselTreeLookupTable.GetPointer() != table)
  {
    m_VesselTreeLookupTable = table;
    this->Modified();
  }
}

bool
VesselTreeLookupTableProperty::IsEqual(const BaseProperty & other) const
{
  const auto * property = dynamic_cast<const Self *>(&other);
  if (property == nullptr)
  {
    return false;
  }
  if (m_VesselTreeLookupTable.IsNull() || property->m_VesselTreeLookupTable.IsNull())
  {
    return m_VesselTreeLookupTable.IsNull() && property->m_VesselTreeLookupTable.IsNull();
  }
  return *m_VesselTreeLookupTable == *property->m_VesselTreeLookupTable;
}

bool
VesselTreeLookupTableProperty::Assign(const BaseProperty & other)
{
  const auto * property = dynamic_cast<const Self *>(&other);
  if (property == nullptr)
  {
    return false;
  }
  this->SetVesselTreeLookupTable(property->m_VesselTreeLookupTable);
  return true;
}

std::string
VesselTreeLookupTableProperty::GetValueAsString() const
{
  if (m_VesselTreeLookupTable.IsNull())
  {
    return "no vessel tree lookup table";
  }
  return "vessel tree colours: " + std::to_string(m_VesselTreeLookupTable->GetColorByType().size()) + " types, " +
         std::to_string(m_VesselTreeLookupTable->GetColorBySegment().size()) + " segments, " +
         std::to_string(m_VesselTreeLookupTable->GetColorByResectionStatus().size()) + " resection states";
}

void
VesselTreeLookupTableProperty::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "VesselTreeLookupTable: " << GetValueAsString() << std::endl;
}
} // namespace lumo
