#include "lumoResectionPlanRPG.h"
#include "lumoSafetyMarginRPG.h"

#include "HandTreeSupport.h"

#include <gtest/gtest.h>

#include <vtkPolyData.h>

#include <itkMacro.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

using namespace lumo;
using namespace hand_tree;

namespace
{
/** Portal tree on the row: root A (id 1) at x = 10 with children B (id 2) at 4 and D (id 4) at 16; C (id 3), child
 *  of B, at 1. Pre-order A, B, C, D. Territories of the organ voxels 0..19 (ties to the earlier sample):
 *  C {0, 1, 2}, B {3..6}, A {7..13}, D {14..19}. */
HandTree
portalTree(std::int32_t statusB = UndefinedResectionStatus,
           std::int32_t statusD = UndefinedResectionStatus,
           float scale = 1.0f,
           float shift = 0.0f)
{
  return makeTree({ { -1, 1, PortalVein, NotToBeResected, { 10 } },
                    { 0, 2, PortalVein, statusB, { 4 } },
                    { 1, 3, PortalVein, UndefinedResectionStatus, { 1 } },
                    { 0, 4, PortalVein, statusD, { 16 } } },
                  scale,
                  shift);
}

/** Hepatic tree on the row: root H1 (id 1) at x = 19 where the veins leave, H2 (id 2) its child at 4, H3 (id 3)
 *  H2's child at 7. Drainage: H2 {0..5}, H3 {6..12}, H1 {13..19}. */
HandTree
hepaticTree(std::int32_t statusH3 = UndefinedResectionStatus)
{
  return makeTree({ { -1, 1, HepaticVein, UndefinedResectionStatus, { 19 } },
                    { 0, 2, HepaticVein, UndefinedResectionStatus, { 4 } },
                    { 1, 3, HepaticVein, statusH3, { 7 } } });
}

/** The row: 21 voxels along x, 0..19 organ, 20 outside it. */
Image::Pointer
rowOrgan(double spacing = 1.0, double origin = 0.0)
{
  Image::Pointer organ = makeImage(21, 1, 1, spacingOf(spacing), pointAt(origin));
  auto * data = static_cast<unsigned char *>(organ->GetData());
  std::fill_n(data, 20, 1);
  return organ;
}

Image::Pointer
rowTumour(const std::vector<unsigned int> & voxels, double spacing = 1.0, double origin = 0.0)
{
  Image::Pointer tumour = makeImage(21, 1, 1, spacingOf(spacing), pointAt(origin));
  auto * data = static_cast<unsigned char *>(tumour->GetData());
  for (unsigned int x : voxels)
  {
    data[x] = 255;
  }
  return tumour;
}

/** The labels as text, one digit per voxel. */
std::string
labelsOf(ResectionProposalSource * generator)
{
  const Image * image = generator->GetResectionImage();
  const auto * data = static_cast<const unsigned char *>(image->GetData());
  std::string text;
  for (std::size_t i = 0; i < image->GetNumberOfVoxels(); ++i)
  {
    text += static_cast<char>('0' + data[i]);
  }
  return text;
}

SafetyMarginRPG::Pointer
marginGenerator(Image * organ, Image * tumour, VesselTreeData * portal, double margin)
{
  auto generator = SafetyMarginRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetTumourMask(tumour);
  generator->SetVesselTree(portal);
  generator->SetMarginWidth(margin);
  generator->SetNumberOfWorkUnits(1);
  return generator;
}

std::string
failureOf(const std::function<void()> & action)
{
  try
  {
    action();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "no failure";
}
} // namespace

// Risk analysis on the row, tumour at voxel 2. Every count below follows from the territories in portalTree().
TEST(SafetyMarginRPG, ZeroMarginResectsTheTumourOnly)
{
  Image::Pointer organ = rowOrgan();
  Image::Pointer tumour = rowTumour({ 2 });
  HandTree portal = portalTree();
  auto generator = marginGenerator(organ, tumour, portal.data, 0.0);
  generator->Update();
  EXPECT_EQ(labelsOf(generator), "223222222222222222220");
  EXPECT_EQ(generator->GetNumberOfVoxels(3), 1u);
  EXPECT_EQ(generator->GetNumberOfVoxels(2), 19u);
  EXPECT_EQ(generator->GetNumberOfVoxels(4), 0u);
  EXPECT_EQ(generator->GetNumberOfTumourVoxels(), 1u);
  EXPECT_DOUBLE_EQ(generator->GetFutureLiverRemnantPercent(), 100.0);
  for (std::size_t i = 0; i < 4; ++i)
  {
    EXPECT_EQ(portal.status(i), NotToBeResected) << i;
  }
}

TEST(SafetyMarginRPG, ZeroMarginCutsAVesselWhosePointLiesInTheTumour)
{
  Image::Pointer organ = rowOrgan();
  Image::Pointer tumour = rowTumour({ 1 });
  HandTree portal = portalTree();
  auto generator = marginGenerator(organ, tumour, portal.data, 0.0);
  generator->Update();
  // C (point at 1) is cut: its territory {0, 1, 2} goes.
  EXPECT_EQ(labelsOf(generator), "333222222222222222220");
  EXPECT_EQ(portal.status(2), ToBeResected);
  EXPECT_EQ(portal.status(1), NotToBeResected);
}

TEST(SafetyMarginRPG, MarginReachingAVesselPointCutsItsWholeSubtree)
{
  Image::Pointer organ = rowOrgan();
  Image::Pointer tumour = rowTumour({ 2 });
  HandTree portal = portalTree();
  auto generator = marginGenerator(organ, tumour, portal.data, 1.0);
  generator->Update();
  // Z = {1, 2, 3}: C is cut; its territory {0, 1, 2} and voxel 3 of the zone.
  EXPECT_EQ(labelsOf(generator), "333322222222222222220");
  EXPECT_NEAR(generator->GetFutureLiverRemnantPercent(), 100.0 * 16.0 / 19.0, 1e-12);

  generator->SetMarginWidth(2.0);
  generator->Update();
  // Z = {0..4} reaches B's point at 4: B and its child C are devascularised, territories {0..6}.
  EXPECT_EQ(labelsOf(generator), "333333322222222222220");
  EXPECT_EQ(generator->GetNumberOfVoxels(3), 7u);
  EXPECT_NEAR(generator->GetFutureLiverRemnantPercent(), 100.0 * 13.0 / 19.0, 1e-12);
  EXPECT_EQ(portal.status(0), NotToBeResected);
  EXPECT_EQ(portal.status(1), ToBeResected);
  EXPECT_EQ(portal.status(2), ToBeResected);
  EXPECT_EQ(portal.status(3), NotToBeResected);

  // Tumour at 6, 2 mm: Z = {4..8} holds B's point but not C's (at 1); C goes with its parent B.
  auto second = marginGenerator(organ, rowTumour({ 6 }), portalTree().data, 2.0);
  second->Update();
  EXPECT_EQ(labelsOf(second), "333333333222222222220");

  // Run again with the same margin: the statuses come out the same, so the tree is not marked modified again.
  const itk::ModifiedTimeType treeTime = portal.data->GetMTime();
  generator->Modified();
  generator->Update();
  EXPECT_EQ(portal.data->GetMTime(), treeTime);

  // Only the margin changed: one distance map and one territory labelling served both updates.
  EXPECT_EQ(generator->GetNumberOfDistanceMapComputations(), 1u);
  EXPECT_EQ(generator->GetNumberOfTerritoryComputations(), 1u);
  tumour->Modified();
  generator->Update();
  EXPECT_EQ(generator->GetNumberOfDistanceMapComputations(), 2u);
  EXPECT_EQ(generator->GetNumberOfTerritoryComputations(), 1u);
}

TEST(SafetyMarginRPG, DistancesAreWorldMillimetres)
{
  // The row at 0.5 mm from x = 100 mm: a 1 mm margin reaches two voxels, as 2 mm do at 1 mm spacing.
  Image::Pointer organ = rowOrgan(0.5, 100.0);
  Image::Pointer tumour = rowTumour({ 2 }, 0.5, 100.0);
  HandTree portal = portalTree(UndefinedResectionStatus, UndefinedResectionStatus, 0.5f, 100.0f);
  auto generator = marginGenerator(organ, tumour, portal.data, 1.0);
  generator->Update();
  EXPECT_EQ(labelsOf(generator), "333333322222222222220");
  EXPECT_DOUBLE_EQ(generator->GetVoxelMillilitres(), 0.5 / 1000.0);
}

TEST(SafetyMarginRPG, VesselPointsFallIntoTheNearestVoxel)
{
  // Root at 10, one child B; Z = {0..4}. B supplies {0..7} from 4.4 or 4.6 alike.
  Image::Pointer organ = rowOrgan();
  Image::Pointer tumour = rowTumour({ 2 });
  for (const auto & [x, labels] : std::vector<std::pair<float, std::string>>{
         { 4.4f, "333333332222222222220" }, // voxel 4, in the zone: B is cut
         { 4.6f, "333332222222222222220" }, // voxel 5, outside it
       })
  {
    HandTree portal = makeTree({ { -1, 1, PortalVein, UndefinedResectionStatus, { 10 } },
                                 { 0, 2, PortalVein, UndefinedResectionStatus, { x } } });
    auto generator = marginGenerator(organ, tumour, portal.data, 2.0);
    generator->Update();
    EXPECT_EQ(labelsOf(generator), labels) << x;
  }
}

TEST(SafetyMarginRPG, CongestedHepaticBranchIsAtRisk)
{
  Image::Pointer organ = rowOrgan();
  Image::Pointer tumour = rowTumour({ 2 });
  HandTree portal = portalTree();
  HandTree hepatic = hepaticTree();
  auto generator = marginGenerator(organ, tumour, portal.data, 2.0);
  generator->SetHepaticVesselTree(hepatic.data);
  generator->Update();
  // Z = {0..4} cuts H2 (point at 4); H3 lies outside the zone but drains through H2, so both are congested.
  // Resected {0..6} as before; of the rest, H2's and H3's territories {7..12} are at risk; {13..19} remain.
  EXPECT_EQ(labelsOf(generator), "333333344444422222220");
  EXPECT_EQ(generator->GetNumberOfVoxels(4), 6u);
  EXPECT_EQ(generator->GetNumberOfVoxels(2), 7u);
  EXPECT_NEAR(generator->GetFutureLiverRemnantPercent(), 100.0 * 7.0 / 19.0, 1e-12);
  EXPECT_EQ(hepatic.status(0), NotToBeResected);
  EXPECT_EQ(hepatic.status(1), AreaAtRisk);
  EXPECT_EQ(hepatic.status(2), AreaAtRisk);
  EXPECT_EQ(generator->GetNumberOfTerritoryComputations(), 2u);
}

TEST(SafetyMarginRPG, RemnantShareLeavesOutOnlyTheTumourInsideTheOrgan)
{
  Image::Pointer organ = rowOrgan();
  // Voxel 20 is tumour outside the organ.
  Image::Pointer tumour = rowTumour({ 18, 19, 20 });
  HandTree portal = portalTree();
  auto generator = marginGenerator(organ, tumour, portal.data, 1.0);
  generator->Update();
  EXPECT_EQ(labelsOf(generator), "222222222222222223330");
  EXPECT_EQ(generator->GetNumberOfTumourVoxels(), 2u);
  EXPECT_EQ(generator->GetNumberOfOrganVoxels(), 20u);
  // 17 remnant voxels of 20 organ voxels less 2 tumour voxels.
  EXPECT_NEAR(generator->GetFutureLiverRemnantPercent(), 100.0 * 17.0 / 18.0, 1e-12);
}

TEST(SafetyMarginRPG, ZoneMatchesBruteForceDistancesOnAnAnisotropicGrid)
{
  // 9 x 7 x 5 voxels of 0.7 x 1.3 x 2.1 mm, all organ; two tumour voxels. Every voxel is labelled 3 exactly when
  // its centre lies within the margin of one of them; no vessel point falls in the zone.
  const unsigned int n[3] = { 9, 7, 5 };
  const double s[3] = { 0.7, 1.3, 2.1 };
  Image::Pointer organ = makeImage(n[0], n[1], n[2], spacingOf(s[0], s[1], s[2]), pointAt(0.0));
  Image::Pointer tumour = makeImage(n[0], n[1], n[2], spacingOf(s[0], s[1], s[2]), pointAt(0.0));
  auto * organData = static_cast<unsigned char *>(organ->GetData());
  std::fill_n(organData, organ->GetNumberOfVoxels(), 1);
  const unsigned int seeds[2][3] = { { 2, 3, 1 }, { 7, 1, 3 } };
  auto * tumourData = static_cast<unsigned char *>(tumour->GetData());
  for (const auto & seed : seeds)
  {
    tumourData[seed[0] + n[0] * (seed[1] + n[1] * seed[2])] = 1;
  }
  HandTree portal = makeTree({ { -1, 1, PortalVein, UndefinedResectionStatus, { 100 } } });
  // Once with the default reach (one map for all margins), once with a map that reaches 1 mm only, so that the box
  // around the tumour is narrow and is widened for each larger margin.
  for (double reach : { 20.0, 1.0 })
  {
    auto generator = marginGenerator(organ, tumour, portal.data, 0.0);
    generator->SetDistanceMapReach(reach);
    for (double margin : { 0.0, 0.7, 1.3, 1.5, 2.1, 2.5, 3.0, 4.2, 6.0, 30.0 })
    {
      generator->SetMarginWidth(margin);
      generator->Update();
      const auto * labels = static_cast<const unsigned char *>(generator->GetResectionImage()->GetData());
      std::size_t i = 0;
      for (unsigned int z = 0; z < n[2]; ++z)
      {
        for (unsigned int y = 0; y < n[1]; ++y)
        {
          for (unsigned int x = 0; x < n[0]; ++x, ++i)
          {
            bool within = false;
            for (const auto & seed : seeds)
            {
              const double dx = (static_cast<double>(x) - seed[0]) * s[0];
              const double dy = (static_cast<double>(y) - seed[1]) * s[1];
              const double dz = (static_cast<double>(z) - seed[2]) * s[2];
              within = within || std::sqrt(dx * dx + dy * dy + dz * dz) <= margin + 1e-9;
            }
            ASSERT_EQ(labels[i], within ? 3 : 2) << "margin " << margin << " voxel " << x << ", " << y << ", " << z;
          }
        }
      }
    }
    EXPECT_EQ(generator->GetNumberOfDistanceMapComputations(), reach == 20.0 ? 2u : 9u);
  }
}

TEST(SafetyMarginRPG, DescriptorNamesVolumesSurfacesAndColours)
{
  Image::Pointer organ = rowOrgan();
  Image::Pointer tumour = rowTumour({ 2 });
  HandTree portal = portalTree();
  HandTree hepatic = hepaticTree();
  auto table = VesselTreeLookupTable::New();
  VesselTreeLookupTable::ColorVectorType colours(5);
  for (unsigned int status = 0; status < 5; ++status)
  {
    colours[status].Set(0.1 * status, 0.2, 0.25 * status, 1.0);
  }
  table->SetColorByResectionStatus(colours);
  auto generator = marginGenerator(organ, tumour, portal.data, 2.0);
  generator->SetHepaticVesselTree(hepatic.data);
  generator->SetVesselTreeLookupTable(table);
  generator->SetProposalName("Tumour 2 mm");
  generator->Update();

  const ResectionProposalDescriptorProperty * descriptor = generator->GetResectionProposalDescriptor();
  ASSERT_NE(descriptor, nullptr);
  EXPECT_EQ(descriptor->GetValueAsString(),
            "Resection proposal: Tumour 2 mm\n Number of labels: 3\n"
            "Label Remnant: Label = 2, ResectionType = 2, Volume = 0.007\n"
            "Label To be resected: Label = 3, ResectionType = 3, Volume = 0.007\n"
            "Label Area at risk: Label = 4, ResectionType = 4, Volume = 0.006\n");
  EXPECT_EQ(generator->GetNumberOfResectionSurfaces(), 3u);
  for (int label = 2; label <= 4; ++label)
  {
    EXPECT_EQ(descriptor->GetLabelForSurfaceIndex(label - 2), label);
    // Each surface wraps its label's voxels: along the row, from the label's first to its last voxel.
    vtkPolyData * surface = generator->GetResectionSurface(static_cast<unsigned int>(label - 2))->GetVtkPolyData();
    ASSERT_NE(surface, nullptr);
    ASSERT_GT(surface->GetNumberOfPolys(), 0);
    double bounds[6];
    surface->GetBounds(bounds);
    const double first[5] = { 0, 0, 13, 0, 7 };
    const double last[5] = { 0, 0, 19, 6, 12 };
    EXPECT_GE(bounds[0], first[label] - 0.5 - 1e-6) << label;
    EXPECT_LE(bounds[1], last[label] + 0.5 + 1e-6) << label;
    // Smoothing rounds the ends of the thin bar, but by less than a voxel.
    EXPECT_LT(bounds[0], first[label] + 0.5) << label;
    EXPECT_GT(bounds[1], last[label] - 0.5) << label;
    EXPECT_FLOAT_EQ(descriptor->GetColor(label)[0], static_cast<float>(0.1 * label));
    EXPECT_FLOAT_EQ(descriptor->GetColor(label)[1], 0.2f);
    EXPECT_FLOAT_EQ(descriptor->GetColor(label)[2], static_cast<float>(0.25 * label));
  }

  // Without a hepatic tree label 4 is absent: two labels, two surfaces, left empty on request.
  generator->SetHepaticVesselTree(nullptr);
  generator->GenerateSurfacesOff();
  generator->Update();
  EXPECT_EQ(generator->GetResectionSurface(0)->GetVtkPolyData(), nullptr);
  EXPECT_EQ(generator->GetResectionProposalDescriptor()->GetNumberOfLabels(), 2u);
  EXPECT_EQ(generator->GetNumberOfResectionSurfaces(), 2u);
  EXPECT_EQ(generator->GetResectionProposalDescriptor()->GetLabelForSurfaceIndex(1), 3);
}

TEST(SafetyMarginRPG, BadInputsAreRefused)
{
  Image::Pointer organ = rowOrgan();
  HandTree portal = portalTree();
  const auto run = [&](Image * tumour, VesselTreeData * tree, double margin) {
    return failureOf([&] { marginGenerator(organ, tumour, tree, margin)->Update(); });
  };
  EXPECT_EQ(run(rowTumour({ 2 }), portal.data, -0.5), "Negative safety margin");
  EXPECT_EQ(run(makeImage(20, 1, 1, spacingOf(1.0), pointAt(0.0)), portal.data, 1.0),
            "Tumour mask and organ segmentation differ in size (20 x 1 x 1 vs 21 x 1 x 1)");
  EXPECT_EQ(run(makeImage(21, 1, 1, spacingOf(1.5), pointAt(0.0)), portal.data, 1.0),
            "Tumour mask and organ segmentation differ in spacing (1.5, 1, 1 vs 1, 1, 1 mm)");
  EXPECT_EQ(run(makeImage(21, 1, 1, spacingOf(1.0), pointAt(3.0)), portal.data, 1.0),
            "Tumour mask and organ segmentation differ in origin (3, 0, 0 vs 0, 0, 0 mm)");
  Image::Pointer turned = rowTumour({ 2 });
  Geometry3D::DirectionType direction;
  direction.Fill(0.0);
  direction[0][1] = 1.0;
  direction[1][0] = 1.0;
  direction[2][2] = 1.0;
  turned->SetDirection(direction);
  EXPECT_EQ(run(turned, portal.data, 1.0), "Tumour mask and organ segmentation differ in direction");
  EXPECT_EQ(run(rowTumour({}), portal.data, 1.0), "Tumour mask holds no tumour voxel");
  EXPECT_EQ(run(rowTumour({ 20 }), portal.data, 1.0), "Tumour lies entirely outside the organ");
  HandTree hepaticOnly = hepaticTree();
  EXPECT_EQ(run(rowTumour({ 2 }), hepaticOnly.data, 1.0), "Portal tree holds no portal vein with centre-line points");
  // A refused update changes no status.
  for (std::size_t i = 0; i < 4; ++i)
  {
    EXPECT_EQ(portal.status(i), i == 0 ? NotToBeResected : UndefinedResectionStatus);
  }
}

// The plan: B to be resected, D at risk, C undefined (its parent's status is not inherited in a plan).
TEST(ResectionPlanRPG, PortalStatusesGiveTheLabels)
{
  Image::Pointer organ = rowOrgan();
  HandTree portal = portalTree(ToBeResected, AreaAtRisk);
  auto generator = ResectionPlanRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal.data);
  generator->Update();
  EXPECT_EQ(labelsOf(generator), "222333322222224444440");
  EXPECT_EQ(generator->GetNumberOfVoxels(2), 10u);
  EXPECT_EQ(generator->GetNumberOfVoxels(3), 4u);
  EXPECT_EQ(generator->GetNumberOfVoxels(4), 6u);
  EXPECT_DOUBLE_EQ(generator->GetFutureLiverRemnantPercent(), 50.0);
  EXPECT_EQ(portal.status(1), ToBeResected);
  EXPECT_EQ(portal.status(2), UndefinedResectionStatus);
}

