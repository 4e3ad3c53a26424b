#include "lumoDataNode.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoYetAnotherVesselTreeMapper3D.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkLookupTable.h>
#include <vtkPointData.h>
#include <vtkUnsignedIntArray.h>

#include <cmath>

using namespace lumo;
using namespace vessel_test;
using lumotest::WarningCapture;

namespace
{
void
setPoints(const ar<Vessel> & vessel, std::vector<VesselPoint> points)
{
  vessel->setPoints(std::move(points));
}

/** Vessel 1 (three points along x, diameters 4, 4, 2), its children 2 (two points, the last one with a negative
 *  diameter), 3 (one point) and 4 (invisible, three points). */
VesselTreeData::Pointer
makeData()
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  VesselNode * root = tree->getRootNode();
  setPoints(root->getData(), { { 0, 0, 0, 4 }, { 10, 0, 0, 4 }, { 20, 0, 0, 2 } });
  root->getData()->getProperties().setBloodVesselType(2);
  setPoints(addChild(root, 2)->getData(), { { 20, 0, 0, 2 }, { 30, 10, 0, -2 } });
  setPoints(addChild(root, 3)->getData(), { { 20, 0, 0, 1 } });
  ar<Vessel> hidden = addChild(root, 4)->getData();
  setPoints(hidden, { { 20, 0, 0, 2 }, { 30, -10, 0, 2 }, { 40, -10, 0, 2 } });
  hidden->getProperties().setVisible(false);
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

/** A straight vessel of constant diameter 2 along x. */
VesselTreeData::Pointer
makeStraightData(float secondDiameter = 2.0f)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  setPoints(tree->getRootNode()->getData(), { { 0, 0, 0, 2 }, { 5, 0, 0, secondDiameter }, { 10, 0, 0, 2 } });
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

struct Scene
{
  DataNode::Pointer node = DataNode::New();
  YetAnotherVesselTreeMapper3D::Pointer mapper = YetAnotherVesselTreeMapper3D::New();

  explicit Scene(VesselTreeData * data)
  {
    node->SetData(data);
    node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(VesselTreeLookupTable::New()));
    mapper->SetDataNode(node);
  }
};

std::vector<double>
values(vtkDataArray * array)
{
  std::vector<double> result;
  for (vtkIdType i = 0; array && i < array->GetNumberOfTuples(); ++i)
  {
    result.push_back(array->GetTuple1(i));
  }
  return result;
}
} // namespace

TEST(VesselTreeMapperSkeleton, PointsLinesAndArrays)
{
  Scene scene(makeData());
  scene.mapper->GenerateSkeleton();
  vtkPolyData * skeleton = scene.mapper->GetSkeleton();
  ASSERT_NE(skeleton, nullptr);
  // Vessels 1 and 2 only: 3 has one point, 4 is invisible. The branching point is stored twice.
  EXPECT_EQ(skeleton->GetNumberOfPoints(), 5);
  EXPECT_EQ(skeleton->GetNumberOfLines(), 2);
  auto * radii = vtkFloatArray::SafeDownCast(skeleton->GetPointData()->GetArray("diameters"));
  auto * ids = vtkUnsignedIntArray::SafeDownCast(skeleton->GetPointData()->GetArray("vesselIds"));
  ASSERT_NE(radii, nullptr);
  ASSERT_NE(ids, nullptr);
  EXPECT_EQ(values(radii), (std::vector<double>{ 2, 2, 1, 1, 1 }));
  EXPECT_EQ(values(ids), (std::vector<double>{ 1, 1, 1, 2, 2 }));
  EXPECT_EQ(skeleton->GetPointData()->GetScalars(), radii);
  double p[3];
  skeleton->GetPoint(4, p);
  EXPECT_EQ(p[0], 30.0);
  EXPECT_EQ(p[1], 10.0);

  vtkIdType count = 0;
  const vtkIdType * cell = nullptr;
  skeleton->GetLines()->InitTraversal();
  ASSERT_TRUE(skeleton->GetLines()->GetNextCell(count, cell));
  EXPECT_EQ(std::vector<vtkIdType>(cell, cell + count), (std::vector<vtkIdType>{ 0, 1, 2 }));
  ASSERT_TRUE(skeleton->GetLines()->GetNextCell(count, cell));
  EXPECT_EQ(std::vector<vtkIdType>(cell, cell + count), (std::vector<vtkIdType>{ 3, 4 }));
}

