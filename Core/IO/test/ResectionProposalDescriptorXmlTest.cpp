#include "lumoResectionProposalDescriptorPropertySerializer.h"
#include "lumoResectionProposalDescriptorPropertySerializerFactory.h"

#include "LumoTestUtilities.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

using namespace lumo;
using Property = ResectionProposalDescriptorProperty;
using Descriptor = Property::LabelDescriptor;
using Serializer = ResectionProposalDescriptorPropertySerializer;

namespace
{
Descriptor
makeDescriptor(int label, const std::string & name, int type, float volume, int surface)
{
  Descriptor descriptor;
  descriptor.Label = label;
  descriptor.Name = name;
  descriptor.ResectionType = static_cast<Property::ResectionType>(type);
  descriptor.Volume = volume;
  descriptor.SurfaceOutputIndex = surface;
  descriptor.Color.Set(0.25f, 0.5f, 1.0f);
  return descriptor;
}

Property::Pointer
makePlan()
{
  auto property = Property::New();
  property->SetResectionProposalName("Plan 5 mm");
  property->AddLabelDescriptor(makeDescriptor(3, "Resected", Property::ToBeResected, 312.25f, 1));
  property->AddLabelDescriptor(makeDescriptor(2, "Remnant", Property::NotToBeResected, 1234.5f, 0));
  property->AddLabelDescriptor(makeDescriptor(4, "At risk", Property::AreaAtRisk, 0.1f, 2));
  return property;
}

std::string
xmlOf(const Property & property)
{
  tinyxml2::XMLDocument document;
  document.InsertEndChild(Serializer::PropertyToXML(property, document));
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  return printer.CStr();
}

/** Reads the element in `xml` and hands back what was written to standard output meanwhile. */
Property::Pointer
readXml(const std::string & xml, std::string & output)
{
  tinyxml2::XMLDocument document;
  EXPECT_EQ(document.Parse(xml.c_str()), tinyxml2::XML_SUCCESS) << xml;
  testing::internal::CaptureStdout();
  Property::Pointer property = Serializer::PropertyFromXML(document.RootElement());
  output = testing::internal::GetCapturedStdout();
  return property;
}

std::string
element(const std::string & descriptors)
{
  return "<ResectionProposalDescriptorProperty ResectionProposalName=\"P\">" + descriptors +
         "</ResectionProposalDescriptorProperty>";
}

std::string
fileContent(const std::string & path)
{
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string
messageOf(const std::function<void()> & action)
{
  try
  {
    action();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "no exception";
}

const char * const planXml =
  "<ResectionProposalDescriptorProperty ResectionProposalName=\"Plan 5 mm\">\n"
  "    <LabelDescriptor Label=\"2\" Name=\"Remnant\" ResectionType=\"NotToBeResected\" Volume=\"1234.5\" "
  "SurfaceOutputIndex=\"0\">\n"
  "        <ColorProperty R=\"0.25\" G=\"0.5\" B=\"1\"/>\n"
  "    </LabelDescriptor>\n"
  "    <LabelDescriptor Label=\"3\" Name=\"Resected\" ResectionType=\"ToBeResected\" Volume=\"312.25\" "
  "SurfaceOutputIndex=\"1\">\n"
  "        <ColorProperty R=\"0.25\" G=\"0.5\" B=\"1\"/>\n"
  "    </LabelDescriptor>\n"
  "    <LabelDescriptor Label=\"4\" Name=\"At risk\" ResectionType=\"AreaAtRisk\" Volume=\"0.1\" "
  "SurfaceOutputIndex=\"2\">\n"
  "        <ColorProperty R=\"0.25\" G=\"0.5\" B=\"1\"/>\n"
  "    </LabelDescriptor>\n"
  "</ResectionProposalDescriptorProperty>\n";

const std::string errorLine = " Error in reading ResectionProposalDescriptorProperty, LabelDescriptor ";
} // namespace

TEST(ResectionProposalDescriptorXml, ElementBytesAndRoundTrip)
{
  Property::Pointer plan = makePlan();
  const std::string xml = xmlOf(*plan);
  EXPECT_EQ(xml, planXml);

  std::string output;
  Property::Pointer back = readXml(xml, output);
  ASSERT_TRUE(back);
  EXPECT_EQ(output, "");
  EXPECT_TRUE(back->IsEqual(*plan));
  EXPECT_EQ(xmlOf(*back), xml);
}

TEST(ResectionProposalDescriptorXml, TypesWithoutAWordAreWrittenWithoutTypeAndDroppedOnReading)
{
  auto property = Property::New();
  property->AddLabelDescriptor(makeDescriptor(1, "zero", 0, 1.0f, 0));
  property->AddLabelDescriptor(makeDescriptor(2, "five", 5, 1.0f, 1));
  property->AddLabelDescriptor(makeDescriptor(3, "kept", Property::UndefinedResectionStatus, 1.0f, 2));
  const std::string xml = xmlOf(*property);
  EXPECT_EQ(xml.find("ResectionType=\"\""), std::string::npos);
  EXPECT_NE(xml.find("<LabelDescriptor Label=\"1\" Name=\"zero\" Volume=\"1\" SurfaceOutputIndex=\"0\">"),
            std::string::npos);
  EXPECT_NE(xml.find("Name=\"kept\" ResectionType=\"UndefinedResectionStatus\""), std::string::npos);

  std::string output;
  Property::Pointer back = readXml(xml, output);
  EXPECT_EQ(output, errorLine + "zero\n" + errorLine + "five\n");
  EXPECT_EQ(back->GetLabelSet(), (std::set<int>{ 3 }));

  // An unknown word is dropped the same way.
  back = readXml(element("<LabelDescriptor Label=\"7\" Name=\"odd\" ResectionType=\"Maybe\" Volume=\"1\" "
                         "SurfaceOutputIndex=\"0\"/>"),
                 output);
  EXPECT_EQ(output, errorLine + "odd\n");
  EXPECT_EQ(back->GetNumberOfLabels(), 0u);
}

TEST(ResectionProposalDescriptorXml, OlderWordsReadAsTheirValuesAndAreWrittenWithTheCurrentOnes)
{
  std::string output;
  Property::Pointer property = readXml(
    element(
      "<LabelDescriptor Label=\"1\" Name=\"a\" ResectionType=\"NotResected\" Volume=\"1\" "
      "SurfaceOutputIndex=\"0\"/>"
      "<LabelDescriptor Label=\"2\" Name=\"b\" ResectionType=\"Resected\" Volume=\"1\" SurfaceOutputIndex=\"1\"/>"
      "<LabelDescriptor Label=\"3\" Name=\"c\" ResectionType=\"Unclear\" Volume=\"1\" SurfaceOutputIndex=\"2\"/>"),
    output);
  EXPECT_EQ(output, "");
  ASSERT_EQ(property->GetNumberOfLabels(), 3u);
  EXPECT_EQ(property->GetResectionType(1), Property::NotToBeResected);
  EXPECT_EQ(property->GetResectionType(2), Property::ToBeResected);
  EXPECT_EQ(property->GetResectionType(3), Property::AreaAtRisk);
  // No colour child: black.
  EXPECT_EQ(property->GetColor(1), Color(0.0f));

  const std::string xml = xmlOf(*property);
  EXPECT_NE(xml.find("Name=\"a\" ResectionType=\"NotToBeResected\""), std::string::npos);
  EXPECT_NE(xml.find("Name=\"b\" ResectionType=\"ToBeResected\""), std::string::npos);
  EXPECT_NE(xml.find("Name=\"c\" ResectionType=\"AreaAtRisk\""), std::string::npos);
  EXPECT_EQ(xml.find("NotResected\""), std::string::npos);
}

TEST(ResectionProposalDescriptorXml, SkipRules)
{
  std::string output;
  const std::string tail = " ResectionType=\"ToBeResected\" Volume=\"2.5\" SurfaceOutputIndex=\"0\">"
                           "<ColorProperty R=\"1\" G=\"0\" B=\"0\"/></LabelDescriptor>";
  // Duplicate labels: the first read stays.
  Property::Pointer property = readXml(element("<LabelDescriptor Label=\"5\" Name=\"first\"" + tail +
                                               "<LabelDescriptor Label=\"5\" Name=\"second\"" + tail),
                                       output);
  EXPECT_EQ(output, "");
  ASSERT_EQ(property->GetNumberOfLabels(), 1u);
  EXPECT_EQ(property->GetLabelName(5), "first");
  EXPECT_FLOAT_EQ(property->GetVolume(5), 2.5f);
  EXPECT_EQ(property->GetColor(5)[0], 1.0f);

  // A negative surface index is dropped with the error line.
  property = readXml(element("<LabelDescriptor Label=\"1\" Name=\"hidden\" ResectionType=\"ToBeResected\" "
                             "Volume=\"1\" SurfaceOutputIndex=\"-1\"/>"),
                     output);
  EXPECT_EQ(output, errorLine + "hidden\n");
  EXPECT_EQ(property->GetNumberOfLabels(), 0u);

  // Missing or malformed label, missing volume or surface index: skipped silently.
  property = readXml(element("<LabelDescriptor Name=\"nolabel\"" + tail + "<LabelDescriptor Label=\"x\" Name=\"text\"" +
                             tail + "<LabelDescriptor Label=\"2.5\" Name=\"fraction\"" + tail +
                             "<LabelDescriptor Label=\"6\" Name=\"novolume\" ResectionType=\"ToBeResected\" "
                             "SurfaceOutputIndex=\"0\"/>"
                             "<LabelDescriptor Label=\"7\" Name=\"nosurface\" ResectionType=\"ToBeResected\" "
                             "Volume=\"1\"/>"
                             "<LabelDescriptor Label=\"8\" Name=\"kept\"" +
                             tail),
                     output);
  EXPECT_EQ(output, "");
  EXPECT_EQ(property->GetLabelSet(), (std::set<int>{ 8 }));
  EXPECT_EQ(property->GetResectionProposalName(), "P");

  // Not the element: nothing.
  EXPECT_FALSE(readXml("<ColorProperty R=\"1\" G=\"0\" B=\"0\"/>", output));
  EXPECT_FALSE(Serializer::PropertyFromXML(nullptr));
}

TEST(ResectionProposalDescriptorXml, TheFactoryMakesTheSerializerFoundByPropertyClass)
{
  ResectionProposalDescriptorPropertySerializerFactory::RegisterOneFactory();
  BasePropertySerializer::Pointer serializer =
    BasePropertySerializer::CreateForProperty("ResectionProposalDescriptorProperty");
  ASSERT_TRUE(serializer);
  EXPECT_STREQ(serializer->GetNameOfClass(), "ResectionProposalDescriptorPropertySerializer");

  Property::Pointer plan = makePlan();
  serializer->SetProperty(plan);
  tinyxml2::XMLDocument document;
  document.InsertEndChild(serializer->Serialize(document));
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  EXPECT_EQ(std::string(printer.CStr()), planXml);
  BaseProperty::Pointer back = serializer->Deserialize(document.RootElement());
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->IsEqual(*plan));
}

TEST(ResectionProposalDescriptorFile, WritesADocumentWithTheElementAsRootAndReadsItBack)
{
  lumotest::TemporaryDirectory directory;
  const std::string path = directory.File("resection.proposal.xml");
  Property::Pointer plan = makePlan();
  WriteResectionProposalDescriptorFile(*plan, path);
  EXPECT_EQ(fileContent(path), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + planXml);
  Property::Pointer back = ReadResectionProposalDescriptorFile(path);
  EXPECT_TRUE(back->IsEqual(*plan));

  // Writing again replaces the file whole and leaves no temporary file behind.
  auto other = Property::New();
  other->SetResectionProposalName("other");
  WriteResectionProposalDescriptorFile(*other, path);
  EXPECT_TRUE(ReadResectionProposalDescriptorFile(path)->IsEqual(*other));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.Path()), {}), 1);
}

