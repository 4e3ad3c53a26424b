#include "SupplyTestSupport.h"

#include "DistanceMeasures.h"
#include "VesselTreeSamplers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace supply_test;

namespace
{
/** One tree with every kind of vessel, in pre-order:
 *   1 portal S_V, status keep, 2 points (root)
 *   2 portal undefined segment, undefined status, 1 point
 *   3 hepatic HS_LSV, resect, 2 points
 *   4 hepatic undefined segment, undefined status, 1 point
 *   5 artery, 1 point
 *   65537 portal S_VI (low 16 bits: 1), undefined status, 1 point
 *   6 portal S_II, no points */
ArVesselTree
mixedTree()
{
  return makeStar({ 1, PortalVein, S_V, NotToBeResected, { { 1, 2, 3, 4 }, { 5, 6, 7, 8 } } },
                  { { 2, PortalVein, S_Undefined, UndefinedResectionStatus, { { 10, 0, 0, 1 } } },
                    { 3, HepaticVein, HS_LSV, ToBeResected, { { 20, 0, 0, 2 }, { 21, 0, 0, 3 } } },
                    { 4, HepaticVein, S_Undefined, UndefinedResectionStatus, { { 30, 0, 0, 1 } } },
                    { 5, Artery, S_Undefined, UndefinedResectionStatus, { { 40, 0, 0, 1 } } },
                    { 65537, PortalVein, S_VI, UndefinedResectionStatus, { { 50, 0, 0, 1 } } },
                    { 6, PortalVein, S_II, ToBeResected, {} } });
}

std::vector<std::uint16_t>
sample(AbstractVesselTreeSampler & sampler, const ArVesselTree & tree)
{
  std::unique_ptr<VesselElementList> list(sampler.sampleVesselTree(tree));
  EXPECT_NE(list, nullptr);
  return list ? idsOf(*list) : std::vector<std::uint16_t>{};
}

using Ids = std::vector<std::uint16_t>;
} // namespace

TEST(VesselTreeSampler, EachSamplerSelectsItsVessels)
{
  const ArVesselTree tree = mixedTree();
  EntireVesselTreeSampler entire;
  PortaVesselTreeSampler porta;
  HepaVesselTreeSampler hepa;
  OnlyDefinedPortaVesselTreeSampler definedPorta;
  OnlyDefinedHepaVesselTreeSampler definedHepa;
  EXPECT_EQ(sample(entire, tree), (Ids{ 1, 1, 2, 3, 3, 4, 5, 1 }));
  EXPECT_EQ(sample(porta, tree), (Ids{ 1, 1, 2, 1 }));
  EXPECT_EQ(sample(hepa, tree), (Ids{ 3, 3, 4 }));
  EXPECT_EQ(sample(definedPorta, tree), (Ids{ 1, 1, 1 }));
  EXPECT_EQ(sample(definedHepa, tree), (Ids{ 3, 3 }));
}

TEST(VesselTreeSampler, ResectionStatusSamplerWithAndWithoutTheIgnoreFlag)
{
  const ArVesselTree tree = mixedTree();
  ResectionStatusVesselTreeSampler sampler;
  EXPECT_TRUE(sampler.getIgnoreUndefinedStatus());
  EXPECT_EQ(sampler.getVesselType(), PortalVein);
  // Portal veins with a defined status only: vessel 1 (vessel 6 has no points).
  EXPECT_EQ(sample(sampler, tree), (Ids{ 1, 1 }));
  sampler.setIgnoreUndefinedStatus(false);
  EXPECT_EQ(sample(sampler, tree), (Ids{ 1, 1, 2, 1 }));
  sampler.setVesselType(HepaticVein);
  EXPECT_EQ(sample(sampler, tree), (Ids{ 3, 3, 4 }));
  const bool ignore = true;
  sampler.setIgnoreUndefinedStatus(ignore);
  EXPECT_EQ(sample(sampler, tree), (Ids{ 3, 3 }));
}

