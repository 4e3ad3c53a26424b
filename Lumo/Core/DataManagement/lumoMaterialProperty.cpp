// The material property.

#include "lumoMaterialProperty.h"

#include <typeinfo>

namespace lumo
{
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
} // namespace lumo
