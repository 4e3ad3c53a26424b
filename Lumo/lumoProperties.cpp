// Property protocol, the value properties, the level window and the property list.

#include "lumoBoolProperty.h"
#include "lumoColorProperty.h"
#include "lumoDoubleProperty.h"
#include "lumoFloatProperty.h"
#include "lumoGroupTagProperty.h"
#include "lumoIntProperty.h"
#include "lumoLevelWindowProperty.h"
#include "lumoLookupTableProperty.h"
#include "lumoMaterialProperty.h"
#include "lumoPropertyList.h"
#include "lumoStringProperty.h"
#include "lumoVector3DProperty.h"
#include "lumoVtkScalarModeProperty.h"

#include <charconv>
#include <cmath>
#include <typeinfo>

namespace lumo
{
// ---------------------------------------------------------------------------------------------------------------
// Text forms

namespace
{
template <typename T>
std::string
ShortestFloatingPoint(T value)
{
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  return std::string(buffer, result.ptr);
}

template <typename TArray>
std::string
BracketedTriple(const TArray & values)
{
  return "[" + ValueToPropertyString(values[0]) + ", " + ValueToPropertyString(values[1]) + ", " +
         ValueToPropertyString(values[2]) + "]";
}
} // namespace

std::string
ValueToPropertyString(bool value)
{
  return value ? "true" : "false";
}

std::string
ValueToPropertyString(int value)
{
  return std::to_string(value);
}

std::string
ValueToPropertyString(float value)
{
  return ShortestFloatingPoint(value);
}

std::string
ValueToPropertyString(double value)
{
  return ShortestFloatingPoint(value);
}

std::string
ValueToPropertyString(const std::string & value)
{
  return value;
}

std::string
ValueToPropertyString(const Vector3D & value)
{
  return BracketedTriple(value);
}

std::string
ValueToPropertyString(const Color & value)
{
  return BracketedTriple(value);
}

// ---------------------------------------------------------------------------------------------------------------
// BaseProperty

std::string
BaseProperty::GetValueAsString() const
{
  return "n/a";
}

itk::LightObject::Pointer
BaseProperty::InternalClone() const
{
  itk::LightObject::Pointer clone = this->CreateAnother();
  auto * property = dynamic_cast<BaseProperty *>(clone.GetPointer());
  if (property)
  {
    property->Assign(*this);
  }
  return clone;
}

// ---------------------------------------------------------------------------------------------------------------
// LevelWindow

LevelWindow::LevelWindow(ScalarType level, ScalarType window)
  : m_Level(level)
  , m_Window(std::abs(window))
  , m_DefaultLevel(level)
  , m_DefaultWindow(std::abs(window))
{}

void
LevelWindow::SetLevelWindow(ScalarType level, ScalarType window)
{
  if (m_Fixed)
  {
    return;
  }
  m_Level = level;
  m_Window = std::abs(window);
}

void
LevelWindow::SetWindowBounds(ScalarType lower, ScalarType upper)
{
  if (lower > upper)
  {
    std::swap(lower, upper);
  }
  this->SetLevelWindow((lower + upper) / 2.0, upper - lower);
}

void
LevelWindow::SetDefaultLevelWindow(ScalarType level, ScalarType window)
{
  m_DefaultLevel = level;
  m_DefaultWindow = std::abs(window);
}

void
LevelWindow::ResetDefaultLevelWindow()
{
  m_DefaultLevel = m_Level;
  m_DefaultWindow = m_Window;
}

void
LevelWindow::SetRangeMinMax(ScalarType minimum, ScalarType maximum)
{
  if (minimum > maximum)
  {
    std::swap(minimum, maximum);
  }
  m_RangeMin = minimum;
  m_RangeMax = maximum;
}

bool
LevelWindow::operator==(const LevelWindow & other) const
{
  return m_Level == other.m_Level && m_Window == other.m_Window && m_DefaultLevel == other.m_DefaultLevel &&
         m_DefaultWindow == other.m_DefaultWindow && m_RangeMin == other.m_RangeMin && m_RangeMax == other.m_RangeMax &&
         m_Fixed == other.m_Fixed;
}

// ---------------------------------------------------------------------------------------------------------------
// LevelWindowProperty

void
LevelWindowProperty::SetLevelWindow(const LevelWindow & levelWindow)
{
  if (m_LevelWindow != levelWindow)
  {
    m_LevelWindow = levelWindow;
    this->Modified();
  }
}

bool
LevelWindowProperty::IsEqual(const BaseProperty & other) const
{
  return typeid(*this) == typeid(other) &&
         m_LevelWindow == static_cast<const LevelWindowProperty &>(other).m_LevelWindow;
}

bool
LevelWindowProperty::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->SetLevelWindow(static_cast<const LevelWindowProperty &>(other).m_LevelWindow);
  return true;
}

