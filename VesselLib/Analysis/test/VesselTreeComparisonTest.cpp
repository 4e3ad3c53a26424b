#include "VesselTreeComparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace
{
/** A vessel as a straight line from a to b with a constant radius. */
struct Line
{
  VesselPoint a;
  VesselPoint b;
};

ar<Vessel>
vesselOf(const Line & line, float radius, float dz)
{
  ar<Vessel> vessel(new Vessel());
  vessel->appendPoint({ line.a.x, line.a.y, line.a.z + dz, 2.0f * radius });
  vessel->appendPoint({ line.b.x, line.b.y, line.b.z + dz, 2.0f * radius });
  return vessel;
}

/** A root along x with two branches at its end, all in the plane z = 0:
 *    root (0,0,0)-(10,0,0), branch A (10,0,0)-(20,0,0), branch B (10,0,0)-(10,10,0).
 *  Options drop branch B, add a spurious branch along z, shift everything along z, or change radii. */
struct TreeOptions
{
  float radius{ 1.0f };
  float branchBRadius{ 1.0f };
  float dz{ 0.0f };
  bool withBranchB{ true };
  bool withSpurious{ false };
};

ArVesselTree
makeTree(const TreeOptions & o = {})
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  tree->setRoot(vesselOf({ { 0, 0, 0, 0 }, { 10, 0, 0, 0 } }, o.radius, o.dz));
  VesselNode * root = tree->getRootNode();
  auto add = [&](const Line & line, float radius) {
    auto * node = new VesselNode(root, vesselOf(line, radius, o.dz));
    root->addChild(node);
  };
  add({ { 10, 0, 0, 0 }, { 20, 0, 0, 0 } }, o.radius);
  if (o.withBranchB)
  {
    add({ { 10, 0, 0, 0 }, { 10, 10, 0, 0 } }, o.branchBRadius);
  }
  if (o.withSpurious)
  {
    add({ { 10, 0, 0, 0 }, { 10, 0, 10, 0 } }, o.radius);
  }
  return handle;
}
} // namespace

TEST(VesselTreeComparison, IdenticalTreesMatchPerfectly)
{
  const VesselTreeComparison::Result r = VesselTreeComparison().compare(makeTree(), makeTree());
  EXPECT_EQ(r.truthToTestMean, 0.0);
  EXPECT_EQ(r.truthToTestP95, 0.0);
  EXPECT_EQ(r.testToTruthMean, 0.0);
  EXPECT_EQ(r.testToTruthP95, 0.0);
  EXPECT_EQ(r.recall, 1.0);
  EXPECT_EQ(r.precision, 1.0);
  EXPECT_EQ(r.trueVesselsConsidered, 3u);
  EXPECT_EQ(r.trueVesselsFound, 3u);
  EXPECT_EQ(r.testVesselsCorrect, 3u);
  EXPECT_EQ(r.radiusErrorMedian, 0.0);
  EXPECT_EQ(r.radiusErrorRelative, 0.0);
  EXPECT_EQ(r.trueVessels, 3u);
  EXPECT_EQ(r.testVessels, 3u);
  EXPECT_EQ(r.trueBifurcations, 1u);
  EXPECT_EQ(r.testBifurcations, 1u);
  // Every 0.2 mm on 30 mm of centre line, the three end points included.
  EXPECT_EQ(r.matchedSamples, 153u);
}

TEST(VesselTreeComparison, ShiftedTreeIsHalfAMillimetreAwayBothWays)
{
  TreeOptions shifted;
  shifted.dz = 0.5f;
  const VesselTreeComparison::Result r = VesselTreeComparison().compare(makeTree(), makeTree(shifted));
  EXPECT_DOUBLE_EQ(r.truthToTestMean, 0.5);
  EXPECT_DOUBLE_EQ(r.truthToTestP95, 0.5);
  EXPECT_DOUBLE_EQ(r.testToTruthMean, 0.5);
  EXPECT_DOUBLE_EQ(r.testToTruthP95, 0.5);
  EXPECT_EQ(r.recall, 1.0);
  EXPECT_EQ(r.precision, 1.0);
  EXPECT_EQ(r.radiusErrorMedian, 0.0);

  // Beyond both the radius (1 mm) and the voxel size, nothing matches; a larger voxel size accepts it again.
  shifted.dz = 1.5f;
  VesselTreeComparison comparison;
  VesselTreeComparison::Result far = comparison.compare(makeTree(), makeTree(shifted));
  EXPECT_EQ(far.recall, 0.0);
  EXPECT_EQ(far.precision, 0.0);
  EXPECT_EQ(far.matchedSamples, 0u);
  EXPECT_TRUE(std::isnan(far.radiusErrorMedian));
  comparison.setVoxelSize(2.0);
  far = comparison.compare(makeTree(), makeTree(shifted));
  EXPECT_EQ(far.recall, 1.0);
  EXPECT_EQ(far.precision, 1.0);
}