TEST(VesselTreeMapperSkeleton, NullTreeLeavesItEmptyAndTubesFail)
{
  WarningCapture warnings;
  Scene scene(VesselTreeData::New());
  scene.mapper->GenerateSkeleton();
  scene.mapper->GenerateTubes();
  EXPECT_EQ(scene.mapper->GetSkeleton()->GetNumberOfPoints(), 0);
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "): Output of vessel tree smoother is NULL!",
                                       "diameters or vessel ids not available for surface generation" }));
}

TEST(VesselTreeMapperSurface, EndSpheresOnEveryVisibleVesselWithTheirIds)
{
  Scene scene(makeData());
  scene.mapper->GenerateSkeleton();
  scene.mapper->GenerateEndSpheres();
  vtkPolyData * spheres = scene.mapper->GetEndSpheres();
  auto * ids = vtkUnsignedIntArray::SafeDownCast(spheres->GetPointData()->GetArray("vesselIds"));
  ASSERT_NE(ids, nullptr);
  EXPECT_EQ(spheres->GetPointData()->GetArray("diameters"), nullptr);
  // Three spheres of the source's default resolution (8 x 8: 50 points each): vessels 1, 2 and the one-point 3.
  ASSERT_EQ(spheres->GetNumberOfPoints(), 150);
  EXPECT_EQ(ids->GetValue(0), 1u);
  EXPECT_EQ(ids->GetValue(49), 1u);
  EXPECT_EQ(ids->GetValue(50), 2u);
  EXPECT_EQ(ids->GetValue(100), 3u);
  EXPECT_EQ(ids->GetValue(149), 3u);
  // The first point of a sphere is its pole at centre + (0, 0, radius). Vessel 2's end has a negative diameter:
  // the skeleton holds radius +1 there, the sphere gets -1, which the sphere source clamps to 0 (a sphere
  // collapsed onto its centre).
  double pole[3];
  spheres->GetPoint(0, pole);
  EXPECT_DOUBLE_EQ(pole[2], 1.0);
  for (vtkIdType i = 50; i < 100; ++i)
  {
    spheres->GetPoint(i, pole);
    EXPECT_DOUBLE_EQ(pole[0], 30.0);
    EXPECT_DOUBLE_EQ(pole[1], 10.0);
    EXPECT_DOUBLE_EQ(pole[2], 0.0);
  }
  spheres->GetPoint(100, pole);
  EXPECT_DOUBLE_EQ(pole[2], 0.5);
}

TEST(VesselTreeMapperSurface, EqualRadiiGiveAConstantTubeAndVaryingRadiiDoNot)
{
  auto radialExtent = [](vtkPolyData * tubes, double & low, double & high) {
    low = 1e30;
    high = 0;
    for (vtkIdType i = 0; i < tubes->GetNumberOfPoints(); ++i)
    {
      double p[3];
      tubes->GetPoint(i, p);
      const double r = std::hypot(p[1], p[2]);
      if (r < 1e-9)
      {
        continue; // centre of a cap
      }
      low = std::min(low, r);
      high = std::max(high, r);
    }
  };
  Scene constant(makeStraightData());
  constant.mapper->GenerateSkeleton();
  constant.mapper->GenerateTubes();
  double low = 0, high = 0;
  radialExtent(constant.mapper->GetTubes(), low, high);
  EXPECT_NEAR(low, 1.0, 1e-6);
  EXPECT_NEAR(high, 1.0, 1e-6);

  Scene varying(makeStraightData(6.0f));
  varying.mapper->GenerateSkeleton();
  varying.mapper->GenerateTubes();
  radialExtent(varying.mapper->GetTubes(), low, high);
  EXPECT_NEAR(low, 1.0, 1e-6);
  EXPECT_NEAR(high, 3.0, 1e-6);
  // Ten sides by default, on every point of the tube.
  EXPECT_EQ(varying.mapper->GetNumberOfSides(), 10);
  auto * ids = vtkUnsignedIntArray::SafeDownCast(varying.mapper->GetTubes()->GetPointData()->GetArray("vesselIds"));
  ASSERT_NE(ids, nullptr);
  EXPECT_EQ(ids->GetNumberOfTuples(), varying.mapper->GetTubes()->GetNumberOfPoints());
}

