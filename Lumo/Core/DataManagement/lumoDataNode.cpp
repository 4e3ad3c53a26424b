// lumo::DataNode.

#include "lumoDataNode.h"
#include "lumoBoolProperty.h"
#include "lumoColorProperty.h"
#include "lumoCoreObjectFactory.h"
#include "lumoDoubleProperty.h"
#include "lumoFloatProperty.h"
#include "lumoIntProperty.h"
#include "lumoLevelWindowProperty.h"
#include "lumoStringProperty.h"

#include <algorithm>

namespace lumo
{
DataNode::DataNode()
  : m_PropertyList(PropertyList::New())
{}

DataNode::~DataNode() = default;

void
DataNode::SetData(BaseData * data)
{
  if (m_Data == data)
  {
    return;
  }
  m_Data = data;
  m_Mappers.clear();
  if (data)
  {
    CoreObjectFactory::GetInstance()->SetDefaultProperties(this);
  }
  this->Modified();
}

PropertyList *
DataNode::GetPropertyList(const std::string & rendererName) const
{
  if (rendererName.empty())
  {
    return m_PropertyList;
  }
  PropertyList::Pointer & list = m_RendererPropertyLists[rendererName];
  if (list.IsNull())
  {
    list = PropertyList::New();
  }
  return list;
}

bool
DataNode::HasPropertyList(const std::string & rendererName) const
{
  return m_RendererPropertyLists.find(rendererName) != m_RendererPropertyLists.end();
}

std::vector<std::string>
DataNode::GetPropertyListNames() const
{
  std::vector<std::string> names;
  for (const auto & entry : m_RendererPropertyLists)
  {
    names.push_back(entry.first);
  }
  return names;
}

BaseProperty *
DataNode::GetProperty(const std::string & key, const std::string & rendererName) const
{
  if (!rendererName.empty())
  {
    const auto it = m_RendererPropertyLists.find(rendererName);
    if (it != m_RendererPropertyLists.end())
    {
      BaseProperty * property = it->second->GetProperty(key);
      if (property)
      {
        return property;
      }
    }
  }
  return m_PropertyList->GetProperty(key);
}

void
DataNode::SetProperty(const std::string & key, BaseProperty * property, const std::string & rendererName)
{
  this->GetPropertyList(rendererName)->SetProperty(key, property);
}

void
DataNode::ReplaceProperty(const std::string & key, BaseProperty * property, const std::string & rendererName)
{
  this->GetPropertyList(rendererName)->ReplaceProperty(key, property);
}

void
DataNode::AddProperty(const std::string & key,
                      BaseProperty * property,
                      const std::string & rendererName,
                      bool overwrite)
{
  PropertyList * list = this->GetPropertyList(rendererName);
  if (overwrite || list->GetProperty(key) == nullptr)
  {
    list->SetProperty(key, property);
  }
}

bool
DataNode::DeleteProperty(const std::string & key, const std::string & rendererName)
{
  if (!rendererName.empty() && !this->HasPropertyList(rendererName))
  {
    return false;
  }
  return this->GetPropertyList(rendererName)->DeleteProperty(key);
}

namespace
{
template <typename TProperty, typename TValue>
bool
GetNodeValue(const DataNode & node, const std::string & key, const std::string & rendererName, TValue & value)
{
  const auto * property = dynamic_cast<const TProperty *>(node.GetProperty(key, rendererName));
  if (!property)
  {
    return false;
  }
  value = property->GetValue();
  return true;
}
} // namespace

bool
DataNode::GetBoolProperty(const std::string & key, bool & value, const std::string & rendererName) const
{
  return GetNodeValue<BoolProperty>(*this, key, rendererName, value);
}

bool
DataNode::GetStringProperty(const std::string & key, std::string & value, const std::string & rendererName) const
{
  return GetNodeValue<StringProperty>(*this, key, rendererName, value);
}

bool
DataNode::GetIntProperty(const std::string & key, int & value, const std::string & rendererName) const
{
  return GetNodeValue<IntProperty>(*this, key, rendererName, value);
}

bool
DataNode::GetFloatProperty(const std::string & key, float & value, const std::string & rendererName) const
{
  return GetNodeValue<FloatProperty>(*this, key, rendererName, value);
}

bool
DataNode::GetDoubleProperty(const std::string & key, double & value, const std::string & rendererName) const
{
  return GetNodeValue<DoubleProperty>(*this, key, rendererName, value);
}

bool
DataNode::GetColor(float rgb[3], const std::string & rendererName, const std::string & key) const
{
  Color color;
  if (!GetNodeValue<ColorProperty>(*this, key, rendererName, color))
  {
    return false;
  }
  rgb[0] = color[0];
  rgb[1] = color[1];
  rgb[2] = color[2];
  return true;
}

bool
DataNode::GetOpacity(float & opacity, const std::string & rendererName, const std::string & key) const
{
  return GetNodeValue<FloatProperty>(*this, key, rendererName, opacity);
}

bool
DataNode::GetVisibility(bool & visible, const std::string & rendererName, const std::string & key) const
{
  return GetNodeValue<BoolProperty>(*this, key, rendererName, visible);
}

bool
DataNode::GetLevelWindow(LevelWindow & levelWindow, const std::string & rendererName, const std::string & key) const
{
  return GetNodeValue<LevelWindowProperty>(*this, key, rendererName, levelWindow);
}

bool
DataNode::GetName(std::string & name, const std::string & rendererName, const std::string & key) const
{
  return GetNodeValue<StringProperty>(*this, key, rendererName, name);
}

std::string
DataNode::GetName() const
{
  std::string name;
  this->GetName(name);
  return name;
}

bool
DataNode::IsOn(const std::string & key, const std::string & rendererName, bool defaultIsOn) const
{
  bool value = defaultIsOn;
  this->GetBoolProperty(key, value, rendererName);
  return value;
}

bool
DataNode::IsVisible(const std::string & rendererName, const std::string & key, bool defaultIsOn) const
{
  return this->IsOn(key, rendererName, defaultIsOn);
}

void
DataNode::SetBoolProperty(const std::string & key, bool value, const std::string & rendererName)
{
  this->SetProperty(key, BoolProperty::New(value), rendererName);
}

void
DataNode::SetStringProperty(const std::string & key, const std::string & value, const std::string & rendererName)
{
  this->SetProperty(key, StringProperty::New(value), rendererName);
}

void
DataNode::SetIntProperty(const std::string & key, int value, const std::string & rendererName)
{
  this->SetProperty(key, IntProperty::New(value), rendererName);
}

void
DataNode::SetFloatProperty(const std::string & key, float value, const std::string & rendererName)
{
  this->SetProperty(key, FloatProperty::New(value), rendererName);
}

void
DataNode::SetDoubleProperty(const std::string & key, double value, const std::string & rendererName)
{
  this->SetProperty(key, DoubleProperty::New(value), rendererName);
}

void
DataNode::SetName(const std::string & name)
{
  this->SetStringProperty("name", name);
}

void
DataNode::SetVisibility(bool visible, const std::string & rendererName, const std::string & key)
{
  this->SetBoolProperty(key, visible, rendererName);
}

void
DataNode::SetColor(const Color & color, const std::string & rendererName, const std::string & key)
{
  this->SetProperty(key, ColorProperty::New(color), rendererName);
}

void
DataNode::SetColor(float red, float green, float blue, const std::string & rendererName, const std::string & key)
{
  this->SetProperty(key, ColorProperty::New(red, green, blue), rendererName);
}

void
DataNode::SetOpacity(float opacity, const std::string & rendererName, const std::string & key)
{
  this->SetFloatProperty(key, opacity, rendererName);
}

void
DataNode::SetLevelWindow(const LevelWindow & levelWindow, const std::string & rendererName, const std::string & key)
{
  this->SetProperty(key, LevelWindowProperty::New(levelWindow), rendererName);
}

itk::Object *
DataNode::GetMapper(MapperSlotId slot) const
{
  const auto it = m_Mappers.find(slot);
  if (it != m_Mappers.end() && it->second.IsNotNull())
  {
    return it->second;
  }
  if (m_Data.IsNull())
  {
    return nullptr;
  }
  itk::Object::Pointer mapper = CoreObjectFactory::GetInstance()->CreateMapper(const_cast<DataNode *>(this), slot);
  if (mapper.IsNull())
  {
    return nullptr;
  }
  m_Mappers[slot] = mapper;
  return mapper;
}

void
DataNode::SetMapper(MapperSlotId slot, itk::Object * mapper)
{
  const auto it = m_Mappers.find(slot);
  const itk::Object * current = it != m_Mappers.end() ? it->second.GetPointer() : nullptr;
  if (current == mapper)
  {
    return;
  }
  if (mapper)
  {
    m_Mappers[slot] = mapper;
  }
  else
  {
    m_Mappers.erase(it);
  }
  this->Modified();
}

itk::ModifiedTimeType
DataNode::GetMTime() const
{
  itk::ModifiedTimeType time = std::max(Superclass::GetMTime(), m_PropertyList->GetMTime());
  if (m_Data)
  {
    time = std::max(time, m_Data->GetMTime());
  }
  for (const auto & entry : m_RendererPropertyLists)
  {
    time = std::max(time, entry.second->GetMTime());
  }
  return time;
}

void
DataNode::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Data: " << (m_Data ? m_Data->GetNameOfClass() : "(none)") << std::endl;
  os << indent << "Properties:" << std::endl;
  m_PropertyList->Print(os, indent.GetNextIndent());
  for (const auto & entry : m_RendererPropertyLists)
  {
    os << indent << "Properties for renderer " << entry.first << ":" << std::endl;
    entry.second->Print(os, indent.GetNextIndent());
  }
}
} // namespace lumo
