#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoVesselTreeLookupTablePropertySerializer.h"
#include "lumoVesselTreeLookupTablePropertySerializerFactory.h"

#include "WarningCapture.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

using namespace lumo;
using Table = VesselTreeLookupTable;

namespace
{
std::string
xmlOf(const Table & table)
{
  tinyxml2::XMLDocument document;
  document.InsertEndChild(VesselTreeLookupTablePropertySerializer::TableToXML(table, document));
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  return printer.CStr();
}

BaseProperty::Pointer
readProperty(const std::string & xml)
{
  tinyxml2::XMLDocument document;
  EXPECT_EQ(document.Parse(xml.c_str()), tinyxml2::XML_SUCCESS);
  auto serializer = VesselTreeLookupTablePropertySerializer::New();
  return serializer->Deserialize(document.RootElement());
}
} // namespace

TEST(VesselTreeLookupTableXml, ElementLayout)
{
  tinyxml2::XMLDocument document;
  auto table = Table::New();
  tinyxml2::XMLElement * root = VesselTreeLookupTablePropertySerializer::TableToXML(*table, document);
  document.InsertEndChild(root);
  EXPECT_STREQ(root->Name(), "VesselTreeLookupTable");
  std::vector<std::string> children;
  for (auto * child = root->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
  {
    children.push_back(child->Name());
  }
  EXPECT_EQ(children,
            (std::vector<std::string>{ "ColorForActive",
                                       "ColorForInvisible",
                                       "ColorForUnknown",
                                       "ColorByType",
                                       "ColorBySegment",
                                       "ColorByResectionStatus" }));
  auto count = [&](const char * name) {
    int n = 0;
    for (auto * e = root->FirstChildElement(name)->FirstChildElement("rgba"); e; e = e->NextSiblingElement("rgba"))
    {
      ++n;
    }
    return n;
  };
  EXPECT_EQ(count("ColorByType"), 5);
  EXPECT_EQ(count("ColorBySegment"), 28);
  EXPECT_EQ(count("ColorByResectionStatus"), 5);
  EXPECT_EQ(root->FirstChildElement("ColorBySegment")->IntAttribute("size"), 28);
  const tinyxml2::XMLElement * active = root->FirstChildElement("ColorForActive");
  EXPECT_EQ(active->DoubleAttribute("r"), 1.0);
  EXPECT_EQ(active->DoubleAttribute("b"), 0.0);
  const tinyxml2::XMLElement * portal = root->FirstChildElement("ColorByType")->FirstChildElement("rgba");
  for (int i = 0; i < 2; ++i)
  {
    portal = portal->NextSiblingElement("rgba");
  }
  EXPECT_EQ(portal->IntAttribute("index"), 2);
  EXPECT_EQ(portal->DoubleAttribute("g"), 0.09);
}

TEST(VesselTreeLookupTableXml, ADefaultTableReadsBackEqual)
{
  auto table = Table::New();
  BaseProperty::Pointer property = readProperty(xmlOf(*table));
  auto * back = dynamic_cast<VesselTreeLookupTableProperty *>(property.GetPointer());
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(*back->GetVesselTreeLookupTable() == *table);

  // A changed table too, through the serializer's own entry with the property.
  Table::ColorType color;
  color.Set(0.125, 0.25, 0.375, 0.5);
  table->SetColorForUnknown(color);
  auto serializer = VesselTreeLookupTablePropertySerializer::New();
  serializer->SetProperty(VesselTreeLookupTableProperty::New(table));
  tinyxml2::XMLDocument document;
  document.InsertEndChild(serializer->Serialize(document));
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  property = readProperty(printer.CStr());
  back = dynamic_cast<VesselTreeLookupTableProperty *>(property.GetPointer());
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->GetVesselTreeLookupTable()->GetColorForUnknown(), color);
}

TEST(VesselTreeLookupTableXml, ASizeOfThirtyKeepsTheOtherEntriesTransparent)
{
  BaseProperty::Pointer property =
    readProperty("<VesselTreeLookupTable><ColorBySegment size=\"30\">"
                 "<rgba index=\"0\" r=\"1\" g=\"0\" b=\"0\" a=\"1\"/><rgba index=\"29\" r=\"0\" g=\"0\" b=\"1\" "
                 "a=\"0.5\"/><rgba index=\"3\" r=\"0.5\" g=\"0.5\"/></ColorBySegment></VesselTreeLookupTable>");
  auto * back = dynamic_cast<VesselTreeLookupTableProperty *>(property.GetPointer());
  ASSERT_NE(back, nullptr);
  const Table::ColorVectorType segments = back->GetVesselTreeLookupTable()->GetColorBySegment();
  ASSERT_EQ(segments.size(), 30u);
  Table::ColorType red, blue;
  red.Set(1, 0, 0, 1);
  blue.Set(0, 0, 1, 0.5);
  EXPECT_EQ(segments[0], red);
  EXPECT_EQ(segments[29], blue);
  for (std::size_t i = 1; i < 29; ++i)
  {
    EXPECT_EQ(segments[i], Table::ColorType(0.0)) << i;
  }
  // Elements that are absent keep the defaults.
  EXPECT_EQ(back->GetVesselTreeLookupTable()->GetColorByType(), Table::New()->GetColorByType());
}

TEST(VesselTreeLookupTableXml, IndicesAndSizesThatTheEntriesCannotBackFailTheRead)
{
  lumotest::WarningCapture capture;
  EXPECT_TRUE(readProperty("<VesselTreeLookupTable><ColorByType size=\"2\"><rgba index=\"2\" r=\"1\" g=\"0\" b=\"0\" "
                           "a=\"1\"/></ColorByType></VesselTreeLookupTable>")
                .IsNull());
  EXPECT_TRUE(readProperty("<SomethingElse/>").IsNull());
  EXPECT_TRUE(readProperty("<VesselTreeLookupTable><ColorByType size=\"-1\"/></VesselTreeLookupTable>").IsNull());
  // A size may run at most 1024 entries ahead of those present, so that a few bytes never make a large table.
  const std::string oneEntry =
    "\"><rgba index=\"0\" r=\"1\" g=\"0\" b=\"0\" a=\"1\"/></ColorBySegment></VesselTreeLookupTable>";
  EXPECT_TRUE(readProperty("<VesselTreeLookupTable><ColorBySegment size=\"1026" + oneEntry).IsNull());
  EXPECT_EQ(capture.texts().size(), 4u);
  EXPECT_NE(capture.texts().back().find("ColorBySegment: size 1026 with only 1 entries"), std::string::npos)
    << capture.texts().back();
  const BaseProperty::Pointer longest = readProperty("<VesselTreeLookupTable><ColorBySegment size=\"1025" + oneEntry);
  ASSERT_TRUE(longest.IsNotNull());
  EXPECT_EQ(
    dynamic_cast<VesselTreeLookupTableProperty &>(*longest).GetVesselTreeLookupTable()->GetColorBySegment().size(),
    1025u);
}

TEST(VesselTreeLookupTableXml, TheFactoryMakesTheSerializerFoundByPropertyClass)
{
  VesselTreeLookupTablePropertySerializerFactory::RegisterOneFactory();
  auto property = VesselTreeLookupTableProperty::New(Table::New());
  BasePropertySerializer::Pointer serializer = BasePropertySerializer::CreateForProperty(property->GetNameOfClass());
  ASSERT_NE(serializer.GetPointer(), nullptr);
  EXPECT_STREQ(serializer->GetNameOfClass(), "VesselTreeLookupTablePropertySerializer");
  EXPECT_TRUE(BasePropertySerializer::CreateForProperty("NoSuchProperty").IsNull());
}
