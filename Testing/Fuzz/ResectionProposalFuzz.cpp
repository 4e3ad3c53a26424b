// libFuzzer entry for the resection proposal descriptor ("ResectionProposalDescriptorProperty", as in scenes and
// "<stem>.proposal.xml"). The element read from memory and the file read from disk must agree, a refused file says
// why, and an accepted descriptor written and read again writes the same text.

#include "FuzzSupport.h"

#include "lumoResectionProposalDescriptorPropertySerializer.h"

#include <itkMacro.h>
#include <tinyxml2.h>

namespace
{
lumo::ResectionProposalDescriptorProperty::Pointer
readProperty(const tinyxml2::XMLDocument & document)
{
  if (document.Error())
  {
    return nullptr;
  }
  return lumo::ResectionProposalDescriptorPropertySerializer::PropertyFromXML(document.RootElement());
}

std::string
printProperty(const lumo::ResectionProposalDescriptorProperty & property)
{
  return lumofuzz::printedXml([&](tinyxml2::XMLDocument & document) {
    return lumo::ResectionProposalDescriptorPropertySerializer::PropertyToXML(property, document);
  });
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  tinyxml2::XMLDocument document;
  document.Parse(reinterpret_cast<const char *>(data), size);
  return readProperty(document).IsNotNull();
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  static const lumofuzz::ScratchFile scratch("proposal-fuzz");
  tinyxml2::XMLDocument document;
  document.Parse(reinterpret_cast<const char *>(data), size);
  const lumo::ResectionProposalDescriptorProperty::Pointer property = readProperty(document);

  scratch.Write(data, size);
  lumo::ResectionProposalDescriptorProperty::Pointer fromFile;
  try
  {
    fromFile = lumo::ReadResectionProposalDescriptorFile(scratch.Path());
    lumofuzz::require(fromFile.IsNotNull());
  }
  catch (const itk::ExceptionObject & e)
  {
    const std::string description = e.GetDescription();
    lumofuzz::require(
      lumofuzz::startsWith(description, "cannot read the resection proposal file '" + scratch.Path() + "': "));
  }
  lumofuzz::require(fromFile.IsNotNull() == property.IsNotNull());
  if (property.IsNull())
  {
    return 0;
  }

  const std::string written = printProperty(*property);
  lumofuzz::require(printProperty(*fromFile) == written);
  tinyxml2::XMLDocument again;
  lumofuzz::require(again.Parse(written.c_str(), written.size()) == tinyxml2::XML_SUCCESS);
  const lumo::ResectionProposalDescriptorProperty::Pointer reread = readProperty(again);
  lumofuzz::require(reread.IsNotNull());
  lumofuzz::require(printProperty(*reread) == written);
  return 0;
}