TEST(VesselTreeSampler, PortalVeinsAllInSegmentOne)
{
  const ArVesselTree tree = makeStar({ 1, PortalVein, S_Undefined, UndefinedResectionStatus, { { 0, 0, 0, 1 } } },
                                     { { 2, PortalVein, S_Undefined, UndefinedResectionStatus, { { 1, 0, 0, 1 } } },
                                       { 3, HepaticVein, HS_LS, UndefinedResectionStatus, { { 2, 0, 0, 1 } } } });
  OnlyDefinedPortaVesselTreeSampler defined;
  PortaVesselTreeSampler all;
  EXPECT_EQ(sample(defined, tree), Ids{});
  EXPECT_EQ(sample(all, tree), (Ids{ 1, 2 }));
}

TEST(VesselTreeSampler, ListOrderAndContent)
{
  // Pre-order over a deeper tree: 1, 2 (child of 1), 4 (child of 2), 3 (child of 1).
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  tree->setRoot(makeVessel({ 1, PortalVein, S_V, 1, { { 1, 2, 3, 4 }, { 5, 6, 7, 8 } } }));
  auto * two = new VesselNode(tree->getRootNode(), makeVessel({ 2, PortalVein, S_V, 1, { { 9, 9, 9, 9 } } }));
  tree->getRootNode()->addChild(two);
  auto * three = new VesselNode(tree->getRootNode(), makeVessel({ 3, PortalVein, S_V, 1, { { 3, 3, 3, 3 } } }));
  tree->getRootNode()->addChild(three);
  two->addChild(new VesselNode(two, makeVessel({ 70000, PortalVein, S_V, 1, { { -1.5f, 0.25f, 1e-3f, 0.5f } } })));

  EntireVesselTreeSampler sampler;
  std::unique_ptr<VesselElementList> list(sampler.sampleVesselTree(handle));
  ASSERT_EQ(list->size(), 5u);
  auto it = list->begin();
  const VesselElement a = *it++;
  const VesselElement b = *it++;
  const VesselElement c = *it++;
  const VesselElement d = *it++;
  const VesselElement e = *it++;
  EXPECT_EQ((std::vector<float>{ a.x, a.y, a.z, a.diameter }), (std::vector<float>{ 1, 2, 3, 4 }));
  EXPECT_EQ((std::vector<float>{ b.x, b.y, b.z, b.diameter }), (std::vector<float>{ 5, 6, 7, 8 }));
  EXPECT_EQ(c.vesselId, 2);
  // 70000 = 0x11170: only the low 16 bits are kept.
  EXPECT_EQ(d.vesselId, 70000 & 0xFFFF);
  EXPECT_EQ((std::vector<float>{ d.x, d.y, d.z, d.diameter }), (std::vector<float>{ -1.5f, 0.25f, 1e-3f, 0.5f }));
  EXPECT_EQ(e.vesselId, 3);
}

TEST(VesselTreeSampler, EmptyOrNullTreeGivesAnEmptyList)
{
  EntireVesselTreeSampler sampler;
  EXPECT_EQ(sample(sampler, ArVesselTree(new LinkedVesselTree())), Ids{});
  EXPECT_EQ(sample(sampler, ArVesselTree()), Ids{});
}

TEST(EuclideanDistanceMeasure, SinglePrecision)
{
  EuclideanDistanceMeasure measure;
  const float a[3] = { 3, 4, 12 };
  const float zero[3] = { 0, 0, 0 };
  EXPECT_EQ(measure.computeDistance(a, zero), 13.0f);
  EXPECT_EQ(measure.computeDistance(a, a), 0.0f);
  // The squares overflow a float: double precision would give 1e20.
  const float far[3] = { 1e20f, 0, 0 };
  EXPECT_EQ(measure.computeDistance(far, zero), std::numeric_limits<float>::infinity());
  // 0.1f - 0.3f rounded as a float, squared in float.
  const float p[3] = { 0.1f, 0.2f, 0.3f };
  const float q[3] = { 0.3f, 0.2f, 0.1f };
  const float dx = 0.1f - 0.3f;
  const float dz = 0.3f - 0.1f;
  EXPECT_EQ(measure.computeDistance(p, q), std::sqrt(dx * dx + 0.0f + dz * dz));
}
