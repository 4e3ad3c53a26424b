#include "lumoVesselTreeData.h"
#include "lumoVesselTreeGeometry3D.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

using namespace lumo;
using namespace vessel_test;

namespace
{
ArVesselTree
oneVessel(std::initializer_list<VesselPoint> points)
{
  auto * tree = new LinkedVesselTree();
  ar<Vessel> vessel = makeVessel(1);
  for (const VesselPoint & p : points)
  {
    vessel->appendPoint(p);
  }
  tree->setRoot(vessel);
  return ArVesselTree(tree);
}

std::vector<double>
boundsOf(const Geometry3D & geometry)
{
  const auto & b = geometry.GetBounds();
  return { b[0], b[1], b[2], b[3], b[4], b[5] };
}
} // namespace

TEST(VesselTreeGeometry3D, BoundsEncloseTheCentreLinesNotTheWalls)
{
  auto geometry = VesselTreeGeometry3D::New();
  EXPECT_STREQ(geometry->GetNameOfClass(), "VesselTreeGeometry3D");
  geometry->InitializeWithTree(oneVessel({ { 0, 0, 0, 5 }, { 10, 0, 0, 5 } }));
  EXPECT_EQ(boundsOf(*geometry), (std::vector<double>{ 0, 10, 0, 0, 0, 0 }));

  auto tree = makeThreeLevelTree();
  tree->getRootNode()->getData()->appendPoint({ -1, 2, 3, 1 });
  tree->getRootNode()->getChild(1)->getChild(0)->getData()->appendPoint({ 4, -5, 30, 9 });
  geometry->InitializeWithTree(ArVesselTree(tree.release()));
  EXPECT_EQ(boundsOf(*geometry), (std::vector<double>{ -1, 4, -5, 2, 3, 30 }));
}

TEST(VesselTreeGeometry3D, VesselsWithoutPointsGiveTheEmptyBoxOfItk)
{
  auto geometry = VesselTreeGeometry3D::New();
  geometry->InitializeWithTree(ArVesselTree(makeThreeLevelTree().release()));
  EXPECT_EQ(boundsOf(*geometry), (std::vector<double>{ 0, 0, 0, 0, 0, 0 }));
}

TEST(VesselTreeGeometry3D, ANullTreeKeepsTheEarlierTreeAndBounds)
{
  lumotest::WarningCapture capture;
  auto geometry = VesselTreeGeometry3D::New();
  ArVesselTree tree = oneVessel({ { 1, 2, 3, 1 }, { 4, 5, 6, 1 } });
  geometry->InitializeWithTree(tree);
  geometry->InitializeWithTree(ArVesselTree());
  EXPECT_EQ(geometry->GetTree(), tree);
  EXPECT_EQ(boundsOf(*geometry), (std::vector<double>{ 1, 4, 2, 5, 3, 6 }));
  EXPECT_EQ(capture.messages().size(), 1u);
}

TEST(VesselTreeGeometry3D, TheDataGetsTheBoundsOfItsTree)
{
  auto data = VesselTreeData::New();
  data->initialize(oneVessel({ { 0, 0, 0, 5 }, { 10, -2, 7, 5 } }));
  Geometry3D * geometry = data->GetGeometry(0);
  ASSERT_NE(dynamic_cast<VesselTreeGeometry3D *>(geometry), nullptr);
  EXPECT_EQ(boundsOf(*geometry), (std::vector<double>{ 0, 10, -2, 0, 0, 7 }));
}
