#ifndef lumoLookupTableProperty_h
#define lumoLookupTableProperty_h

#include "lumoBaseProperty.h"
#include "lumoLookupTable.h"

namespace lumo
{
/** Holds a lumo::LookupTable (shared: Assign makes this property refer to the other's table, as tables are
 *  edited in place by their users). IsEqual compares the tables by value (two empty properties are equal).
 *  GetValueAsString: the number of colours followed by " colors" ("256 colors"), or "no lookup table". */
class LookupTableProperty : public BaseProperty
{
public:
  lumoClassMacro(LookupTableProperty, BaseProperty);
  itkFactorylessNewMacro(Self);
  lumoNewMacro1Param(LookupTableProperty, LookupTable *);

  LookupTable *
  GetLookupTable() const
  {
    return m_LookupTable;
  }
  LookupTable *
  GetValue() const
  {
    return m_LookupTable;
  }
  void
  SetLookupTable(LookupTable * table);
  void
  SetValue(LookupTable * table)
  {
    this->SetLookupTable(table);
  }

  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;
  std::string
  GetValueAsString() const override;

protected:
  LookupTableProperty() = default;
  explicit LookupTableProperty(LookupTable * table)
    : m_LookupTable(table)
  {}
  ~LookupTableProperty() override = default;
  itk::LightObject::Pointer
  InternalClone() const override;

  LookupTable::Pointer m_LookupTable;
};
} // namespace lumo

#endif
