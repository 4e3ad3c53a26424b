#include "lumoLabelStatistics.h"
#include "lumoVascularSupplyAreasCalculator.h"

#include "VesselTestTree.h"
#include "LumoTestUtilities.h"
#include "WarningCapture.h"

#include <gtest/gtest.h>

#include <itkMacro.h>

#include <cmath>
#include <functional>
#include <stdexcept>

using namespace lumo;
using vessel_test::makeStar;
using vessel_test::VesselRecipe;
using Calculator = VascularSupplyAreasCalculator;
using Labels = std::vector<unsigned int>;

namespace
{
/** A root with leaf children, as vessel tree data. */
VesselTreeData::Pointer
makeTree(const std::vector<VesselRecipe> & vessels)
{
  auto data = VesselTreeData::New();
  data->initialize(makeStar(vessels));
  return data;
}

Image::Pointer
makeOrgan(unsigned int sx, unsigned int sy, unsigned int sz, const Vector3D & spacing, const Point3D & origin)
{
  auto image = Image::New();
  Geometry3D::DirectionType direction;
  direction.SetIdentity();
  image->Initialize(itk::IOComponentEnum::UCHAR, { { sx, sy, sz } }, spacing, origin, direction);
  return image;
}

Labels
labelsOf(Image * image)
{
  const auto * data = static_cast<const unsigned char *>(image->GetData());
  return Labels(data, data + image->GetNumberOfVoxels());
}

/** Along the x axis: portal S_II keep at 0, portal undefined at 3, artery at risk at 6, hepatic HS_LS resect at 8,
 *  hepatic undefined at 11 (pre-order in that order, the root first). */
VesselTreeData::Pointer
rowTree()
{
  return makeTree({ { 1, PortalVein, S_II, NotToBeResected, { { 0, 0, 0, 1 } } },
                    { 2, PortalVein, S_Undefined, UndefinedResectionStatus, { { 3, 0, 0, 1 } } },
                    { 5, Artery, S_Undefined, AreaAtRisk, { { 6, 0, 0, 1 } } },
                    { 3, HepaticVein, HS_LS, ToBeResected, { { 8, 0, 0, 1 } } },
                    { 4, HepaticVein, S_Undefined, UndefinedResectionStatus, { { 11, 0, 0, 1 } } } });
}

/** Twelve organ voxels along x, voxel 5 background. */
Image::Pointer
rowOrgan()
{
  Vector3D spacing;
  spacing.Fill(1.0);
  Point3D origin;
  origin.Fill(0.0);
  Image::Pointer organ = makeOrgan(12, 1, 1, spacing, origin);
  auto * data = static_cast<unsigned char *>(organ->GetData());
  std::fill_n(data, 12, 1);
  data[5] = 0;
  data[9] = 3;
  return organ;
}

Labels
run(Calculator::CalculationMode mode, const Image * organ, const VesselTreeData * tree, unsigned int units = 1)
{
  auto calculator = Calculator::New();
  calculator->SetOrganSegmentation(organ);
  calculator->SetVesselTree(tree);
  calculator->SetCalculationMode(mode);
  calculator->SetNumberOfWorkUnits(units);
  calculator->Update();
  return labelsOf(calculator->GetOutput());
}

itk::ExceptionObject
failureOf(const std::function<void()> & action)
{
  try
  {
    action();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e;
  }
  ADD_FAILURE() << "nothing thrown";
  return itk::ExceptionObject();
}
} // namespace

