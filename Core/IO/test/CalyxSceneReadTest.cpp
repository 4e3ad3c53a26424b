// Reading scenes: round trips of every property and data type, version rules, placing of nodes, messages.
#include "SceneTestData.h"

#include "lumoBaseRenderer.h"
#include "lumoBoolProperty.h"
#include "lumoCalyxSceneIO.h"
#include "lumoCalyxSceneReaderV1.h"
#include "lumoColorProperty.h"
#include "lumoDoubleProperty.h"
#include "lumoFloatProperty.h"
#include "lumoGroupTagProperty.h"
#include "lumoIntProperty.h"
#include "lumoLevelWindowProperty.h"
#include "lumoLookupTableProperty.h"
#include "lumoMaterial.h"
#include "lumoRenderingManager.h"
#include "lumoResectionProposalDescriptorProperty.h"
#include "lumoStringProperty.h"
#include "lumoVector3DProperty.h"
#include "lumoVesselTreeFileWriter.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoVesselTreeLookupTablePropertySerializerFactory.h"

#include <LumoTestUtilities.h>

#include <tinyxml2.h>
#include <vtkLookupTable.h>

#include <regex>

using namespace lumo;
using namespace scenetest;
namespace fs = std::filesystem;

namespace
{
bool
HasLine(const std::string & output, const std::string & file, const std::string & message)
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
  return std::regex_search(output, std::regex("(^|\n)" + file + " l\\. [0-9]+" + separator + escaped + "\n"));
}

const std::string IO = "Core/IO/lumoCalyxSceneIO.cpp";
const std::string V1 = "Core/IO/lumoCalyxSceneReaderV1.cpp";

std::string
TreeText(VesselTreeData * tree, const fs::path & path)
{
  VesselTreeFileWriter::Pointer writer = VesselTreeFileWriter::New();
  writer->SetFileName(path.string().c_str());
  writer->SetInputVesselTree(tree);
  writer->Write();
  return ReadText(path);
}

/** Loads a scene written by hand into a new storage; the output printed while loading. */
std::string
LoadText(const fs::path & folder, const std::string & xml, DataStorage * storage, bool * result = nullptr)
{
  WriteText(folder / "scene.rs", xml);
  testing::internal::CaptureStdout();
  const bool loaded = CalyxSceneIO::New()->LoadScene(storage, folder.string(), "scene.rs");
  if (result != nullptr)
  {
    *result = loaded;
  }
  return testing::internal::GetCapturedStdout();
}

const char * const Head = "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n";

Color
MakeColor(float r, float g, float b)
{
  Color color;
  color.Set(r, g, b);
  return color;
}

DataNode *
Named(DataStorage * storage, const std::string & name)
{
  return storage->GetNamedNode(name);
}
} // namespace

