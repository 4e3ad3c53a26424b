#ifndef lumoSupplyAreaBasedRPG_h
#define lumoSupplyAreaBasedRPG_h

#include "lumoResectionProposalGeneratorBase.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeLookupTable.h"

#include <itkObjectFactory.h>

namespace lumo
{
/** Base of the generators that derive a resection proposal from the vascular supply areas of a vessel tree. Adds
 *  input 2, the vessel tree (lumo::VesselTreeData), and the vessel colour table whose resection-status colours
 *  colour the proposed parts.
 *
 *  The colour table is a setting, not an input: GetMTime answers the later of this object's and the table's
 *  modified times, so that editing the table's colours brings the generator up to date again. */
class SupplyAreaBasedRPG : public ResectionProposalGeneratorBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SupplyAreaBasedRPG);

  using Self = SupplyAreaBasedRPG;
  using Superclass = ResectionProposalGeneratorBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(SupplyAreaBasedRPG, ResectionProposalGeneratorBase);

  /** Input 2. */
  void
  SetVesselTree(VesselTreeData * tree);
  VesselTreeData *
  GetVesselTree();

  /** The vessel colour table, held with a reference; null by default. Marks the object modified only when the
   *  pointer differs from the one held. */
  void
  SetVesselTreeLookupTable(VesselTreeLookupTable * table);
  VesselTreeLookupTable *
  GetVesselTreeLookupTable() const
  {
    return m_VesselTreeLookupTable;
  }

  /** The later of this object's and the colour table's modified times. */
  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  SupplyAreaBasedRPG();
  ~SupplyAreaBasedRPG() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  VesselTreeLookupTable::Pointer m_VesselTreeLookupTable;
};
} // namespace lumo

#endif
