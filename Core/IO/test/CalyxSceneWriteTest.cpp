// Writing scenes: the document, the data file names, the messages.
#include "SceneTestData.h"

#include "lumoBoolProperty.h"
#include "lumoCalyxSceneIO.h"
#include "lumoNodePredicateProperty.h"
#include "lumoStringProperty.h"
#include "lumoSurfaceIO.h"
#include "lumoVtkScalarModeProperty.h"

#include <LumoTestUtilities.h>

#include <tinyxml2.h>

#include <regex>

using namespace lumo;
using namespace scenetest;
namespace fs = std::filesystem;

namespace
{
/** Data of a class the scene format has no file for. */
class OtherData : public BaseData
{
public:
  using Self = OtherData;
  using Pointer = itk::SmartPointer<Self>;
  itkNewMacro(Self);

protected:
  OtherData() = default;
};

/** Whether the output holds the message as one line with the writer's source-location prefix. */
bool
HasMessage(const std::string & output, const std::string & message, const char * file = "Core/IO/lumoCalyxSceneIO.cpp")
{
  std::string escaped;
  for (char c : message)
  {
    if (std::string("\\^$.|?*+()[]{}").find(c) != std::string::npos)
    {
      escaped += '\\';
    }
    escaped += c;
  }
  const std::string separator = !message.empty() && message[0] == ':' ? "" : ": ";
  return std::regex_search(output,
                           std::regex(std::string("(^|\n)") + file + " l\\. [0-9]+" + separator + escaped + "\n"));
}

} // namespace

TEST(CalyxSceneWrite, RefusesEmptyScenesAndNamesWithoutWriting)
{
  lumotest::TemporaryDirectory folder;
  DataStorage::Pointer storage = DataStorage::New();
  DataNode::Pointer helper = MakeNode(MakeSurface(), "crosshair");
  helper->SetBoolProperty("helper object", true);
  storage->Add(helper);
  CalyxSceneIO::Pointer io = CalyxSceneIO::New();
  EXPECT_STREQ(io->GetNameOfClass(), "CalyxSceneIO");

  const std::string scene = (folder.Path() / "plan.rs").string();
  testing::internal::CaptureStdout();
  EXPECT_FALSE(io->SaveScene(storage, scene));
  std::string output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(HasMessage(output, "0 objects to save.")) << output;
  EXPECT_TRUE(HasMessage(output, ": There's nothing in this scene! Won't save an empty file.")) << output;
  EXPECT_TRUE(Entries(folder.Path()).empty());

  testing::internal::CaptureStdout();
  EXPECT_FALSE(io->SaveScene(storage, ""));
  output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(HasMessage(output, ": No filename given. Not possible to save scene.")) << output;
  EXPECT_FALSE(io->SaveScene(nullptr, scene));
  EXPECT_TRUE(Entries(folder.Path()).empty());
}