TEST(CalyxSceneRoundTrip, EveryPropertyTypeAndDataTypeComesBackEqual)
{
  VesselTreeLookupTablePropertySerializerFactory::RegisterOneFactory();
  lumotest::TemporaryDirectory folder;
  BaseRenderer::Pointer renderer = BaseRenderer::New();
  renderer->SetName("scene-test-3d");
  RenderingManager::GetInstance()->AddRenderWindow(renderer->GetRenderWindow());

  DataStorage::Pointer storage = DataStorage::New();
  lumo::Image::Pointer image = MakeImage();
  Surface::Pointer surface = MakeSurface();
  PointSet::Pointer pointSet = MakePointSet();
  VesselTreeData::Pointer tree = MakeTree();
  DataNode::Pointer imageNode = MakeNode(image, "organ");
  DataNode::Pointer surfaceNode = MakeNode(surface, "organ surface");
  DataNode::Pointer pointNode = MakeNode(pointSet, "plane points");
  DataNode::Pointer treeNode = MakeNode(tree, "portal vein");
  storage->Add(imageNode);
  storage->Add(surfaceNode, imageNode);
  storage->Add(pointNode, surfaceNode);
  storage->Add(treeNode, imageNode);

  // One property of every class with an element, with values that differ from the defaults.
  DataNode * node = surfaceNode;
  node->SetBoolProperty("flag", true);
  node->SetStringProperty("text", "a \"quoted\" <text> & more");
  node->SetIntProperty("count", -42);
  node->SetFloatProperty("thin", 0.1f);
  node->SetDoubleProperty("exact", 1.0 / 3.0);
  Vector3D vector;
  vector[0] = 1e-7;
  vector[1] = -2.5;
  vector[2] = 1e20;
  node->SetProperty("offset", Vector3DProperty::New(vector));
  node->SetColor(MakeColor(0.25f, 0.5f, 0.125f));
  Material::Pointer material = Material::New();
  material->SetColor(0.1f, 0.2f, 0.3f);
  material->SetSpecularColor(0.9f, 0.8f, 0.7f);
  material->SetColorCoefficient(0.6);
  material->SetSpecularCoefficient(0.35);
  material->SetSpecularPower(42.0);
  material->SetOpacity(0.45);
  material->SetInterpolation(Material::Phong);
  material->SetRepresentation(Material::Wireframe);
  node->SetProperty("material", material);
  LevelWindow levelWindow;
  levelWindow.SetRangeMinMax(-1000, 3000);
  levelWindow.SetDefaultLevelWindow(40, 400);
  levelWindow.SetLevelWindow(60, 350);
  levelWindow.SetFixed(true);
  node->SetProperty("levelwindow", LevelWindowProperty::New(levelWindow));
  LookupTable::Pointer table = LookupTable::New();
  table->GetVtkLookupTable()->SetTableRange(-5, 17);
  const double entry[4] = { 0.1, 0.2, 0.3, 0.4 };
  table->SetTableValue(3, entry);
  node->SetProperty("LookupTable", LookupTableProperty::New(table));
  VesselTreeLookupTable::Pointer colours = VesselTreeLookupTable::New();
  VesselTreeLookupTable::ColorType active;
  active.Set(0.5, 0.25, 1.0, 0.75);
  colours->SetColorForActive(active);
  node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(colours));
  node->SetProperty("group", GroupTagProperty::New());
  ResectionProposalDescriptorProperty::Pointer descriptor = ResectionProposalDescriptorProperty::New();
  descriptor->SetResectionProposalName("Right hemihepatectomy");
  ResectionProposalDescriptorProperty::LabelDescriptor label;
  label.Label = 2;
  label.Name = "Remnant";
  label.ResectionType = ResectionProposalDescriptorProperty::NotToBeResected;
  label.Volume = 1234.5f;
  label.SurfaceOutputIndex = 0;
  label.Color = MakeColor(0.8f, 0.7f, 0.6f);
  descriptor->AddLabelDescriptor(label);
  label.Label = 5;
  label.Name = "Resected";
  label.ResectionType = ResectionProposalDescriptorProperty::ToBeResected;
  label.Volume = 0.1f;
  label.SurfaceOutputIndex = 1;
  descriptor->AddLabelDescriptor(label);
  node->SetProperty("ResectionProposalDescriptor", descriptor);
  // Renderer-specific values.
  node->SetBoolProperty("visible", false, "scene-test-3d");
  node->SetFloatProperty("opacity", 0.3f, "scene-test-3d");
  node->SetBoolProperty("visible", true, "unregistered-window"); // only registered windows are saved

  const fs::path scene = folder.Path() / "plan.rs";
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(storage, scene.string()));
  testing::internal::GetCapturedStdout();

  DataStorage::Pointer loaded = DataStorage::New();
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->LoadScene(loaded, folder.Path().string(), "plan.rs"));
  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_EQ(output.find("Error"), std::string::npos) << output;
  ASSERT_EQ(loaded->GetNumberOfNodes(), 4u);

  // Every property of the general and of the registered renderer's list, by value.
  DataNode * back = Named(loaded, "organ surface");
  ASSERT_NE(back, nullptr);
  for (const auto & [key, property] : *node->GetPropertyList()->GetMap())
  {
    BaseProperty * read = back->GetPropertyList()->GetProperty(key);
    ASSERT_NE(read, nullptr) << key;
    EXPECT_TRUE(read->IsEqual(*property))
      << key << ": " << read->GetValueAsString() << " vs " << property->GetValueAsString();
  }
  // Plus the folder the data was read from, which the node factory notes.
  EXPECT_EQ(back->GetPropertyList()->GetSize(), node->GetPropertyList()->GetSize() + 1);
  std::string path;
  EXPECT_TRUE(back->GetStringProperty("path", path));
  EXPECT_EQ(path, folder.Path().string());
  ASSERT_TRUE(back->HasPropertyList("scene-test-3d"));
  EXPECT_EQ(back->GetPropertyList("scene-test-3d")->GetSize(), 2u);
  bool visible = true;
  float opacity = 0;
  EXPECT_TRUE(back->GetBoolProperty("visible", visible, "scene-test-3d"));
  EXPECT_FALSE(visible);
  EXPECT_TRUE(back->GetPropertyList("scene-test-3d")->GetFloatProperty("opacity", opacity));
  EXPECT_EQ(opacity, 0.3f);
  EXPECT_FALSE(back->HasPropertyList("unregistered-window"));
  auto * backTable = dynamic_cast<LookupTableProperty *>(back->GetProperty("LookupTable"));
  ASSERT_NE(backTable, nullptr);
  double read[4];
  backTable->GetLookupTable()->GetTableValue(3, read);
  EXPECT_EQ(read[3], 0.4);
  auto * backDescriptor =
    dynamic_cast<ResectionProposalDescriptorProperty *>(back->GetProperty("ResectionProposalDescriptor"));
  ASSERT_NE(backDescriptor, nullptr);
  EXPECT_EQ(backDescriptor->GetNumberOfLabels(), 2u);
  EXPECT_EQ(backDescriptor->GetLabelName(5), "Resected");
  EXPECT_EQ(backDescriptor->GetVolume(5), 0.1f);
  auto * backColours = dynamic_cast<VesselTreeLookupTableProperty *>(back->GetProperty("VesselTreeLookupTable"));
  ASSERT_NE(backColours, nullptr);
  EXPECT_EQ(backColours->GetVesselTreeLookupTable()->GetColorForActive(), active);

  // Data of every type.
  auto * backImage = dynamic_cast<lumo::Image *>(Named(loaded, "organ")->GetData());
  ASSERT_NE(backImage, nullptr);
  auto original = ImageToItkImage<unsigned char>(image);
  auto copy = ImageToItkImage<unsigned char>(backImage);
  EXPECT_EQ(copy->GetLargestPossibleRegion(), original->GetLargestPossibleRegion());
  EXPECT_EQ(copy->GetSpacing(), original->GetSpacing());
  EXPECT_EQ(copy->GetOrigin(), original->GetOrigin());
  EXPECT_TRUE(std::equal(original->GetBufferPointer(), original->GetBufferPointer() + 24, copy->GetBufferPointer()));
  auto * backSurface = dynamic_cast<Surface *>(back->GetData());
  ASSERT_NE(backSurface, nullptr);
  EXPECT_EQ(backSurface->GetVtkPolyData()->GetNumberOfPolys(), 4);
  EXPECT_EQ(backSurface->GetVtkPolyData()->GetNumberOfPoints(), 4);
  auto * backPoints = dynamic_cast<PointSet *>(Named(loaded, "plane points")->GetData());
  ASSERT_NE(backPoints, nullptr);
  EXPECT_EQ(backPoints->GetSize(), 2u);
  EXPECT_EQ(backPoints->GetPoint(7), pointSet->GetPoint(7));
  auto * backTree = dynamic_cast<VesselTreeData *>(Named(loaded, "portal vein")->GetData());
  ASSERT_NE(backTree, nullptr);
  EXPECT_EQ(TreeText(backTree, folder.Path() / "a.txt"), TreeText(tree, folder.Path() / "b.txt"));

  // Sources come back as the storage's sources.
  DataNode * backPoint = Named(loaded, "plane points");
  auto sources = loaded->GetSources(backPoint);
  ASSERT_EQ(sources->Size(), 1u);
  EXPECT_EQ(sources->ElementAt(0).GetPointer(), back);

  RenderingManager::GetInstance()->RemoveRenderWindow(renderer->GetRenderWindow());
}

