#include "ArboTestSupport.h"

#include "arboViewer.h"

#include "lumoVesselTreeFileReader.h"
#include "lumoVesselTreeFileWriter.h"

#include "RenderedVesselTree.h"

#include <vtkCommand.h>
#include <vtkRenderWindowInteractor.h>

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

  /** Display position of a world point in the viewer's window. */
  static std::array<int, 2>
  at(const arbo::Viewer & viewer, double x, double y, double z)
  {
    vtkRenderer * r = viewer.renderer()->GetVtkRenderer();
    r->SetWorldPoint(x, y, z, 1.0);
    r->WorldToDisplay();
    double display[3];
    r->GetDisplayPoint(display);
    return { static_cast<int>(std::lround(display[0])), static_cast<int>(std::lround(display[1])) };
  }

  /** A press and release without motion, through the window's own event handling. */
  static void
  click(arbo::Viewer & viewer, const std::array<int, 2> & position, bool shift = false)
  {
    vtkRenderWindowInteractor * window = viewer.windowInteractor();
    window->SetEventInformation(position[0], position[1], 0, shift ? 1 : 0);
    window->InvokeEvent(vtkCommand::LeftButtonPressEvent);
    window->InvokeEvent(vtkCommand::LeftButtonReleaseEvent);
  }
  static void
  press(arbo::Viewer & viewer, const char * keySymbol, bool shift = false)
  {
    vtkRenderWindowInteractor * window = viewer.windowInteractor();
    window->SetEventInformation(0, 0, 0, shift ? 1 : 0, keySymbol[1] == '\0' ? keySymbol[0] : 0, 1, keySymbol);
    window->InvokeEvent(vtkCommand::KeyPressEvent);
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
