#include "BinomialCentreLineSmoother.h"
#include "ChildMergingTreeCleaner.h"
#include "SpurTreeCleaner.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{
/** A vessel along x from x0 to x1 (one point per unit) at height y with a constant diameter. */
ar<Vessel>
straight(int id, float x0, float x1, float y, float diameter)
{
  ar<Vessel> vessel(new Vessel);
  vessel->setVesselId(id);
  for (float x = x0; x <= x1 + 1e-4f; x += 1.0f)
    vessel->appendPoint({ x, y, 0.0f, diameter });
  return vessel;
}

VesselNode *
attach(VesselNode * parent, const ar<Vessel> & vessel)
{
  auto * node = new VesselNode(parent, vessel);
  parent->addChild(node);
  return node;
}

std::vector<int>
preorderIds(const ArVesselTree & tree)
{
  std::vector<int> ids;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
    ids.push_back(it->next()->getVesselId());
  return ids;
}
} // namespace

TEST(SpurTreeCleanerTest, RemovesTerminalVesselsShortComparedWithTheirParentsRadius)
{
  // Root of diameter 10 (radius 5) ending at x = 20 with a spur of length 4, a leaf of length 8 and a branch of
  // diameter 2 (radius 1) that has a spur of length 1 and a leaf of length 8.
  auto * linked = new LinkedVesselTree;
  ArVesselTree tree(linked);
  linked->setRoot(straight(1, 0, 20, 0, 10));
  VesselNode * root = linked->getRootNode();
  attach(root, straight(2, 20, 24, 0, 3)); // 4 < 1.5 x 5: spur
  VesselNode * branch = attach(root, straight(3, 20, 32, 0, 2));
  attach(root, straight(4, 20, 28, 0, 3));   // 8 > 1.5 x 5: kept
  attach(branch, straight(5, 32, 33, 0, 1)); // 1 < 1.5 x 1: spur
  attach(branch, straight(6, 32, 40, 0, 1)); // 8: kept

  SpurTreeCleaner cleaner;
  EXPECT_FLOAT_EQ(cleaner.getLengthToRadius(), 1.5f);
  EXPECT_EQ(cleaner.clean(tree), 2u);
  // Renumbered breadth-first: root, old 3, old 4, old 6.
  EXPECT_EQ(preorderIds(tree), (std::vector<int>{ 1, 2, 4, 3 }));
  EXPECT_EQ(root->getChild(0)->getData()->getPoints().back().x, 32.0f);
  EXPECT_EQ(root->getChild(1)->getData()->getPoints().back().x, 28.0f);
  EXPECT_EQ(root->getChild(0)->getChild(0)->getData()->getPoints().back().x, 40.0f);
  EXPECT_EQ(root->getData()->getCleaningLabel(), 0);
  // A second pass finds nothing; the root is never a spur, however short.
  EXPECT_EQ(cleaner.clean(tree), 0u);
  ArVesselTree lone(new LinkedVesselTree);
  asLinkedVesselTree(lone)->setRoot(straight(1, 0, 0, 0, 10));
  EXPECT_EQ(cleaner.clean(lone), 0u);
  EXPECT_EQ(cleaner.clean(ArVesselTree()), 0u);
}

TEST(ChildMergingTreeCleanerTest, MergesChainsOfOnlyChildrenIntoOneVessel)
{
  // 1 -> 2 -> 3, and 3 has two children 4 and 5: 1, 2, 3 become one vessel with 4 and 5 as its children.
  auto * linked = new LinkedVesselTree;
  ArVesselTree tree(linked);
  linked->setRoot(straight(1, 0, 5, 0, 4));
  VesselNode * two = attach(linked->getRootNode(), straight(2, 5, 9, 0, 3));
  VesselNode * three = attach(two, straight(3, 9, 12, 0, 2));
  attach(three, straight(4, 12, 15, 0, 1));
  VesselNode * five = attach(three, straight(5, 12, 14, 0, 1));
  attach(five, straight(6, 14, 16, 0, 1)); // 5 -> 6 merges as well

  ChildMergingTreeCleaner cleaner;
  EXPECT_EQ(cleaner.clean(tree), 3u);
  VesselNode * root = linked->getRootNode();
  const Vessel & merged = *root->getData();
  // 0..5, then 6..9, then 10..12: the repeated joint points are dropped.
  ASSERT_EQ(merged.numberOfPoints(), 13u);
  EXPECT_EQ(merged.getPoint(12).x, 12.0f);
  EXPECT_EQ(merged.getPoint(6).diameter, 3.0f);
  EXPECT_EQ(merged.getCleaningLabel(), 2);
  ASSERT_EQ(root->numberOfChildren(), 2);
  EXPECT_EQ(root->getChild(0)->getParent(), root);
  EXPECT_EQ(root->getChild(1)->getData()->numberOfPoints(), 5u); // 12..14 and 15..16
  EXPECT_EQ(root->getChild(1)->getData()->getCleaningLabel(), 1);
  EXPECT_EQ(preorderIds(tree), (std::vector<int>{ 1, 2, 3 }));
  EXPECT_EQ(cleaner.clean(tree), 0u);
}

TEST(BinomialCentreLineSmootherTest, SmoothsInnerPointsAndDiametersAndKeepsTheEnds)
{
  Vessel::PointList points = { { 0, 0, 0, 2 }, { 1, 1, 0, 4 }, { 2, 0, 0, 2 }, { 3, 1, 0, 4 }, { 4, 0, 0, 2 } };
  BinomialCentreLineSmoother smoother;
  const Vessel::PointList original = points;
  smoother.smooth(points, 0);
  EXPECT_EQ(points, original);
  smoother.smooth(points, 1);
  EXPECT_EQ(points.front(), original.front());
  EXPECT_EQ(points.back(), original.back());
  EXPECT_EQ(points[1], (VesselPoint{ 1, 0.5f, 0, 3 }));
  EXPECT_EQ(points[2], (VesselPoint{ 2, 0.5f, 0, 3 }));
  EXPECT_EQ(points[3], (VesselPoint{ 3, 0.5f, 0, 3 }));

  const auto before = smoother.getModificationCount();
  smoother.setCentreWeight(0.5f);
  EXPECT_EQ(smoother.getModificationCount(), before);
  smoother.setCentreWeight(2.0f); // clamped to 1: no smoothing
  EXPECT_EQ(smoother.getModificationCount(), before + 1);
  Vessel::PointList again = original;
  smoother.smooth(again, 3);
  EXPECT_EQ(again, original);
}