TEST(CalyxSceneRoundTrip, MaterialDescriptionKeepsOnlyVisualProperties)
{
  lumotest::TemporaryDirectory folder;
  DataNode::Pointer node = MakeNode(MakeSurface(), "liver");
  node->SetColor(MakeColor(0.5f, 0.25f, 0.0f));
  node->SetFloatProperty("opacity", 0.5f);
  node->SetIntProperty("secret", 7);
  CalyxSceneIO::Pointer io = CalyxSceneIO::New();
  const std::string file = (folder.Path() / "liver.material.xml").string();
  ASSERT_TRUE(io->SaveMaterialDescription(node, file));
  const std::string text = ReadText(file);
  EXPECT_EQ(text.find("secret"), std::string::npos);

  DataNode::Pointer other = MakeNode(MakeSurface(), "other");
  ASSERT_TRUE(io->LoadMaterialDescription(other, file));
  float rgb[3];
  ASSERT_TRUE(other->GetColor(rgb));
  EXPECT_EQ(rgb[1], 0.25f);
  EXPECT_EQ(other->GetName(), "liver"); // "name" is on the list
  int secret = 0;
  EXPECT_FALSE(other->GetIntProperty("secret", secret));

  testing::internal::CaptureStdout();
  EXPECT_FALSE(io->SaveMaterialDescription(node, ""));
  EXPECT_FALSE(io->SaveMaterialDescription(nullptr, file));
  EXPECT_FALSE(io->LoadMaterialDescription(other, ""));
  EXPECT_FALSE(io->LoadMaterialDescription(other, (folder.Path() / "missing.xml").string()));
  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(HasLine(output, IO, ": No filename given. Not possible to save material description.")) << output;
  EXPECT_TRUE(HasLine(output, IO, "Unlikely event that we get a NULL pointer as an object for saving.")) << output;
  EXPECT_TRUE(HasLine(output, IO, ": No filename given. Not possible to load material description.")) << output;
  EXPECT_TRUE(HasLine(output, IO, "Could not open/read/parse " + (folder.Path() / "missing.xml").string())) << output;
}

