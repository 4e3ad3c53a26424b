#include "lumoDisplayPositionEvent.h"
#include "lumoGlobalInteraction.h"
#include "lumoState.h"
#include "lumoStatusBar.h"
#include "lumoUndoController.h"
#include "lumoYetAnotherVesselTreeInteractor.h"

#include "RenderedVesselTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

using namespace lumo;
using namespace vessel_test;
using lumotest::WarningCapture;

namespace
{
/** The tree in a window with its selection interactor registered, as the viewer sets it up. */
class VesselTreeInteractorTest : public ::testing::Test
{
protected:
  void
  SetUp() override
  {
    UndoController::GetInstance()->Clear();
    UndoController::GetInstance()->SetEnabled(true);
    StatusBar::GetInstance()->DisplayText("");
    m_Scene = std::make_unique<RenderedVesselTree>();
    m_Interactor = YetAnotherVesselTreeInteractor::New("VesselTreeSelection", m_Scene->node);
    YetAnotherVesselTreeInteractor::SetActiveVesselTree(m_Scene->node);
    GlobalInteraction::GetInstance()->AddInteractor(m_Interactor);
  }
  void
  TearDown() override
  {
    GlobalInteraction::GetInstance()->Clear();
    YetAnotherVesselTreeInteractor::SetActiveVesselTree(nullptr);
    UndoController::GetInstance()->Clear();
  }

  /** A left click (with shift when asked) at the display position of a world point. */
  bool
  click(double x, double y, double z, bool shift = false)
  {
    const auto at = m_Scene->project(x, y, z);
    DisplayPositionEvent event(m_Scene->renderer,
                               EventType::MouseButtonPress,
                               MouseButton::Left,
                               shift ? ShiftModifier : 0,
                               0,
                               Point2D(at.data()));
    return GlobalInteraction::GetInstance()->HandleEvent(&event);
  }

  std::vector<std::int32_t>
  activeIds() const
  {
    std::vector<std::int32_t> ids;
    for (std::int32_t id = 1; id <= 4; ++id)
    {
      if (m_Scene->data->GetVesselById(id, 0)->getProperties().isActive())
      {
        ids.push_back(id);
      }
    }
    return ids;
  }

  std::unique_ptr<RenderedVesselTree> m_Scene;
  YetAnotherVesselTreeInteractor::Pointer m_Interactor;
};
} // namespace

TEST_F(VesselTreeInteractorTest, ClickSelectsTheVesselUnderTheMouse)
{
  LUMO_REQUIRE_DISPLAY();
  WarningCapture warnings;
  EXPECT_TRUE(click(50, 15, 0));
  EXPECT_EQ(m_Interactor->GetLastPickedVesselId(), 2);
  EXPECT_EQ(m_Scene->data->GetPickedVesselId(0), 2);
  EXPECT_EQ(activeIds(), std::vector<std::int32_t>{ 2 });
  EXPECT_EQ(StatusBar::GetInstance()->GetText(), "Picked vessel: ID 2");
  EXPECT_EQ(m_Interactor->GetCurrentState()->GetName(), "Start");

  // Another click replaces the selection; the tree's activation mode decides what a pick activates.
  m_Scene->data->SetActivationMode(VesselTreeData::PathToRootActivation, 0);
  EXPECT_TRUE(click(55, -22, 0));
  EXPECT_EQ(activeIds(), (std::vector<std::int32_t>{ 1, 3 }));
  EXPECT_EQ(StatusBar::GetInstance()->GetText(), "Picked vessel: ID 3");
  EXPECT_TRUE(warnings.messages().empty());
}

TEST_F(VesselTreeInteractorTest, ClickOnNothingDeselectsThrough1003)
{
  LUMO_REQUIRE_DISPLAY();
  click(50, 15, 0);
  ASSERT_EQ(activeIds(), std::vector<std::int32_t>{ 2 });
  EXPECT_TRUE(click(10, 40, 0));
  EXPECT_EQ(m_Interactor->GetLastPickedVesselId(), VesselTreeData::ErrorId);
  EXPECT_EQ(m_Scene->data->GetPickedVesselId(0), VesselTreeData::ErrorId);
  EXPECT_TRUE(activeIds().empty());
  EXPECT_EQ(StatusBar::GetInstance()->GetText(), "No vessel hit!");
  EXPECT_EQ(m_Interactor->GetCurrentState()->GetName(), "Start");

  // Undoing the deselection selects the earlier vessel again.
  ASSERT_TRUE(UndoController::GetInstance()->Undo());
  EXPECT_EQ(activeIds(), std::vector<std::int32_t>{ 2 });
}

