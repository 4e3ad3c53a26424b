#include "lumoVesselTreeData.h"
#include "lumoVesselTreeOperation.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

using namespace lumo;
using namespace vessel_test;
using Ids = std::vector<int>;
using Messages = std::vector<std::string>;

namespace
{
/** Ids of the active vessels in preorder. */
Ids
activeIds(const VesselTreeData & data, int t = 0)
{
  Ids ids;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(data.GetVesselTreeData(t)->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (vessel->getProperties().isActive())
    {
      ids.push_back(vessel->getVesselId());
    }
  }
  return ids;
}

void
execute(VesselTreeData & data, int type, int id)
{
  VesselTreeOperation operation(type, id);
  data.ExecuteOperation(&operation);
}

/** The three-level tree (1; 2, 3; 4, 5 below 2; 6 below 3) in a VesselTreeData. */
VesselTreeData::Pointer
makeData()
{
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(makeThreeLevelTree().release()));
  return data;
}
} // namespace

TEST(VesselTreeData, ObjectConventionsAndNames)
{
  auto data = VesselTreeData::New();
  EXPECT_STREQ(data->GetNameOfClass(), "VesselTreeData");
  EXPECT_EQ(VesselTreeData::ErrorId, 2147483647);
  EXPECT_FALSE(data->IsInitialized());
  EXPECT_TRUE(data->GetVesselTreeData(0).isNull());
  EXPECT_EQ(VesselTreeData::GetNameOfBloodVesselType(3), "Artery");
  EXPECT_EQ(VesselTreeData::GetNameOfSegmentType(0), "Unknown");
  EXPECT_EQ(VesselTreeData::GetNameOfResectionStatus(4), "Area at risk");
  EXPECT_EQ(VesselTreeData::GetStringForSegment("Segment ", 5), "Segment S_IVa");
  itk::LightObject::Pointer another = data->CreateAnother();
  EXPECT_NE(dynamic_cast<VesselTreeData *>(another.GetPointer()), nullptr);
}

TEST(VesselTreeData, TheMapsFollowTheTreeWheneverItIsSet)
{
  auto data = makeData();
  EXPECT_TRUE(data->IsInitialized());
  EXPECT_EQ(data->GetMinVesselId(0), 1);
  EXPECT_EQ(data->GetMaxVesselId(0), 6);
  EXPECT_EQ(data->GetVesselById(5, 0)->getVesselId(), 5);
  EXPECT_TRUE(data->GetVesselById(7, 0).isNull());

  LinkedVesselTree * tree = asLinkedVesselTree(data->GetVesselTreeData(0));
  addChild(tree->getRootNode(), 9);
  data->TopologyModified();
  EXPECT_EQ(data->GetMaxVesselId(0), 9);

  auto other = std::make_unique<LinkedVesselTree>();
  other->setRoot(makeVessel(42));
  const auto topology = data->GetTopologyMTime();
  data->SetVesselTreeData(ArVesselTree(other.release()), 0);
  EXPECT_GT(data->GetTopologyMTime(), topology);
  EXPECT_EQ(data->GetMinVesselId(0), 42);
  EXPECT_EQ(data->GetMaxVesselId(0), 42);
  EXPECT_TRUE(data->GetVesselById(5, 0).isNull());

  // A tree set at a later time step grows the time steps.
  data->SetVesselTreeData(ArVesselTree(makeThreeLevelTree().release()), 2);
  EXPECT_EQ(data->GetNumberOfTreeTimeSteps(), 3);
  EXPECT_EQ(data->GetMaxVesselId(2), 6);
  EXPECT_TRUE(data->GetVesselTreeData(1).isNull());
}