TEST(CalyxSceneRoundTrip, MaterialOutsideItsModesIsNotWritten)
{
  tinyxml2::XMLDocument document;
  Material::Pointer material = Material::New();
  ASSERT_NE(CalyxSceneIO::SerializeMaterial(document, material), nullptr);
  material->SetInterpolation(static_cast<Material::InterpolationType>(3));
  EXPECT_EQ(CalyxSceneIO::SerializeMaterial(document, material), nullptr);
  material->SetInterpolation(Material::Flat);
  // 3: past the last mode, and still a value the enumeration can hold.
  material->SetRepresentation(static_cast<Material::RepresentationType>(3));
  EXPECT_EQ(CalyxSceneIO::SerializeMaterial(document, material), nullptr);
}

TEST(CalyxSceneRead, VersionRules)
{
  lumotest::TemporaryDirectory folder;
  const std::string object = "<SceneObject DependenyUID=\"A\"><PropertyList><StringProperty value=\"a\" "
                             "name=\"name\"/></PropertyList></SceneObject>\n";
  const std::string path = (folder.Path() / "scene.rs").string();

  DataStorage::Pointer noVersion = DataStorage::New();
  bool result = false;
  std::string output = LoadText(folder.Path(), "<?xml version=\"1.0\"?>\n" + object, noVersion, &result);
  EXPECT_TRUE(result);
  EXPECT_EQ(output, "");
  EXPECT_EQ(noVersion->GetNumberOfNodes(), 1u);

  DataStorage::Pointer noFileVersion = DataStorage::New();
  output = LoadText(folder.Path(), "<Version Writer=\"x\"/>\n" + object, noFileVersion, &result);
  EXPECT_TRUE(result);
  EXPECT_TRUE(
    HasLine(output, IO, "Scene file " + path + " does not contain version information! Trying version 1 format."))
    << output;
  EXPECT_EQ(noFileVersion->GetNumberOfNodes(), 1u);

  for (const char * version : { "2", "0", "17" })
  {
    DataStorage::Pointer storage = DataStorage::New();
    output =
      LoadText(folder.Path(), std::string("<Version FileVersion=\"") + version + "\"/>\n" + object, storage, &result);
    EXPECT_FALSE(result);
    EXPECT_TRUE(HasLine(output, IO, std::string(": Version of scene file (") + version + ") not supported.")) << output;
    EXPECT_EQ(storage->GetNumberOfNodes(), 0u);
  }

  testing::internal::CaptureStdout();
  EXPECT_FALSE(CalyxSceneIO::New()->LoadScene(noVersion, folder.Path().string(), ""));
  EXPECT_FALSE(CalyxSceneIO::New()->LoadScene(noVersion, folder.Path().string(), "missing.rs"));
  output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(HasLine(output, IO, ": No filename given. Not possible to load scene.")) << output;
  EXPECT_TRUE(HasLine(output, IO, "Could not open/read/parse " + (folder.Path() / "missing.rs").string())) << output;
}

