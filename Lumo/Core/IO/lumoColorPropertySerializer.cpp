#include "lumoColorPropertySerializer.h"

#include <tinyxml2.h>

#include <cstring>

namespace lumo
{
ColorPropertySerializer::ColorPropertySerializer() = default;

ColorPropertySerializer::~ColorPropertySerializer() = default;

tinyxml2::XMLElement *
ColorPropertySerializer::Serialize(tinyxml2::XMLDocument & document)
{
  const auto * property = dynamic_cast<const ColorProperty *>(this->GetProperty());
  if (property == nullptr)
  {
    return nullptr;
  }
  return ColorToXML(*property, document);
}

BaseProperty::Pointer
ColorPropertySerializer::Deserialize(const tinyxml2::XMLElement * element)
{
  ColorProperty::Pointer property = ColorFromXML(element);
  return property.GetPointer();
}

tinyxml2::XMLElement *
ColorPropertySerializer::ColorToXML(const ColorProperty & property, tinyxml2::XMLDocument & document)
{
  tinyxml2::XMLElement * element = document.NewElement("ColorProperty");
  const Color & color = property.GetColor();
  // The shortest text that reads back to the same float ("0.3", where "%.8g" would give "0.30000001").
  element->SetAttribute("R", ValueToPropertyString(color[0]).c_str());
  element->SetAttribute("G", ValueToPropertyString(color[1]).c_str());
  element->SetAttribute("B", ValueToPropertyString(color[2]).c_str());
  return element;
}

ColorProperty::Pointer
ColorPropertySerializer::ColorFromXML(const tinyxml2::XMLElement * element)
{
  if (element == nullptr || std::strcmp(element->Name(), "ColorProperty") != 0)
  {
    return nullptr;
  }
  float red = 0, green = 0, blue = 0;
  if (element->QueryFloatAttribute("R", &red) != tinyxml2::XML_SUCCESS ||
      element->QueryFloatAttribute("G", &green) != tinyxml2::XML_SUCCESS ||
      element->QueryFloatAttribute("B", &blue) != tinyxml2::XML_SUCCESS)
  {
    return nullptr;
  }
  return ColorProperty::New(red, green, blue);
}
} // namespace lumo