TEST(VesselTreeData, ActivationModes)
{
  auto data = makeData();
  EXPECT_EQ(data->GetActivationMode(0), VesselTreeData::SingleActivation);
  EXPECT_EQ(data->GetPickedVesselId(0), VesselTreeData::ErrorId);

  execute(*data, 705, 2);
  EXPECT_EQ(data->GetPickedVesselId(0), 2);
  EXPECT_EQ(activeIds(*data), (Ids{ 2 }));

  data->SetActivationMode(VesselTreeData::PathToRootActivation, 0);
  EXPECT_EQ(activeIds(*data), (Ids{ 1, 2 }));
  execute(*data, 705, 6);
  EXPECT_EQ(activeIds(*data), (Ids{ 1, 3, 6 }));

  data->SetActivationMode(VesselTreeData::SubtreeActivation, 0);
  EXPECT_EQ(activeIds(*data), (Ids{ 6 }));
  execute(*data, 705, 2);
  EXPECT_EQ(activeIds(*data), (Ids{ 2, 4, 5 }));
  execute(*data, 705, 1);
  EXPECT_EQ(activeIds(*data), (Ids{ 1, 2, 4, 5, 3, 6 }));

  data->SetActivationMode(VesselTreeData::NoActivation, 0);
  EXPECT_EQ(activeIds(*data), Ids{});
  execute(*data, 705, 3);
  EXPECT_EQ(activeIds(*data), Ids{});
  EXPECT_EQ(data->GetPickedVesselId(0), 3);

  data->SetActivationMode(VesselTreeData::MultipleActivation, 0);
  EXPECT_EQ(activeIds(*data), (Ids{ 3 }));
  execute(*data, 705, 5);
  EXPECT_EQ(activeIds(*data), (Ids{ 5, 3 }));
  execute(*data, 703, 6);
  EXPECT_EQ(activeIds(*data), (Ids{ 5, 3, 6 }));
}

TEST(VesselTreeData, DeselectClearsThePickExceptThatTheGrowingSelectionStays)
{
  for (auto mode :
       { VesselTreeData::SingleActivation, VesselTreeData::PathToRootActivation, VesselTreeData::SubtreeActivation })
  {
    auto data = makeData();
    data->SetActivationMode(mode, 0);
    execute(*data, 705, 3);
    EXPECT_FALSE(activeIds(*data).empty());
    execute(*data, 805, 0);
    EXPECT_EQ(data->GetPickedVesselId(0), VesselTreeData::ErrorId);
    EXPECT_EQ(activeIds(*data), Ids{}) << "mode " << mode;
  }
  auto data = makeData();
  data->SetActivationMode(VesselTreeData::MultipleActivation, 0);
  execute(*data, 705, 4);
  execute(*data, 705, 6);
  execute(*data, 805, 0);
  EXPECT_EQ(data->GetPickedVesselId(0), VesselTreeData::ErrorId);
  EXPECT_EQ(activeIds(*data), (Ids{ 4, 6 }));
}

TEST(VesselTreeData, MultipleSelectAddsPathsAndSubtreesInThoseModes)
{
  auto data = makeData();
  data->SetActivationMode(VesselTreeData::SubtreeActivation, 0);
  execute(*data, 705, 3);
  execute(*data, 703, 2);
  EXPECT_EQ(activeIds(*data), (Ids{ 2, 4, 5, 3, 6 }));
  data->SetActivationMode(VesselTreeData::PathToRootActivation, 0);
  execute(*data, 705, 4);
  execute(*data, 703, 6);
  EXPECT_EQ(activeIds(*data), (Ids{ 1, 2, 4, 3, 6 }));
}

TEST(VesselTreeData, SettingTheCurrentModeDoesNotRecomputeTheActivation)
{
  auto data = makeData();
  execute(*data, 705, 2);
  data->GetVesselById(6, 0)->getProperties().setActive(true);
  const auto attributes = data->GetAttributesMTime();
  data->SetActivationMode(VesselTreeData::SingleActivation, 0);
  EXPECT_EQ(activeIds(*data), (Ids{ 2, 6 }));
  EXPECT_EQ(data->GetAttributesMTime(), attributes);
}

