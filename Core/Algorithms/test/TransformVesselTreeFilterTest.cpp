#include "lumoTransformVesselTreeFilter.h"
#include "lumoVesselTreeOperation.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <vtkMatrix4x4.h>
#include <vtkTransform.h>

using namespace lumo;
using namespace vessel_test;

namespace
{
/** A two-vessel tree with points; root id 1, child id 2. */
VesselTreeData::Pointer
makeData()
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  tree->getRoot()->appendPoint({ 1, 2, 3, 4 });
  tree->getRoot()->appendPoint({ -1.5f, 0.25f, 8, 3 });
  addChild(tree->getRootNode(), 2)->getData()->appendPoint({ 10, 20, 30, 2 });
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

std::vector<VesselPoint>
pointsOf(const VesselTreeData & data)
{
  std::vector<VesselPoint> points;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(data.GetVesselTreeData(0)->newPreorderIterator());
  while (it->hasNext())
  {
    for (const VesselPoint & p : it->next()->getPoints())
    {
      points.push_back(p);
    }
  }
  return points;
}
} // namespace

TEST(TransformVesselTreeFilter, IdentityCopiesTheTreePointForPoint)
{
  auto input = makeData();
  input->SetActivationMode(VesselTreeData::SubtreeActivation, 0);
  VesselTreeOperation select(705, 1);
  input->ExecuteOperation(&select);

  auto filter = TransformVesselTreeFilter::New();
  EXPECT_STREQ(filter->GetNameOfClass(), "TransformVesselTreeFilter");
  EXPECT_FALSE(filter->GetInPlace());
  filter->SetInput(input);
  filter->Update();
  VesselTreeData * output = filter->GetOutput();
  ASSERT_NE(output, input.GetPointer());
  EXPECT_NE(output->GetVesselTreeData(0), input->GetVesselTreeData(0));
  EXPECT_EQ(pointsOf(*output), pointsOf(*input));
  EXPECT_NE(output->GetVesselById(1, 0), input->GetVesselById(1, 0));
  // The copy takes over the activation mode and the picked vessel.
  EXPECT_EQ(output->GetActivationMode(0), VesselTreeData::SubtreeActivation);
  EXPECT_EQ(output->GetPickedVesselId(0), 1);
  EXPECT_TRUE(output->GetVesselById(2, 0)->getProperties().isActive());
}

TEST(TransformVesselTreeFilter, ScalingMovesPointsAndKeepsDiameters)
{
  auto input = makeData();
  auto scale = vtkSmartPointer<vtkTransform>::New();
  scale->Scale(10, 10, 10);
  auto filter = TransformVesselTreeFilter::New();
  filter->SetInput(input);
  filter->SetVtkTransform(scale);
  filter->Update();
  const std::vector<VesselPoint> points = pointsOf(*filter->GetOutput());
  ASSERT_EQ(points.size(), 3u);
  EXPECT_EQ(points[0], (VesselPoint{ 10, 20, 30, 4 }));
  EXPECT_EQ(points[1], (VesselPoint{ -15, 2.5f, 80, 3 }));
  EXPECT_EQ(points[2], (VesselPoint{ 100, 200, 300, 2 }));
  // The input is untouched.
  EXPECT_EQ(pointsOf(*input)[0], (VesselPoint{ 1, 2, 3, 4 }));
}

TEST(TransformVesselTreeFilter, InPlaceTheInputObjectBecomesTheOutput)
{
  auto input = makeData();
  const ArVesselTree tree = input->GetVesselTreeData(0);
  auto filter = TransformVesselTreeFilter::New();
  filter->InPlaceOn();
  filter->SetInput(input);
  filter->SetTranslation(1, 1, 1);
  filter->SetTranslation(0, 0, 2);
  float translation[3];
  filter->GetTranslation(translation);
  EXPECT_EQ(translation[0], 1.0f);
  EXPECT_EQ(translation[2], 3.0f);
  lumotest::WarningCapture capture;
  filter->Update();
  ASSERT_EQ(filter->GetOutput(), input.GetPointer());
  EXPECT_EQ(input->GetVesselTreeData(0), tree);
  EXPECT_EQ(pointsOf(*input)[0], (VesselPoint{ 2, 3, 6, 4 }));
  // Bounds follow the moved points.
  EXPECT_DOUBLE_EQ(input->GetUpdatedGeometry()->GetBounds()[5], 33.0);

  // A pick on the input is the output's.
  VesselTreeOperation select(705, 2);
  input->ExecuteOperation(&select);
  EXPECT_EQ(filter->GetOutput()->GetPickedVesselId(0), 2);

  // Updating again moves nothing twice: the object does not feed the filter that now produces it.
  filter->GetOutput()->Update();
  filter->Update();
  EXPECT_EQ(pointsOf(*input)[0], (VesselPoint{ 2, 3, 6, 4 }));
  EXPECT_TRUE(capture.texts().empty());
}

