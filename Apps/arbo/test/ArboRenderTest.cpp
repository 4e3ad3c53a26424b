#include "ArboPictureSupport.h"
#include "ArboTestSupport.h"

#include "arboFiles.h"
#include "arboScene.h"

#include "lumoArboCoreObjectFactory.h"
#include "lumoCalyxSceneIO.h"
#include "lumoDataStorage.h"
#include "lumoDisplay.h"
#include "lumoImage.h"
#include "lumoImageIO.h"
#include "lumoVesselTreeFileWriter.h"
#include "lumoVesselTreeLookupTable.h"

#include "RenderedVesselTree.h"

#include <vtkImageData.h>
#include <vtkPNGReader.h>
#include <vtkSmartPointer.h>

#include <cstdlib>
#include <iostream>

using namespace arbo_test;

namespace
{
class ArboRender : public ArboTest
{
protected:
  /** The picking tree of the fixtures with every vessel of the given type, written as .ves. */
  std::string
  writeTree(const std::string & name, int type)
  {
    auto data = vessel_test::makePickingTree();
    for (std::int32_t id = 1; id <= 4; ++id)
    {
      data->GetVesselById(id, 0)->getProperties().setBloodVesselType(type);
    }
    auto writer = lumo::VesselTreeFileWriter::New();
    writer->SetInputVesselTree(data);
    writer->SetFileName(path(name).c_str());
    writer->Update();
    return path(name);
  }
};
} // namespace

