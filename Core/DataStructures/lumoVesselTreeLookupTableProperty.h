#ifndef lumoVesselTreeLookupTableProperty_h
#define lumoVesselTreeLookupTableProperty_h

#include <itkObjectFactory.h>
#include "lumoBaseProperty.h"
#include "lumoVesselTreeLookupTable.h"

namespace lumo
{
/** The colour table of a vessel tree as a node property (the node default "VesselTreeLookupTable"). The table is
 *  shared: Assign makes this property refer to the other's table, as tables are edited in place. IsEqual compares
 *  the tables colour for colour; two empty properties are equal. */
class VesselTreeLookupTableProperty : public BaseProperty
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeLookupTableProperty);

  using Self = VesselTreeLookupTableProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeLookupTableProperty, BaseProperty);

  /** A property holding the given table. */
  static Pointer
  New(VesselTreeLookupTable * table);

  VesselTreeLookupTable *
  GetVesselTreeLookupTable() const
  {
    return m_VesselTreeLookupTable;
  }
  void
  SetVesselTreeLookupTable(VesselTreeLookupTable * table);

  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;
  /** "vessel tree colours: 5 types, 28 segments, 5 resection states", or "no vessel tree lookup table". */
  std::string
  GetValueAsString() const override;

protected:
  VesselTreeLookupTableProperty();
  ~VesselTreeLookupTableProperty() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  VesselTreeLookupTable::Pointer m_VesselTreeLookupTable;
};
} // namespace lumo

#endif
