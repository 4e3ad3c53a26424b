#include "lumoDataNode.h"
#include "lumoSurfaceBasedVesselTreeMapper3D.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <vtkCell.h>
#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkUnsignedIntArray.h>

#include <iostream>
#include <sstream>

using namespace lumo;
using namespace vessel_test;
using lumotest::WarningCapture;

namespace
{
/** Vessel 1 along x at y = 0 (diameter `thick`), vessel 2 along x at y = 10 (diameter 1). */
VesselTreeData::Pointer
twoVessels(float thick = 2.0f)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  VesselNode * root = tree->getRootNode();
  root->getData()->setPoints({ { 0, 0, 0, thick }, { 5, 0, 0, thick }, { 10, 0, 0, thick } });
  addChild(root, 2)->getData()->setPoints({ { 0, 10, 0, 1 }, { 5, 10, 0, 1 }, { 10, 10, 0, 1 } });
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

/** Polygons in the plane z = 0 given by their corners. */
Surface::Pointer
surfaceOf(const std::vector<std::vector<std::array<double, 3>>> & polygons)
{
  auto points = vtkSmartPointer<vtkPoints>::New();
  auto polys = vtkSmartPointer<vtkCellArray>::New();
  for (const auto & polygon : polygons)
  {
    polys->InsertNextCell(static_cast<int>(polygon.size()));
    for (const auto & p : polygon)
    {
      polys->InsertCellPoint(points->InsertNextPoint(p.data()));
    }
  }
  auto polyData = vtkSmartPointer<vtkPolyData>::New();
  polyData->SetPoints(points);
  polyData->SetPolys(polys);
  auto surface = Surface::New();
  surface->SetVtkPolyData(polyData);
  return surface;
}

/** A quad near vessel 1 (y 1..3), a quad near vessel 2 (y 7..9) and a triangle whose first corner is nearer vessel
 *  1 but whose centroid (y 6.67) is nearer vessel 2. */
Surface::Pointer
quadsAndTriangle()
{
  return surfaceOf({ { { 1, 1, 0 }, { 4, 1, 0 }, { 4, 3, 0 }, { 1, 3, 0 } },
                     { { 1, 7, 0 }, { 4, 7, 0 }, { 4, 9, 0 }, { 1, 9, 0 } },
                     { { 5, 1, 0 }, { 5, 9.5, 0 }, { 6, 9.5, 0 } } });
}

struct Scene
{
  DataNode::Pointer node = DataNode::New();
  SurfaceBasedVesselTreeMapper3D::Pointer mapper = SurfaceBasedVesselTreeMapper3D::New();

  explicit Scene(VesselTreeData * data)
  {
    node->SetData(data);
    node->SetProperty("VesselTreeLookupTable", VesselTreeLookupTableProperty::New(VesselTreeLookupTable::New()));
    mapper->SetDataNode(node);
  }
};

/** What is printed to standard output while it lives. */
class CapturedOutput
{
public:
  CapturedOutput()
    : m_Previous(std::cout.rdbuf(m_Buffer.rdbuf()))
  {}
  ~CapturedOutput() { std::cout.rdbuf(m_Previous); }
  std::string
  text() const
  {
    return m_Buffer.str();
  }

private:
  std::ostringstream m_Buffer;
  std::streambuf * m_Previous;
};

std::vector<unsigned int>
values(vtkDataArray * array)
{
  std::vector<unsigned int> result;
  for (vtkIdType i = 0; array && i < array->GetNumberOfTuples(); ++i)
  {
    result.push_back(static_cast<unsigned int>(array->GetTuple1(i)));
  }
  return result;
}
} // namespace

TEST(SurfaceBasedMapperLabelling, QuadsAreTriangulatedAndEachTriangleTakesTheVesselNearestItsCentroid)
{
  Scene scene(twoVessels());
  scene.mapper->SetInputSurface(quadsAndTriangle());
  scene.mapper->GenerateSkeleton();
  CapturedOutput output;
  ASSERT_TRUE(scene.mapper->PreprocessSurface());
  EXPECT_EQ(output.text(), "Preprocess surface called...\n...finished!\n");
  vtkPolyData * preprocessed = scene.mapper->GetPreprocessedSurface();
  ASSERT_NE(preprocessed, nullptr);
  ASSERT_EQ(preprocessed->GetNumberOfCells(), 5);
  for (vtkIdType cell = 0; cell < 5; ++cell)
  {
    EXPECT_EQ(preprocessed->GetCell(cell)->GetNumberOfPoints(), 3);
  }
  EXPECT_EQ(values(preprocessed->GetCellData()->GetArray("vesselIds")), (std::vector<unsigned int>{ 1, 1, 2, 2, 2 }));
}

