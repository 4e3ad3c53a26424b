// Scenes from elsewhere: nothing outside the scene's folder is read or written, oversized and deep files are refused,
// and saving over a scene replaces it whole or not at all.
#include "SceneTestData.h"

#include "lumoCalyxSceneIO.h"
#include "lumoCalyxSceneReaderV1.h"
#include "lumoStringProperty.h"

#include <LumoTestUtilities.h>

#include <tinyxml2.h>

#include <regex>

using namespace lumo;
using namespace scenetest;
namespace fs = std::filesystem;

namespace
{
const std::string V1 = "Core/IO/lumoCalyxSceneReaderV1.cpp";
const std::string IO = "Core/IO/lumoCalyxSceneIO.cpp";

std::string
SceneObject(const std::string & file, const std::string & name)
{
  return "<SceneObject type=\"vesseltree\" file=\"" + file + "\" DependenyUID=\"ID_" + name +
         "\"><PropertyList><StringProperty value=\"" + name + "\" name=\"name\"/></PropertyList></SceneObject>\n";
}

std::string
Load(const fs::path & folder, DataStorage * storage, bool * result = nullptr)
{
  testing::internal::CaptureStdout();
  const bool loaded = CalyxSceneIO::New()->LoadScene(storage, folder.string(), "scene.rs");
  if (result != nullptr)
  {
    *result = loaded;
  }
  return testing::internal::GetCapturedStdout();
}

/** Fails the n-th file write (0 = first data file; after the data files, the scene XML). */
class FailingSceneIO : public CalyxSceneIO
{
public:
  using Self = FailingSceneIO;
  using Pointer = itk::SmartPointer<Self>;
  itkNewMacro(Self);

  int m_FailAt{ -1 };
  int m_Writes{ 0 };

protected:
  FailingSceneIO() = default;

  void
  WriteDataFile(BaseData * data, const std::string & path) override
  {
    if (m_Writes++ == m_FailAt)
    {
      throw itk::ExceptionObject(__FILE__, __LINE__, "disk full (injected)", "FailingSceneIO");
    }
    CalyxSceneIO::WriteDataFile(data, path);
  }
  bool
  WriteDocument(tinyxml2::XMLDocument & document, const std::string & path) override
  {
    if (m_Writes++ == m_FailAt)
    {
      return false;
    }
    return CalyxSceneIO::WriteDocument(document, path);
  }
};

/** A storage of three named nodes; `variant` changes the data and drops or renames nodes. */
DataStorage::Pointer
MakePlan(int variant)
{
  DataStorage::Pointer storage = DataStorage::New();
  DataNode::Pointer organ = MakeNode(MakeSurface(), "organ");
  organ->SetFloatProperty("opacity", variant == 0 ? 0.5f : 0.25f);
  storage->Add(organ);
  storage->Add(MakeNode(MakeTree(), "portal"), organ);
  if (variant == 0)
  {
    storage->Add(MakeNode(MakePointSet(), "plane"));
  }
  else
  {
    storage->Add(MakeNode(MakeImage(), "territories"));
  }
  return storage;
}

/** What a scene loads as: node names with their data classes and opacities. */
std::set<std::string>
Describe(const fs::path & folder, const std::string & scene)
{
  DataStorage::Pointer storage = DataStorage::New();
  testing::internal::CaptureStdout();
  const bool loaded = CalyxSceneIO::New()->LoadScene(storage, folder.string(), scene);
  const std::string output = testing::internal::GetCapturedStdout();
  std::set<std::string> description;
  description.insert(loaded ? "loaded" : "failed: " + output);
  DataStorage::SetOfObjects::ConstPointer all = storage->GetAll();
  for (const auto & node : *all)
  {
    float opacity = -1;
    node->GetFloatProperty("opacity", opacity);
    description.insert(node->GetName() + ":" + (node->GetData() ? node->GetData()->GetNameOfClass() : "none") + ":" +
                       std::to_string(opacity));
  }
  return description;
}
} // namespace

