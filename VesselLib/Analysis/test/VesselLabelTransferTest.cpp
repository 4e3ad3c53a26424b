#include "VesselLabelTransfer.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
ar<Vessel>
vesselAlong(const std::vector<VesselPoint> & points, std::int32_t segment, std::int32_t id)
{
  ar<Vessel> vessel(new Vessel());
  for (const VesselPoint & p : points)
  {
    vessel->appendPoint(p);
  }
  vessel->getProperties().setSegmentType(segment);
  vessel->setVesselId(id);
  return vessel;
}

/** Points every millimetre along x at height y, from x0 to x1 inclusive. */
std::vector<VesselPoint>
line(float x0, float x1, float y = 0.0f)
{
  std::vector<VesselPoint> points;
  for (float x = x0; x <= x1 + 1e-3f; x += 1.0f)
  {
    points.push_back({ x, y, 0.0f, 2.0f });
  }
  return points;
}

/** The labelled reference: a root along x up to 10 mm (S_V), going on from 11 to 20 mm (S_VI), and a branch
 *  along y from 1 to 10 mm above its end (S_VII). */
ArVesselTree
reference()
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  tree->setRoot(vesselAlong(line(0.0f, 10.0f), 7, 1));
  VesselNode * root = tree->getRootNode();
  root->addChild(new VesselNode(root, vesselAlong(line(11.0f, 20.0f), 8, 2)));
  std::vector<VesselPoint> up;
  for (float y = 1.0f; y <= 10.0f; y += 1.0f)
  {
    up.push_back({ 10.0f, y, 0.0f, 2.0f });
  }
  root->addChild(new VesselNode(root, vesselAlong(up, 9, 3)));
  return handle;
}

/** A target that lacks the branching: one vessel (id 4) from 0.25 to 9.25 mm, then `extra` points, then from
 *  11.25 to 19.25 mm, and a child from 19.25 to 24.25 mm (id 7). */
ArVesselTree
target(const std::vector<VesselPoint> & extra = {})
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  std::vector<VesselPoint> points = line(0.25f, 9.25f, 0.2f);
  points.insert(points.end(), extra.begin(), extra.end());
  const std::vector<VesselPoint> rest = line(11.25f, 19.25f, 0.2f);
  points.insert(points.end(), rest.begin(), rest.end());
  tree->setRoot(vesselAlong(points, 1, 4));
  VesselNode * root = tree->getRootNode();
  root->addChild(new VesselNode(root, vesselAlong(line(19.25f, 24.25f, 0.2f), 1, 7)));
  return handle;
}
} // namespace

TEST(VesselLabelTransfer, AVesselAlongTwoReferenceVesselsIsSplitAndTakesBothLabels)
{
  const ArVesselTree source = reference();
  const ArVesselTree tree = target();
  EXPECT_EQ(VesselLabelTransfer::splitAtLabelChanges(source, tree), 1u);
  EXPECT_EQ(VesselLabelTransfer::transfer(source, tree), 3u);

  VesselNode * root = asLinkedVesselTree(tree)->getRootNode();
  const ar<Vessel> first = root->getData();
  EXPECT_EQ(first->getVesselId(), 4);
  EXPECT_EQ(first->numberOfPoints(), 10u);
  EXPECT_EQ(first->getPoints().back().x, 9.25f);
  EXPECT_EQ(first->getProperties().getSegmentType(), 7);
  ASSERT_EQ(root->numberOfChildren(), 1);
  // The new part shares the point at the split, takes the next id and the vessel's child.
  VesselNode * second = root->getChild(0);
  EXPECT_EQ(second->getData()->getVesselId(), 8);
  EXPECT_EQ(second->getData()->numberOfPoints(), 10u);
  EXPECT_EQ(second->getData()->getPoints().front().x, 9.25f);
  EXPECT_EQ(second->getData()->getProperties().getSegmentType(), 8);
  ASSERT_EQ(second->numberOfChildren(), 1);
  EXPECT_EQ(second->getChild(0)->getData()->getVesselId(), 7);
  EXPECT_EQ(second->getChild(0)->getParent(), second);
  EXPECT_EQ(tree->numberOfNodes(), 3);
}

TEST(VesselLabelTransfer, ShortStretchesNearAnotherVesselDoNotSplit)
{
  const ArVesselTree source = reference();
  // Two points wander towards the branch along y: too few to be a vessel of their own.
  const ArVesselTree tree = target({ { 10.0f, 3.0f, 0.0f, 2.0f }, { 10.0f, 4.0f, 0.0f, 2.0f } });
  EXPECT_EQ(VesselLabelTransfer::splitAtLabelChanges(source, tree), 1u);
  VesselNode * root = asLinkedVesselTree(tree)->getRootNode();
  EXPECT_EQ(root->getData()->numberOfPoints(), 12u);
  EXPECT_EQ(root->getChild(0)->getData()->numberOfPoints(), 10u);

  // Labels that do not change along a vessel, or a vessel too short to split: nothing happens.
  auto * plain = new LinkedVesselTree();
  ArVesselTree single(plain);
  plain->setRoot(vesselAlong(line(0.5f, 8.5f, 0.2f), 1, 1));
  plain->getRootNode()->addChild(new VesselNode(plain->getRootNode(), vesselAlong(line(9.0f, 12.0f), 1, 2)));
  EXPECT_EQ(VesselLabelTransfer::splitAtLabelChanges(source, single), 0u);
  EXPECT_EQ(plain->numberOfNodes(), 2);
  EXPECT_EQ(plain->getRootNode()->getData()->numberOfPoints(), 9u);

  // An empty reference splits nothing.
  EXPECT_EQ(VesselLabelTransfer::splitAtLabelChanges(ArVesselTree(new LinkedVesselTree()), tree), 0u);
}