TEST(SurfaceBasedMapperLabelling, TubedSurfaceLabelsByTheNearestTubeWallInsteadOfCentreLine)
{
  // Vessel 1 of radius 8 reaches y = 8; a triangle around y = 6 is 6 from its centre line but 2 from its wall,
  // 4 from vessel 2's centre line and 3.5 from its wall.
  Scene scene(twoVessels(16.0f));
  scene.mapper->SetInputSurface(surfaceOf({ { { 4, 5.5, 0 }, { 6, 5.5, 0 }, { 5, 7, 0 } } }));
  scene.mapper->SetNumberOfSides(64);
  scene.mapper->GenerateSkeleton();
  scene.mapper->Superclass::GenerateSurface();
  CapturedOutput output;
  ASSERT_TRUE(scene.mapper->PreprocessSurface());
  EXPECT_EQ(values(scene.mapper->GetPreprocessedSurface()->GetCellData()->GetArray("vesselIds")),
            (std::vector<unsigned int>{ 2 }));
  scene.mapper->UseTubedSurfaceOn();
  ASSERT_TRUE(scene.mapper->PreprocessSurface());
  EXPECT_EQ(values(scene.mapper->GetPreprocessedSurface()->GetCellData()->GetArray("vesselIds")),
            (std::vector<unsigned int>{ 1 }));
}

TEST(SurfaceBasedMapperLabelling, SkeletonSurfaceHasThreeOwnPointsPerTriangleWithItsVesselId)
{
  Scene scene(twoVessels());
  scene.mapper->SetInputSurface(quadsAndTriangle());
  scene.mapper->GenerateSkeleton();
  CapturedOutput output;
  scene.mapper->BuildSkeletonSurface();
  // Preprocessing runs first because there was no preprocessed surface.
  EXPECT_EQ(output.text(),
            "Build skeleton surface called...\nPreprocess surface called...\n...finished!\n...finished!\n");
  vtkPolyData * labelled = scene.mapper->GetLabelledSurface();
  ASSERT_NE(labelled, nullptr);
  EXPECT_EQ(labelled->GetNumberOfPolys(), 5);
  EXPECT_EQ(labelled->GetNumberOfPoints(), 15);
  auto * ids = vtkUnsignedIntArray::SafeDownCast(labelled->GetPointData()->GetArray("vesselIds"));
  ASSERT_NE(ids, nullptr);
  EXPECT_EQ(values(ids), (std::vector<unsigned int>{ 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2 }));
  // Triangle i uses points 3i, 3i+1, 3i+2, at the corners of the preprocessed triangle i.
  vtkPolyData * preprocessed = scene.mapper->GetPreprocessedSurface();
  vtkIdType count = 0;
  const vtkIdType * cell = nullptr;
  vtkIdType triangle = 0;
  for (labelled->GetPolys()->InitTraversal(); labelled->GetPolys()->GetNextCell(count, cell); ++triangle)
  {
    ASSERT_EQ(count, 3);
    vtkIdType sourceCount = 0;
    const vtkIdType * source = nullptr;
    preprocessed->GetCellPoints(triangle, sourceCount, source);
    for (vtkIdType k = 0; k < 3; ++k)
    {
      EXPECT_EQ(cell[k], 3 * triangle + k);
      double a[3], b[3];
      labelled->GetPoint(cell[k], a);
      preprocessed->GetPoint(source[k], b);
      EXPECT_EQ(a[0], b[0]);
      EXPECT_EQ(a[1], b[1]);
    }
  }
  // Smooth shading across a quad's diagonal: both copies of a shared corner carry the same normal, +z or -z.
  vtkDataArray * normals = labelled->GetPointData()->GetNormals();
  ASSERT_NE(normals, nullptr);
  EXPECT_EQ(normals->GetNumberOfTuples(), 15);
  EXPECT_NEAR(std::abs(normals->GetComponent(0, 2)), 1.0, 1e-6);
}

TEST(SurfaceBasedMapperFailures, WithoutSkeletonNothingIsLabelled)
{
  WarningCapture warnings;
  Scene scene(VesselTreeData::New());
  scene.mapper->SetInputSurface(quadsAndTriangle());
  scene.mapper->GenerateSkeleton();
  warnings.clear();
  CapturedOutput output;
  scene.mapper->BuildSkeletonSurface();
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "): Skeleton not available or empty...",
                                       "): couldn't preprocess surface!",
                                       "): preprocessed surface is NULL" }));
  EXPECT_EQ(output.text(), "Build skeleton surface called...\nPreprocess surface called...\n");
  EXPECT_EQ(scene.mapper->GetPreprocessedSurface(), nullptr);
  EXPECT_EQ(scene.mapper->GetLabelledSurface(), nullptr);
}