TEST(VesselTreeDataGraft, AGraftOrCopyKeepsBoundsWithTheTreeAndWarnsNothing)
{
  auto original = makeData();
  lumotest::WarningCapture capture;
  auto graft = VesselTreeData::New();
  graft->Graft(original);
  auto copy = original->Clone();
  for (VesselTreeData * data : { graft.GetPointer(), copy.GetPointer() })
  {
    data->GetGeometry()->UpdateBounds();
    const auto bounds = data->GetGeometry()->GetBounds();
    EXPECT_DOUBLE_EQ(bounds[0], -1.5);
    EXPECT_DOUBLE_EQ(bounds[5], 30.0);
  }
  // The geometry's copy holds the tree, so a change of the points reaches the copy's bounds too.
  original->GetVesselTreeData(0)->getRoot()->setPoint(0, { -7, 2, 3, 4 });
  graft->GetGeometry()->UpdateBounds();
  EXPECT_DOUBLE_EQ(graft->GetGeometry()->GetBounds()[0], -7.0);
  EXPECT_TRUE(capture.texts().empty()) << capture.texts()[0];
}

TEST(TransformVesselTreeFilter, DeductingTheSpacingLeavesIndexToWorld)
{
  auto filter = TransformVesselTreeFilter::New();
  auto scale = vtkSmartPointer<vtkTransform>::New();
  scale->Scale(2, 2, 2);
  filter->SetVtkTransform(scale);
  itk::Vector<float, 3> spacing;
  spacing.Fill(2.0f);
  filter->DeductSpacingFromTransform(spacing);
  vtkMatrix4x4 * m = filter->GetTransform()->GetMatrix();
  for (int r = 0; r < 4; ++r)
  {
    for (int c = 0; c < 4; ++c)
    {
      EXPECT_DOUBLE_EQ(m->GetElement(r, c), r == c ? 1.0 : 0.0) << r << "," << c;
    }
  }

  // An image geometry: spacing (0.5, 2, 4), origin (10, 20, 30); indices map to origin + spacing * index.
  auto geometry = vtkSmartPointer<vtkTransform>::New();
  geometry->Translate(10, 20, 30);
  geometry->Scale(0.5, 2, 4);
  auto input = makeData();
  auto mapping = TransformVesselTreeFilter::New();
  mapping->SetInput(input);
  mapping->SetVtkTransform(geometry);
  itk::Vector<float, 3> imageSpacing;
  imageSpacing[0] = 0.5f;
  imageSpacing[1] = 2.0f;
  imageSpacing[2] = 4.0f;
  mapping->DeductSpacingFromTransform(imageSpacing);
  mapping->Update();
  EXPECT_EQ(pointsOf(*mapping->GetOutput())[2], (VesselPoint{ 20, 40, 60, 2 }));
}

TEST(TransformVesselTreeFilter, ANullTransformOnlyWarns)
{
  lumotest::WarningCapture capture;
  auto filter = TransformVesselTreeFilter::New();
  filter->SetTranslation(5, 0, 0);
  const auto time = filter->GetMTime();
  filter->SetVtkTransform(nullptr);
  EXPECT_EQ(filter->GetMTime(), time);
  float translation[3];
  filter->GetTranslation(translation);
  EXPECT_EQ(translation[0], 5.0f);
  ASSERT_EQ(capture.texts().size(), 1u);
  EXPECT_NE(capture.texts()[0].find("): Transform is NULL!"), std::string::npos);

  filter->InPlaceOff();
  EXPECT_EQ(filter->GetMTime(), time);
}