TEST(CalyxSceneHostile, DataFilesOutsideTheFolderAreNotRead)
{
  lumotest::TemporaryDirectory root;
  const fs::path folder = root.Path() / "scene";
  const fs::path sibling = root.Path() / "scene-other";
  fs::create_directories(folder / "sub");
  fs::create_directories(sibling);
  const fs::path tree = fs::path(LUMO_TEST_DATA_DIR) / "sample-portal.ves";
  fs::copy_file(tree, root.Path() / "secret.ves");
  fs::copy_file(tree, sibling / "secret.ves");
  fs::copy_file(tree, folder / "sub" / "inside.ves");
  fs::create_symlink(root.Path() / "secret.ves", folder / "link.ves");
  fs::create_directory_symlink(root.Path(), folder / "up");
  fs::create_symlink("sub/inside.ves", folder / "good-link.ves");

  const std::string xml = "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n" +
                          SceneObject((root.Path() / "secret.ves").string(), "absolute") +
                          SceneObject("../secret.ves", "dotdot") + SceneObject("sub/../../secret.ves", "hidden") +
                          SceneObject("link.ves", "symlink") + SceneObject("up/secret.ves", "dirlink") +
                          SceneObject("../scene-other/secret.ves", "sibling") + SceneObject("", "empty") +
                          SceneObject("sub/inside.ves", "inside") + SceneObject("good-link.ves", "goodlink");
  WriteText(folder / "scene.rs", xml);
  const auto before = Snapshot(root.Path());

  DataStorage::Pointer storage = DataStorage::New();
  bool result = false;
  const std::string output = Load(folder, storage, &result);
  EXPECT_TRUE(result);
  const std::pair<const char *, std::string> refused[] = {
    { "absolute",
      "Node 'absolute' (ID_absolute): the data file '" + (root.Path() / "secret.ves").string() +
        "' is not read: the path is absolute." },
    { "dotdot",
      "Node 'dotdot' (ID_dotdot): the data file '../secret.ves' is not read: the path holds a '..' "
      "component." },
    { "hidden",
      "Node 'hidden' (ID_hidden): the data file 'sub/../../secret.ves' is not read: the path holds a '..' "
      "component." },
    { "symlink",
      "Node 'symlink' (ID_symlink): the data file 'link.ves' is not read: the path leads outside the "
      "scene's folder." },
    { "dirlink",
      "Node 'dirlink' (ID_dirlink): the data file 'up/secret.ves' is not read: the path leads outside "
      "the scene's folder." },
    { "sibling",
      "Node 'sibling' (ID_sibling): the data file '../scene-other/secret.ves' is not read: the path "
      "holds a '..' component." },
    { "empty", "Node 'empty' (ID_empty): the data file '' is not read: the file name is empty." },
  };
  for (const auto & [name, message] : refused)
  {
    EXPECT_NE(output.find(V1 + " l. "), std::string::npos);
    EXPECT_NE(output.find(message + "\n"), std::string::npos) << message << "\n" << output;
    DataNode * node = storage->GetNamedNode(name);
    ASSERT_NE(node, nullptr) << name;
    EXPECT_EQ(node->GetData(), nullptr) << name;
  }
  ASSERT_NE(storage->GetNamedNode("inside"), nullptr);
  EXPECT_NE(storage->GetNamedNode("inside")->GetData(), nullptr);
  ASSERT_NE(storage->GetNamedNode("goodlink"), nullptr);
  EXPECT_NE(storage->GetNamedNode("goodlink")->GetData(), nullptr);
  EXPECT_EQ(storage->GetNumberOfNodes(), 9u);
  EXPECT_EQ(Snapshot(root.Path()), before);

  // A sibling folder whose name starts with the scene folder's is outside too.
  EXPECT_EQ(CalyxSceneReaderV1::WhyDataFileIsRefused("x", folder.string()), "");
  fs::create_symlink(sibling / "secret.ves", folder / "sibling-link.ves");
  EXPECT_EQ(CalyxSceneReaderV1::WhyDataFileIsRefused("sibling-link.ves", folder.string()),
            "the path leads outside the scene's folder");
  EXPECT_EQ(CalyxSceneReaderV1::WhyDataFileIsRefused(".", folder.string()), "the path names the scene's folder itself");
}