TEST(CalyxSceneRead, NodesArePlacedAfterTheirSources)
{
  lumotest::TemporaryDirectory folder;
  auto named = [](const char * id, const char * name, const std::string & sources) {
    return std::string("<SceneObject DependenyUID=\"") + id + "\">" + sources +
           "<PropertyList><StringProperty value=\"" + name + "\" name=\"name\"/></PropertyList></SceneObject>\n";
  };
  // Child before parent, grandchild first; a duplicated id; a source named twice.
  const std::string xml = std::string(Head) + named("C", "grandchild", "<Source UID=\"B\"/>") +
                          named("B", "child", "<Source UID=\"A\"/><Source UID=\"D\"/>") + named("A", "parent", "") +
                          named("A", "duplicate", "") + named("D", "other parent", "");
  DataStorage::Pointer storage = DataStorage::New();
  bool result = false;
  const std::string output = LoadText(folder.Path(), xml, storage, &result);
  EXPECT_TRUE(result) << output;
  EXPECT_EQ(output, "");
  ASSERT_EQ(storage->GetNumberOfNodes(), 5u);
  DataNode * child = Named(storage, "child");
  auto sources = storage->GetSources(child);
  ASSERT_EQ(sources->Size(), 2u);
  EXPECT_EQ(sources->ElementAt(0)->GetName(), "parent"); // the first node read under "A"
  EXPECT_EQ(sources->ElementAt(1)->GetName(), "other parent");
  EXPECT_EQ(storage->GetSources(Named(storage, "grandchild"))->ElementAt(0).GetPointer(), child);
  EXPECT_EQ(storage->GetSources(Named(storage, "duplicate"))->Size(), 0u);
  // Storage order: every node after its sources.
  auto all = storage->GetAll();
  std::vector<std::string> order;
  for (const auto & n : *all)
  {
    order.push_back(n->GetName());
  }
  EXPECT_EQ(order, (std::vector<std::string>{ "parent", "duplicate", "other parent", "child", "grandchild" }));
}

