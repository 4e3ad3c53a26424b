#include "lumoSkeletonizationBasedImageToVesselTreeFilter.h"

#include "TubeMask.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <sstream>

using namespace lumo;

namespace
{
Image::Pointer
newImage(itk::IOComponentEnum type, unsigned int x, unsigned int y, unsigned int z, unsigned int dimension = 3)
{
  Image::SizeType size;
  size[0] = x;
  size[1] = y;
  size[2] = z;
  auto image = Image::New();
  image->Initialize(type, size, dimension);
  return image;
}

/** The Y-shaped tube of the extraction tests as an unsigned 8-bit image. */
Image::Pointer
yImage()
{
  auto image = newImage(itk::IOComponentEnum::UCHAR, 60, 40, 21);
  const std::uint32_t size[3] = { 60, 40, 21 };
  drawY(static_cast<unsigned char *>(image->GetData()), size);
  return image;
}

std::vector<ar<Vessel>>
breadthFirst(const VesselTreeData & data)
{
  std::vector<ar<Vessel>> vessels;
  LinkedVesselTree * tree = asLinkedVesselTree(data.GetVesselTreeData(0));
  if (tree == nullptr || tree->getRootNode() == nullptr)
    return vessels;
  std::deque<VesselNode *> queue{ tree->getRootNode() };
  while (!queue.empty())
  {
    vessels.push_back(queue.front()->getData());
    for (VesselNode * child : queue.front()->children())
      queue.push_back(child);
    queue.pop_front();
  }
  return vessels;
}

/** The messages of the filter's own warnings (the data objects may warn about their empty outputs as well). */
std::vector<std::string>
filterMessages(const lumotest::WarningCapture & warnings)
{
  std::vector<std::string> result;
  const std::vector<std::string> messages = warnings.messages();
  for (std::size_t i = 0; i < messages.size(); ++i)
  {
    if (warnings.texts()[i].find("\nSkeletonizationBasedImageToVesselTreeFilter (") != std::string::npos)
      result.push_back(messages[i]);
  }
  return result;
}

bool
hasTree(const VesselTreeData & data)
{
  return !breadthFirst(data).empty();
}
} // namespace

TEST(SkeletonizationBasedImageToVesselTreeFilter, ParametersHaveTheirDefaultsAndMarkTheFilterModified)
{
  auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
  EXPECT_STREQ(filter->GetNameOfClass(), "SkeletonizationBasedImageToVesselTreeFilter");
  EXPECT_EQ(filter->GetStartpoint()[0], 0u);
  EXPECT_EQ(filter->GetStartpoint()[2], 0u);
  EXPECT_EQ(filter->GetSpacing()[0], 1.0f);
  EXPECT_EQ(filter->GetSpacing()[2], 1.0f);
  EXPECT_TRUE(filter->GetEndpointSuppression());
  EXPECT_EQ(filter->GetNumberOfCleanedIterations(), 0u);
  EXPECT_EQ(filter->GetDefaultBloodVesselType(), PortalVein);
  EXPECT_FALSE(filter->GetStartAtThickestEndPoint());

  const auto before = filter->GetMTime();
  filter->SetNumberOfCleanedIterations(0);
  filter->EndpointSuppressionOn();
  EXPECT_EQ(filter->GetMTime(), before);
  filter->EndpointSuppressionOff();
  EXPECT_GT(filter->GetMTime(), before);
  EXPECT_FALSE(filter->GetEndpointSuppression());
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, WithoutInputsNothingHappens)
{
  lumotest::WarningCapture warnings;
  auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
  EXPECT_NO_THROW(filter->Update());
  EXPECT_TRUE(filterMessages(warnings).empty());
  EXPECT_FALSE(hasTree(*filter->GetOutput(0)));
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, NullInputWarnsWithItsIndexAndStopsThere)
{
  lumotest::WarningCapture warnings;
  auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
  filter->SetInput(0, yImage());
  filter->SetInput(1, nullptr);
  filter->SetInput(2, yImage());
  filter->Update();
  EXPECT_EQ(filterMessages(warnings), (std::vector<std::string>{ "1'th input image is null!" }));
  EXPECT_EQ(breadthFirst(*filter->GetOutput(0)).size(), 3u);
  EXPECT_FALSE(hasTree(*filter->GetOutput(2)));
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, SixteenBitAndTwoDimensionalImagesWarnAndStop)
{
  for (auto image : { newImage(itk::IOComponentEnum::USHORT, 10, 10, 10),
                      newImage(itk::IOComponentEnum::UCHAR, 10, 10, 1, 2),
                      newImage(itk::IOComponentEnum::CHAR, 10, 10, 10) })
  {
    lumotest::WarningCapture warnings;
    auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
    filter->SetInput(0, image);
    filter->SetInput(1, yImage());
    filter->Update();
    EXPECT_EQ(filterMessages(warnings), (std::vector<std::string>{ "Strange: pic file has wrong type..." }));
    EXPECT_FALSE(hasTree(*filter->GetOutput(0)));
    EXPECT_FALSE(hasTree(*filter->GetOutput(1)));
  }
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, StartCoordinatesWrapAtSixteenBits)
{
  // A line of voxels along x at y = z = 1: a start at 70000 is the voxel 70000 - 65536 = 4464 inside it, which
  // splits the line into two children of a one-point root.
  auto image = newImage(itk::IOComponentEnum::UCHAR, 4500, 3, 3);
  auto * data = static_cast<unsigned char *>(image->GetData());
  for (std::size_t x = 0; x < 4500; ++x)
    data[(1 * 3 + 1) * 4500 + x] = 1;
  auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
  filter->SetInput(image);
  SkeletonizationBasedImageToVesselTreeFilter::StartpointType start;
  start[0] = 70000;
  start[1] = 1;
  start[2] = 1;
  filter->SetStartpoint(start);
  filter->Update();
  const std::vector<ar<Vessel>> vessels = breadthFirst(*filter->GetOutput());
  ASSERT_EQ(vessels.size(), 3u);
  ASSERT_EQ(vessels[0]->numberOfPoints(), 1u);
  EXPECT_EQ(vessels[0]->getPoint(0).x, 4464.0f);
  EXPECT_EQ(vessels[1]->getPoint(0).x, 4464.0f);
  EXPECT_EQ(vessels[1]->numberOfPoints() + vessels[2]->numberOfPoints(), 4501u);
  EXPECT_EQ(filter->GetNumberOfSkeletonVoxels(), 4500u);
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, TreeComesOutInWorldCoordinatesWithDiametersInMillimetres)
{
  auto image = yImage();
  Vector3D spacing;
  spacing.Fill(0.5);
  image->SetSpacing(spacing);
  Point3D origin;
  origin[0] = 100;
  origin[1] = -20;
  origin[2] = 5;
  image->SetOrigin(origin);
  auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
  filter->SetInput(image);
  SkeletonizationBasedImageToVesselTreeFilter::SpacingType voxelSize;
  voxelSize.Fill(0.5f);
  filter->SetSpacing(voxelSize);
  filter->Update();
  const std::vector<ar<Vessel>> vessels = breadthFirst(*filter->GetOutput());
  ASSERT_EQ(vessels.size(), 3u);
  // The root starts at the stem's end voxel (4, 20, 10): 100 + 2, -20 + 10, 5 + 5 in mm.
  const VesselPoint first = vessels[0]->getPoint(0);
  EXPECT_FLOAT_EQ(first.x, 102.0f);
  EXPECT_FLOAT_EQ(first.y, -10.0f);
  EXPECT_FLOAT_EQ(first.z, 10.0f);
  // Radius 3 voxels is 1.5 mm: diameters near 3 mm along the stem.
  const VesselPoint middle = vessels[0]->getPoint(vessels[0]->numberOfPoints() / 2);
  EXPECT_NEAR(middle.diameter, 3.0f, 0.5f);
  for (std::size_t i = 1; i < vessels.size(); ++i)
    EXPECT_EQ(vessels[i]->getPoint(0), vessels[0]->getPoint(vessels[0]->numberOfPoints() - 1));
  EXPECT_EQ(filter->GetOutput()->GetVesselById(3, 0), vessels[2]);
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, PartsNotConnectedToTheStartAreLeftOutWithAWarning)
{
  auto image = yImage();
  auto * data = static_cast<unsigned char *>(image->GetData());
  data[(2 * 40 + 2) * 60 + 2] = 1; // a speck far from the Y
  lumotest::WarningCapture warnings;
  auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
  filter->SetInput(image);
  filter->StartAtThickestEndPointOn();
  filter->Update();
  EXPECT_EQ(breadthFirst(*filter->GetOutput()).size(), 3u);
  EXPECT_EQ(filter->GetNumberOfLeftOutParts(), 1u);
  EXPECT_EQ(filter->GetNumberOfLeftOutVoxels(), 1u);
  EXPECT_EQ(
    filterMessages(warnings),
    (std::vector<std::string>{ "1 skeleton part(s) with 1 voxel(s) not connected to the start point were left out" }));
}