TEST(CalyxSceneHostile, OversizedDeepAndCrowdedFilesAreRefusedWithOneMessage)
{
  lumotest::TemporaryDirectory folder;
  const std::string scene = (folder.Path() / "scene.rs").string();

  // Over 64 MiB: refused by its size, before parsing (a sparse file costs no disk).
  WriteText(scene, "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n");
  fs::resize_file(scene, CalyxSceneIO::MaximumSceneFileSize + 1);
  DataStorage::Pointer storage = DataStorage::New();
  bool result = true;
  std::string output = Load(folder.Path(), storage, &result);
  EXPECT_FALSE(result);
  EXPECT_TRUE(std::regex_match(output,
                               std::regex(IO + " l\\. [0-9]+: Scene file " + scene +
                                          " refused: it is larger than 64 MiB \\(67108865 bytes\\)\\.\n")))
    << output;
  EXPECT_EQ(storage->GetNumberOfNodes(), 0u);

  // Exactly 64 MiB is allowed through the size check (and then fails to parse: trailing zero bytes).
  fs::resize_file(scene, CalyxSceneIO::MaximumSceneFileSize);
  output = Load(folder.Path(), storage, &result);
  EXPECT_EQ(output.find("larger than"), std::string::npos) << output;

  // Nested deeper than tinyxml2 parses.
  std::string deep = "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n<SceneObject>";
  for (int i = 0; i < 200; ++i)
  {
    deep += "<a>";
  }
  for (int i = 0; i < 200; ++i)
  {
    deep += "</a>";
  }
  deep += "</SceneObject>\n";
  WriteText(scene, deep);
  output = Load(folder.Path(), storage, &result);
  EXPECT_FALSE(result);
  EXPECT_TRUE(std::regex_match(
    output,
    std::regex(IO + " l\\. [0-9]+: Scene file " + scene + " refused: its XML is nested deeper than 100 levels\\.\n")))
    << output;
  EXPECT_EQ(storage->GetNumberOfNodes(), 0u);

  // More than 100,000 scene objects; exactly 100,000 load.
  std::string crowded = "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n";
  for (int i = 0; i < 100000; ++i)
  {
    crowded += "<SceneObject/>\n";
  }
  WriteText(scene, crowded + "<SceneObject/>\n");
  output = Load(folder.Path(), storage, &result);
  EXPECT_FALSE(result);
  EXPECT_TRUE(std::regex_match(
    output,
    std::regex(IO + " l\\. [0-9]+: Scene file " + scene + " refused: it holds more than 100000 scene objects\\.\n")))
    << output;
  EXPECT_EQ(storage->GetNumberOfNodes(), 0u);
  // The limit itself is allowed (read without a storage: placing 100,000 nodes is not what is tested here).
  WriteText(scene, crowded);
  output = Load(folder.Path(), nullptr, &result);
  EXPECT_TRUE(result);
  EXPECT_EQ(output, "");
}

TEST(CalyxSceneHostile, NodeNamesNeverWriteOutsideTheFolder)
{
  lumotest::TemporaryDirectory root;
  const fs::path folder = root.Path() / "a" / "b";
  fs::create_directories(folder);
  DataStorage::Pointer storage = DataStorage::New();
  for (const char * name : { "../x", "../../y", "/tmp/z", "..", "sub/dir/w", "\x01\x02" })
  {
    storage->Add(MakeNode(MakeTree(), name));
  }
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(storage, (folder / "scene.rs").string()));
  testing::internal::GetCapturedStdout();
  const auto everything = Snapshot(root.Path());
  for (const auto & [path, content] : everything)
  {
    EXPECT_TRUE(path == "a" || path == "a/b" || path.rfind("a/b/", 0) == 0) << path;
    EXPECT_EQ(path.find('/', 4), std::string::npos) << path; // no subfolders either
  }
  EXPECT_EQ(Entries(folder).size(), 7u);
  EXPECT_TRUE(Entries(folder).count("_x.ves"));
  EXPECT_TRUE(Entries(folder).count("_.._y.ves"));
  EXPECT_TRUE(Entries(folder).count("sub_dir_w.ves"));
  EXPECT_TRUE(Entries(folder).count("__.ves"));
}

