// libFuzzer entry for the vessel colour table element ("VesselTreeLookupTable"). The table read directly and the
// property read through the serializer must agree; an accepted table, written and read again, writes the same text.

#include "FuzzSupport.h"

#include "lumoVesselTreeLookupTablePropertySerializer.h"

#include <tinyxml2.h>

#include <stdexcept>

namespace
{
/** The table of the document's root element, or null when the text is not XML or the table is refused. */
lumo::VesselTreeLookupTable::Pointer
readTable(const tinyxml2::XMLDocument & document)
{
  if (document.Error())
  {
    return nullptr;
  }
  try
  {
    return lumo::VesselTreeLookupTablePropertySerializer::TableFromXML(document.RootElement());
  }
  catch (const std::invalid_argument &)
  {}
  catch (const std::out_of_range &)
  {}
  return nullptr;
}

std::string
printTable(const lumo::VesselTreeLookupTable & table)
{
  return lumofuzz::printedXml([&](tinyxml2::XMLDocument & document) {
    return lumo::VesselTreeLookupTablePropertySerializer::TableToXML(table, document);
  });
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  tinyxml2::XMLDocument document;
  document.Parse(reinterpret_cast<const char *>(data), size);
  return readTable(document).IsNotNull();
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  itk::Object::GlobalWarningDisplayOff();
  tinyxml2::XMLDocument document;
  document.Parse(reinterpret_cast<const char *>(data), size);
  const lumo::VesselTreeLookupTable::Pointer table = readTable(document);
  if (!document.Error())
  {
    auto serializer = lumo::VesselTreeLookupTablePropertySerializer::New();
    lumofuzz::require(serializer->Deserialize(document.RootElement()).IsNotNull() == table.IsNotNull());
  }
  if (table.IsNull())
  {
    return 0;
  }

  const std::string written = printTable(*table);
  tinyxml2::XMLDocument again;
  lumofuzz::require(again.Parse(written.c_str(), written.size()) == tinyxml2::XML_SUCCESS);
  const lumo::VesselTreeLookupTable::Pointer reread = readTable(again);
  lumofuzz::require(reread.IsNotNull());
  lumofuzz::require(printTable(*reread) == written);
  return 0;
}
