#include "lumoVesselTreeLookupTablePropertySerializer.h"

#include "lumoVesselTreeLookupTableProperty.h"

#include <tinyxml2.h>

#include <stdexcept>

namespace lumo
{
namespace
{
using ColorType = VesselTreeLookupTable::ColorType;
using ColorVectorType = VesselTreeLookupTable::ColorVectorType;

void
setComponents(tinyxml2::XMLElement * element, const ColorType & color)
{
  element->SetAttribute("r", color[0]);
  element->SetAttribute("g", color[1]);
  element->SetAttribute("b", color[2]);
  element->SetAttribute("a", color[3]);
}

/** False (color untouched) when a component is missing or not a number. */
bool
readComponents(const tinyxml2::XMLElement * element, ColorType & color)
{
  double r = 0, g = 0, b = 0, a = 0;
  if (element->QueryDoubleAttribute("r", &r) != tinyxml2::XML_SUCCESS ||
      element->QueryDoubleAttribute("g", &g) != tinyxml2::XML_SUCCESS ||
      element->QueryDoubleAttribute("b", &b) != tinyxml2::XML_SUCCESS ||
      element->QueryDoubleAttribute("a", &a) != tinyxml2::XML_SUCCESS)
  {
    return false;
  }
  color.Set(r, g, b, a);
  return true;
}

tinyxml2::XMLElement *
vectorToXML(const char * name, const ColorVectorType & colors, tinyxml2::XMLDocument & document)
{
  tinyxml2::XMLElement * element = document.NewElement(name);
  element->SetAttribute("size", static_cast<int>(colors.size()));
  for (std::size_t i = 0; i < colors.size(); ++i)
  {
    tinyxml2::XMLElement * entry = document.NewElement("rgba");
    entry->SetAttribute("index", static_cast<int>(i));
    setComponents(entry, colors[i]);
    element->InsertEndChild(entry);
  }
  return element;
}

constexpr int MaximumVectorSize = 1 << 20;

// Entries left out stay transparent, but only this many beyond those present: the count in the file alone must not
// decide how large the table (and every scene it is written into) becomes.
constexpr int MaximumMissingEntries = 1024;

/** Reads a vector element into `colors`; false when the element is absent. */
bool
vectorFromXML(const tinyxml2::XMLElement * parent, const char * name, ColorVectorType & colors)
{
  const tinyxml2::XMLElement * element = parent->FirstChildElement(name);
  if (element == nullptr)
  {
    return false;
  }
  int size = 0;
  if (element->QueryIntAttribute("size", &size) != tinyxml2::XML_SUCCESS || size < 0)
  {
    throw std::invalid_argument(std::string(name) + ": missing or negative size");
  }
  if (size > MaximumVectorSize)
  {
    throw std::invalid_argument(std::string(name) + ": size " + std::to_string(size) + " is more than " +
                                std::to_string(MaximumVectorSize));
  }
  int present = 0;
  for (const tinyxml2::XMLElement * entry = element->FirstChildElement("rgba"); entry != nullptr && present < size;
       entry = entry->NextSiblingElement("rgba"))
  {
    ++present;
  }
  if (size - present > MaximumMissingEntries)
  {
    throw std::invalid_argument(std::string(name) + ": size " + std::to_string(size) + " with only " +
                                std::to_string(present) + " entries");
  }
  colors.assign(static_cast<std::size_t>(size), ColorType(0.0));
  for (const tinyxml2::XMLElement * entry = element->FirstChildElement("rgba"); entry != nullptr;
       entry = entry->NextSiblingElement("rgba"))
  {
    int index = 0;
    ColorType color;
    if (entry->QueryIntAttribute("index", &index) != tinyxml2::XML_SUCCESS || !readComponents(entry, color))
    {
      continue;
    }
    if (index < 0)
    {
      throw std::out_of_range(std::string(name) + ": negative index");
    }
    colors.at(static_cast<std::size_t>(index)) = color;
  }
  return true;
}
} // namespace

VesselTreeLookupTablePropertySerializer::VesselTreeLookupTablePropertySerializer() = default;

VesselTreeLookupTablePropertySerializer::~VesselTreeLookupTablePropertySerializer() = default;

tinyxml2::XMLElement *
VesselTreeLookupTablePropertySerializer::TableToXML(const VesselTreeLookupTable & table,
                                                    tinyxml2::XMLDocument & document)
{
  tinyxml2::XMLElement * element = document.NewElement("VesselTreeLookupTable");
  const std::pair<const char *, ColorType> specials[] = { { "ColorForActive", table.GetColorForActive() },
                                                          { "ColorForInvisible", table.GetColorForInvisible() },
                                                          { "ColorForUnknown", table.GetColorForUnknown() } };
  for (const auto & [name, color] : specials)
  {
    tinyxml2::XMLElement * child = document.NewElement(name);
    setComponents(child, color);
    element->InsertEndChild(child);
  }
  element->InsertEndChild(vectorToXML("ColorByType", table.GetColorByType(), document));
  element->InsertEndChild(vectorToXML("ColorBySegment", table.GetColorBySegment(), document));
  element->InsertEndChild(vectorToXML("ColorByResectionStatus", table.GetColorByResectionStatus(), document));
  return element;
}

VesselTreeLookupTable::Pointer
VesselTreeLookupTablePropertySerializer::TableFromXML(const tinyxml2::XMLElement * element)
{
  if (element == nullptr || std::string(element->Name()) != "VesselTreeLookupTable")
  {
    throw std::invalid_argument("not a VesselTreeLookupTable element");
  }
  auto table = VesselTreeLookupTable::New();
  ColorType color;
  if (const tinyxml2::XMLElement * child = element->FirstChildElement("ColorForActive"))
  {
    if (readComponents(child, color))
    {
      table->SetColorForActive(color);
    }
  }
  if (const tinyxml2::XMLElement * child = element->FirstChildElement("ColorForInvisible"))
  {
    if (readComponents(child, color))
    {
      table->SetColorForInvisible(color);
    }
  }
  if (const tinyxml2::XMLElement * child = element->FirstChildElement("ColorForUnknown"))
  {
    if (readComponents(child, color))
    {
      table->SetColorForUnknown(color);
    }
  }
  ColorVectorType colors;
  if (vectorFromXML(element, "ColorByType", colors))
  {
    table->SetColorByType(colors);
  }
  if (vectorFromXML(element, "ColorBySegment", colors))
  {
    table->SetColorBySegment(colors);
  }
  if (vectorFromXML(element, "ColorByResectionStatus", colors))
  {
    table->SetColorByResectionStatus(colors);
  }
  return table;
}

tinyxml2::XMLElement *
VesselTreeLookupTablePropertySerializer::Serialize(tinyxml2::XMLDocument & document)
{
  const auto * property = dynamic_cast<const VesselTreeLookupTableProperty *>(this->GetProperty());
  if (property == nullptr || property->GetVesselTreeLookupTable() == nullptr)
  {
    return nullptr;
  }
  return TableToXML(*property->GetVesselTreeLookupTable(), document);
}

BaseProperty::Pointer
VesselTreeLookupTablePropertySerializer::Deserialize(const tinyxml2::XMLElement * element)
{
  try
  {
    VesselTreeLookupTable::Pointer table = TableFromXML(element);
    return VesselTreeLookupTableProperty::New(table).GetPointer();
  }
  catch (const std::exception & e)
  {
    itkWarningMacro("cannot read the vessel tree lookup table: " << e.what());
    return nullptr;
  }
}
} // namespace lumo