TEST_F(VesselTreeInteractorTest, ShiftClickAddsToTheSelection)
{
  LUMO_REQUIRE_DISPLAY();
  click(50, 15, 0);
  EXPECT_TRUE(click(50, -15, 0, true));
  EXPECT_EQ(activeIds(), (std::vector<std::int32_t>{ 2, 3 }));
  EXPECT_EQ(StatusBar::GetInstance()->GetText(), "Picked vessel: ID 3");
  EXPECT_TRUE(click(40, 0, 30, true));
  EXPECT_EQ(activeIds(), (std::vector<std::int32_t>{ 2, 3, 4 }));
  EXPECT_EQ(UndoController::GetInstance()->GetUndoDescriptions(),
            (std::vector<std::string>{ "MultipleSelect", "MultipleSelect", "Select" }));
}

TEST_F(VesselTreeInteractorTest, UndoOfASelectExecutes705WithIdZero)
{
  LUMO_REQUIRE_DISPLAY();
  click(58, 27, 0);
  ASSERT_EQ(m_Scene->data->GetPickedVesselId(0), 2);
  ASSERT_EQ(UndoController::GetInstance()->GetUndoDescriptions(), std::vector<std::string>{ "Select" });
  const auto before = m_Scene->data->GetAttributesMTime();
  ASSERT_TRUE(UndoController::GetInstance()->Undo());
  EXPECT_EQ(m_Scene->data->GetPickedVesselId(0), 0);
  EXPECT_TRUE(activeIds().empty());
  EXPECT_GT(m_Scene->data->GetAttributesMTime(), before);
  ASSERT_TRUE(UndoController::GetInstance()->Redo());
  EXPECT_EQ(activeIds(), std::vector<std::int32_t>{ 2 });

  // With undo off the selection still changes, but nothing is kept for undo.
  UndoController::GetInstance()->Clear();
  m_Interactor->EnableUndo(false);
  click(50, -15, 0);
  EXPECT_EQ(activeIds(), std::vector<std::int32_t>{ 3 });
  EXPECT_FALSE(UndoController::GetInstance()->CanUndo());
}

TEST_F(VesselTreeInteractorTest, ClickInA2DWindowNeverPicks)
{
  LUMO_REQUIRE_DISPLAY();
  m_Scene->renderer->SetMapperID(DataNode::Standard2D);
  EXPECT_TRUE(click(50, 15, 0));
  EXPECT_EQ(m_Interactor->GetLastPickedVesselId(), VesselTreeData::ErrorId);
  EXPECT_EQ(StatusBar::GetInstance()->GetText(), "No vessel hit!");
}

TEST_F(VesselTreeInteractorTest, OnlyTheActiveTreeTakesEventsAndMissingObjectsWarn)
{
  LUMO_REQUIRE_DISPLAY();
  WarningCapture warnings;
  const StateEvent leftClick(1, nullptr);
  YetAnotherVesselTreeInteractor::SetActiveVesselTree(nullptr);
  EXPECT_EQ(m_Interactor->CanHandleEvent(&leftClick), 0.0);
  auto empty = DataNode::New();
  YetAnotherVesselTreeInteractor::SetActiveVesselTree(empty);
  EXPECT_EQ(m_Interactor->CanHandleEvent(&leftClick), 0.0);
  auto other = YetAnotherVesselTreeInteractor::New("VesselTreeSelection", nullptr);
  YetAnotherVesselTreeInteractor::SetActiveVesselTree(m_Scene->node);
  EXPECT_EQ(other->CanHandleEvent(&leftClick), 0.0);
  other->SetDataNode(empty);
  EXPECT_EQ(other->CanHandleEvent(&leftClick), 0.0);
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ " m_ActiveVesselTree is NULL!",
                                       " m_ActiveVesselTree->GetData() is NULL!",
                                       " m_DataNode is NULL!",
                                       " m_DataNode->GetData() is NULL!" }));

  // A second tree's interactor does not answer while the first tree is the active one.
  warnings.clear();
  auto secondNode = DataNode::New();
  secondNode->SetData(makePickingTree());
  other->SetDataNode(secondNode);
  EXPECT_EQ(other->CanHandleEvent(&leftClick), 0.0);
  EXPECT_EQ(m_Interactor->CanHandleEvent(&leftClick), 0.5);
  EXPECT_TRUE(warnings.messages().empty());
}