TEST(CalyxSceneAtomicSave, AFailureAtAnyFileKeepsThePreviousScene)
{
  lumotest::TemporaryDirectory folder;
  const std::string scene = (folder.Path() / "plan.rs").string();
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(MakePlan(0), scene));
  testing::internal::GetCapturedStdout();
  const auto before = Snapshot(folder.Path());
  const std::set<std::string> previous = Describe(folder.Path(), "plan.rs");
  ASSERT_EQ(previous.count("loaded"), 1u);
  ASSERT_EQ(previous.size(), 4u);

  // Three data files and the XML: fail each in turn.
  for (int failAt = 0; failAt < 4; ++failAt)
  {
    FailingSceneIO::Pointer io = FailingSceneIO::New();
    io->m_FailAt = failAt;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(io->SaveScene(MakePlan(1), scene)) << failAt;
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_EQ(io->m_Writes, failAt + 1);
    if (failAt < 3)
    {
      EXPECT_NE(output.find("Exception says: "), std::string::npos) << output;
      EXPECT_NE(output.find("disk full (injected)"), std::string::npos) << output;
      EXPECT_NE(
        output.find(": Scene " + scene + " not saved: a data file could not be written; the previous scene is kept.\n"),
        std::string::npos)
        << output;
    }
    else
    {
      EXPECT_NE(output.find(": Could not write the scene file " + scene + "; the previous scene is kept.\n"),
                std::string::npos)
        << output;
    }
    EXPECT_EQ(Snapshot(folder.Path()), before) << "failure at file " << failAt;
    EXPECT_EQ(Describe(folder.Path(), "plan.rs"), previous) << "failure at file " << failAt;
  }

  // A successful save replaces it whole: no temporary file, and the plane the new scene lacks is gone.
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(MakePlan(1), scene));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(Entries(folder.Path()), (std::set<std::string>{ "plan.rs", "organ.vtp", "portal.ves", "territories.pic" }));
  const std::set<std::string> replaced = Describe(folder.Path(), "plan.rs");
  EXPECT_EQ(replaced.count("organ:Surface:0.250000"), 1u);
  EXPECT_EQ(replaced.count("territories:Image:-1.000000") + replaced.count("territories:Image:1.000000"), 1u);
}

TEST(CalyxSceneAtomicSave, AFailureInANewSceneLeavesTheNodeWithoutFile)
{
  lumotest::TemporaryDirectory folder;
  const std::string scene = (folder.Path() / "plan.rs").string();
  FailingSceneIO::Pointer io = FailingSceneIO::New();
  io->m_FailAt = 1; // the tree
  testing::internal::CaptureStdout();
  EXPECT_TRUE(io->SaveScene(MakePlan(0), scene));
  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(std::regex_search(
    output, std::regex(IO + " l\\. [0-9]+: Error during attempt to write 'portal' Exception says: .*disk full")))
    << output;
  EXPECT_EQ(Entries(folder.Path()), (std::set<std::string>{ "plan.rs", "organ.vtp", "plane.mps" }));
  tinyxml2::XMLDocument document;
  ASSERT_EQ(document.LoadFile(scene.c_str()), tinyxml2::XML_SUCCESS);
  const tinyxml2::XMLElement * tree = document.FirstChildElement("SceneObject")->NextSiblingElement("SceneObject");
  EXPECT_STREQ(tree->Attribute("type"), "vesseltree");
  EXPECT_EQ(tree->Attribute("file"), nullptr);

  // The other tails.
  for (int failAt : { 0, 2 })
  {
    FailingSceneIO::Pointer failing = FailingSceneIO::New();
    failing->m_FailAt = failAt;
    lumotest::TemporaryDirectory other;
    testing::internal::CaptureStdout();
    failing->SaveScene(MakePlan(failAt == 0 ? 0 : 1), (other.Path() / "p.rs").string());
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_NE(text.find(failAt == 0 ? "Error during attempt to write 'organ'.vtp Exception says: "
                                    : "Error during attempt to write 'territories'.pic Exception says: "),
              std::string::npos)
      << text;
  }
  FailingSceneIO::Pointer points = FailingSceneIO::New();
  points->m_FailAt = 2;
  lumotest::TemporaryDirectory third;
  testing::internal::CaptureStdout();
  points->SaveScene(MakePlan(0), (third.Path() / "p.rs").string());
  EXPECT_NE(testing::internal::GetCapturedStdout().find("Error during attempt to write 'plane'.mps Exception says: "),
            std::string::npos);
}