TEST_F(ArboRender, TreesAppearInTheirVesselTypeColours)
{
  LUMO_REQUIRE_DISPLAY();
  const auto colors = lumo::VesselTreeLookupTable::New();
  const auto hepatic = colors->GetColorByType()[1];
  const auto portal = colors->GetColorByType()[2];
  const std::string portalTree = writeTree("portal.ves", 2);
  const std::string hepaticTree = writeTree("hepatic.ves", 1);

  ArboRun run = runArbo({ "render", portalTree, "-o", path("portal.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("portal.png") + " (400x300, 1 tree, 0 surfaces)\n");
  EXPECT_GT(pixelsOfColor(path("portal.png"), portal), 1500);
  EXPECT_EQ(pixelsOfColor(path("portal.png"), hepatic), 0);

  run = runArbo({ "render", hepaticTree, "-o", path("hepatic.png"), "--size", "400x300", "--view", "iso", "-q" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_GT(pixelsOfColor(path("hepatic.png"), hepatic), 1000);
  EXPECT_EQ(pixelsOfColor(path("hepatic.png"), portal), 0);
}

TEST_F(ArboRender, SelectionTakesTheActiveColourAndSkeletonIsThin)
{
  LUMO_REQUIRE_DISPLAY();
  const auto colors = lumo::VesselTreeLookupTable::New();
  const auto active = colors->GetColorForActive();
  const std::string tree = writeTree("portal.ves", 2);
  ASSERT_EQ(runArbo({ "render", tree, "-o", path("plain.png"), "--size", "400x300" }).status, 0);
  EXPECT_EQ(pixelsOfColor(path("plain.png"), active), 0);

  ArboRun run =
    runArbo({ "render", tree, "-o", path("path.png"), "--size", "400x300", "--select", "2", "--select-mode", "path" });
  ASSERT_EQ(run.status, 0) << run.err;
  const int selected = pixelsOfColor(path("path.png"), active);
  EXPECT_GT(selected, 1000);
  ASSERT_EQ(runArbo({ "render", tree, "-o", path("one.png"), "--size", "400x300", "--select", "2" }).status, 0);
  EXPECT_GT(pixelsOfColor(path("one.png"), active), 100);
  EXPECT_LT(pixelsOfColor(path("one.png"), active), selected);

  ASSERT_EQ(runArbo({ "render", tree, "-o", path("lines.png"), "--size", "400x300", "--skeleton" }).status, 0);
  EXPECT_LT(pixelsOfColor(path("lines.png"), colors->GetColorByType()[2]),
            pixelsOfColor(path("plain.png"), colors->GetColorByType()[2]) / 4);
}

namespace
{
/** A resection image seen from the front: three slabs side by side along x, 10 voxels of 2 mm each, labels 2
 *  (remnant), 3 (resected) and 4 (at risk); or, with a single label, an organ mask. */
std::string
writeSlabs(const std::string & file, bool organOnly = false)
{
  auto image = lumo::Image::New();
  lumo::Vector3D spacing;
  spacing.Fill(2.0);
  lumo::Point3D origin;
  origin.Fill(0.0);
  image->Initialize(
    itk::IOComponentEnum::UCHAR, { { 30, 10, 10 } }, spacing, origin, lumo::Geometry3D::DirectionType::GetIdentity());
  auto * v = static_cast<unsigned char *>(image->GetData());
  for (unsigned int i = 0; i < image->GetNumberOfVoxels(); ++i)
  {
    v[i] = organOnly ? 1 : static_cast<unsigned char>(2 + (i % 30) / 10);
  }
  lumo::WriteImageFile(image, file);
  return file;
}
} // namespace

TEST_F(ArboRender, ResectionsTakeTheResectionStatusColours)
{
  LUMO_REQUIRE_DISPLAY();
  const auto status = arbo::planningColourTable()->GetColorByResectionStatus();
  const std::string cut = writeSlabs(path("cut.nrrd"));

  // A plain label image: segment colours, none of the resection colours.
  ArboRun run = runArbo({ "render", cut, "-o", path("labels.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(pixelsOfColor(path("labels.png"), status[3]), 0);
  EXPECT_EQ(pixelsOfColor(path("labels.png"), status[4]), 0);

  // Asked for: the resected and at-risk slabs solid in their colours, the remnant a veil over the background.
  run = runArbo({ "render", cut, "-o", path("asked.png"), "--size", "400x300", "--resection" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("asked.png") + " (400x300, 0 trees, 3 surfaces)\n");
  const int resected = pixelsOfColor(path("asked.png"), status[3]);
  const int atRisk = pixelsOfColor(path("asked.png"), status[4]);
  EXPECT_GT(resected, 5000);
  EXPECT_GT(atRisk, 5000);
  EXPECT_LT(std::abs(resected - atRisk), resected / 5);
  EXPECT_EQ(pixelsOfColor(path("asked.png"), status[2]), 0);

  // A proposal beside the image marks it as a resection without the flag.
  writeFile(path("cut.proposal.xml"), "<ResectionProposalDescriptorProperty/>\n");
  run = runArbo({ "render", cut, "-o", path("beside.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(pixelsOfColor(path("beside.png"), status[3]), resected);
  EXPECT_EQ(pixelsOfColor(path("beside.png"), status[4]), atRisk);
}

TEST_F(ArboRender, ResectionFlagWithoutAResectionImageIsRefused)
{
  LUMO_REQUIRE_DISPLAY();
  const std::string organ = writeSlabs(path("organ.nrrd"), true);
  const ArboRun run = runArbo({ "render", organ, "-o", path("organ.png"), "--resection" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + organ +
              ": --resection: no image among the files has only the labels of a resection (2 remnant, 3 "
              "resected, 4 at risk)\n");
  EXPECT_EQ(files(), std::vector<std::string>{ "organ.nrrd" });
}

TEST_F(ArboRender, BadInputExitsWithOneLineAndWritesNothing)
{
  LUMO_REQUIRE_DISPLAY();
  const std::string tree = writeTree("portal.ves", 2);
  writeFile(path("old.png"), "keep me");
  writeFile(path("garbage.ves"), "not a tree\n");

  ArboRun run = runArbo({ "render", path("garbage.ves"), "-o", path("old.png") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err.rfind("arbo: " + path("garbage.ves") + ": ", 0), 0u) << run.err;
  EXPECT_EQ(readFile(path("old.png")), "keep me");

  run = runArbo({ "render", tree, "-o", path("tree.jpg") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("tree.jpg") + ": the picture is written as PNG: give a file name ending in .png\n");

  run = runArbo({ "render", tree, "-o", path("tree.png"), "--select", "99" });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + tree + ": --select 99: no vessel of that id in the tree\n");

  run = runArbo({ "render", tree, "-o", path("missing-folder/tree.png") });
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("missing-folder"), std::string::npos) << run.err;

  EXPECT_EQ(files(), (std::vector<std::string>{ "garbage.ves", "old.png", "portal.ves" }));
}

TEST_F(ArboRender, BadUsageExitsTwo)
{
  const std::string tree = writeTree("portal.ves", 2);
  for (const std::vector<std::string> & arguments :
       { std::vector<std::string>{ "render", tree, "-o", path("t.png"), "--size", "400" },
         std::vector<std::string>{ "render", tree, "-o", path("t.png"), "--size", "10x10" },
         std::vector<std::string>{ "render", tree, "-o", path("t.png"), "--view", "sideways" },
         std::vector<std::string>{ "render", tree, "-o", path("t.png"), "--select-mode", "path" },
         std::vector<std::string>{ "render", path("absent.ves"), "-o", path("t.png") },
         std::vector<std::string>{ "render", tree } })
  {
    const ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 2) << arguments.back() << ": " << run.err;
  }
  EXPECT_EQ(files(), std::vector<std::string>{ "portal.ves" });
}

TEST_F(ArboRender, WithoutDisplayOrXvfbRunItSaysSo)
{
  const std::string tree = writeTree("portal.ves", 2);
  const char * display = std::getenv("DISPLAY");
  const std::string savedDisplay = display ? display : "";
  const std::string savedPath = std::getenv("PATH") ? std::getenv("PATH") : "";
  ::unsetenv("DISPLAY");
  ::setenv("PATH", path("no-tools").c_str(), 1);
  const ArboRun run = runArbo({ "render", tree, "-o", path("tree.png") });
  ::setenv("PATH", savedPath.c_str(), 1);
  if (display)
  {
    ::setenv("DISPLAY", savedDisplay.c_str(), 1);
  }
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: no X display: DISPLAY is not set, and xvfb-run is not installed (the Debian package "
            "xvfb has it)\n");
  EXPECT_EQ(files(), std::vector<std::string>{ "portal.ves" });
}

TEST_F(ArboRender, WithoutDisplayTheProgramRunsItselfUnderXvfbRun)
{
  if (std::system("command -v xvfb-run >/dev/null 2>&1") != 0)
  {
    GTEST_SKIP() << "xvfb-run is not installed";
  }
  const std::string tree = writeTree("portal.ves", 2);
  const std::string command = "env -u DISPLAY " + std::string(ARBO_EXECUTABLE) + " render " + tree + " -o " +
                              path("tree.png") + " --size 200x150 2>" + path("err.txt");
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(readFile(path("err.txt")), "arbo: wrote " + path("tree.png") + " (200x150, 1 tree, 0 surfaces)\n");
  const std::string png = readFile(path("tree.png"));
  EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
}

namespace
{
/** Control points as the toolkit's point set file. */
std::string
mps(const std::vector<std::array<double, 3>> & points)
{
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoPointSet version=\"1\">\n  <TimeStep "
                     "index=\"0\">\n";
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    text += "    <Point id=\"" + std::to_string(i) + "\" x=\"" + std::to_string(points[i][0]) + "\" y=\"" +
            std::to_string(points[i][1]) + "\" z=\"" + std::to_string(points[i][2]) + "\"/>\n";
  }
  return text + "  </TimeStep>\n</LumoPointSet>\n";
}

/** Pixels tinted by the cutting plane's cyan: green and blue both well above red. */
int
cyanPixels(const std::string & png)
{
  return countPixels(png, [](int red, int green, int blue) { return green - red > 40 && blue - red > 40; });
}
} // namespace

TEST_F(ArboRender, CuttingPlaneIsDrawnTranslucentAcrossTheScene)
{
  LUMO_REQUIRE_DISPLAY();
  const std::string tree = writeTree("artery.ves", 3);
  // The plane y = 0 through the tree, facing the camera of the front view.
  writeFile(path("cut.mps"), mps({ { 0, 0, 0 }, { 60, 0, 0 }, { 0, 0, 30 } }));

  ArboRun run = runArbo({ "render", tree, "-o", path("tree.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(cyanPixels(path("tree.png")), 0);
  run = runArbo({ "render", tree, "-o", path("cut.png"), "--size", "400x300", "--plane", path("cut.mps") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("cut.png") + " (400x300, 1 tree, 0 surfaces)\n");
  const int cyan = cyanPixels(path("cut.png"));
  EXPECT_GT(cyan, 10000);
  // Translucent: the arteries still show through it.
  const auto red = lumo::VesselTreeLookupTable::New()->GetColorByType()[3];
  EXPECT_GT(pixelsOfColor(path("cut.png"), red), 500);

  // Within an organ it shows through the organ's veil.
  const std::string organ = writeSlabs(path("organ.nrrd"), true);
  writeFile(path("through.mps"), mps({ { 0, 9, 0 }, { 58, 9, 0 }, { 0, 9, 18 } }));
  run = runArbo({ "render",
                  organ,
                  tree,
                  "-o",
                  path("organ.png"),
                  "--size",
                  "400x300",
                  "--plane",
                  path("through.mps"),
                  "--view",
                  "back" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_GT(cyanPixels(path("organ.png")), 0);
}

TEST_F(ArboRender, BadPlaneExitsWithOneLineAndWritesNothing)
{
  LUMO_REQUIRE_DISPLAY();
  const std::string tree = writeTree("portal.ves", 2);
  writeFile(path("line.mps"), mps({ { 0, 0, 0 }, { 10, 0, 0 }, { 20, 0, 0 }, { 30, 0, 0 } }));
  writeFile(path("two.mps"), mps({ { 0, 0, 0 }, { 10, 0, 0 } }));

  ArboRun run = runArbo({ "render", tree, "-o", path("cut.png"), "--plane", path("line.mps") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("line.mps") + ": The control points of a deformable plane lie on one line\n");
  run = runArbo({ "render", tree, "-o", path("cut.png"), "--plane", path("two.mps") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("two.mps") + ": A deformable plane needs at least 3 control points, got 2\n");
  run = runArbo({ "render", tree, "-o", path("cut.png"), "--plane", tree });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err.rfind("arbo: " + tree + ": holds vessel tree; a cutting plane is given by its control points", 0),
            0u)
    << run.err;
  EXPECT_EQ(files(), std::vector<std::string>({ "line.mps", "portal.ves", "two.mps" }));
}

namespace
{
/** An organ mask of 30 x 10 x 10 voxels of 2 mm: 1 inside, 0 on the outermost layer of voxels, so that its
 *  surface closes. */
std::string
writeOrgan(const std::string & file)
{
  auto image = lumo::Image::New();
  lumo::Vector3D spacing;
  spacing.Fill(2.0);
  lumo::Point3D origin;
  origin.Fill(0.0);
  image->Initialize(
    itk::IOComponentEnum::UCHAR, { { 30, 10, 10 } }, spacing, origin, lumo::Geometry3D::DirectionType::GetIdentity());
  auto * v = static_cast<unsigned char *>(image->GetData());
  for (unsigned int z = 0, i = 0; z < 10; ++z)
  {
    for (unsigned int y = 0; y < 10; ++y)
    {
      for (unsigned int x = 0; x < 30; ++x, ++i)
      {
        v[i] = (x > 0 && x < 29 && y > 0 && y < 9 && z > 0 && z < 9) ? 1 : 0;
      }
    }
  }
  lumo::WriteImageFile(image, file);
  return file;
}

/** Saves a scene of the portal tree and the organ slabs; the organ in the given colour, opaque; either hidden when
 *  asked. */
void
saveTreeAndOrgan(const std::string & scene,
                 const std::string & tree,
                 const std::string & organ,
                 const lumo::VesselTreeLookupTable::ColorType & organColor,
                 bool hideTree,
                 bool hideOrgan)
{
  arbo::registerFileTypes();
  lumo::RegisterArboCoreObjectFactory();
  auto storage = lumo::DataStorage::New();
  auto treeNode = lumo::DataNode::New();
  treeNode->SetData(arbo::readData(tree));
  treeNode->SetName("portal");
  treeNode->SetVisibility(!hideTree);
  storage->Add(treeNode);
  auto organNode = lumo::DataNode::New();
  organNode->SetData(arbo::readData(organ));
  organNode->SetName("organ");
  organNode->SetColor(organColor[0], organColor[1], organColor[2]);
  organNode->SetOpacity(1.0f);
  organNode->SetVisibility(!hideOrgan);
  storage->Add(organNode);
  std::streambuf * previous = std::cout.rdbuf(nullptr); // the scene IO's messages
  const bool saved = lumo::CalyxSceneIO::New()->SaveScene(storage, scene);
  std::cout.rdbuf(previous);
  ASSERT_TRUE(saved);
}
} // namespace

TEST_F(ArboRender, ScenesAreDrawnWithTheirSavedColoursOpacitiesAndVisibility)
{
  LUMO_REQUIRE_DISPLAY();
  const auto portal = lumo::VesselTreeLookupTable::New()->GetColorByType()[2];
  lumo::VesselTreeLookupTable::ColorType green;
  green[0] = 0.2;
  green[1] = 0.8;
  green[2] = 0.3;
  green[3] = 1.0;
  const std::string tree = writeTree("portal.ves", 2);
  const std::string organ = writeOrgan(path("organ.nrrd"));

  // Both shown: the organ in its saved colour, solid, as it was saved.
  saveTreeAndOrgan(path("both.rs"), tree, organ, green, false, false);
  ArboRun run = runArbo({ "render", path("both.rs"), "-o", path("both.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("both.png") + " (400x300, 1 tree, 1 surface)\n");
  EXPECT_GT(pixelsOfColor(path("both.png"), green), 5000);

  // The organ hidden: not drawn at all, and the tree looks exactly as drawn from its file alone.
  saveTreeAndOrgan(path("tree-only.rs"), tree, organ, green, false, true);
  run = runArbo({ "render", path("tree-only.rs"), "-o", path("tree-only.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("tree-only.png") + " (400x300, 1 tree, 0 surfaces)\n");
  run = runArbo({ "render", tree, "-o", path("file.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(pixelsOfColor(path("tree-only.png"), green), 0);
  EXPECT_GT(pixelsOfColor(path("file.png"), portal), 500);
  EXPECT_EQ(pixelsOfColor(path("tree-only.png"), portal), pixelsOfColor(path("file.png"), portal));

  // The tree hidden: the organ alone, none of the portal colour.
  saveTreeAndOrgan(path("organ-only.rs"), tree, organ, green, true, false);
  run = runArbo({ "render", path("organ-only.rs"), "-o", path("organ-only.png"), "--size", "400x300" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "arbo: wrote " + path("organ-only.png") + " (400x300, 0 trees, 1 surface)\n");
  EXPECT_EQ(pixelsOfColor(path("organ-only.png"), portal), 0);
  EXPECT_GT(pixelsOfColor(path("organ-only.png"), green), 5000);
}

TEST_F(ArboRender, ABadSceneExitsWithOneLineAndWritesNothing)
{
  LUMO_REQUIRE_DISPLAY();
  writeFile(path("future.rs"), "<?xml version=\"1.0\"?>\n<Version FileVersion=\"2\"/>\n");
  writeFile(path("old.png"), "keep me");
  ArboRun run = runArbo({ "render", path("future.rs"), "-o", path("old.png") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("future.rs") + ": is not a scene that can be loaded (arbo scene info tells why)\n");
  EXPECT_EQ(readFile(path("old.png")), "keep me");

  // A node whose source is not in the scene cannot be placed: named, nothing drawn.
  writeFile(path("orphan.rs"),
            "<?xml version=\"1.0\"?>\n<Version FileVersion=\"1\"/>\n"
            "<SceneObject DependenyUID=\"B\"><Source UID=\"GONE\"/><PropertyList>"
            "<StringProperty value=\"cut\" name=\"name\"/></PropertyList></SceneObject>\n");
  run = runArbo({ "render", path("orphan.rs"), "-o", path("orphan.png") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("orphan.rs") + ": node 'cut' could not be placed (a source is missing)\n");
  EXPECT_EQ(files(), (std::vector<std::string>{ "future.rs", "old.png", "orphan.rs" }));
}
