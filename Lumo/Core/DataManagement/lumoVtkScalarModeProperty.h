#ifndef lumoVtkScalarModeProperty_h
#define lumoVtkScalarModeProperty_h

#include "lumoBaseProperty.h"

namespace lumo
{
/** Which scalars of a data set a VTK mapper colours by, with VTK's numbers and these names:
 *  0 "Default", 1 "PointData", 2 "CellData", 3 "PointFieldData", 4 "CellFieldData", 5 "FieldData"
 *  (VTK_SCALAR_MODE_DEFAULT ... VTK_SCALAR_MODE_USE_FIELD_DATA). Default: 0. GetValueAsString: the name. */
class VtkScalarModeProperty : public BaseProperty
{
public:
  // Shared and reference counted: never copied or moved; assignment copies the value through Assign.
  VtkScalarModeProperty(const VtkScalarModeProperty &) = delete;
  VtkScalarModeProperty(VtkScalarModeProperty &&) = delete;
  VtkScalarModeProperty &
  operator=(VtkScalarModeProperty &&) = delete;
  VtkScalarModeProperty &
  operator=(const VtkScalarModeProperty & other)
  {
    this->Assign(other);
    return *this;
  }

  using Self = VtkScalarModeProperty;
  using Superclass = BaseProperty;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(VtkScalarModeProperty, BaseProperty);
  itkNewMacro(Self);
  lumoNewMacro1Param(VtkScalarModeProperty, int);

  int
  GetVtkScalarMode() const
  {
    return m_Mode;
  }
  int
  GetValue() const
  {
    return m_Mode;
  }
  /** False, and nothing changes, for a number outside 0..5. */
  bool
  SetVtkScalarMode(int mode);
  bool
  SetValue(int mode)
  {
    return this->SetVtkScalarMode(mode);
  }
  /** By name as listed above; false, and nothing changes, for an unknown name. */
  bool
  SetValue(const std::string & name);

  void
  SetScalarModeToDefault()
  {
    this->SetVtkScalarMode(0);
  }
  void
  SetScalarModeToPointData()
  {
    this->SetVtkScalarMode(1);
  }
  void
  SetScalarModeToCellData()
  {
    this->SetVtkScalarMode(2);
  }
  void
  SetScalarModeToPointFieldData()
  {
    this->SetVtkScalarMode(3);
  }
  void
  SetScalarModeToCellFieldData()
  {
    this->SetVtkScalarMode(4);
  }

  /** The name of a mode number, or null outside 0..5. */
  static const char *
  GetModeName(int mode);

  bool
  IsEqual(const BaseProperty & other) const override;
  bool
  Assign(const BaseProperty & other) override;
  std::string
  GetValueAsString() const override;

protected:
  VtkScalarModeProperty() = default;
  explicit VtkScalarModeProperty(int mode);
  ~VtkScalarModeProperty() override = default;

  int m_Mode{ 0 };
};
} // namespace lumo

#endif