TEST(VascularSupplyAreasCalculator, EachModeOnARowOfVoxels)
{
  const Image::Pointer organ = rowOrgan();
  const VesselTreeData::Pointer tree = rowTree();
  // Voxel 7 is as far from the artery (6) as from the hepatic vein (8): the artery was sampled first.
  // S_II is 3, S_Undefined 1, HS_LS 13.
  EXPECT_EQ(run(Calculator::PortalDefinedSegments, organ, tree), (Labels{ 3, 3, 3, 3, 3, 0, 3, 3, 3, 3, 3, 3 }));
  EXPECT_EQ(run(Calculator::PortalSegments, organ, tree), (Labels{ 3, 3, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1 }));
  EXPECT_EQ(run(Calculator::HepaticDefinedSegments, organ, tree),
            (Labels{ 13, 13, 13, 13, 13, 0, 13, 13, 13, 13, 13, 13 }));
  EXPECT_EQ(run(Calculator::HepaticSegments, organ, tree), (Labels{ 13, 13, 13, 13, 13, 0, 13, 13, 13, 13, 1, 1 }));
  EXPECT_EQ(run(Calculator::AllVesselsSegments, organ, tree), (Labels{ 3, 3, 1, 1, 1, 0, 1, 1, 13, 13, 1, 1 }));
  EXPECT_EQ(run(Calculator::AllVesselsTypes, organ, tree), (Labels{ 3, 3, 3, 3, 3, 0, 4, 4, 2, 2, 2, 2 }));
  EXPECT_EQ(run(Calculator::PortalResectionStatus, organ, tree), (Labels{ 2, 2, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1 }));
  EXPECT_EQ(run(Calculator::PortalDefinedResectionStatus, organ, tree), (Labels{ 2, 2, 2, 2, 2, 0, 2, 2, 2, 2, 2, 2 }));
  EXPECT_EQ(run(Calculator::HepaticResectionStatus, organ, tree), (Labels{ 3, 3, 3, 3, 3, 0, 3, 3, 3, 3, 1, 1 }));
  EXPECT_EQ(run(Calculator::HepaticDefinedResectionStatus, organ, tree),
            (Labels{ 3, 3, 3, 3, 3, 0, 3, 3, 3, 3, 3, 3 }));
}

TEST(VascularSupplyAreasCalculator, OutputIsAnUnsigned8BitImageWithTheOrgansGeometry)
{
  Vector3D spacing = lumotest::V(2.0, 2.0, 2.0);
  Point3D origin = lumotest::P(100.0, 0.0, 0.0);
  Image::Pointer organ = makeOrgan(4, 1, 1, spacing, origin);
  std::fill_n(static_cast<unsigned char *>(organ->GetData()), 4, 1);
  // Voxel 2 lies at world (104, 0, 0), on the S_III sample; voxel 0 (100) is nearer to the S_II one at 99.
  const VesselTreeData::Pointer tree =
    makeTree({ { 1, PortalVein, S_III, 1, { { 104, 0, 0, 1 } } }, { 2, PortalVein, S_II, 1, { { 99, 0, 0, 1 } } } });
  auto calculator = Calculator::New();
  EXPECT_STREQ(calculator->GetNameOfClass(), "VascularSupplyAreasCalculator");
  EXPECT_EQ(calculator->GetCalculationMode(), Calculator::PortalDefinedSegments);
  EXPECT_EQ(Calculator::GetOutputType(), 4);
  EXPECT_EQ(Calculator::GetOutputBpe(), 8);
  calculator->SetInput(organ);
  calculator->SetInput(1, tree);
  calculator->Update();
  Image * output = calculator->GetOutput();
  EXPECT_EQ(labelsOf(output), (Labels{ S_II, S_III, S_III, S_III }));
  EXPECT_EQ(output->GetPixelType(), itk::IOComponentEnum::UCHAR);
  EXPECT_EQ(output->GetDimension(), 3u);
  EXPECT_EQ(output->GetSize(), organ->GetSize());
  EXPECT_EQ(output->GetSpacing(), spacing);
  EXPECT_EQ(output->GetOrigin(), origin);
  EXPECT_EQ(output->GetDirection(), organ->GetDirection());
}

TEST(VascularSupplyAreasCalculator, RotatedOrganFrame)
{
  // Axes swapped: index x runs along world y. Spacing 2 along index x, origin (0, 10, 0).
  Vector3D spacing = lumotest::V(2.0, 1.0, 1.0);
  Point3D origin = lumotest::P(0.0, 10.0, 0.0);
  Image::Pointer organ = makeOrgan(5, 1, 1, spacing, origin);
  Geometry3D::DirectionType direction;
  direction.Fill(0.0);
  direction[1][0] = 1.0;
  direction[0][1] = -1.0;
  direction[2][2] = 1.0;
  organ->SetDirection(direction);
  std::fill_n(static_cast<unsigned char *>(organ->GetData()), 5, 1);
  // Voxel i lies at world (0, 10 + 2 i, 0).
  const VesselTreeData::Pointer tree =
    makeTree({ { 1, PortalVein, S_V, 1, { { 0, 10, 0, 1 } } }, { 2, PortalVein, S_VI, 1, { { 0, 18, 0, 1 } } } });
  EXPECT_EQ(run(Calculator::PortalSegments, organ, tree), (Labels{ S_V, S_V, S_V, S_VI, S_VI }));
}