TEST(VesselTreeData, LabelsGoOnlyOnActiveVesselsByTheRules)
{
  auto data = makeData();
  data->GetVesselById(2, 0)->getProperties().setSegmentType(S_V);
  data->GetVesselById(4, 0)->getProperties().setBloodVesselType(HepaticVein);
  data->GetVesselById(4, 0)->getProperties().setSegmentType(HS_RSV);
  data->SetActivationMode(VesselTreeData::SubtreeActivation, 0);
  execute(*data, 705, 2);
  ASSERT_EQ(activeIds(*data), (Ids{ 2, 4, 5 }));

  data->SetSegmentTypeForActive(S_VIII, 0);
  EXPECT_EQ(data->GetVesselById(2, 0)->getProperties().getSegmentType(), S_VIII);
  EXPECT_EQ(data->GetVesselById(5, 0)->getProperties().getSegmentType(), S_VIII);
  // A hepatic vein does not take a portal segment and stays selected.
  EXPECT_EQ(data->GetVesselById(4, 0)->getProperties().getSegmentType(), HS_RSV);
  EXPECT_EQ(activeIds(*data), (Ids{ 4 }));
  EXPECT_EQ(data->GetVesselById(1, 0)->getProperties().getSegmentType(), S_Undefined);

  execute(*data, 705, 2);
  data->SetBloodVesselTypeForActive(Artery, 0);
  for (int id : { 2, 4, 5 })
  {
    EXPECT_EQ(data->GetVesselById(id, 0)->getProperties().getBloodVesselType(), Artery) << id;
    EXPECT_EQ(data->GetVesselById(id, 0)->getProperties().getSegmentType(), S_Undefined) << id;
  }
  EXPECT_EQ(data->GetVesselById(3, 0)->getProperties().getBloodVesselType(), PortalVein);
  EXPECT_EQ(activeIds(*data), Ids{});

  execute(*data, 705, 3);
  data->SetResectionStatusForActive(ToBeResected, 0);
  EXPECT_EQ(data->GetVesselById(3, 0)->getProperties().getResectionStatus(), ToBeResected);
  EXPECT_EQ(data->GetVesselById(6, 0)->getProperties().getResectionStatus(), ToBeResected);
  EXPECT_EQ(data->GetVesselById(2, 0)->getProperties().getResectionStatus(), UndefinedResectionStatus);

  execute(*data, 705, 6);
  data->SetVisibilityForActive(false, 0);
  EXPECT_FALSE(data->GetVisibility(6, 0));
  EXPECT_TRUE(data->GetVisibility(3, 0));
  data->SetVisibilityForType(Artery, false, 0);
  EXPECT_FALSE(data->GetVisibility(2, 0));
  EXPECT_TRUE(data->GetVisibility(1, 0));
}

TEST(VesselTreeData, EstimatedVisibilityNeedsHalfOfATypeVisible)
{
  auto data = makeData();
  for (int id : { 1, 2 })
  {
    data->GetVesselById(id, 0)->getProperties().setBloodVesselType(HepaticVein);
  }
  data->GetVesselById(1, 0)->getProperties().setVisible(false);
  for (int id : { 3, 4, 5 })
  {
    data->GetVesselById(id, 0)->getProperties().setVisible(false);
  }
  bool undefined = false, hepatic = false, portal = true, artery = false, bile = false;
  data->GetEstimatedVisibility(undefined, hepatic, portal, artery, bile, 0);
  EXPECT_TRUE(undefined);
  EXPECT_TRUE(hepatic); // one of two
  EXPECT_FALSE(portal); // one of four
  EXPECT_TRUE(artery);
  EXPECT_TRUE(bile);
}