TEST(CalyxSceneAtomicSave, FilesOfOtherScenesInTheFolderAreKept)
{
  lumotest::TemporaryDirectory folder;
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(MakePlan(0), (folder.Path() / "plan.rs").string()));
  // A second scene naming the same plane file.
  WriteText(folder.Path() / "other.rs",
            "<?xml version=\"1.0\"?>\n<SceneObject type=\"pointset\" file=\"plane.mps\" DependenyUID=\"P\"/>\n");
  WriteText(folder.Path() / "notes.txt", "mine");
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(MakePlan(1), (folder.Path() / "plan.rs").string()));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(Entries(folder.Path()),
            (std::set<std::string>{
              "plan.rs", "other.rs", "notes.txt", "organ.vtp", "portal.ves", "territories.pic", "plane.mps" }));
}

TEST(CalyxSceneAtomicSave, FilesTheSceneDoesNotOwnAreNeverWrittenOver)
{
  // An input beside the scene with the name the node "organ" would write: the node takes another name.
  lumotest::TemporaryDirectory folder;
  const std::string scene = (folder.Path() / "plan.rs").string();
  WriteText(folder.Path() / "organ.vtp", "the organ as given");
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(MakePlan(0), scene));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(ReadText(folder.Path() / "organ.vtp"), "the organ as given");
  EXPECT_EQ(Entries(folder.Path()),
            (std::set<std::string>{ "plan.rs", "organ.vtp", "organ_2.vtp", "portal.ves", "plane.mps" }));
  tinyxml2::XMLDocument document;
  ASSERT_EQ(document.LoadFile(scene.c_str()), tinyxml2::XML_SUCCESS);
  EXPECT_STREQ(document.FirstChildElement("SceneObject")->Attribute("file"), "organ_2.vtp");
  EXPECT_EQ(Describe(folder.Path(), "plan.rs").count("organ:Surface:0.500000"), 1u);

  // A re-save replaces the scene's own files under their names; a file that appeared meanwhile under a name a new
  // node would take is not the scene's, and neither is a link.
  WriteText(folder.Path() / "elsewhere.txt", "linked to");
  fs::create_symlink(folder.Path() / "elsewhere.txt", folder.Path() / "territories.pic");
  testing::internal::CaptureStdout();
  ASSERT_TRUE(CalyxSceneIO::New()->SaveScene(MakePlan(1), scene));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(ReadText(folder.Path() / "organ.vtp"), "the organ as given");
  EXPECT_EQ(ReadText(folder.Path() / "elsewhere.txt"), "linked to");
  EXPECT_TRUE(fs::is_symlink(folder.Path() / "territories.pic"));
  EXPECT_EQ(
    Entries(folder.Path()),
    (std::set<std::string>{
      "plan.rs", "organ.vtp", "organ_2.vtp", "portal.ves", "territories.pic", "territories_2.pic", "elsewhere.txt" }));
  const std::set<std::string> loaded = Describe(folder.Path(), "plan.rs");
  EXPECT_EQ(loaded.count("loaded"), 1u);
  EXPECT_EQ(loaded.count("organ:Surface:0.250000"), 1u);
  EXPECT_EQ(loaded.count("territories:Image:-1.000000") + loaded.count("territories:Image:1.000000"), 1u);
}
