#include "lumoBasePropertySerializer.h"

#include <itkObjectFactoryBase.h>

namespace lumo
{
BasePropertySerializer::BasePropertySerializer() = default;

BasePropertySerializer::~BasePropertySerializer() = default;

void
BasePropertySerializer::SetProperty(const BaseProperty * property)
{
  if (m_Property.GetPointer() != property)
  {
    m_Property = property;
    this->Modified();
  }
}

const BaseProperty *
BasePropertySerializer::GetProperty() const
{
  return m_Property;
}

BasePropertySerializer::Pointer
BasePropertySerializer::CreateForProperty(const std::string & propertyClassName)
{
  itk::LightObject::Pointer object = itk::ObjectFactoryBase::CreateInstance((propertyClassName + "Serializer").c_str());
  if (object.IsNull())
  {
    return nullptr;
  }
  // The factory hands the object out with one reference of its own, as ITK's factory-made New() expects.
  object->UnRegister();
  return dynamic_cast<BasePropertySerializer *>(object.GetPointer());
}

void
BasePropertySerializer::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Property: " << m_Property.GetPointer() << std::endl;
}
} // namespace lumo