TEST(VesselTreeDataWarnings, ExactTextsAndNothingChanged)
{
  lumotest::WarningCapture capture;
  auto empty = VesselTreeData::New();
  EXPECT_EQ(empty->GetMaxVesselId(0), VesselTreeData::ErrorId);
  EXPECT_EQ(empty->GetMinVesselId(0), VesselTreeData::ErrorId);
  EXPECT_FALSE(empty->GetVisibility(1, 0));
  empty->SetSegmentTypeForActive(S_I, 0);
  EXPECT_EQ(capture.messages(),
            (Messages{ "vessel map at timestep 0 is empty!",
                       "vessel map at timestep 0 is empty!",
                       "vessel map at timestep 0 is empty!",
                       "internal vessel tree at time step 0 is NULL!" }));

  capture.clear();
  auto data = makeData();
  execute(*data, 705, 2);
  EXPECT_FALSE(data->GetVisibility(77, 0));
  execute(*data, 705, 77); // unknown ids select nothing in single mode, without a word
  EXPECT_EQ(activeIds(*data), Ids{});
  EXPECT_EQ(data->GetPickedVesselId(7), VesselTreeData::ErrorId);
  EXPECT_EQ(data->GetActivationMode(-1), VesselTreeData::NoActivation);
  data->SetActivationMode(VesselTreeData::SubtreeActivation, 3);
  data->SetBloodVesselTypeForActive(Artery, 1);
  data->DeactivateAll(5);
  bool a, b, c, d, e;
  data->GetEstimatedVisibility(a, b, c, d, e, 9);
  EXPECT_EQ(capture.messages(),
            (Messages{ "unknown vessel id (77) given.",
                       "timestep t is out of range!",
                       "timestep t (-1) is out of range!",
                       "timestep t is out of range!",
                       "timestep t is out of range!",
                       "timestep t is out of range!",
                       "timestep t is out of range!" }));
  EXPECT_EQ(data->GetActivationMode(0), VesselTreeData::SingleActivation);

  data->SetActivationMode(VesselTreeData::PathToRootActivation, 0);
  capture.clear();
  execute(*data, 705, 77);
  EXPECT_EQ(capture.messages(), (Messages{ "vessel with id 77 not found" }));

  capture.clear();
  lumo::Operation other(705);
  data->ExecuteOperation(&other);
  EXPECT_EQ(capture.messages(), (Messages{ "Operation is not of type lumo::VesselTreeOperation!" }));
  EXPECT_EQ(data->GetPickedVesselId(0), 77);
}

TEST(VesselTreeDataWarnings, PickingOnAMissingTimeStepChangesNothing)
{
  lumotest::WarningCapture capture;
  auto data = makeData();
  execute(*data, 705, 3);
  const auto attributes = data->GetAttributesMTime();

  class Exposed : public VesselTreeData
  {
  public:
    using VesselTreeData::SetMultiplePickedVesselId;
    using VesselTreeData::SetPickedVesselId;
  };
  static_cast<Exposed *>(data.GetPointer())->SetPickedVesselId(4, 1);
  static_cast<Exposed *>(data.GetPointer())->SetMultiplePickedVesselId(4, 1);
  EXPECT_EQ(capture.messages(), (Messages{ "timestep t (1) is out of range!", "timestep t (1) is out of range!" }));
  EXPECT_EQ(data->GetPickedVesselId(0), 3);
  EXPECT_EQ(activeIds(*data), (Ids{ 3 }));
  EXPECT_EQ(data->GetAttributesMTime(), attributes);
}

TEST(VesselTreeDataWarnings, TheFullFormatCarriesFileLineClassAndAddress)
{
  lumotest::WarningCapture capture;
  auto empty = VesselTreeData::New();
  empty->GetMaxVesselId(0);
  ASSERT_EQ(capture.texts().size(), 1u);
  const std::string & text = capture.texts()[0];
  std::ostringstream address;
  address << static_cast<const void *>(empty.GetPointer());
  // The file is named from the repository's root, wherever the project was built.
  EXPECT_EQ(text.rfind("WARNING: In Core/DataStructures/lumoVesselTreeData.cpp, line ", 0), 0u) << text;
  EXPECT_NE(text.find("\nVesselTreeData (" + address.str() + "): vessel map at timestep 0 is empty!\n\n"),
            std::string::npos);
}

TEST(VesselTreeData, NoWarningsWhenGlobalWarningsAreOff)
{
  lumotest::WarningCapture capture;
  itk::Object::GlobalWarningDisplayOff();
  auto empty = VesselTreeData::New();
  EXPECT_EQ(empty->GetMaxVesselId(0), VesselTreeData::ErrorId);
  EXPECT_TRUE(capture.texts().empty());
}