std::string
LevelWindowProperty::GetValueAsString() const
{
  return "L:" + ValueToPropertyString(m_LevelWindow.GetLevel()) +
         " W:" + ValueToPropertyString(m_LevelWindow.GetWindow());
}

// ---------------------------------------------------------------------------------------------------------------
// LookupTableProperty

void
LookupTableProperty::SetLookupTable(LookupTable * table)
{
  if (m_LookupTable != table)
  {
    m_LookupTable = table;
    this->Modified();
  }
}

bool
LookupTableProperty::IsEqual(const BaseProperty & other) const
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  const LookupTable * otherTable = static_cast<const LookupTableProperty &>(other).m_LookupTable;
  if (m_LookupTable.IsNull() || otherTable == nullptr)
  {
    return m_LookupTable.IsNull() && otherTable == nullptr;
  }
  return *m_LookupTable == *otherTable;
}

bool
LookupTableProperty::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->SetLookupTable(static_cast<const LookupTableProperty &>(other).m_LookupTable);
  return true;
}

std::string
LookupTableProperty::GetValueAsString() const
{
  if (m_LookupTable.IsNull())
  {
    return "no lookup table";
  }
  return std::to_string(m_LookupTable->GetNumberOfColors()) + " colors";
}

itk::LightObject::Pointer
LookupTableProperty::InternalClone() const
{
  Pointer clone = Self::New();
  if (m_LookupTable.IsNotNull())
  {
    clone->m_LookupTable = dynamic_cast<LookupTable *>(m_LookupTable->Clone().GetPointer());
  }
  return clone.GetPointer();
}

// ---------------------------------------------------------------------------------------------------------------
// MaterialProperty

MaterialProperty::MaterialProperty()
  : m_Material(Material::New())
{}

MaterialProperty::MaterialProperty(const Material & material)
  : m_Material(Material::New())
{
  m_Material->Initialize(material);
}

void
MaterialProperty::SetMaterial(const Material & material)
{
  if (!m_Material->IsEqual(material))
  {
    m_Material->Initialize(material);
    this->Modified();
  }
}

bool
MaterialProperty::IsEqual(const BaseProperty & other) const
{
  return typeid(*this) == typeid(other) &&
         m_Material->IsEqual(*static_cast<const MaterialProperty &>(other).m_Material);
}

bool
MaterialProperty::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->SetMaterial(*static_cast<const MaterialProperty &>(other).m_Material);
  return true;
}

std::string
MaterialProperty::GetValueAsString() const
{
  return m_Material->GetValueAsString();
}

itk::ModifiedTimeType
MaterialProperty::GetMTime() const
{
  return std::max(Superclass::GetMTime(), m_Material->GetMTime());
}

// ---------------------------------------------------------------------------------------------------------------
// GroupTagProperty

bool
GroupTagProperty::IsEqual(const BaseProperty & other) const
{
  return typeid(*this) == typeid(other);
}

bool
GroupTagProperty::Assign(const BaseProperty & other)
{
  return typeid(*this) == typeid(other);
}

std::string
GroupTagProperty::GetValueAsString() const
{
  return std::string();
}

