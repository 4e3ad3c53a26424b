#include "lumoColorPropertySerializer.h"
#include "lumoIntProperty.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <string>

using namespace lumo;

namespace
{
std::string
print(const tinyxml2::XMLElement * element)
{
  tinyxml2::XMLPrinter printer(nullptr, true); // compact
  element->Accept(&printer);
  return printer.CStr();
}

ColorProperty::Pointer
read(const std::string & xml)
{
  tinyxml2::XMLDocument document;
  EXPECT_EQ(document.Parse(xml.c_str()), tinyxml2::XML_SUCCESS);
  return ColorPropertySerializer::ColorFromXML(document.RootElement());
}
} // namespace

TEST(ColorPropertySerializer, ElementBytes)
{
  tinyxml2::XMLDocument document;
  auto color = ColorProperty::New(1.0f, 0.5f, 0.3f);
  tinyxml2::XMLElement * element = ColorPropertySerializer::ColorToXML(*color, document);
  EXPECT_EQ(print(element), "<ColorProperty R=\"1\" G=\"0.5\" B=\"0.3\"/>");
  document.DeleteNode(element);

  // Through the serializer interface, as a scene writer calls it.
  auto serializer = ColorPropertySerializer::New();
  serializer->SetProperty(ColorProperty::New(0.0f, 0.1f, 0.25f));
  element = serializer->Serialize(document);
  ASSERT_NE(element, nullptr);
  EXPECT_EQ(print(element), "<ColorProperty R=\"0\" G=\"0.1\" B=\"0.25\"/>");
  document.DeleteNode(element);

  serializer->SetProperty(IntProperty::New(3));
  EXPECT_EQ(serializer->Serialize(document), nullptr);
}

TEST(ColorPropertySerializer, ReadsWhatItWritesAndRefusesTheRest)
{
  tinyxml2::XMLDocument document;
  auto color = ColorProperty::New(0.3f, 0.7f, 0.123456789f);
  document.InsertEndChild(ColorPropertySerializer::ColorToXML(*color, document));
  ColorProperty::Pointer back = ColorPropertySerializer::ColorFromXML(document.RootElement());
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->IsEqual(*color)); // float for float

  auto serializer = ColorPropertySerializer::New();
  BaseProperty::Pointer property = serializer->Deserialize(document.RootElement());
  ASSERT_TRUE(property);
  EXPECT_STREQ(property->GetNameOfClass(), "ColorProperty");
  EXPECT_EQ(property->GetValueAsString(), "[0.3, 0.7, 0.12345679]");

  EXPECT_FALSE(read("<ColorProperty R=\"1\" G=\"0.5\"/>"));
  EXPECT_FALSE(read("<ColorProperty R=\"1\" G=\"x\" B=\"0\"/>"));
  EXPECT_FALSE(read("<Color R=\"1\" G=\"0.5\" B=\"0\"/>"));
  EXPECT_FALSE(ColorPropertySerializer::ColorFromXML(nullptr));
  EXPECT_FALSE(serializer->Deserialize(nullptr));
}