TEST(ResectionProposalDescriptorFile, FailuresSayWhatIsWrongAndLeaveNothingBehind)
{
  lumotest::TemporaryDirectory directory;
  Property::Pointer plan = makePlan();

  const std::string missing = directory.File("missing.proposal.xml");
  EXPECT_EQ(messageOf([&] { ReadResectionProposalDescriptorFile(missing); }),
            "cannot read the resection proposal file '" + missing + "': no such file");

  const std::string text = directory.File("text.proposal.xml");
  std::ofstream(text) << "label 2 remnant\n";
  EXPECT_EQ(messageOf([&] {
              ReadResectionProposalDescriptorFile(text);
            }).rfind("cannot read the resection proposal file '" + text + "': not an XML document (", 0),
            0u);

  const std::string empty = directory.File("empty.proposal.xml");
  std::ofstream(empty).close();
  EXPECT_EQ(messageOf([&] {
              ReadResectionProposalDescriptorFile(empty);
            }).rfind("cannot read the resection proposal file '" + empty + "': not an XML document (", 0),
            0u);

  const std::string colour = directory.File("colour.proposal.xml");
  std::ofstream(colour) << "<?xml version=\"1.0\"?>\n<ColorProperty R=\"1\" G=\"0\" B=\"0\"/>\n";
  EXPECT_EQ(messageOf([&] { ReadResectionProposalDescriptorFile(colour); }),
            "cannot read the resection proposal file '" + colour +
              "': its root element is ColorProperty, not ResectionProposalDescriptorProperty");

  const std::string unreadable = directory.Path().string();
  EXPECT_EQ(messageOf([&] { ReadResectionProposalDescriptorFile(unreadable); }),
            "cannot read the resection proposal file '" + unreadable + "': Is a directory");

  // Into a missing directory: nothing is written.
  const std::string nowhere = directory.File("no/such/dir/plan.proposal.xml");
  EXPECT_EQ(messageOf([&] { WriteResectionProposalDescriptorFile(*plan, nowhere); }),
            "cannot write the resection proposal file '" + nowhere + "': No such file or directory");

  // Over a directory: the rename fails, the directory stays and the temporary file is removed.
  const std::string occupied = directory.File("occupied");
  std::filesystem::create_directory(occupied);
  std::ofstream(directory.File("occupied/keep")) << "x";
  EXPECT_EQ(messageOf([&] { WriteResectionProposalDescriptorFile(*plan, occupied); }),
            "cannot write the resection proposal file '" + occupied + "': Is a directory");
  EXPECT_TRUE(std::filesystem::is_directory(occupied));
  EXPECT_EQ(fileContent(directory.File("occupied/keep")), "x");

  std::set<std::string> names;
  for (const auto & entry : std::filesystem::directory_iterator(directory.Path()))
  {
    names.insert(entry.path().filename().string());
  }
  EXPECT_EQ(names,
            (std::set<std::string>{ "colour.proposal.xml", "empty.proposal.xml", "occupied", "text.proposal.xml" }));
}