// ---------------------------------------------------------------------------------------------------------------
// VtkScalarModeProperty

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

// ---------------------------------------------------------------------------------------------------------------
// PropertyList

BaseProperty *
PropertyList::GetProperty(const std::string & key) const
{
  const auto it = m_Properties.find(key);
  return it == m_Properties.end() ? nullptr : it->second.GetPointer();
}

void
PropertyList::SetProperty(const std::string & key, BaseProperty * property)
{
  if (!property)
  {
    return;
  }
  auto it = m_Properties.find(key);
  if (it != m_Properties.end())
  {
    if (it->second.GetPointer() == property)
    {
      return;
    }
    if (typeid(*it->second) == typeid(*property))
    {
      if (!it->second->IsEqual(*property))
      {
        it->second->Assign(*property);
        this->Modified();
      }
      return;
    }
    it->second = property;
  }
  else
  {
    m_Properties.emplace(key, property);
  }
  this->Modified();
}

void
PropertyList::ReplaceProperty(const std::string & key, BaseProperty * property)
{
  if (!property)
  {
    this->DeleteProperty(key);
    return;
  }
  BaseProperty::Pointer & slot = m_Properties[key];
  if (slot.GetPointer() != property)
  {
    slot = property;
    this->Modified();
  }
}

bool
PropertyList::DeleteProperty(const std::string & key)
{
  if (m_Properties.erase(key) == 0)
  {
    return false;
  }
  this->Modified();
  return true;
}

void
PropertyList::Clear()
{
  if (!m_Properties.empty())
  {
    m_Properties.clear();
    this->Modified();
  }
}

void
PropertyList::ConcatenatePropertyList(const PropertyList * other, bool replace)
{
  if (!other)
  {
    return;
  }
  for (const auto & entry : other->m_Properties)
  {
    if (replace)
    {
      this->ReplaceProperty(entry.first, entry.second);
    }
    else
    {
      this->SetProperty(entry.first, entry.second);
    }
  }
}

namespace
{
template <typename TProperty, typename TValue>
bool
GetTypedValue(const PropertyList & list, const std::string & key, TValue & value)
{
  const auto * property = dynamic_cast<const TProperty *>(list.GetProperty(key));
  if (!property)
  {
    return false;
  }
  value = property->GetValue();
  return true;
}
} // namespace

bool
PropertyList::GetBoolProperty(const std::string & key, bool & value) const
{
  return GetTypedValue<BoolProperty>(*this, key, value);
}

bool
PropertyList::GetStringProperty(const std::string & key, std::string & value) const
{
  return GetTypedValue<StringProperty>(*this, key, value);
}

bool
PropertyList::GetIntProperty(const std::string & key, int & value) const
{
  return GetTypedValue<IntProperty>(*this, key, value);
}

bool
PropertyList::GetFloatProperty(const std::string & key, float & value) const
{
  return GetTypedValue<FloatProperty>(*this, key, value);
}

bool
PropertyList::GetDoubleProperty(const std::string & key, double & value) const
{
  return GetTypedValue<DoubleProperty>(*this, key, value);
}

itk::ModifiedTimeType
PropertyList::GetMTime() const
{
  itk::ModifiedTimeType time = Superclass::GetMTime();
  for (const auto & entry : m_Properties)
  {
    time = std::max(time, entry.second->GetMTime());
  }
  return time;
}

itk::LightObject::Pointer
PropertyList::InternalClone() const
{
  Pointer clone = Self::New();
  for (const auto & entry : m_Properties)
  {
    itk::LightObject::Pointer copy = entry.second->Clone();
    clone->m_Properties.emplace(entry.first, dynamic_cast<BaseProperty *>(copy.GetPointer()));
  }
  return clone.GetPointer();
}

void
PropertyList::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  for (const auto & entry : m_Properties)
  {
    os << indent << entry.first << " (" << entry.second->GetNameOfClass() << "): " << entry.second->GetValueAsString()
       << std::endl;
  }
}
} // namespace lumo