// Voxel sizes of the thinning: small anisotropic ones on the Y tubes always give a tree (the legacy extraction
// would end the process on a skeleton voxel without a distance), sizes that are not positive are refused.
TEST(SkeletonizationBasedImageToVesselTreeFilter, AnisotropicVoxelSizesAlwaysGiveATree)
{
  const float sizes[] = { 0.25f, 0.5f, 1.0f, 2.0f, 4.0f };
  std::vector<std::string> failures;
  for (const float sx : sizes)
    for (const float sy : sizes)
      for (const float sz : sizes)
      {
        auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
        filter->SetInput(yImage());
        SkeletonizationBasedImageToVesselTreeFilter::SpacingType spacing;
        spacing[0] = sx;
        spacing[1] = sy;
        spacing[2] = sz;
        filter->SetSpacing(spacing);
        filter->StartAtThickestEndPointOn();
        const std::string name = std::to_string(sx) + " x " + std::to_string(sy) + " x " + std::to_string(sz);
        try
        {
          filter->Update();
          if (!hasTree(*filter->GetOutput()))
            failures.push_back(name + ": no tree");
        }
        catch (const itk::ExceptionObject & e)
        {
          failures.push_back(name + ": " + e.GetDescription());
        }
      }
  EXPECT_EQ(failures, std::vector<std::string>{});
}

TEST(SkeletonizationBasedImageToVesselTreeFilter, VoxelSizesThatAreNotPositiveAreRefused)
{
  for (const float bad : { 0.0f, -1.0f, std::numeric_limits<float>::quiet_NaN() })
  {
    auto filter = SkeletonizationBasedImageToVesselTreeFilter::New();
    filter->SetInput(yImage());
    SkeletonizationBasedImageToVesselTreeFilter::SpacingType spacing;
    spacing.Fill(1.0f);
    spacing[1] = bad;
    filter->SetSpacing(spacing);
    std::ostringstream expected;
    expected << "voxel sizes must be positive and finite, not 1 x " << bad << " x 1 mm";
    try
    {
      filter->Update();
      ADD_FAILURE() << "no exception for " << bad;
    }
    catch (const itk::ExceptionObject & e)
    {
      EXPECT_EQ(std::string(e.GetDescription()), expected.str());
    }
    EXPECT_FALSE(hasTree(*filter->GetOutput()));
  }
}
