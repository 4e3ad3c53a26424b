#include "lumoResectionProposalDescriptorPropertySerializer.h"

#include "lumoColorPropertySerializer.h"
#include "lumoGenericProperty.h"

#include <itkMacro.h>

#include <tinyxml2.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace lumo
{
namespace
{
using Property = ResectionProposalDescriptorProperty;

/** The whole attribute as an integer; false when it is missing or has anything else in it. */
bool
readInteger(const tinyxml2::XMLElement * element, const char * name, int & value)
{
  const char * text = element->Attribute(name);
  if (text == nullptr)
  {
    return false;
  }
  const char * end = text + std::strlen(text);
  const auto result = std::from_chars(text, end, value);
  return result.ec == std::errc() && result.ptr == end && result.ptr != text;
}

/** The whole attribute as a floating-point number (locale independent); false when missing or malformed. */
bool
readDouble(const tinyxml2::XMLElement * element, const char * name, double & value)
{
  const char * text = element->Attribute(name);
  if (text == nullptr)
  {
    return false;
  }
  const char * end = text + std::strlen(text);
  const auto result = std::from_chars(text, end, value);
  return result.ec == std::errc() && result.ptr == end && result.ptr != text;
}

void
reportDropped(const std::string & name)
{
  std::cout << " Error in reading ResectionProposalDescriptorProperty, LabelDescriptor " << name << std::endl;
}

[[noreturn]] void
fail(const char * file, unsigned int line, const std::string & message)
{
  throw itk::ExceptionObject(file, line, message, ITK_LOCATION);
}
} // namespace

ResectionProposalDescriptorPropertySerializer::ResectionProposalDescriptorPropertySerializer() = default;

ResectionProposalDescriptorPropertySerializer::~ResectionProposalDescriptorPropertySerializer() = default;

const char *
ResectionProposalDescriptorPropertySerializer::GetResectionTypeWord(int type)
{
  switch (type)
  {
    case Property::UndefinedResectionStatus:
      return "UndefinedResectionStatus";
    case Property::NotToBeResected:
      return "NotToBeResected";
    case Property::ToBeResected:
      return "ToBeResected";
    case Property::AreaAtRisk:
      return "AreaAtRisk";
    default:
      return nullptr;
  }
}

int
ResectionProposalDescriptorPropertySerializer::GetResectionTypeOfWord(const std::string & word)
{
  // Current words and the older ones still found in saved scenes.
  static const std::pair<const char *, int> words[] = { { "Resected", Property::ToBeResected },
                                                        { "ToBeResected", Property::ToBeResected },
                                                        { "NotResected", Property::NotToBeResected },
                                                        { "NotToBeResected", Property::NotToBeResected },
                                                        { "Unclear", Property::AreaAtRisk },
                                                        { "AreaAtRisk", Property::AreaAtRisk },
                                                        { "UndefinedResectionStatus",
                                                          Property::UndefinedResectionStatus } };
  for (const auto & [text, value] : words)
  {
    if (word == text)
    {
      return value;
    }
  }
  return 0;
}

tinyxml2::XMLElement *
ResectionProposalDescriptorPropertySerializer::PropertyToXML(const ResectionProposalDescriptorProperty & property,
                                                             tinyxml2::XMLDocument & document)
{
  tinyxml2::XMLElement * element = document.NewElement("ResectionProposalDescriptorProperty");
  element->SetAttribute("ResectionProposalName", property.GetResectionProposalName().c_str());
  for (const Property::LabelDescriptor & descriptor : property.GetLabelDesriptorSet())
  {
    tinyxml2::XMLElement * child = document.NewElement("LabelDescriptor");
    child->SetAttribute("Label", descriptor.Label);
    child->SetAttribute("Name", descriptor.Name.c_str());
    if (const char * word = GetResectionTypeWord(descriptor.ResectionType))
    {
      child->SetAttribute("ResectionType", word);
    }
    child->SetAttribute("Volume", ValueToPropertyString(descriptor.Volume).c_str());
    child->SetAttribute("SurfaceOutputIndex", descriptor.SurfaceOutputIndex);
    ColorProperty::Pointer color = ColorProperty::New(descriptor.Color);
    child->InsertEndChild(ColorPropertySerializer::ColorToXML(*color, document));
    element->InsertEndChild(child);
  }
  return element;
}

ResectionProposalDescriptorProperty::Pointer
ResectionProposalDescriptorPropertySerializer::PropertyFromXML(const tinyxml2::XMLElement * element)
{
  if (element == nullptr || std::strcmp(element->Name(), "ResectionProposalDescriptorProperty") != 0)
  {
    return nullptr;
  }
  auto property = Property::New();
  if (const char * name = element->Attribute("ResectionProposalName"))
  {
    property->SetResectionProposalName(name);
  }
  for (const tinyxml2::XMLElement * child = element->FirstChildElement("LabelDescriptor"); child != nullptr;
       child = child->NextSiblingElement("LabelDescriptor"))
  {
    Property::LabelDescriptor descriptor;
    descriptor.Color.Fill(0.0f);
    if (const char * name = child->Attribute("Name"))
    {
      descriptor.Name = name;
    }
    int label = 0;
    if (!readInteger(child, "Label", label))
    {
      continue;
    }
    descriptor.Label = label;
    const char * word = child->Attribute("ResectionType");
    const int type = word != nullptr ? GetResectionTypeOfWord(word) : 0;
    if (type == 0)
    {
      reportDropped(descriptor.Name);
      continue;
    }
    descriptor.ResectionType = static_cast<Property::ResectionType>(type);
    double volume = 0.0;
    int surface = 0;
    if (!readDouble(child, "Volume", volume) || !readInteger(child, "SurfaceOutputIndex", surface))
    {
      continue;
    }
    descriptor.Volume = static_cast<float>(volume);
    if (surface < 0)
    {
      reportDropped(descriptor.Name);
      continue;
    }
    descriptor.SurfaceOutputIndex = surface;
    if (ColorProperty::Pointer color = ColorPropertySerializer::ColorFromXML(child->FirstChildElement()))
    {
      descriptor.Color = color->GetColor();
    }
    property->AddLabelDescriptor(descriptor);
  }
  return property;
}

tinyxml2::XMLElement *
ResectionProposalDescriptorPropertySerializer::Serialize(tinyxml2::XMLDocument & document)
{
  const auto * property = dynamic_cast<const Property *>(this->GetProperty());
  if (property == nullptr)
  {
    return nullptr;
  }
  return PropertyToXML(*property, document);
}

BaseProperty::Pointer
ResectionProposalDescriptorPropertySerializer::Deserialize(const tinyxml2::XMLElement * element)
{
  Property::Pointer property = PropertyFromXML(element);
  return property.GetPointer();
}

void
WriteResectionProposalDescriptorFile(const ResectionProposalDescriptorProperty & property, const std::string & path)
{
  const std::string prefix = "cannot write the resection proposal file '" + path + "': ";
  tinyxml2::XMLDocument document;
  document.InsertEndChild(document.NewDeclaration());
  document.InsertEndChild(ResectionProposalDescriptorPropertySerializer::PropertyToXML(property, document));
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  const std::size_t size = static_cast<std::size_t>(printer.CStrSize()) - 1; // without the terminating zero

  // A temporary file in the same directory, so that the rename below is atomic.
  std::vector<char> temporary(path.begin(), path.end());
  const char suffix[] = ".XXXXXX";
  temporary.insert(temporary.end(), suffix, suffix + sizeof(suffix)); // with the terminating zero
  const int descriptor = ::mkstemp(temporary.data());
  if (descriptor < 0)
  {
    fail(__FILE__, __LINE__, prefix + std::strerror(errno));
  }
  std::FILE * file = ::fdopen(descriptor, "wb");
  if (file == nullptr)
  {
    const int error = errno;
    ::close(descriptor);
    std::remove(temporary.data());
    fail(__FILE__, __LINE__, prefix + std::strerror(error));
  }
  const bool written = std::fwrite(printer.CStr(), 1, size, file) == size;
  const int writeError = errno;
  const bool closed = std::fclose(file) == 0;
  const int closeError = errno;
  if (!written || !closed)
  {
    std::remove(temporary.data());
    fail(__FILE__, __LINE__, prefix + std::strerror(!written ? writeError : closeError));
  }
  // mkstemp makes the file readable by its owner only; give it the usual permissions of a new file.
  const mode_t mask = ::umask(0);
  ::umask(mask);
  ::chmod(temporary.data(), 0666 & ~mask);
  if (std::rename(temporary.data(), path.c_str()) != 0)
  {
    const int error = errno;
    std::remove(temporary.data());
    fail(__FILE__, __LINE__, prefix + std::strerror(error));
  }
}

ResectionProposalDescriptorProperty::Pointer
ReadResectionProposalDescriptorFile(const std::string & path)
{
  const std::string prefix = "cannot read the resection proposal file '" + path + "': ";
  std::FILE * file = std::fopen(path.c_str(), "rb");
  if (file == nullptr)
  {
    fail(__FILE__, __LINE__, prefix + (errno == ENOENT ? std::string("no such file") : std::strerror(errno)));
  }
  std::string content;
  char buffer[65536];
  std::size_t count = 0;
  while ((count = std::fread(buffer, 1, sizeof(buffer), file)) > 0)
  {
    content.append(buffer, count);
  }
  const bool failed = std::ferror(file) != 0;
  const int error = errno;
  std::fclose(file);
  if (failed)
  {
    fail(__FILE__, __LINE__, prefix + std::strerror(error));
  }
  tinyxml2::XMLDocument document;
  if (document.Parse(content.c_str(), content.size()) != tinyxml2::XML_SUCCESS)
  {
    fail(__FILE__, __LINE__, prefix + "not an XML document (" + document.ErrorStr() + ")");
  }
  const tinyxml2::XMLElement * root = document.RootElement();
  ResectionProposalDescriptorProperty::Pointer property =
    ResectionProposalDescriptorPropertySerializer::PropertyFromXML(root);
  if (property.IsNull())
  {
    fail(__FILE__,
         __LINE__,
         prefix + (root != nullptr
                     ? "its root element is " + std::string(root->Name()) + ", not ResectionProposalDescriptorProperty"
                     : std::string("no root element")));
  }
  return property;
}
} // namespace lumo