TEST(CalyxSceneWrite, DocumentHoldsVersionObjectsSourcesAndPropertyLists)
{
  lumotest::TemporaryDirectory folder;
  DataStorage::Pointer storage = DataStorage::New();
  DataNode::Pointer outside = MakeNode(MakeSurface(), "outside");
  outside->SetBoolProperty("helper object", true);
  DataNode::Pointer tree = MakeNode(MakeTree(), "portal");
  DataNode::Pointer liver = MakeNode(MakeSurface(), "liver");
  DataNode::Pointer points = MakeNode(MakePointSet()); // no name
  DataNode::Pointer other = MakeNode(OtherData::New(), "other");
  DataNode::Pointer scalarOnly = MakeNode(MakeImage());
  storage->Add(outside);
  storage->Add(tree);
  DataStorage::SetOfObjects::Pointer parents = DataStorage::SetOfObjects::New();
  parents->push_back(tree);
  parents->push_back(outside);
  storage->Add(liver, parents);
  storage->Add(points);
  storage->Add(other);
  storage->Add(scalarOnly);
  // Only the storage's flag (saved like any boolean) and a property of a class without element.
  scalarOnly->GetPropertyList()->Clear();
  scalarOnly->SetProperty("scalar mode", VtkScalarModeProperty::New(2));
  scalarOnly->SetBoolProperty("IsDataStoreManaged", true);

  const fs::path scene = folder.Path() / "plan.rs";
  CalyxSceneIO::Pointer io = CalyxSceneIO::New();
  testing::internal::CaptureStdout();
  ASSERT_TRUE(io->SaveScene(storage, scene.string()));
  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(HasMessage(output, "5 objects to save.")) << output;

  const std::string text = ReadText(scene);
  EXPECT_EQ(text.rfind("<?xml version=\"1.0\"?>\n<Version Writer=\"Core/IO/lumoCalyxSceneIO.cpp\" "
                       "CVSRevision=\"$Revision$\" FileVersion=\"1\"/>\n\n<SceneObject type=\"vesseltree\" "
                       "file=\"portal.ves\" DependenyUID=\"OBJECT_",
                       0),
            0u)
    << text;

  tinyxml2::XMLDocument document;
  ASSERT_EQ(document.LoadFile(scene.string().c_str()), tinyxml2::XML_SUCCESS);
  std::vector<const tinyxml2::XMLElement *> objects;
  for (const tinyxml2::XMLElement * e = document.FirstChildElement("SceneObject"); e != nullptr;
       e = e->NextSiblingElement("SceneObject"))
  {
    objects.push_back(e);
    EXPECT_TRUE(std::regex_match(e->Attribute("DependenyUID"), std::regex("OBJECT_[0-9A-Za-z]{8}")));
  }
  ASSERT_EQ(objects.size(), 5u);

  // The tree, then the liver with one Source (the helper parent is not saved).
  EXPECT_STREQ(objects[1]->Attribute("type"), "surface");
  EXPECT_STREQ(objects[1]->Attribute("file"), "liver.vtp");
  const tinyxml2::XMLElement * source = objects[1]->FirstChildElement("Source");
  ASSERT_NE(source, nullptr);
  EXPECT_STREQ(source->Attribute("UID"), objects[0]->Attribute("DependenyUID"));
  EXPECT_EQ(source->NextSiblingElement("Source"), nullptr);
  EXPECT_EQ(objects[0]->FirstChildElement("Source"), nullptr);
  // Property lists: the general one after the sources, "name" after the type-specific attributes.
  const tinyxml2::XMLElement * list = objects[1]->FirstChildElement("PropertyList");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->Attribute("RenderWindow"), nullptr);
  const tinyxml2::XMLElement * name = list->FirstChildElement("StringProperty");
  while (name != nullptr && !name->Attribute("name", "name"))
  {
    name = name->NextSiblingElement("StringProperty");
  }
  ASSERT_NE(name, nullptr);
  EXPECT_STREQ(name->FirstAttribute()->Name(), "value");
  EXPECT_STREQ(name->Attribute("value"), "liver");

  // A node without a name: a generated file name with the type's extension.
  EXPECT_STREQ(objects[2]->Attribute("type"), "pointset");
  EXPECT_TRUE(std::regex_match(objects[2]->Attribute("file"), std::regex("CalyxSceneObject_[0-9A-Za-z]{5}\\.mps")));
  EXPECT_TRUE(fs::is_regular_file(folder.Path() / objects[2]->Attribute("file")));
  // Unsupported data: an element without type and file.
  EXPECT_EQ(objects[3]->Attribute("type"), nullptr);
  EXPECT_EQ(objects[3]->Attribute("file"), nullptr);
  // Only a property of an unsupported class (and the boolean flag): the scalar mode is left out.
  EXPECT_STREQ(objects[4]->Attribute("type"), "image");
  const tinyxml2::XMLElement * scalarList = objects[4]->FirstChildElement("PropertyList");
  ASSERT_NE(scalarList, nullptr);
  int children = 0;
  for (const tinyxml2::XMLElement * c = scalarList->FirstChildElement(); c != nullptr; c = c->NextSiblingElement())
  {
    ++children;
    EXPECT_STREQ(c->Attribute("name"), "IsDataStoreManaged");
  }
  EXPECT_EQ(children, 1);

  EXPECT_EQ(Entries(folder.Path()),
            (std::set<std::string>{
              "plan.rs", "portal.ves", "liver.vtp", objects[2]->Attribute("file"), objects[4]->Attribute("file") }));
}

TEST(CalyxSceneWrite, ListOfUnsupportedPropertiesIsAnEmptyElement)
{
  tinyxml2::XMLDocument document;
  PropertyList::Pointer list = PropertyList::New();
  list->SetProperty("scalar mode", VtkScalarModeProperty::New(1));
  tinyxml2::XMLElement * element = CalyxSceneIO::SerializeImportantPropertiesFromList(document, list, "");
  document.InsertEndChild(element);
  tinyxml2::XMLPrinter printer;
  document.Print(&printer);
  EXPECT_STREQ(printer.CStr(), "<PropertyList/>\n");

  tinyxml2::XMLDocument windowDocument;
  windowDocument.InsertEndChild(CalyxSceneIO::SerializeImportantPropertiesFromList(windowDocument, list, "3d"));
  tinyxml2::XMLPrinter windowPrinter;
  windowDocument.Print(&windowPrinter);
  EXPECT_STREQ(windowPrinter.CStr(), "<PropertyList RenderWindow=\"3d\"/>\n");
}

