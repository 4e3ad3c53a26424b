// The material of rendered surfaces.

#include "lumoMaterial.h"
#include "lumoGenericProperty.h"

#include <vtkProperty.h>

#include <typeinfo>

namespace lumo
{
namespace
{
Color
MakeColor(float red, float green, float blue)
{
  Color color;
  color.Set(red, green, blue);
  return color;
}
} // namespace

Material::Material() = default;

Material::Material(const Color & color, double opacity)
  : m_Color(color)
  , m_Opacity(opacity)
{}

void
Material::SetColor(const Color & color)
{
  if (m_Color != color)
  {
    m_Color = color;
    this->Modified();
  }
}

void
Material::SetColor(float red, float green, float blue)
{
  this->SetColor(MakeColor(red, green, blue));
}

void
Material::SetSpecularColor(const Color & color)
{
  if (m_SpecularColor != color)
  {
    m_SpecularColor = color;
    this->Modified();
  }
}

void
Material::SetSpecularColor(float red, float green, float blue)
{
  this->SetSpecularColor(MakeColor(red, green, blue));
}

void
Material::Initialize(const Material & other)
{
  if (this->IsEqual(other))
  {
    return;
  }
  m_Name = other.m_Name;
  m_Color = other.m_Color;
  m_ColorCoefficient = other.m_ColorCoefficient;
  m_SpecularColor = other.m_SpecularColor;
  m_SpecularCoefficient = other.m_SpecularCoefficient;
  m_SpecularPower = other.m_SpecularPower;
  m_Opacity = other.m_Opacity;
  m_Interpolation = other.m_Interpolation;
  m_Representation = other.m_Representation;
  m_LineWidth = other.m_LineWidth;
  this->Modified();
}

void
Material::ApplyTo(vtkProperty * property) const
{
  if (!property)
  {
    return;
  }
  // SetColor sets ambient, diffuse and specular colour; the specular colour is then set on its own.
  property->SetColor(m_Color[0], m_Color[1], m_Color[2]);
  property->SetDiffuse(m_ColorCoefficient);
  property->SetSpecularColor(m_SpecularColor[0], m_SpecularColor[1], m_SpecularColor[2]);
  property->SetSpecular(m_SpecularCoefficient);
  property->SetSpecularPower(m_SpecularPower);
  property->SetOpacity(m_Opacity);
  if (m_Interpolation >= Flat && m_Interpolation <= Phong)
  {
    // VTK: VTK_FLAT 0, VTK_GOURAUD 1, VTK_PHONG 2 - the same numbers.
    property->SetInterpolation(static_cast<int>(m_Interpolation));
  }
  if (m_Representation >= Points && m_Representation <= Surface)
  {
    // VTK: VTK_POINTS 0, VTK_WIREFRAME 1, VTK_SURFACE 2 - the same numbers.
    property->SetRepresentation(static_cast<int>(m_Representation));
  }
  property->SetLineWidth(static_cast<float>(m_LineWidth));
}

void
Material::InitializeFrom(vtkProperty * property)
{
  if (!property)
  {
    return;
  }
  Material::Pointer values = Material::New();
  values->m_Name = m_Name;
  double rgb[3];
  property->GetDiffuseColor(rgb);
  values->m_Color = MakeColor(rgb[0], rgb[1], rgb[2]);
  values->m_ColorCoefficient = property->GetDiffuse();
  property->GetSpecularColor(rgb);
  values->m_SpecularColor = MakeColor(rgb[0], rgb[1], rgb[2]);
  values->m_SpecularCoefficient = property->GetSpecular();
  values->m_SpecularPower = property->GetSpecularPower();
  values->m_Opacity = property->GetOpacity();
  values->m_Interpolation = static_cast<InterpolationType>(property->GetInterpolation());
  values->m_Representation = static_cast<RepresentationType>(property->GetRepresentation());
  values->m_LineWidth = property->GetLineWidth();
  this->Initialize(*values);
}

bool
Material::IsEqual(const BaseProperty & other) const
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  const auto & o = static_cast<const Material &>(other);
  return m_Name == o.m_Name && m_Color == o.m_Color && m_ColorCoefficient == o.m_ColorCoefficient &&
         m_SpecularColor == o.m_SpecularColor && m_SpecularCoefficient == o.m_SpecularCoefficient &&
         m_SpecularPower == o.m_SpecularPower && m_Opacity == o.m_Opacity && m_Interpolation == o.m_Interpolation &&
         m_Representation == o.m_Representation && m_LineWidth == o.m_LineWidth;
}

bool
Material::Assign(const BaseProperty & other)
{
  if (typeid(*this) != typeid(other))
  {
    return false;
  }
  this->Initialize(static_cast<const Material &>(other));
  return true;
}

const char *
Material::GetInterpolationName(int interpolation)
{
  switch (interpolation)
  {
    case Flat:
      return "Flat";
    case Gouraud:
      return "Gouraud";
    case Phong:
      return "Phong";
    default:
      return "Unknown";
  }
}

const char *
Material::GetRepresentationName(int representation)
{
  switch (representation)
  {
    case Points:
      return "Points";
    case Wireframe:
      return "Wireframe";
    case Surface:
      return "Surface";
    default:
      return "Unknown";
  }
}

std::string
Material::GetValueAsString() const
{
  return "color " + ValueToPropertyString(m_Color) + ", opacity " + ValueToPropertyString(m_Opacity) +
         ", interpolation " + GetInterpolationName(m_Interpolation) + ", representation " +
         GetRepresentationName(m_Representation);
}

void
Material::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Name: " << m_Name << std::endl;
  os << indent << "Color: " << m_Color << ", coefficient " << m_ColorCoefficient << std::endl;
  os << indent << "SpecularColor: " << m_SpecularColor << ", coefficient " << m_SpecularCoefficient << ", power "
     << m_SpecularPower << std::endl;
  os << indent << "Opacity: " << m_Opacity << std::endl;
  os << indent << "Interpolation: " << static_cast<int>(m_Interpolation) << std::endl;
  os << indent << "Representation: " << static_cast<int>(m_Representation) << std::endl;
  os << indent << "LineWidth: " << m_LineWidth << std::endl;
}
} // namespace lumo
