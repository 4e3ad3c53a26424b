#include "lumoSupplyAreaBasedRPG.h"

#include <algorithm>

namespace lumo
{
SupplyAreaBasedRPG::SupplyAreaBasedRPG() = default;

SupplyAreaBasedRPG::~SupplyAreaBasedRPG() = default;

void
SupplyAreaBasedRPG::SetVesselTree(VesselTreeData * tree)
{
  this->SetInput(2, tree);
}

VesselTreeData *
SupplyAreaBasedRPG::GetVesselTree()
{
  return dynamic_cast<VesselTreeData *>(this->GetInput(2));
}

void
SupplyAreaBasedRPG::SetVesselTreeLookupTable(VesselTreeLookupTable * table)
{
  if (m_VesselTreeLookupTable.GetPointer() != table)
  {
    m_VesselTreeLookupTable = table;
    this->Modified();
  }
}

itk::ModifiedTimeType
SupplyAreaBasedRPG::GetMTime() const
{
  itk::ModifiedTimeType time = Superclass::GetMTime();
  if (m_VesselTreeLookupTable.IsNotNull())
  {
    time = std::max(time, m_VesselTreeLookupTable->GetMTime());
  }
  return time;
}

void
SupplyAreaBasedRPG::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "VesselTreeLookupTable: " << m_VesselTreeLookupTable.GetPointer() << std::endl;
}
} // namespace lumo
