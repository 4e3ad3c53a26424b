// The property list.

#include "lumoPropertyList.h"

#include "lumoBoolProperty.h"
#include "lumoDoubleProperty.h"
#include "lumoFloatProperty.h"
#include "lumoIntProperty.h"
#include "lumoStringProperty.h"

#include <typeinfo>

namespace lumo
{
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
    const BaseProperty & existing = *it->second;
    if (typeid(existing) == typeid(*property))
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
