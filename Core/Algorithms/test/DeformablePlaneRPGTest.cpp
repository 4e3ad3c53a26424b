// Cutting along a deformable plane: hand-made trees on a row of organ voxels, a plane across the row, exact counts
// of the labels 2, 3 and 4, the statuses written into the trees, notes and refused inputs.

#include "lumoDeformablePlaneRPG.h"

#include "HandTreeSupport.h"

#include <gtest/gtest.h>

#include <itkMacro.h>

#include <string>
#include <vector>

using namespace lumo;
using namespace hand_tree;

namespace
{
/** Portal tree: root R {2, 5} (back of the plane), X {14} beyond the plane, and Y {9, 7}, X's child, back on the
 *  near side. Nearest points of the voxels 0..11 (ties to the earlier point): R 0..6, Y 7..11. */
HandTree
crossingPortalTree()
{
  return makeTree({ { -1, 1, PortalVein, UndefinedResectionStatus, { 2, 5 } },
                    { 0, 2, PortalVein, UndefinedResectionStatus, { 14 } },
                    { 1, 3, PortalVein, UndefinedResectionStatus, { 9, 7 } } });
}

/** Hepatic tree: root H0 {1}, H1 {13} beyond the plane, H2 {10} its child on the near side. Drainage of the voxels
 *  0..11: H0 0..5, H2 6..11. */
HandTree
crossingHepaticTree()
{
  return makeTree({ { -1, 1, HepaticVein, UndefinedResectionStatus, { 1 } },
                    { 0, 2, HepaticVein, UndefinedResectionStatus, { 13 } },
                    { 1, 3, HepaticVein, UndefinedResectionStatus, { 10 } } });
}

/** The row: 21 voxels along x, the first ones organ. */
Image::Pointer
makeRow(unsigned int organVoxels)
{
  Image::Pointer image = makeImage(21, 1, 1, spacingOf(1.0), pointAt(0.0));
  std::fill_n(static_cast<unsigned char *>(image->GetData()), organVoxels, 1);
  return image;
}

Point3D
P(double x, double y, double z)
{
  Point3D p;
  p[0] = x;
  p[1] = y;
  p[2] = z;
  return p;
}

/** The plane x = at, its front towards +x. */
DeformablePlane::Pointer
planeAt(double at)
{
  auto plane = DeformablePlane::New();
  plane->SetControlPoints({ P(at, 0, 0), P(at, 1, 0), P(at, 0, 1) });
  return plane;
}

std::string
messageOf(DeformablePlaneRPG * generator)
{
  try
  {
    generator->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "";
}
} // namespace

TEST(DeformablePlaneRPG, VesselCrossingThePlaneCutsItsDownstreamPartOnTheRemnantSide)
{
  Image::Pointer organ = makeRow(20);
  HandTree portal = crossingPortalTree();
  DeformablePlane::Pointer plane = planeAt(11.5);
  auto generator = DeformablePlaneRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal.data);
  generator->SetCuttingPlane(plane);
  generator->GenerateSurfacesOff();
  generator->Update();
  // Front (12..19) resected; of the rest Y's voxels 7..11 lost their supply where X crossed the plane.
  EXPECT_EQ(8u, generator->GetNumberOfVoxels(VascularTerritoryRPG::ResectedLabel));
  EXPECT_EQ(5u, generator->GetNumberOfVoxels(VascularTerritoryRPG::AtRiskLabel));
  EXPECT_EQ(7u, generator->GetNumberOfVoxels(VascularTerritoryRPG::RemnantLabel));
  EXPECT_DOUBLE_EQ(35.0, generator->GetFutureLiverRemnantPercent());
  EXPECT_EQ(1, generator->GetResectedSide());
  EXPECT_TRUE(generator->GetNotes().empty());
  EXPECT_EQ(NotToBeResected, portal.status(0));
  EXPECT_EQ(ToBeResected, portal.status(1));
  EXPECT_EQ(AreaAtRisk, portal.status(2));
  const auto * labels = static_cast<const unsigned char *>(generator->GetResectionImage()->GetData());
  EXPECT_EQ(std::vector<unsigned char>({ 2, 2, 2, 2, 2, 2, 2, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 3, 3, 3, 0 }),
            std::vector<unsigned char>(labels, labels + 21));

  // With the hepatic tree, H2's drainage is lost too: 6..11 at risk.
  HandTree hepatic = crossingHepaticTree();
  generator->SetHepaticVesselTree(hepatic.data);
  generator->Update();
  EXPECT_EQ(8u, generator->GetNumberOfVoxels(VascularTerritoryRPG::ResectedLabel));
  EXPECT_EQ(6u, generator->GetNumberOfVoxels(VascularTerritoryRPG::AtRiskLabel));
  EXPECT_EQ(6u, generator->GetNumberOfVoxels(VascularTerritoryRPG::RemnantLabel));
  EXPECT_EQ(NotToBeResected, hepatic.status(0));
  EXPECT_EQ(ToBeResected, hepatic.status(1));
  EXPECT_EQ(AreaAtRisk, hepatic.status(2));

