// The VTK scalar mode property.

#include "lumoVtkScalarModeProperty.h"

#include <typeinfo>

namespace lumo
{
namespace
{
const char * const ScalarModeNames[] = { "Default",        "PointData",     "CellData",
                                         "PointFieldData", "CellFieldData", "FieldData" };
constexpr int NumberOfScalarModes = 6;
} // namespace

VtkScalarModeProperty::VtkScalarModeProperty(int mode)
{
  this->SetVtkScalarMode(mode);
}

const char *
VtkScalarModeProperty::GetModeName(int mode)
{
  return (mode >= 0 && mode < NumberOfScalarModes) ? ScalarModeNames[mode] : nullptr;
}

bool
VtkScalarModeProperty::SetVtkScalarMode(int mode)
{
  if (mode < 0 || mode >= NumberOfScalarModes)
  {
    return false;
  }
  if (mode != m_Mode)
  {
    m_Mode = mode;
    this->Modified();
  }
  return true;
}

bool
VtkScalarModeProperty::SetValue(const std::string & name)
{
  for (int mode = 0; mode < NumberOfScalarModes; ++mode)
  {
    if (name == ScalarModeNames[mode])
    {
      return this->SetVtkScalarMode(mode);
    }
  }
  return false;
}

bool
VtkScalarModeProperty::IsEqual(const BaseProperty & other) const
{
  return typeid(*this) == typeid(other) && m_Mode == static_cast<const VtkScalarModeProperty &>(other).m_Mode;
}

bool
VtkScalarModeProperty::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->SetVtkScalarMode(static_cast<const VtkScalarModeProperty &>(other).m_Mode);
  return true;
}

std::string
VtkScalarModeProperty::GetValueAsString() const
{
  return ScalarModeNames[m_Mode];
}
} // namespace lumo
