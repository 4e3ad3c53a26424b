#include "lumoVesselTreeToLookupTableFilter.h"

#include "lumoLookupTableProperty.h"
#include "lumoVesselTreeLookupTableProperty.h"

#include <vtkLookupTable.h>
#include <vtkSmartPointer.h>

#include <algorithm>

namespace lumo
{
VesselTreeToLookupTableFilter::VesselTreeToLookupTableFilter()
{
  this->SetNumberOfRequiredInputs(1);
}

VesselTreeToLookupTableFilter::~VesselTreeToLookupTableFilter() = default;

void
VesselTreeToLookupTableFilter::SetInput(const VesselTreeData * tree)
{
  this->SetNthInput(0, const_cast<VesselTreeData *>(tree));
}

const VesselTreeData *
VesselTreeToLookupTableFilter::GetInput()
{
  return dynamic_cast<const VesselTreeData *>(this->ProcessObject::GetInput(0));
}

void
VesselTreeToLookupTableFilter::SetDataNode(DataNode * node)
{
  if (m_DataNode.GetPointer() != node)
  {
    m_DataNode = node;
    this->Modified();
  }
}

DataNode *
VesselTreeToLookupTableFilter::GetDataNode() const
{
  return m_DataNode.GetPointer();
}

void
VesselTreeToLookupTableFilter::SetLookupTable(LookupTable * table)
{
  if (m_LookupTable.GetPointer() != table)
  {
    m_LookupTable = table;
    this->Modified();
  }
}

LookupTable *
VesselTreeToLookupTableFilter::GetLookupTable() const
{
  return m_LookupTable;
}

LookupTable *
VesselTreeToLookupTableFilter::AssociatedLookupTable() const
{
  if (DataNode * node = m_DataNode.GetPointer())
  {
    BaseProperty * property = node->GetProperty("VesselTreeLookupTable");
    if (auto * vesselProperty = dynamic_cast<VesselTreeLookupTableProperty *>(property))
    {
      return vesselProperty->GetVesselTreeLookupTable();
    }
    if (auto * plainProperty = dynamic_cast<LookupTableProperty *>(property))
    {
      return plainProperty->GetLookupTable();
    }
  }
  return m_LookupTable;
}

void
VesselTreeToLookupTableFilter::GenerateData()
{
  const VesselTreeData * input = this->GetInput();
  if (input == nullptr)
  {
    itkWarningMacro("Sorry, input is NULL...");
    return;
  }
  LookupTable * associated = AssociatedLookupTable();
  if (associated == nullptr)
  {
    itkWarningMacro("Sorry, lut is NULL...");
    return;
  }
  auto * colors = dynamic_cast<VesselTreeLookupTable *>(associated);
  if (colors == nullptr)
  {
    itkWarningMacro("Associated lookup table is not a vessel tree lookup table!");
    return;
  }

  const ArVesselTree tree = input->GetVesselTreeData(0);
  if (tree.isNull())
  {
    itkWarningMacro("Sorry, no tree available for lookuptable calculation. Trying to continue...");
  }
  std::int32_t maxId = 0;
  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      if (!vessel.isNull())
      {
        maxId = std::max(maxId, vessel->getVesselId());
      }
    }
  }

  const VesselTreeLookupTable::ColorType active = colors->GetColorForActive();
  const VesselTreeLookupTable::ColorType unknown = colors->GetColorForUnknown();
  const VesselTreeLookupTable::ColorType invisible = colors->GetColorForInvisible();
  const VesselTreeLookupTable::ColorVectorType byType = colors->GetColorByType();
  const VesselTreeLookupTable::ColorVectorType bySegment = colors->GetColorBySegment();
  const VesselTreeLookupTable::ColorVectorType byStatus = colors->GetColorByResectionStatus();

  auto table = vtkSmartPointer<vtkLookupTable>::New();
  table->SetNumberOfTableValues(static_cast<vtkIdType>(maxId) + 1);
  table->SetTableRange(0.0, static_cast<double>(maxId));
  for (vtkIdType id = 0; id <= maxId; ++id)
  {
    table->SetTableValue(id, invisible[0], invisible[1], invisible[2], invisible[3]);
  }

  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      if (vessel.isNull() || vessel->getVesselId() < 0)
      {
        continue;
      }
      const VesselProperties & p = vessel->getProperties();
      const std::int32_t status = p.getResectionStatus();
      const std::int32_t segment = p.getSegmentType();
      const std::int32_t type = p.getBloodVesselType();
      VesselTreeLookupTable::ColorType color = unknown;
      if (p.isActive())
      {
        color = active;
      }
      else if (status != 1)
      {
        if (status > 0 && static_cast<std::size_t>(status) < byStatus.size())
        {
          color = byStatus[status];
        }
        else
        {
          itkWarningMacro("unknown resections status(" << status << ") encountered!");
        }
      }
      else if (segment != 1)
      {
        if (segment > 0 && static_cast<std::size_t>(segment) < bySegment.size())
        {
          color = bySegment[segment];
        }
        else
        {
          itkWarningMacro("unknown segment type(" << segment << ") encountered!");
        }
      }
      else if (type >= 0 && static_cast<std::size_t>(type) < byType.size())
      {
        color = byType[type];
      }
      else
      {
        itkWarningMacro("unknown vessel type(" << type << ") encountered!");
      }
      table->SetTableValue(vessel->getVesselId(), color[0], color[1], color[2], color[3]);
    }
  }

  this->GetOutput()->SetVtkLookupTable(table);
  if (DataNode * node = m_DataNode.GetPointer())
  {
    node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(colors));
  }
}

void
VesselTreeToLookupTableFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "DataNode: " << m_DataNode.GetPointer() << std::endl;
  os << indent << "LookupTable: " << m_LookupTable.GetPointer() << std::endl;
}
} // namespace lumo