TEST(VesselTreeComparison, MissingAndSpuriousBranches)
{
  TreeOptions missing;
  missing.withBranchB = false;
  VesselTreeComparison::Result r = VesselTreeComparison().compare(makeTree(), makeTree(missing));
  EXPECT_EQ(r.trueVesselsFound, 2u);
  EXPECT_DOUBLE_EQ(r.recall, 2.0 / 3.0);
  EXPECT_EQ(r.precision, 1.0);
  EXPECT_EQ(r.testToTruthMean, 0.0);
  EXPECT_GT(r.truthToTestMean, 1.0);
  EXPECT_EQ(r.testBifurcations, 0u); // a root with one branch left
  EXPECT_EQ(r.testVessels, 2u);

  TreeOptions spurious;
  spurious.withSpurious = true;
  r = VesselTreeComparison().compare(makeTree(), makeTree(spurious));
  EXPECT_EQ(r.recall, 1.0);
  EXPECT_EQ(r.testVesselsCorrect, 3u);
  EXPECT_DOUBLE_EQ(r.precision, 3.0 / 4.0);
  EXPECT_EQ(r.truthToTestMean, 0.0);
  // The spurious branch is 50 of the 201 test samples, 0 to 10 mm from the truth.
  EXPECT_GT(r.testToTruthP95, 7.0);
  EXPECT_EQ(r.testVessels, 4u);
}

TEST(VesselTreeComparison, RadiusErrorAndTheRecallRadiusFilter)
{
  TreeOptions thick;
  thick.radius = 1.5f;
  thick.branchBRadius = 1.5f;
  VesselTreeComparison::Result r = VesselTreeComparison().compare(makeTree(), makeTree(thick));
  EXPECT_DOUBLE_EQ(r.radiusErrorMedian, 0.5);
  EXPECT_DOUBLE_EQ(r.radiusErrorRelative, 0.5);

  // A thin true branch (radius 0.3 mm) that the test misses.
  TreeOptions thin;
  thin.branchBRadius = 0.3f;
  TreeOptions missing;
  missing.withBranchB = false;
  VesselTreeComparison comparison;
  r = comparison.compare(makeTree(thin), makeTree(missing));
  EXPECT_EQ(r.trueVesselsConsidered, 3u);
  EXPECT_DOUBLE_EQ(r.recall, 2.0 / 3.0);
  comparison.setVoxelSize(0.5);
  comparison.setMinimumRadiusVoxels(1.0); // 0.5 mm: the thin branch is left out
  r = comparison.compare(makeTree(thin), makeTree(missing));
  EXPECT_EQ(r.trueVesselsConsidered, 2u);
  EXPECT_EQ(r.recall, 1.0);
  // The missed thin branch no longer counts in the distances from the truth's side either.
  EXPECT_EQ(r.truthToTestMean, 0.0);
  EXPECT_EQ(r.truthToTestP95, 0.0);
  comparison.setMinimumRadiusVoxels(10.0); // 5 mm: nothing left to count
  r = comparison.compare(makeTree(thin), makeTree(missing));
  EXPECT_EQ(r.trueVesselsConsidered, 0u);
  EXPECT_TRUE(std::isnan(r.recall));
  EXPECT_TRUE(std::isnan(r.radiusErrorMedian));
  EXPECT_EQ(r.precision, 1.0);
}

TEST(VesselTreeComparison, RefusesEmptyTreesAndBadSettings)
{
  ArVesselTree empty(new LinkedVesselTree());
  try
  {
    VesselTreeComparison().compare(makeTree(), empty);
    FAIL() << "no exception";
  }
  catch (const std::invalid_argument & e)
  {
    EXPECT_STREQ(e.what(), "the test tree has no centre-line points");
  }
  EXPECT_THROW(VesselTreeComparison().compare(ArVesselTree(), makeTree()), std::invalid_argument);
  VesselTreeComparison comparison;
  comparison.setVoxelSize(0.0);
  EXPECT_THROW(comparison.compare(makeTree(), makeTree()), std::invalid_argument);
  comparison.setVoxelSize(1.0);
  comparison.setSampleSpacing(-0.2);
  EXPECT_THROW(comparison.compare(makeTree(), makeTree()), std::invalid_argument);
}