TEST(VesselTreeMapperColors, TableOfTheFilterByVesselId)
{
  Scene scene(makeData());
  scene.mapper->GenerateData();
  vtkPolyDataMapper * mapper = scene.mapper->GetPolyDataMapper();
  EXPECT_EQ(mapper->GetInput(), scene.mapper->GetSurface());
  EXPECT_STREQ(mapper->GetArrayName(), "vesselIds");
  EXPECT_EQ(mapper->GetScalarMode(), VTK_SCALAR_MODE_USE_POINT_FIELD_DATA);
  EXPECT_EQ(mapper->GetColorMode(), VTK_COLOR_MODE_MAP_SCALARS);
  EXPECT_EQ(mapper->GetScalarRange()[0], 0.0);
  EXPECT_EQ(mapper->GetScalarRange()[1], 4.0);
  auto * table = vtkLookupTable::SafeDownCast(mapper->GetLookupTable());
  ASSERT_NE(table, nullptr);
  const auto colors = VesselTreeLookupTable::New();
  const auto portal = colors->GetColorByType()[2];
  double rgba[4];
  table->GetTableValue(1, rgba);
  EXPECT_NEAR(rgba[0], portal[0], 0.5 / 255);
  EXPECT_NEAR(rgba[1], portal[1], 0.5 / 255);
  EXPECT_NEAR(rgba[2], portal[2], 0.5 / 255);

  scene.node->SetBoolProperty("Render skeleton", true);
  scene.mapper->GenerateDataForRenderer(nullptr);
  EXPECT_EQ(mapper->GetInput(), scene.mapper->GetSkeleton());
}

TEST(VesselTreeMapperGating, GeometryOnlyOnTopologyColoursOnAttributesAndTable)
{
  WarningCapture warnings;
  auto data = makeData();
  Scene scene(data);
  scene.mapper->Update(nullptr);
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 1u);
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 1u);

  // Nothing changed: no work at all.
  scene.mapper->Update(nullptr);
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 1u);
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 1u);

  // A label (attribute) change recolours without rebuilding the tubes.
  data->AttributesModified();
  scene.mapper->Update(nullptr);
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 1u);
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 2u);

  // A new colour table recolours.
  auto * property = dynamic_cast<VesselTreeLookupTableProperty *>(scene.node->GetProperty("VesselTreeLookupTable"));
  property->GetVesselTreeLookupTable()->Modified();
  scene.mapper->Update(nullptr);
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 1u);
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 3u);

  // A topology change rebuilds (the data marks its attributes too, as its own edits do).
  data->TopologyModified();
  data->AttributesModified();
  scene.mapper->Update(nullptr);
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 2u);
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 4u);
  EXPECT_TRUE(warnings.messages().empty());

  // Called without any change, the data generation says so and does nothing.
  scene.mapper->GenerateData();
  EXPECT_EQ(warnings.messages(),
            std::vector<std::string>{ "Strange: generate data was called, but vessels seem to be up to date!" });
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 2u);
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 4u);
}

TEST(VesselTreeMapperFailures, MissingNodeOrInput)
{
  WarningCapture warnings;
  auto mapper = YetAnotherVesselTreeMapper3D::New();
  mapper->GenerateData();
  EXPECT_FALSE(mapper->IsSkeletonRendered());
  EXPECT_EQ(mapper->GetLookupTableMTime(), 0u);
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "Input to vessel mapper is NULL!", "associated node is NULL!" }));

  // A node without "Render skeleton" draws tubes; without a table the mapper uses its default colours.
  warnings.clear();
  auto node = DataNode::New();
  node->SetData(makeData());
  mapper->SetDataNode(node);
  EXPECT_FALSE(mapper->IsSkeletonRendered());
  mapper->Update(nullptr);
  EXPECT_EQ(mapper->GetPolyDataMapper()->GetInput(), mapper->GetSurface());
  EXPECT_NE(mapper->GetPolyDataMapper()->GetLookupTable(), nullptr);
  EXPECT_TRUE(warnings.messages().empty());

  node->SetVisibility(false);
  mapper->Update(nullptr);
  EXPECT_FALSE(mapper->GetActor()->GetVisibility());
}
