#include "ArboPictureSupport.h"
#include "ArboTestSupport.h"

#include "arboViewer.h"

#include "lumoImageIO.h"
#include "lumoPointSetIO.h"

#include "lumoVesselTreeFileReader.h"
#include "lumoVesselTreeFileWriter.h"

#include "RenderedVesselTree.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <iomanip>
#include <sstream>

using namespace arbo_test;

namespace
{
class ArboView : public ArboTest
{
protected:
  void
  SetUp() override
  {
    ArboTest::SetUp();
    auto writer = lumo::VesselTreeFileWriter::New();
    writer->SetInputVesselTree(vessel_test::makePickingTree());
    writer->SetFileName(path("portal.ves").c_str());
    writer->Update();
    m_Original = readFile(path("portal.ves"));
  }

  std::unique_ptr<arbo::Viewer>
  open()
  {
    arbo::Viewer::Options options;
    options.files = { path("portal.ves") };
    options.width = 500;
    options.height = 400;
    options.view = "top";
    auto viewer = std::make_unique<arbo::Viewer>(options, m_Context);
    viewer->show();
    return viewer;
  }

  /** The labels (type, segment, status, active) of vessels 1 to 4 of a saved tree. */
  std::string
  labels(const std::string & file)
  {
    auto reader = lumo::VesselTreeFileReader::New();
    reader->SetFileName(file.c_str());
    reader->Update();
    lumo::VesselTreeData * data = reader->GetOutput();
    std::ostringstream text;
    for (std::int32_t id = 1; id <= 4; ++id)
    {
      const VesselProperties & p = data->GetVesselById(id, 0)->getProperties();
      text << id << ":" << p.getBloodVesselType() << "," << p.getSegmentType() << "," << p.getResectionStatus()
           << (p.isActive() ? ",active" : "") << (p.isVisible() ? "" : ",hidden") << " ";
    }
    return text.str();
  }

  std::ostringstream m_Out;
  std::ostringstream m_Err;
  arbo::Context m_Context{ m_Out, m_Err, false, {}, 0 };
  std::string m_Original;
};
} // namespace

TEST_F(ArboView, ClicksAndKeysLabelTheTreeWhichIsSavedBesideTheOriginal)
{
  LUMO_REQUIRE_DISPLAY();
  auto viewer = open();
  viewer->attach();
  click(*viewer, at(*viewer, 50, 15, 0));
  EXPECT_EQ(viewer->statusText(), "Picked vessel: ID 2");
  press(*viewer, "r");
  EXPECT_EQ(viewer->statusText(), "To be resected: 1 vessel");

  press(*viewer, "2");
  EXPECT_EQ(viewer->statusText(), "A click selects the path to the root");
  click(*viewer, at(*viewer, 55, -22, 0));
  press(*viewer, "F6");
  EXPECT_EQ(viewer->statusText(), "Segment S_V: 2 vessels");

  // Undo and redo cover labels as well as the selection.
  press(*viewer, "z");
  EXPECT_EQ(viewer->statusText(), "Undone: Segment S_V");
  press(*viewer, "y");
  EXPECT_EQ(viewer->statusText(), "Redone: Segment S_V");

  press(*viewer, "1");
  click(*viewer, at(*viewer, 40, 0, 30), true);
  click(*viewer, at(*viewer, 40, 0, 25), true);
  press(*viewer, "a");
  EXPECT_EQ(viewer->statusText(), "Type Artery: 1 vessel");

  press(*viewer, "s");
  EXPECT_EQ(viewer->statusText(), "Saved " + path("portal.edited.ves"));
  EXPECT_EQ(m_Err.str(), "arbo: saved " + path("portal.edited.ves") + "\n");
  EXPECT_EQ(labels(path("portal.edited.ves")), "1:2,7,1 2:2,1,3 3:2,7,1 4:3,1,1 ");
  EXPECT_EQ(readFile(path("portal.ves")), m_Original);
  EXPECT_EQ(files(), (std::vector<std::string>{ "portal.edited.ves", "portal.ves" }));
}

