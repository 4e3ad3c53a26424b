#include "lumoSurfaceVtkMapper3D.h"
#include "lumoVesselTreePicker.h"

#include "RenderedVesselTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

using namespace lumo;
using namespace vessel_test;
using lumotest::WarningCapture;

namespace
{
struct Probe
{
  std::array<double, 3> world;
  std::int32_t id;
};

// Points on the centre lines of chosen vessels; vessel 4 rises towards the camera above the branching, so that
// its points hide vessel 1's end: the picked id must be the front vessel's.
const Probe probes[] = {
  { { 10, 0, 0 }, 1 },   { { 25, 1, 0 }, 1 },   { { 50, 15, 0 }, 2 }, { { 58, 27, 0 }, 2 },
  { { 50, -15, 0 }, 3 }, { { 55, -22, 0 }, 3 }, { { 40, 0, 20 }, 4 }, { { 40, 0, 30 }, 4 },
};

std::int32_t
pick(RenderedVesselTree & scene, int mode, const std::array<double, 2> & at, bool * picked = nullptr)
{
  auto picker = VesselTreePicker::New();
  picker->SetInput(scene.data);
  picker->SetDataNode(scene.node);
  picker->SetRenderer(scene.renderer);
  picker->SetPickingMode(mode);
  picker->SetDisplayPosition(static_cast<float>(at[0]), static_cast<float>(at[1]));
  picker->Update();
  if (picked)
  {
    *picked = picker->IsPicked();
  }
  return picker->GetPickedVesselId();
}
} // namespace

TEST(VesselTreePicker, EveryModeGivesTheVesselUnderTheCursor)
{
  LUMO_REQUIRE_DISPLAY();
  WarningCapture warnings;
  RenderedVesselTree scene;
  for (int mode = 0; mode <= 2; ++mode)
  {
    for (const Probe & probe : probes)
    {
      bool picked = false;
      const auto at = scene.project(probe.world[0], probe.world[1], probe.world[2]);
      EXPECT_EQ(pick(scene, mode, at, &picked), probe.id)
        << "mode " << mode << " at (" << probe.world[0] << ", " << probe.world[1] << ", " << probe.world[2] << ")";
      EXPECT_TRUE(picked);
    }
  }
  EXPECT_TRUE(warnings.messages().empty());
}

TEST(VesselTreePicker, EndSphereGivesTheVesselEndingThere)
{
  LUMO_REQUIRE_DISPLAY();
  RenderedVesselTree scene;
  // Just beyond vessel 2's last point: only its end sphere (radius 2) is there.
  const auto at = scene.project(61.2, 31.2, 0);
  for (int mode = 0; mode <= 2; ++mode)
  {
    EXPECT_EQ(pick(scene, mode, at), 2) << "mode " << mode;
  }
}

TEST(VesselTreePicker, AOnePointVesselIsPickedOnItsEndSphere)
{
  LUMO_REQUIRE_DISPLAY();
  // Vessel 5 has a single point: no tube, only its end sphere (radius 3) at (20, 20, 0), clear of the others.
  lumo::VesselTreeData::Pointer data = makePickingTree();
  VesselNode * root = dynamic_cast<LinkedVesselTree &>(*data->GetVesselTreeData(0).get()).getRootNode();
  addChild(root, 5)->getData()->setPoints({ { 20, 20, 0, 6 } });
  data->TopologyModified();
  RenderedVesselTree scene(data);
  for (const auto & world : { std::array<double, 2>{ 20, 20 }, std::array<double, 2>{ 21.5, 21.5 } })
  {
    const auto at = scene.project(world[0], world[1], 0);
    for (int mode = 0; mode <= 2; ++mode)
    {
      bool picked = false;
      EXPECT_EQ(pick(scene, mode, at, &picked), 5) << "mode " << mode << " at x " << world[0];
      EXPECT_TRUE(picked);
    }
  }
}

TEST(VesselTreePicker, BackgroundGivesErrorIdWithoutWarning)
{
  LUMO_REQUIRE_DISPLAY();
  WarningCapture warnings;
  RenderedVesselTree scene;
  const auto at = scene.project(10, 40, 0);
  for (int mode = 0; mode <= 2; ++mode)
  {
    bool picked = true;
    EXPECT_EQ(pick(scene, mode, at, &picked), VesselTreeData::ErrorId) << "mode " << mode;
    EXPECT_FALSE(picked);
  }
  EXPECT_TRUE(warnings.messages().empty());
}

TEST(VesselTreePicker, HiddenVesselsAreNotPicked)
{
  LUMO_REQUIRE_DISPLAY();
  RenderedVesselTree scene;
  scene.data->GetVesselById(2, 0)->getProperties().setVisible(false);
  scene.data->TopologyModified();
  scene.data->AttributesModified();
  scene.renderer->Render();
  const auto at = scene.project(50, 15, 0);
  for (int mode = 0; mode <= 2; ++mode)
  {
    EXPECT_EQ(pick(scene, mode, at), VesselTreeData::ErrorId) << "mode " << mode;
  }
}

TEST(VesselTreePickerFailures, BadModeMissingRendererInputOrMapper)
{
  LUMO_REQUIRE_DISPLAY();
  WarningCapture warnings;
  RenderedVesselTree scene;
  const auto at = scene.project(10, 0, 0);
  bool picked = true;
  EXPECT_EQ(pick(scene, 3, at, &picked), VesselTreeData::ErrorId);
  EXPECT_FALSE(picked);
  EXPECT_EQ(warnings.messages(), std::vector<std::string>{ "Bad picking mode" });

  warnings.clear();
  auto picker = VesselTreePicker::New();
  picker->SetPickingMode(VesselTreePicker::Ray);
  picker->Update();
  EXPECT_FALSE(picker->IsPicked());
  picker->SetRenderer(scene.renderer);
  picker->Update();
  EXPECT_FALSE(picker->IsPicked());
  EXPECT_EQ(picker->GetPickedVesselId(), VesselTreeData::ErrorId);
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "vtkRenderer is NULL! Maybe you have forgotten to set it?", "Input is NULL!" }));

  // Cell picking needs the tree's node with the tube mapper whose actor was hit.
  warnings.clear();
  auto other = DataNode::New();
  other->SetData(scene.data);
  picker->SetInput(scene.data);
  picker->SetDataNode(other);
  picker->SetPickingMode(VesselTreePicker::CellPicking);
  picker->SetDisplayPosition(static_cast<float>(at[0]), static_cast<float>(at[1]));
  other->SetMapper(DataNode::Standard3D, SurfaceVtkMapper3D::New());
  picker->Update();
  EXPECT_FALSE(picker->IsPicked());
  EXPECT_EQ(picker->GetPickedVesselId(), VesselTreeData::ErrorId);
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "): vessel tree has an unsupported 3d mapper associated!",
                                       "): Validation of picked vessel tree returned false!" }));

  warnings.clear();
  other->SetMapper(DataNode::Standard3D, YetAnotherVesselTreeMapper3D::New());
  picker->Update();
  EXPECT_FALSE(picker->IsPicked());
  EXPECT_EQ(warnings.messages(), std::vector<std::string>{ "): Validation of picked vessel tree returned false!" });

  warnings.clear();
  picker->SetDataNode(nullptr);
  picker->Update();
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "): DataNode is NULL", "): Validation of picked vessel tree returned false!" }));
}