TEST(CalyxSceneWrite, SurfaceExtensionsAndCleanUniqueFileNames)
{
  lumotest::TemporaryDirectory outer;
  const fs::path folder = outer.Path() / "scene";
  fs::create_directory(folder);
  DataStorage::Pointer storage = DataStorage::New();
  storage->Add(MakeNode(MakeSurface(), "liver.stl"));
  storage->Add(MakeNode(MakeSurface(), "skin"));
  storage->Add(MakeNode(MakeSurface(), "Skin.vtp"));
  storage->Add(MakeNode(MakeSurface(), "mesh.VTK"));
  storage->Add(MakeNode(MakeTree(), "../escape"));
  storage->Add(MakeNode(MakeTree(), "/etc/passwd"));
  storage->Add(MakeNode(MakeTree(), "..\\..\\win"));
  storage->Add(MakeNode(MakeTree(), "tab\there"));
  storage->Add(MakeNode(MakeTree(), "..."));
  storage->Add(MakeNode(MakeTree(), std::string(300, 'x')));
  storage->Add(MakeNode(MakeTree(), "plan.rs"));

  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(storage, (folder / "plan.rs").string()));
  testing::internal::GetCapturedStdout();

  tinyxml2::XMLDocument document;
  ASSERT_EQ(document.LoadFile((folder / "plan.rs").string().c_str()), tinyxml2::XML_SUCCESS);
  std::vector<std::string> files;
  for (const tinyxml2::XMLElement * e = document.FirstChildElement("SceneObject"); e != nullptr;
       e = e->NextSiblingElement("SceneObject"))
  {
    files.emplace_back(e->Attribute("file") ? e->Attribute("file") : "<none>");
  }
  ASSERT_EQ(files.size(), 11u);
  EXPECT_EQ(files[0], "liver.stl");
  EXPECT_EQ(files[1], "skin.vtp");
  EXPECT_EQ(files[2], "Skin_2.vtp"); // another node's file otherwise (case-insensitive file systems too)
  EXPECT_EQ(files[3], "mesh.VTK");
  EXPECT_EQ(files[4], "_escape.ves");
  EXPECT_EQ(files[5], "_etc_passwd.ves");
  EXPECT_EQ(files[6], "_.._win.ves");
  EXPECT_EQ(files[7], "tab_here.ves");
  EXPECT_TRUE(std::regex_match(files[8], std::regex("CalyxSceneObject_[0-9A-Za-z]{5}\\.ves"))) << files[8];
  EXPECT_EQ(files[9], std::string(120, 'x') + ".ves");
  EXPECT_EQ(files[10], "plan.rs.ves");

  // STL is binary STL (an 80-byte header, then the triangle count), not XML, and reads back.
  const std::string stl = ReadText(folder / "liver.stl");
  ASSERT_GE(stl.size(), 84u);
  EXPECT_EQ(static_cast<unsigned char>(stl[80]), 4u);
  EXPECT_EQ(ReadSurfaceFile((folder / "liver.stl").string())->GetVtkPolyData()->GetNumberOfPolys(), 4);
  EXPECT_EQ(ReadText(folder / "skin.vtp").rfind("<?xml", 0), 0u);
  // Nothing beside the scene's folder.
  EXPECT_EQ(Entries(outer.Path()), std::set<std::string>{ "scene" });
  EXPECT_EQ(Entries(folder).size(), 12u);
}

TEST(CalyxSceneWrite, MakeSafeFileName)
{
  EXPECT_EQ(CalyxSceneIO::MakeSafeFileName("liver"), "liver");
  EXPECT_EQ(CalyxSceneIO::MakeSafeFileName("../../x"), "_.._x");
  EXPECT_EQ(CalyxSceneIO::MakeSafeFileName(".."), "");
  EXPECT_EQ(CalyxSceneIO::MakeSafeFileName(" .hidden"), "hidden");
  EXPECT_EQ(CalyxSceneIO::MakeSafeFileName("a:b*c?d\"e<f>g|h\x7f"), "a_b_c_d_e_f_g_h_");
  // Cut at a character boundary: "é" is two bytes, the 120th byte would split one.
  const std::string name = std::string(119, 'a') + "\xc3\xa9" + "b";
  EXPECT_EQ(CalyxSceneIO::MakeSafeFileName(name), std::string(119, 'a'));
}