TEST(ResectionPlanRPG, HepaticStatusTurnsWhatIsNotResectedIntoRisk)
{
  Image::Pointer organ = rowOrgan();
  HandTree portal = portalTree(ToBeResected, AreaAtRisk);
  HandTree hepatic = hepaticTree(ToBeResected);
  auto generator = ResectionPlanRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal.data);
  generator->SetHepaticVesselTree(hepatic.data);
  generator->Update();
  // H3 drains {6..12}: voxel 6 stays resected, {7..12} become at risk.
  EXPECT_EQ(labelsOf(generator), "222333344444424444440");
  EXPECT_EQ(generator->GetNumberOfVoxels(2), 4u);
  EXPECT_EQ(generator->GetNumberOfVoxels(4), 12u);
}

TEST(ResectionPlanRPG, PlanWithoutMarkedVesselIsRefused)
{
  Image::Pointer organ = rowOrgan();
  HandTree portal = portalTree();
  auto generator = ResectionPlanRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal.data);
  EXPECT_EQ(failureOf([&] { generator->Update(); }), "No vessel is marked to be resected or at risk");
  // A hepatic vein at risk alone is a plan.
  HandTree hepatic = hepaticTree(AreaAtRisk);
  generator->SetHepaticVesselTree(hepatic.data);
  generator->Update();
  EXPECT_EQ(labelsOf(generator), "222222444444422222220");
}