TEST(VascularSupplyAreasCalculator, ModesNeedTheirVessels)
{
  const Image::Pointer organ = rowOrgan();
  const VesselTreeData::Pointer tree = makeTree(
    { { 1, PortalVein, S_Undefined, 1, { { 0, 0, 0, 1 } } }, { 2, PortalVein, S_Undefined, 1, { { 6, 0, 0, 1 } } } });
  try
  {
    run(Calculator::PortalDefinedSegments, organ, tree);
    ADD_FAILURE() << "nothing thrown";
  }
  catch (const std::runtime_error & e)
  {
    EXPECT_STREQ(e.what(), "Error in KDTreeNextVesselEstimator::setVesselElementList: theList->size() == 0!");
  }
  EXPECT_EQ(run(Calculator::PortalSegments, organ, tree), (Labels{ 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1 }));
}

TEST(VascularSupplyAreasCalculator, ExceptionClassesAndTexts)
{
  const char * location = "void lumo::VascularSupplyAreasCalculator::GenerateData()";
  const VesselTreeData::Pointer tree = rowTree();
  auto calculator = Calculator::New();
  calculator->SetVesselTree(tree);
  itk::ExceptionObject noOrgan = failureOf([&] { calculator->Update(); });
  EXPECT_STREQ(noOrgan.GetDescription(), "No valid organ segmentation found");
  EXPECT_STREQ(noOrgan.GetLocation(), location);
  EXPECT_EQ(std::string(noOrgan.GetFile()), "Core/Algorithms/lumoVascularSupplyAreasCalculator.cpp");
  EXPECT_STREQ(noOrgan.GetNameOfClass(), "ExceptionObject");

  auto flat = Image::New();
  flat->Initialize(itk::IOComponentEnum::UCHAR, { { 4, 4, 1 } }, 2);
  calculator->SetOrganSegmentation(flat);
  EXPECT_STREQ(failureOf([&] { calculator->Update(); }).GetDescription(), "Organ segmentation has wrong dimension");

  for (auto type : { itk::IOComponentEnum::FLOAT, itk::IOComponentEnum::USHORT, itk::IOComponentEnum::CHAR })
  {
    auto other = Image::New();
    other->Initialize(type, { { 4, 4, 4 } });
    calculator->SetOrganSegmentation(other);
    EXPECT_STREQ(failureOf([&] { calculator->Update(); }).GetDescription(),
                 "Organ segmentation has wrong type ( should be lumoIpUInt1_t)");
  }

  auto withoutTree = Calculator::New();
  withoutTree->SetOrganSegmentation(rowOrgan());
  try
  {
    withoutTree->Update();
    ADD_FAILURE() << "nothing thrown";
  }
  catch (const itk::InvalidArgumentError & e)
  {
    EXPECT_STREQ(e.GetNameOfClass(), "InvalidArgumentError");
    EXPECT_STREQ(e.GetDescription(), "VascularSupplyAreasCalculator: No VesselTreeData found");
    EXPECT_STREQ(e.GetLocation(), location);
  }

  withoutTree->SetVesselTree(VesselTreeData::New());
  try
  {
    withoutTree->Update();
    ADD_FAILURE() << "nothing thrown";
  }
  catch (const itk::InvalidArgumentError & e)
  {
    EXPECT_STREQ(e.GetDescription(),
                 "VascularSupplyAreasCalculator: No legacy vessel tree found inside VesselTreeData");
  }
}

TEST(VascularSupplyAreasCalculator, UnknownModeOnlyWarns)
{
  lumotest::WarningCapture warnings;
  auto calculator = Calculator::New();
  calculator->SetOrganSegmentation(rowOrgan());
  calculator->SetVesselTree(rowTree());
  calculator->SetCalculationMode(static_cast<Calculator::CalculationMode>(10));
  calculator->Update();
  ASSERT_EQ(warnings.messages(), std::vector<std::string>{ "unknown calculation mode encountered!" });
  const std::string & text = warnings.texts().front();
  EXPECT_EQ(text.rfind("WARNING: In Core/Algorithms/lumoVascularSupplyAreasCalculator.cpp, line ", 0), 0u) << text;
  EXPECT_NE(text.find("\nVascularSupplyAreasCalculator (0x"), std::string::npos) << text;
  EXPECT_EQ(calculator->GetOutput()->IsInitialized(), false);
}