TEST_F(ArboView, TheOriginalIsOverwrittenOnlyAfterAskingAndQuitAsksForUnsavedChanges)
{
  LUMO_REQUIRE_DISPLAY();
  auto viewer = open();
  viewer->attach();
  press(*viewer, "k");
  EXPECT_EQ(viewer->statusText(), "Select vessels first: click a vessel (shift+click adds)");
  click(*viewer, at(*viewer, 10, 0, 0));
  press(*viewer, "x");
  EXPECT_EQ(viewer->statusText(), "Hidden: 1 vessel");

  press(*viewer, "q");
  EXPECT_FALSE(viewer->quitRequested());
  EXPECT_EQ(viewer->statusText(), "Unsaved changes: press q again to quit without saving, s to save");

  press(*viewer, "S", true);
  EXPECT_EQ(viewer->statusText(), "Press S again to overwrite the original file");
  EXPECT_EQ(readFile(path("portal.ves")), m_Original);
  press(*viewer, "S", true);
  EXPECT_EQ(viewer->statusText(), "Saved " + path("portal.ves"));
  EXPECT_EQ(labels(path("portal.ves")), "1:2,1,1,hidden 2:2,1,1 3:2,1,1 4:2,1,1 ");

  press(*viewer, "q");
  EXPECT_TRUE(viewer->quitRequested());
}

TEST_F(ArboView, HelpSkeletonAndNothingToUndo)
{
  LUMO_REQUIRE_DISPLAY();
  auto viewer = open();
  viewer->attach();
  EXPECT_TRUE(viewer->helpVisible());
  press(*viewer, "question");
  EXPECT_FALSE(viewer->helpVisible());
  press(*viewer, "z");
  EXPECT_EQ(viewer->statusText(), "Nothing to undo");
  press(*viewer, "t");
  EXPECT_EQ(viewer->statusText(), "Centre lines");
  bool skeleton = false;
  viewer->scene().trees[0]->GetBoolProperty("Render skeleton", skeleton);
  EXPECT_TRUE(skeleton);
  press(*viewer, "s");
  EXPECT_EQ(viewer->statusText(), "No changes to save");
  EXPECT_EQ(files(), std::vector<std::string>{ "portal.ves" });
}

