#include "lumoImageToVesselTreeFilter.h"
#include "lumoVesselTreeSource.h"
#include "lumoVesselTreeToVesselTreeFilter.h"

#include "VesselTestTree.h"

#include <gtest/gtest.h>

using namespace lumo;

TEST(VesselTreeSource, StartsWithOneEmptyVesselTreeOutput)
{
  auto source = VesselTreeSource::New();
  EXPECT_STREQ(source->GetNameOfClass(), "VesselTreeSource");
  EXPECT_EQ(source->GetNumberOfIndexedOutputs(), 1u);
  VesselTreeData * output = source->GetOutput();
  ASSERT_NE(output, nullptr);
  EXPECT_FALSE(output->IsInitialized());
  EXPECT_TRUE(output->GetVesselTreeData(0).isNull());
  EXPECT_NE(dynamic_cast<VesselTreeData *>(source->MakeOutput(7).GetPointer()), nullptr);

  source->ResizeOutputs(3);
  EXPECT_EQ(source->GetNumberOfIndexedOutputs(), 3u);
  EXPECT_NE(source->GetOutput(2), nullptr);
  EXPECT_NE(source->GetOutput(2), source->GetOutput(0));
}

TEST(VesselTreeSource, GraftOutputHandsTheContentToOutputZero)
{
  auto source = VesselTreeSource::New();
  auto result = VesselTreeData::New();
  result->initialize(ArVesselTree(vessel_test::makeThreeLevelTree().release()));
  VesselTreeData * output = source->GetOutput();
  source->GraftOutput(result);
  EXPECT_EQ(source->GetOutput(), output);
  EXPECT_EQ(output->GetVesselTreeData(0), result->GetVesselTreeData(0));
  EXPECT_EQ(output->GetMaxVesselId(0), 6);

  auto replacement = VesselTreeData::New();
  source->SetOutput(replacement);
  EXPECT_EQ(source->GetOutput(), replacement.GetPointer());
}

TEST(VesselTreeToVesselTreeFilter, SetInputGrowsTheInputs)
{
  auto filter = VesselTreeToVesselTreeFilter::New();
  EXPECT_STREQ(filter->GetNameOfClass(), "VesselTreeToVesselTreeFilter");
  EXPECT_EQ(filter->GetInput(), nullptr);
  auto data = VesselTreeData::New();
  filter->SetInput(3, data);
  EXPECT_EQ(filter->GetNumberOfIndexedInputs(), 4u);
  EXPECT_EQ(filter->GetInput(0), nullptr);
  EXPECT_EQ(filter->GetInput(1), nullptr);
  EXPECT_EQ(filter->GetInput(2), nullptr);
  EXPECT_EQ(filter->GetInput(3), data.GetPointer());
  EXPECT_EQ(filter->GetInput(4), nullptr);
  filter->SetInput(data);
  EXPECT_EQ(filter->GetInput(), data.GetPointer());
}

TEST(ImageToVesselTreeFilter, RequiresTheImageInput)
{
  auto filter = ImageToVesselTreeFilter::New();
  EXPECT_STREQ(filter->GetNameOfClass(), "ImageToVesselTreeFilter");
  EXPECT_THROW(filter->Update(), itk::ExceptionObject); // the image input is required
  EXPECT_EQ(filter->GetInput(), nullptr);
  auto image = Image::New();
  filter->SetInput(image);
  EXPECT_EQ(filter->GetInput(), image.GetPointer());
}
