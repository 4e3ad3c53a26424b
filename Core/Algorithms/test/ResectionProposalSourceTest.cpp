#include "lumoSupplyAreaBasedRPG.h"

#include <gtest/gtest.h>

using namespace lumo;

namespace
{
/** The bases make no proposal themselves; this one only exposes them. */
class PlainGenerator : public SupplyAreaBasedRPG
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PlainGenerator);

  using Self = PlainGenerator;
  using Superclass = SupplyAreaBasedRPG;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(PlainGenerator, SupplyAreaBasedRPG);

  unsigned int
  RequiredOutputs() const
  {
    return static_cast<unsigned int>(this->GetNumberOfRequiredOutputs());
  }

protected:
  PlainGenerator() = default;
  ~PlainGenerator() override = default;
};

Image::Pointer
makeImage(unsigned int size)
{
  auto image = Image::New();
  image->Initialize(itk::IOComponentEnum::UCHAR, { size, size, size });
  return image;
}
} // namespace

TEST(ResectionProposalSource, OutputsAreTheImageAndTheSurfaces)
{
  auto generator = PlainGenerator::New();
  EXPECT_EQ(generator->RequiredOutputs(), 2u);
  ASSERT_EQ(generator->GetNumberOfIndexedOutputs(), 2u);
  EXPECT_EQ(generator->GetNumberOfResectionSurfaces(), 1u);
  ASSERT_NE(generator->GetResectionImage(), nullptr);
  ASSERT_NE(generator->GetResectionSurface(0), nullptr);
  EXPECT_EQ(generator->GetResectionSurface(0), generator->GetOutputData(1));
  EXPECT_EQ(generator->GetResectionImage(), generator->GetOutputData(0));
  EXPECT_EQ(generator->GetResectionSurface(1), nullptr);

  // Surfaces grow with the outputs; surface i is output i + 1.
  generator->ResizeOutputs(4);
  EXPECT_EQ(generator->GetNumberOfResectionSurfaces(), 3u);
  EXPECT_EQ(generator->GetResectionSurface(2), generator->GetOutputData(3));
  EXPECT_STREQ(generator->GetResectionSurface(2)->GetNameOfClass(), "Surface");

  itk::DataObject::Pointer first = generator->MakeOutput(0);
  itk::DataObject::Pointer other = generator->MakeOutput(5);
  EXPECT_STREQ(first->GetNameOfClass(), "Image");
  EXPECT_STREQ(other->GetNameOfClass(), "Surface");
  EXPECT_NE(first.GetPointer(), generator->GetOutputData(0));

  EXPECT_STREQ(generator->Superclass::GetNameOfClass(), "SupplyAreaBasedRPG");
  EXPECT_STREQ(generator->ResectionProposalGeneratorBase::GetNameOfClass(), "ResectionProposalGeneratorBase");
  EXPECT_STREQ(generator->ResectionProposalSource::GetNameOfClass(), "ResectionProposalSource");
}

TEST(ResectionProposalSource, GraftOutputSharesTheVoxels)
{
  auto generator = PlainGenerator::New();
  Image::Pointer image = makeImage(3);
  generator->GraftOutput(image);
  Image * output = generator->GetResectionImage();
  EXPECT_NE(output, image.GetPointer());
  EXPECT_EQ(output->GetDimension(0), 3u);
  EXPECT_EQ(output->GetItkImageBase(), image->GetItkImageBase());
  generator->GraftOutput(nullptr); // a null graft is ignored
  EXPECT_EQ(output->GetItkImageBase(), image->GetItkImageBase());
}

TEST(ResectionProposalSource, InputsByIndex)
{
  auto generator = PlainGenerator::New();
  EXPECT_EQ(generator->GetInput(), nullptr);
  EXPECT_EQ(generator->GetInput(2), nullptr);

  Image::Pointer organ = makeImage(2);
  Image::Pointer margin = makeImage(2);
  auto tree = VesselTreeData::New();
  generator->SetOrganSegmentation(organ);
  generator->SetSafetyMargin(margin);
  generator->SetVesselTree(tree);
  EXPECT_EQ(generator->GetInput(), organ.GetPointer());
  EXPECT_EQ(generator->GetOrganSegmentation(), organ.GetPointer());
  EXPECT_EQ(generator->GetInput(1), margin.GetPointer());
  EXPECT_EQ(generator->GetSafetyMargin(), margin.GetPointer());
  EXPECT_EQ(generator->GetInput(2), tree.GetPointer());
  EXPECT_EQ(generator->GetVesselTree(), tree.GetPointer());

  generator->SetInput(1, organ);
  EXPECT_EQ(generator->GetSafetyMargin(), organ.GetPointer());
}

TEST(ResectionProposalSource, TheColourTableCountsInTheModifiedTime)
{
  auto generator = PlainGenerator::New();
  auto table = VesselTreeLookupTable::New();
  const int references = table->GetReferenceCount();

  itk::ModifiedTimeType time = generator->GetMTime();
  generator->SetVesselTreeLookupTable(table);
  EXPECT_GT(generator->GetMTime(), time);
  EXPECT_EQ(generator->GetVesselTreeLookupTable(), table.GetPointer());
  EXPECT_EQ(table->GetReferenceCount(), references + 1);

  // The same table again: not modified.
  time = generator->GetMTime();
  generator->SetVesselTreeLookupTable(table);
  EXPECT_EQ(generator->GetMTime(), time);

  // Editing the held table's colours makes the generator out of date.
  VesselTreeLookupTable::ColorVectorType colors = table->GetColorByResectionStatus();
  colors[3].Set(1.0, 0.0, 0.0, 1.0);
  table->SetColorByResectionStatus(colors);
  EXPECT_GT(generator->GetMTime(), time);

  // Another table replaces it and releases the old one.
  time = generator->GetMTime();
  generator->SetVesselTreeLookupTable(VesselTreeLookupTable::New());
  EXPECT_GT(generator->GetMTime(), time);
  EXPECT_EQ(table->GetReferenceCount(), references);
  generator->SetVesselTreeLookupTable(nullptr);
  EXPECT_EQ(generator->GetVesselTreeLookupTable(), nullptr);
}
