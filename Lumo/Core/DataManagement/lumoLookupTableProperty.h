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
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  LookupTableProperty(const LookupTableProperty &) = delete;
  LookupTableProperty(LookupTableProperty &&) = delete;
  LookupTableProperty &
  operator=(LookupTableProperty &&) = delete;
  LookupTableProperty &
  operator=(const LookupTableProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = LookupTableProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(LookupTableProperty, BaseProperty);
  itkNewMacro(Self);
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