TEST(SurfaceBasedMapperFailures, WithoutInputSurfaceAndAFailedStepKeepsThePreviousSurfaces)
{
  WarningCapture warnings;
  Scene scene(twoVessels());
  scene.mapper->GenerateSkeleton();
  CapturedOutput output;
  EXPECT_FALSE(scene.mapper->PreprocessSurface());
  EXPECT_EQ(warnings.messages(), (std::vector<std::string>{ "): no input surface available" }));

  scene.mapper->SetInputSurface(quadsAndTriangle());
  scene.mapper->BuildSkeletonSurface();
  vtkPolyData * preprocessed = scene.mapper->GetPreprocessedSurface();
  vtkPolyData * labelled = scene.mapper->GetLabelledSurface();
  ASSERT_NE(labelled, nullptr);
  warnings.clear();
  // The tree loses its vessels: preprocessing fails and what was built stays.
  scene.node->SetData(VesselTreeData::New());
  scene.mapper->GenerateSkeleton();
  EXPECT_FALSE(scene.mapper->PreprocessSurface());
  EXPECT_EQ(scene.mapper->GetPreprocessedSurface(), preprocessed);
  EXPECT_EQ(scene.mapper->GetLabelledSurface(), labelled);
  EXPECT_EQ(warnings.messages(),
            (std::vector<std::string>{ "): Output of vessel tree smoother is NULL!",
                                       "): Skeleton not available or empty..." }));
}

TEST(SurfaceBasedMapperDisplay, LabelledSurfaceReplacesTheTubesAndIsColouredByVesselIds)
{
  CapturedOutput output;
  Scene scene(twoVessels());
  scene.mapper->SetInputSurface(quadsAndTriangle());
  scene.mapper->GenerateData();
  vtkPolyDataMapper * drawn = scene.mapper->GetPolyDataMapper();
  EXPECT_EQ(drawn->GetInput(), scene.mapper->GetLabelledSurface());
  EXPECT_TRUE(scene.mapper->IsLabelledSurfaceRendered());
  EXPECT_STREQ(drawn->GetArrayName(), "vesselIds");
  EXPECT_EQ(scene.mapper->GetColorUpdateCount(), 1u);

  scene.node->SetBoolProperty("Render skeleton", true);
  scene.mapper->GenerateDataForRenderer(nullptr);
  EXPECT_EQ(drawn->GetInput(), scene.mapper->GetSkeleton());
  scene.node->SetBoolProperty("Render skeleton", false);
  scene.node->SetBoolProperty("Render vessel surface", false);
  scene.mapper->GenerateDataForRenderer(nullptr);
  EXPECT_EQ(drawn->GetInput(), scene.mapper->GetSurface());
  EXPECT_NE(scene.mapper->GetSurface(), scene.mapper->GetLabelledSurface());
  scene.node->SetBoolProperty("Render vessel surface", true);
  scene.mapper->GenerateDataForRenderer(nullptr);
  EXPECT_EQ(drawn->GetInput(), scene.mapper->GetLabelledSurface());

  // Another surface after the first drawing is labelled at the next render, without a tree change.
  scene.mapper->SetInputSurface(surfaceOf({ { { 1, 8, 0 }, { 2, 8, 0 }, { 1, 9, 0 } } }));
  scene.mapper->GenerateDataForRenderer(nullptr);
  EXPECT_EQ(drawn->GetInput(), scene.mapper->GetLabelledSurface());
  EXPECT_EQ(values(scene.mapper->GetLabelledSurface()->GetPointData()->GetArray("vesselIds")),
            (std::vector<unsigned int>{ 2, 2, 2 }));
  EXPECT_EQ(scene.mapper->GetGeometryBuildCount(), 1u);
}

TEST(SurfaceBasedMapperDisplay, WithoutInputSurfaceItDrawsTubesLikeTheTubeMapper)
{
  Scene scene(twoVessels());
  scene.mapper->GenerateData();
  EXPECT_EQ(scene.mapper->GetPolyDataMapper()->GetInput(), scene.mapper->GetSurface());
  EXPECT_FALSE(scene.mapper->IsLabelledSurfaceRendered());
  EXPECT_EQ(scene.mapper->GetLabelledSurface(), nullptr);
  EXPECT_STREQ(scene.mapper->GetNameOfClass(), "SurfaceBasedVesselTreeMapper3D");
}