TEST(CalyxSceneRead, MissingSourcesAndCyclesLeaveNodesUnplaced)
{
  lumotest::TemporaryDirectory folder;
  const std::string xml =
    std::string(Head) +
    "<SceneObject DependenyUID=\"A\"><PropertyList><StringProperty value=\"kept\" name=\"name\"/></PropertyList>"
    "</SceneObject>\n"
    "<SceneObject DependenyUID=\"B\"><Source UID=\"NOWHERE\"/><PropertyList><StringProperty value=\"orphan\" "
    "name=\"name\"/></PropertyList></SceneObject>\n"
    "<SceneObject DependenyUID=\"C\"><Source UID=\"D\"/></SceneObject>\n"
    "<SceneObject DependenyUID=\"D\"><Source UID=\"C\"/></SceneObject>\n";
  DataStorage::Pointer storage = DataStorage::New();
  bool result = true;
  const std::string output = LoadText(folder.Path(), xml, storage, &result);
  EXPECT_FALSE(result);
  EXPECT_TRUE(
    HasLine(output, V1, "ERROR: TODO list of CalyxSceneReaderV1 not empty after loading. Unable to load 3 objects."))
    << output;
  EXPECT_TRUE(HasLine(output, V1, "Node orphan (B) could not be added to the DataStorage")) << output;
  EXPECT_TRUE(HasLine(output, V1, "Node  (C) could not be added to the DataStorage")) << output;
  EXPECT_TRUE(HasLine(output, V1, "Node  (D) could not be added to the DataStorage")) << output;
  EXPECT_EQ(storage->GetNumberOfNodes(), 1u);
  EXPECT_NE(Named(storage, "kept"), nullptr);
}

TEST(CalyxSceneRead, BrokenDataFileLeavesAnEmptyNode)
{
  lumotest::TemporaryDirectory folder;
  WriteText(folder.Path() / "broken.ves", "not a vessel tree\n");
  const std::string xml = std::string(Head) +
                          "<SceneObject type=\"vesseltree\" file=\"broken.ves\" DependenyUID=\"A\"><PropertyList>"
                          "<StringProperty value=\"tree\" name=\"name\"/><UnknownProperty value=\"1\" name=\"u\"/>"
                          "<IntProperty value=\"x\" name=\"bad\"/><IntProperty value=\"3\"/></PropertyList>"
                          "</SceneObject>\n"
                          "<SceneObject type=\"surface\" file=\"missing.vtp\" DependenyUID=\"B\"/>\n";
  DataStorage::Pointer storage = DataStorage::New();
  bool result = false;
  const std::string output = LoadText(folder.Path(), xml, storage, &result);
  EXPECT_TRUE(result);
  const std::string broken = folder.Path().string() + "/broken.ves";
  EXPECT_TRUE(std::regex_search(
    output, std::regex(V1 + " l\\. [0-9]+: Error during attempt to read '" + broken + "'\\. Exception says: .+")))
    << output;
  EXPECT_NE(output.find("Error during attempt to read '" + folder.Path().string() + "/missing.vtp'. Exception says: "),
            std::string::npos)
    << output;
  ASSERT_EQ(storage->GetNumberOfNodes(), 2u);
  DataNode * tree = Named(storage, "tree");
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(tree->GetData(), nullptr);
  // Unknown elements, unreadable values and elements without a name are left out.
  EXPECT_EQ(tree->GetProperty("u"), nullptr);
  EXPECT_EQ(tree->GetProperty("bad"), nullptr);
  EXPECT_EQ(tree->GetPropertyList()->GetSize(), 2u); // "name" and the storage's flag
}

TEST(CalyxSceneRead, SavedValuesReplaceDefaults)
{
  lumotest::TemporaryDirectory folder;
  DataStorage::Pointer storage = DataStorage::New();
  DataNode::Pointer node = MakeNode(MakeTree(), "tree");
  node->SetBoolProperty("Render skeleton", true); // default false
  ColorProperty::Pointer shared = ColorProperty::New(0.1f, 0.2f, 0.3f);
  node->SetProperty("color", shared);
  storage->Add(node);
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(storage, (folder.Path() / "s.rs").string()));
  DataStorage::Pointer loaded = DataStorage::New();
  ASSERT_TRUE(CalyxSceneIO::New()->LoadScene(loaded, folder.Path().string(), "s.rs"));
  testing::internal::GetCapturedStdout();
  bool skeleton = false;
  ASSERT_TRUE(Named(loaded, "tree")->GetBoolProperty("Render skeleton", skeleton));
  EXPECT_TRUE(skeleton);
}
