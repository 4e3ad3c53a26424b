#include "lumoPruneVesselTreeFilter.h"
#include "lumoSmoothVesselTreeFilter.h"
#include "lumoVesselTreeToPointSetFilter.h"

#include "BinomialCentreLineSmoother.h"
#include "VesselTestTree.h"

#include <gtest/gtest.h>

using namespace lumo;
using namespace vessel_test;

namespace
{
void
line(const ar<Vessel> & vessel, float x0, float y0, float x1, float y1, int steps, float diameter)
{
  for (int i = 0; i <= steps; ++i)
  {
    const float t = static_cast<float>(i) / static_cast<float>(steps);
    vessel->appendPoint({ x0 + t * (x1 - x0), y0 + t * (y1 - y0), 0.0f, diameter });
  }
}

/** Root 1 (0,0)-(10,0) d 4; 2 (10,0)-(20,0) d 3 with leaves 4 (20,0)-(21,0) d 1 and 5 (20,0)-(30,0) d 2;
 *  3 (10,0)-(10,3) d 0.5. */
VesselTreeData::Pointer
makeData()
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  line(tree->getRoot(), 0, 0, 10, 0, 10, 4);
  VesselNode * two = addChild(tree->getRootNode(), 2);
  line(two->getData(), 10, 0, 20, 0, 10, 3);
  line(addChild(tree->getRootNode(), 3)->getData(), 10, 0, 10, 3, 3, 0.5f);
  line(addChild(two, 4)->getData(), 20, 0, 21, 0, 1, 1);
  line(addChild(two, 5)->getData(), 20, 0, 30, 0, 10, 2);
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

std::vector<int>
preorderIdsOf(const VesselTreeData & data)
{
  return preorderIds(*data.GetVesselTreeData(0));
}
} // namespace

TEST(PruneVesselTreeFilter, DropsShortAndThinLeavesUntilStableAndMergesWhatIsLeft)
{
  auto input = makeData();
  auto filter = PruneVesselTreeFilter::New();
  EXPECT_EQ(filter->GetMinimumLength(), 0.0);
  EXPECT_EQ(filter->GetMinimumDiameter(), 0.0);
  EXPECT_TRUE(filter->GetMergeSingleChildren());
  filter->SetInput(input);
  filter->Update();
  EXPECT_EQ(filter->GetNumberOfDroppedVessels(), 0u);
  EXPECT_EQ(preorderIdsOf(*filter->GetOutput()), (std::vector<int>{ 1, 2, 4, 5, 3 }));

  // Length 2 drops leaf 4; 2 then has one child, 5, and is merged with it.
  filter->SetMinimumLength(2.0);
  filter->Update();
  EXPECT_EQ(filter->GetNumberOfDroppedVessels(), 1u);
  EXPECT_EQ(preorderIdsOf(*filter->GetOutput()), (std::vector<int>{ 1, 2, 3 }));
  const ar<Vessel> merged = filter->GetOutput()->GetVesselById(2, 0);
  ASSERT_FALSE(merged.isNull());
  EXPECT_EQ(merged->numberOfPoints(), 21u);
  EXPECT_EQ(merged->getPoint(20).x, 30.0f);

  // Length 25 drops 3 and 4, then 5 (10 long), then 2 (10 long, a leaf by now): only the root is left.
  filter->SetMinimumLength(25.0);
  filter->Update();
  EXPECT_EQ(filter->GetNumberOfDroppedVessels(), 4u);
  EXPECT_EQ(preorderIdsOf(*filter->GetOutput()), (std::vector<int>{ 1 }));

  // Diameter 1.5 drops 3 (0.5) and 4 (1): 2 keeps 5 alone and is merged with it.
  filter->SetMinimumLength(0.0);
  filter->SetMinimumDiameter(1.5);
  filter->MergeSingleChildrenOff();
  filter->Update();
  EXPECT_EQ(filter->GetNumberOfDroppedVessels(), 2u);
  EXPECT_EQ(preorderIdsOf(*filter->GetOutput()), (std::vector<int>{ 1, 2, 3 }));
  // The input is untouched.
  EXPECT_EQ(preorderIdsOf(*input), (std::vector<int>{ 1, 2, 4, 5, 3 }));
}

TEST(SmoothVesselTreeFilter, SmoothsCentreLinesKeepingEndsSoBranchesStayAttached)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  const Vessel::PointList zigzag = { { 0, 0, 0, 2 }, { 1, 1, 0, 4 }, { 2, 0, 0, 2 }, { 3, 1, 0, 4 }, { 4, 0, 0, 2 } };
  tree->getRoot()->setPoints(zigzag);
  VesselNode * child = addChild(tree->getRootNode(), 2);
  child->getData()->setPoints({ { 4, 0, 0, 2 }, { 5, 1, 0, 2 }, { 6, 0, 0, 2 } });
  auto input = VesselTreeData::New();
  input->initialize(ArVesselTree(tree.release()));

  auto filter = SmoothVesselTreeFilter::New();
  EXPECT_EQ(filter->GetNumberOfIterations(), 2u);
  filter->SetInput(input);
  filter->SetNumberOfIterations(1);
  filter->Update();
  const ar<Vessel> root = filter->GetOutput()->GetVesselById(1, 0);
  const ar<Vessel> branch = filter->GetOutput()->GetVesselById(2, 0);
  ASSERT_FALSE(root.isNull());
  EXPECT_EQ(root->getPoint(0), zigzag[0]);
  EXPECT_EQ(root->getPoint(2), (VesselPoint{ 2, 0.5f, 0, 3 }));
  EXPECT_EQ(root->getPoint(4), zigzag[4]);
  EXPECT_EQ(branch->getPoint(0), root->getPoint(4));
  EXPECT_EQ(branch->getPoint(1), (VesselPoint{ 5, 0.5f, 0, 2 }));
  EXPECT_EQ(input->GetVesselById(1, 0)->getPoints(), zigzag);

  // The smoother's parameters count in the filter's time: a change makes the next update run again.
  auto * smoother = new BinomialCentreLineSmoother;
  filter->SetSmoother(smoother);
  filter->Update();
  const auto before = filter->GetMTime();
  smoother->setCentreWeight(1.0f);
  EXPECT_GT(filter->GetMTime(), before);
  filter->Update();
  EXPECT_EQ(filter->GetOutput()->GetVesselById(1, 0)->getPoints(), zigzag);
}

TEST(VesselTreeToPointSetFilter, CentreLinePointsInPreorderWithoutRepeatedJoints)
{
  auto filter = VesselTreeToPointSetFilter::New();
  filter->SetInput(makeData());
  filter->Update();
  // 11 root points, then 2 (10 more), 4 (1), 5 (10), 3 (3).
  PointSet * points = filter->GetOutput();
  ASSERT_EQ(points->GetSize(0), 35u);
  EXPECT_EQ(points->GetPoint(10)[0], 10.0);
  EXPECT_EQ(points->GetPoint(11)[0], 11.0);
  EXPECT_EQ(points->GetPoint(21)[0], 21.0);
  EXPECT_EQ(points->GetPoint(31)[0], 30.0);
  EXPECT_EQ(points->GetPoint(34)[1], 3.0);
  filter->KeepSharedPointsOn();
  filter->Update();
  EXPECT_EQ(filter->GetOutput()->GetSize(0), 39u);
}
