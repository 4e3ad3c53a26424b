#ifndef lumoLookupTable_h
#define lumoLookupTable_h

#include "lumoCommon.h"

#include <itkDataObject.h>

class vtkLookupTable;

namespace lumo
{
/** A colour lookup table: a thin wrapper of a vtkLookupTable, so that tables can be pipeline outputs
 *  (lumo::LookupTableSource) and node properties (lumo::LookupTableProperty). A new table holds a built
 *  vtkLookupTable of 256 entries (VTK's default grey-to-red hue ramp) over the scalar range [0, 255].
 *  Subclasses (the vessel tree lookup table) override the comparison and assignment. */
class LookupTable : public itk::DataObject
{
public:
  // Shared and reference counted: never copied or moved. Assignment (a deep copy of the table) stays,
  // declared below, because table subclasses refine it.
  LookupTable(const LookupTable &) = delete;
  LookupTable(LookupTable &&) = delete;
  LookupTable &
  operator=(LookupTable &&) = delete;

  using Self = LookupTable;
  using Superclass = itk::DataObject;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(LookupTable, itk::DataObject);
  itkNewMacro(Self);

  /** The wrapped table (never null). */
  vtkLookupTable *
  GetVtkLookupTable() const
  {
    return m_LookupTable;
  }
  /** Replaces the wrapped table (shared, reference counted); null is ignored. */
  virtual void
  SetVtkLookupTable(vtkLookupTable * table);

  /** Number of table values. */
  long long
  GetNumberOfColors() const;
  void
  GetTableValue(long long index, double rgba[4]) const;
  void
  SetTableValue(long long index, const double rgba[4]);
  /** Sets the alpha of one entry (index outside the table: nothing happens). */
  void
  ChangeOpacity(long long index, double opacity);
  void
  ChangeOpacityForAll(double opacity);

  /** Same number of colours, same table values and same table range. */
  virtual bool
  operator==(const LookupTable & other) const;
  bool
  operator!=(const LookupTable & other) const
  {
    return !(*this == other);
  }
  /** Deep copy of the wrapped table. */
  virtual LookupTable &
  operator=(const LookupTable & other);

protected:
  LookupTable();
  ~LookupTable() override;
  itk::LightObject::Pointer
  InternalClone() const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** Owned (one VTK reference); made in the constructor, never null afterwards. */
  vtkLookupTable * m_LookupTable{ nullptr };
};
} // namespace lumo

#endif