TEST_F(ArboView, CommandLineFailures)
{
  writeFile(path("garbage.ves"), "not a tree\n");
  ArboRun run = runArbo({ "view", path("garbage.ves") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err.rfind("arbo: " + path("garbage.ves") + ": ", 0), 0u) << run.err;
  run = runArbo({ "view", path("absent.ves") });
  EXPECT_EQ(run.status, 2);
  run = runArbo({ "view", path("portal.ves"), "--size", "1x1" });
  EXPECT_EQ(run.status, 2);
}

namespace
{
class ArboViewPlane : public ArboView
{
protected:
  void
  SetUp() override
  {
    ArboView::SetUp();
    // An organ box around the picking tree (x 0..60, y -30..30, z -4..30), 2 mm voxels.
    auto image = lumo::Image::New();
    lumo::Vector3D spacing;
    spacing.Fill(2.0);
    lumo::Point3D origin;
    origin[0] = -2;
    origin[1] = -32;
    origin[2] = -6;
    image->Initialize(
      itk::IOComponentEnum::UCHAR, { { 33, 33, 20 } }, spacing, origin, lumo::Geometry3D::DirectionType::GetIdentity());
    // A border of background voxels, so that the organ has a surface to colour.
    auto * v = static_cast<unsigned char *>(image->GetData());
    for (unsigned int z = 1; z + 1 < 20; ++z)
    {
      for (unsigned int y = 1; y + 1 < 33; ++y)
      {
        std::fill_n(v + (z * 33 + y) * 33 + 1, 31, 1);
      }
    }
    lumo::WriteImageFile(image, path("organ.nrrd"));
    // The plane x = 45 across the branches; its front (away from the organ's centre) is resected.
    writeFile(path("cut.mps"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoPointSet version=\"1\">\n  <TimeStep index=\"0\">\n"
              "    <Point id=\"0\" x=\"45\" y=\"-20\" z=\"0\"/>\n    <Point id=\"1\" x=\"45\" y=\"20\" z=\"0\"/>\n"
              "    <Point id=\"2\" x=\"45\" y=\"0\" z=\"25\"/>\n  </TimeStep>\n</LumoPointSet>\n");
  }

  std::unique_ptr<arbo::Viewer>
  openWithPlane(const std::string & plane)
  {
    arbo::Viewer::Options options;
    options.files = { path("organ.nrrd"), path("portal.ves") };
    options.width = 500;
    options.height = 400;
    options.view = "top";
    options.plane = plane;
    auto viewer = std::make_unique<arbo::Viewer>(options, m_Context);
    viewer->show();
    return viewer;
  }

  /** Press, move and release of the left button through the window's own event handling. */
  static void
  drag(arbo::Viewer & viewer, const std::array<int, 2> & from, const std::array<int, 2> & to)
  {
    vtkRenderWindowInteractor * window = viewer.windowInteractor();
    window->SetEventInformation(from[0], from[1], 0, 0);
    window->InvokeEvent(vtkCommand::LeftButtonPressEvent);
    window->SetEventInformation((from[0] + to[0]) / 2, (from[1] + to[1]) / 2, 0, 0);
    window->InvokeEvent(vtkCommand::MouseMoveEvent);
    window->SetEventInformation(to[0], to[1], 0, 0);
    window->InvokeEvent(vtkCommand::MouseMoveEvent);
    window->InvokeEvent(vtkCommand::LeftButtonReleaseEvent);
  }

  /** The status line built from what "arbo resect --plane" prints for the organ and tree on disk and a plane
   *  file; the command's own outputs are removed again. */
  std::string
  resectStatus(const std::string & planeFile, const std::string & prefix)
  {
    const ArboRun run = runArbo(
      { "resect", path("organ.nrrd"), path("portal.ves"), "--plane", planeFile, "-o", path("check.nrrd"), "--json" });
    EXPECT_EQ(run.status, 0) << run.err;
    std::filesystem::remove(path("check.nrrd"));
    std::filesystem::remove(path("check.proposal.xml"));
    if (run.status != 0)
    {
      return run.err;
    }
    const auto proposal = nlohmann::json::parse(run.out)["proposals"][0];
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << prefix << "remnant "
         << proposal["remnant"]["millilitres"].get<double>() << " ml, resected "
         << proposal["resected"]["millilitres"].get<double>() << " ml, at risk "
         << proposal["at_risk"]["millilitres"].get<double>() << " ml, FLR " << proposal["flr_percent"].get<double>()
         << " %";
    return text.str();
  }
};
} // namespace

TEST_F(ArboViewPlane, DraggingAHandleRecomputesTheVolumesOfTheSavedPlane)
{
  LUMO_REQUIRE_DISPLAY();
  auto viewer = openWithPlane(path("cut.mps"));
  viewer->attach();
  const std::string start = resectStatus(path("cut.mps"), "");
  EXPECT_EQ(viewer->statusText(), start);

  // Drag the handle at (45, 20, 0) towards x = 20: the cut slants across the root.
  drag(*viewer, at(*viewer, 45, 20, 0), at(*viewer, 20, 20, 0));
  const std::string moved = viewer->statusText();
  EXPECT_NE(moved, start);
  EXPECT_EQ(moved.rfind("Moved control point 2: remnant ", 0), 0u) << moved;
  EXPECT_NEAR(viewer->plane()->GetControlPoints()[1][0], 20.0, 0.5);
  EXPECT_NEAR(viewer->plane()->GetControlPoints()[1][2], 0.0, 0.5);

  // Undo and redo cover the drag.
  press(*viewer, "z");
  EXPECT_EQ(viewer->plane()->GetControlPoints()[1][0], 45.0);
  EXPECT_EQ(viewer->statusText().rfind("Undone: ", 0), 0u);
  EXPECT_NE(viewer->statusText().find(start), std::string::npos) << viewer->statusText();
  press(*viewer, "y");
  EXPECT_NEAR(viewer->plane()->GetControlPoints()[1][0], 20.0, 0.5);

  // Saved beside the inputs, which stay as they were; arbo resect on the saved plane prints the shown volumes.
  press(*viewer, "s");
  EXPECT_EQ(viewer->statusText(), "Saved " + path("portal.edited.ves"));
  EXPECT_EQ(m_Err.str(),
            "arbo: saved " + path("organ.plane.mps") + "\narbo: saved " + path("portal.edited.ves") + "\n");
  EXPECT_EQ(readFile(path("portal.ves")), m_Original);
  EXPECT_EQ(
    files(),
    (std::vector<std::string>{ "cut.mps", "organ.nrrd", "organ.plane.mps", "portal.edited.ves", "portal.ves" }));
  EXPECT_EQ(moved, resectStatus(path("organ.plane.mps"), "Moved control point 2: "));
  // The saved tree carries the resection statuses of the cut: some vessel to be resected or at risk.
  const std::string saved = labels(path("portal.edited.ves"));
  EXPECT_TRUE(saved.find(",3 ") != std::string::npos || saved.find(",4 ") != std::string::npos) << saved;
}

TEST_F(ArboViewPlane, KeysPlaceAPlaneAndAddAndRemoveControlPoints)
{
  LUMO_REQUIRE_DISPLAY();
  auto viewer = openWithPlane("");
  viewer->attach();
  EXPECT_EQ(viewer->plane(), nullptr);
  press(*viewer, "i");
  EXPECT_EQ(viewer->statusText(), "No plane: o places one through the organ's centre");
  press(*viewer, "o");
  ASSERT_NE(viewer->plane(), nullptr);
  EXPECT_EQ(viewer->plane()->GetNumberOfControlPoints(), 4u);
  EXPECT_EQ(viewer->statusText().rfind("remnant ", 0), 0u) << viewer->statusText();
  press(*viewer, "d");
  EXPECT_EQ(viewer->statusText(), "Grab a control point first, then d removes it");
  press(*viewer, "i");
  EXPECT_EQ(viewer->plane()->GetNumberOfControlPoints(), 5u);
  EXPECT_EQ(viewer->statusText().rfind("Added control point 5: remnant ", 0), 0u) << viewer->statusText();
  press(*viewer, "d");
  press(*viewer, "d");
  EXPECT_EQ(viewer->statusText(), "Grab a control point first, then d removes it");
  EXPECT_EQ(viewer->plane()->GetNumberOfControlPoints(), 4u);
  // Removing down to three points is allowed, below is refused.
  const auto first = viewer->plane()->GetControlPoints()[0];
  drag(*viewer, at(*viewer, first[0], first[1], first[2]), at(*viewer, first[0], first[1], first[2]));
  press(*viewer, "d");
  EXPECT_EQ(viewer->plane()->GetNumberOfControlPoints(), 3u);
  const auto next = viewer->plane()->GetControlPoints()[0];
  drag(*viewer, at(*viewer, next[0], next[1], next[2]), at(*viewer, next[0], next[1], next[2]));
  press(*viewer, "d");
  EXPECT_EQ(viewer->statusText(), "Not removed: A deformable plane needs at least 3 control points, got 2");
  EXPECT_EQ(viewer->plane()->GetNumberOfControlPoints(), 3u);

  press(*viewer, "q");
  EXPECT_FALSE(viewer->quitRequested());
  press(*viewer, "s");
  EXPECT_EQ(
    files(),
    (std::vector<std::string>{ "cut.mps", "organ.nrrd", "organ.plane.mps", "portal.edited.ves", "portal.ves" }));
}

TEST_F(ArboViewPlane, ABadPlaneIsRefusedBeforeAnythingIsShown)
{
  LUMO_REQUIRE_DISPLAY();
  writeFile(path("line.mps"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoPointSet version=\"1\">\n  <TimeStep index=\"0\">\n"
            "    <Point id=\"0\" x=\"0\" y=\"0\" z=\"0\"/>\n    <Point id=\"1\" x=\"1\" y=\"1\" z=\"1\"/>\n"
            "    <Point id=\"2\" x=\"2\" y=\"2\" z=\"2\"/>\n  </TimeStep>\n</LumoPointSet>\n");
  const ArboRun run = runArbo({ "view", path("organ.nrrd"), path("portal.ves"), "--plane", path("line.mps") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("line.mps") + ": The control points of a deformable plane lie on one line\n");
  EXPECT_EQ(files(), (std::vector<std::string>{ "cut.mps", "line.mps", "organ.nrrd", "portal.ves" }));
}

TEST_F(ArboView, ASceneIsWrittenBackOnlyAfterAsking)
{
  LUMO_REQUIRE_DISPLAY();
  std::filesystem::create_directory(path("plan"));
  ArboRun run = runArbo({ "scene", "create", path("plan/plan.rs"), path("portal.ves") });
  ASSERT_EQ(run.status, 0) << run.err;
  const std::string scene = readFile(path("plan/plan.rs"));
  const std::string tree = readFile(path("plan/portal.ves"));

  arbo::Viewer::Options options;
  options.files = { path("plan/plan.rs") };
  options.width = 500;
  options.height = 400;
  options.view = "top";
  auto viewer = std::make_unique<arbo::Viewer>(options, m_Context);
  viewer->show();
  viewer->attach();
  ASSERT_EQ(viewer->scene().trees.size(), 1u);
  click(*viewer, at(*viewer, 50, 15, 0));
  EXPECT_EQ(viewer->statusText(), "Picked vessel: ID 2");
  press(*viewer, "r");
  EXPECT_EQ(viewer->statusText(), "To be resected: 1 vessel");

  // s does not write a scene's trees beside it, and the first S only asks.
  press(*viewer, "s");
  EXPECT_EQ(viewer->statusText(), "A scene's trees are saved with it: press S twice to write the scene back");
  press(*viewer, "S", true);
  EXPECT_EQ(viewer->statusText(), "Press S again to write back " + path("plan/plan.rs"));
  EXPECT_EQ(readFile(path("plan/plan.rs")), scene);
  EXPECT_EQ(readFile(path("plan/portal.ves")), tree);
  EXPECT_EQ(m_Err.str(), "");

  press(*viewer, "S", true);
  EXPECT_EQ(viewer->statusText(), "Saved " + path("plan/plan.rs"));
  EXPECT_EQ(m_Err.str(), "arbo: saved " + path("plan/plan.rs") + "\n");
  EXPECT_EQ(labels(path("plan/portal.ves")), "1:2,1,1 2:2,1,3 3:2,1,1 4:2,1,1 ");
  press(*viewer, "q");
  EXPECT_TRUE(viewer->quitRequested()); // nothing unsaved
  viewer.reset();

  // The scene written back loads whole, with nothing left beside it.
  run = runArbo({ "scene", "info", path("plan/plan.rs") });
  EXPECT_EQ(run.status, 0) << run.err;
  std::vector<std::string> written;
  for (const auto & entry : std::filesystem::directory_iterator(path("plan")))
  {
    written.push_back(entry.path().filename().string());
  }
  std::sort(written.begin(), written.end());
  EXPECT_EQ(written, (std::vector<std::string>{ "plan.rs", "portal.ves" }));
}