TEST(VascularSupplyAreasCalculator, SameLabelsOnOneAndOnSeveralWorkUnits)
{
  // An ellipsoid with a branching tree whose points sit on voxel positions (ties everywhere).
  Vector3D spacing = lumotest::V(0.75, 0.75, 1.5);
  Point3D origin = lumotest::P(-12.0, 30.0, 7.0);
  Image::Pointer organ = makeOrgan(48, 40, 24, spacing, origin);
  auto * data = static_cast<unsigned char *>(organ->GetData());
  for (unsigned int z = 0; z < 24; ++z)
  {
    for (unsigned int y = 0; y < 40; ++y)
    {
      for (unsigned int x = 0; x < 48; ++x)
      {
        const double a = (x - 23.5) / 23.5, b = (y - 19.5) / 19.5, c = (z - 11.5) / 11.5;
        data[(z * 40 + y) * 48 + x] = a * a + b * b + c * c <= 1.0 ? 1 : 0;
      }
    }
  }
  std::vector<VesselRecipe> vessels;
  for (int v = 0; v < 30; ++v)
  {
    VesselRecipe recipe{ v + 1, PortalVein, 2 + v % 9, 1, {} };
    for (int p = 0; p < 12; ++p)
    {
      const float ix = static_cast<float>((v * 7 + p) % 48);
      const float iy = static_cast<float>((v * 3 + p * (v % 3)) % 40);
      const float iz = static_cast<float>((v + p / 4) % 24);
      recipe.points.push_back({ static_cast<float>(origin[0] + ix * spacing[0]),
                                static_cast<float>(origin[1] + iy * spacing[1]),
                                static_cast<float>(origin[2] + iz * spacing[2]),
                                1 });
    }
    vessels.push_back(recipe);
  }
  const VesselTreeData::Pointer tree = makeTree(vessels);
  const Labels one = run(Calculator::PortalDefinedSegments, organ, tree, 1);
  EXPECT_EQ(run(Calculator::PortalDefinedSegments, organ, tree, 2), one);
  EXPECT_EQ(run(Calculator::PortalDefinedSegments, organ, tree, 3), one);
  // Every organ voxel got a segment, no background voxel did.
  for (std::size_t i = 0; i < one.size(); ++i)
  {
    ASSERT_EQ(one[i] != 0, data[i] != 0) << i;
  }
}

TEST(LabelStatistics, CountsVolumesAndShares)
{
  Vector3D spacing = lumotest::V(2.0, 2.5, 4.0); // 20 mm^3 per voxel
  Point3D origin;
  origin.Fill(0.0);
  Image::Pointer labels = makeOrgan(4, 2, 1, spacing, origin);
  const unsigned char values[8] = { 0, 7, 7, 3, 3, 3, 0, 7 };
  std::copy_n(values, 8, static_cast<unsigned char *>(labels->GetData()));
  auto statistics = LabelStatistics::New();
  statistics->SetLabelImage(labels);
  statistics->Compute();
  ASSERT_EQ(statistics->GetEntries().size(), 2u);
  const LabelStatistics::Entry three = statistics->GetEntries()[0];
  const LabelStatistics::Entry seven = statistics->GetEntries()[1];
  EXPECT_EQ(three.label, 3u);
  EXPECT_EQ(three.voxels, 3u);
  EXPECT_DOUBLE_EQ(three.millilitres, 0.06);
  EXPECT_DOUBLE_EQ(three.percent, 50.0);
  EXPECT_EQ(seven.voxels, 3u);
  EXPECT_EQ(statistics->GetTotalVoxels(), 6u);
  EXPECT_DOUBLE_EQ(statistics->GetTotalMillilitres(), 0.12);

  // With a mask, unlabelled voxels inside it count as label 0 and the shares are of the mask.
  Image::Pointer mask = makeOrgan(4, 2, 1, spacing, origin);
  const unsigned char inside[8] = { 1, 1, 1, 1, 0, 0, 1, 1 };
  std::copy_n(inside, 8, static_cast<unsigned char *>(mask->GetData()));
  statistics->SetMask(mask);
  statistics->Compute();
  ASSERT_EQ(statistics->GetEntries().size(), 3u);
  EXPECT_EQ(statistics->GetEntries()[0].label, 0u);
  EXPECT_EQ(statistics->GetEntries()[0].voxels, 2u);
  EXPECT_EQ(statistics->GetEntries()[1].voxels, 1u);
  EXPECT_DOUBLE_EQ(statistics->GetEntries()[2].percent, 50.0);
  EXPECT_EQ(statistics->GetTotalVoxels(), 6u);

  auto floats = Image::New();
  floats->Initialize(itk::IOComponentEnum::FLOAT, { { 2, 2, 2 } });
  statistics->SetLabelImage(floats);
  EXPECT_THROW(statistics->Compute(), itk::InvalidArgumentError);
}