  // Moving the plane beyond X: nothing crosses any more, and the nearest points are not computed again.
  const unsigned int computations = generator->GetNumberOfPointTerritoryComputations();
  plane->MoveControlPoint(0, P(15.5, 0, 0), nullptr);
  plane->MoveControlPoint(1, P(15.5, 1, 0), nullptr);
  plane->MoveControlPoint(2, P(15.5, 0, 1), nullptr);
  generator->Update();
  EXPECT_EQ(4u, generator->GetNumberOfVoxels(VascularTerritoryRPG::ResectedLabel));
  EXPECT_EQ(0u, generator->GetNumberOfVoxels(VascularTerritoryRPG::AtRiskLabel));
  EXPECT_EQ(16u, generator->GetNumberOfVoxels(VascularTerritoryRPG::RemnantLabel));
  EXPECT_EQ(computations, generator->GetNumberOfPointTerritoryComputations());
}

TEST(DeformablePlaneRPG, RootOnTheResectedSidePutsTheWholeRemnantAtRiskWithANote)
{
  Image::Pointer organ = makeRow(20);
  HandTree portal = crossingPortalTree();
  auto generator = DeformablePlaneRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal.data);
  generator->SetCuttingPlane(planeAt(11.5));
  generator->GenerateSurfacesOff();
  generator->SetResectSide(DeformablePlaneRPG::ResectSideType::Back);
  generator->Update();
  EXPECT_EQ(-1, generator->GetResectedSide());
  EXPECT_EQ(12u, generator->GetNumberOfVoxels(VascularTerritoryRPG::ResectedLabel));
  EXPECT_EQ(8u, generator->GetNumberOfVoxels(VascularTerritoryRPG::AtRiskLabel));
  EXPECT_EQ(0u, generator->GetNumberOfVoxels(VascularTerritoryRPG::RemnantLabel));
  ASSERT_EQ(1u, generator->GetNotes().size());
  EXPECT_EQ("The portal root lies on the resected side: the whole remnant loses its portal supply",
            generator->GetNotes()[0]);

  // The tumour's side: a tumour at x = 3 makes the back side the resected one.
  Image::Pointer tumour = makeRow(0);
  static_cast<unsigned char *>(tumour->GetData())[3] = 1;
  generator->SetTumourMask(tumour);
  generator->SetResectSide(DeformablePlaneRPG::ResectSideType::Tumour);
  generator->Update();
  EXPECT_EQ(-1, generator->GetResectedSide());
  EXPECT_EQ(12u, generator->GetNumberOfVoxels(VascularTerritoryRPG::ResectedLabel));
  EXPECT_EQ(1u, generator->GetNumberOfTumourVoxels());
  // A tumour on both sides: the side with more of it, and a note.
  static_cast<unsigned char *>(tumour->GetData())[14] = 1;
  static_cast<unsigned char *>(tumour->GetData())[15] = 1;
  tumour->Modified();
  generator->Update();
  EXPECT_EQ(1, generator->GetResectedSide());
  ASSERT_EQ(1u, generator->GetNotes().size());
  EXPECT_EQ("The cutting plane runs through the tumour: 1 tumour voxels are not on the resected side",
            generator->GetNotes()[0]);
}

TEST(DeformablePlaneRPG, BadInputsAreRefusedWithTheirMessages)
{
  Image::Pointer organ = makeRow(20);
  HandTree portal = crossingPortalTree();
  auto generator = DeformablePlaneRPG::New();
  generator->SetOrganSegmentation(organ);
  generator->SetVesselTree(portal.data);
  EXPECT_EQ("No cutting plane set", messageOf(generator));
  generator->SetCuttingPlane(DeformablePlane::New());
  EXPECT_EQ("A deformable plane needs at least 3 control points, got 0", messageOf(generator));
  generator->SetCuttingPlane(planeAt(30.5));
  EXPECT_EQ("The cutting plane misses the organ", messageOf(generator));
  generator->SetCuttingPlane(planeAt(-0.5));
  EXPECT_EQ("The cutting plane misses the organ", messageOf(generator));
  generator->SetCuttingPlane(planeAt(11.5));
  generator->SetResectSide(DeformablePlaneRPG::ResectSideType::Tumour);
  EXPECT_EQ("No tumour mask set", messageOf(generator));
  generator->SetTumourMask(makeRow(0));
  EXPECT_EQ("Tumour mask holds no tumour voxel", messageOf(generator));
  // Nothing was labelled by the refused updates.
  EXPECT_EQ(UndefinedResectionStatus, portal.status(0));
}
