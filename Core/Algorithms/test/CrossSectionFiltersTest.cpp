#include "lumoVesselCentreLineRefinementFilter.h"
#include "lumoVesselRadiusRefinementFilter.h"

#include "VesselTestTree.h"
#include "WarningCapture.h"

#include "LumoTestUtilities.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace lumo;
using namespace vessel_test;

namespace
{
/** A 40 x 40 x 40 mask holding a cylinder of the given radius (mm) along world x through the world point
 *  (*, 21.3, 24.4), off the voxel lattice, drawn by voxel centres. Straight: spacing (0.8, 0.8, 1.2), origin
 *  (-10, 5, 0). Rotated: index x runs along world y and index y against world x, with spacing (0.8, 0.7, 1.2) and
 *  origin (20, 5, 0), so that a frame that mixes up rows and columns or their spacings misses the cylinder. */
Image::Pointer
cylinderMask(double radius, bool rotated = false)
{
  auto image = Image::New();
  Image::SizeType size;
  size.fill(40);
  Vector3D spacing = lumotest::V(0.8, rotated ? 0.7 : 0.8, 1.2);
  Point3D origin = lumotest::P(rotated ? 20 : -10, 5, 0);
  Image::DirectionType direction;
  direction.SetIdentity();
  if (rotated)
  {
    direction.Fill(0.0);
    direction[0][1] = -1.0;
    direction[1][0] = 1.0;
    direction[2][2] = 1.0;
  }
  image->Initialize(itk::IOComponentEnum::UCHAR, size, spacing, origin, direction);
  auto * voxels = static_cast<unsigned char *>(image->GetData());
  for (unsigned int z = 0; z < 40; ++z)
  {
    for (unsigned int y = 0; y < 40; ++y)
    {
      for (unsigned int x = 0; x < 40; ++x)
      {
        // World y of the voxel centre: along index y when straight, along index x when rotated.
        const double wy = 5 + 0.8 * (rotated ? x : y) - 21.3;
        const double wz = 1.2 * z - 24.4;
        voxels[(z * 40 + y) * 40 + x] = wy * wy + wz * wz <= radius * radius ? 1 : 0;
      }
    }
  }
  return image;
}

/** One vessel along the cylinder's axis (or beside it) with the given (wrong) diameter at every point. */
VesselTreeData::Pointer
axisTree(float diameter, float y = 21.3f, float z = 24.4f)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  for (int i = 0; i < 12; ++i)
  {
    tree->getRoot()->appendPoint({ -5.0f + 1.5f * i, y, z, diameter });
  }
  auto data = VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

std::vector<float>
diametersOf(const VesselTreeData & data)
{
  std::vector<float> diameters;
  for (const VesselPoint & p : data.GetVesselTreeData(0)->getRoot()->getPoints())
  {
    diameters.push_back(p.diameter);
  }
  return diameters;
}
} // namespace

TEST(VesselRadiusRefinementFilter, CrossSectionsGiveTheCylindersRadius)
{
  for (bool rotated : { false, true })
  {
    for (double radius : { 2.0, 3.5, 5.0 })
    {
      auto filter = VesselRadiusRefinementFilter::New();
      filter->SetInput(axisTree(static_cast<float>(radius))); // half the true diameter, as a short estimate
      filter->SetMask(cylinderMask(radius, rotated));
      filter->Update();
      for (float diameter : diametersOf(*filter->GetOutput()))
      {
        // Within a third of the in-plane voxel size of the true diameter: a cross-section of a few dozen voxels
        // cannot say more.
        EXPECT_NEAR(diameter, 2.0 * radius, 0.27) << "radius " << radius << (rotated ? " rotated" : "");
      }
    }
  }
}

TEST(VesselRadiusRefinementFilter, TheInputIsLeftAsItWas)
{
  auto input = axisTree(3.0f);
  auto filter = VesselRadiusRefinementFilter::New();
  filter->SetInput(input);
  filter->SetMask(cylinderMask(3.0));
  filter->Update();
  EXPECT_EQ(diametersOf(*input), std::vector<float>(12, 3.0f));
  EXPECT_NE(filter->GetOutput()->GetVesselTreeData(0), input->GetVesselTreeData(0));
}

TEST(VesselRadiusRefinementFilter, PointsAwayFromTheMaskKeepTheirDiameters)
{
  auto filter = VesselRadiusRefinementFilter::New();
  filter->SetInput(axisTree(1.5f, 40.0f)); // 19 mm beside the cylinder
  filter->SetMask(cylinderMask(2.0));
  filter->Update();
  EXPECT_EQ(diametersOf(*filter->GetOutput()), std::vector<float>(12, 1.5f));
}

TEST(VesselRadiusRefinementFilter, AMaskOfAnotherTypeKeepsTheDiametersWithAWarning)
{
  lumotest::WarningCapture capture;
  auto mask = Image::New();
  Image::SizeType size;
  size.fill(4);
  mask->Initialize(itk::IOComponentEnum::FLOAT, size);
  auto filter = VesselRadiusRefinementFilter::New();
  filter->SetInput(axisTree(2.0f));
  filter->SetMask(mask);
  filter->Update();
  EXPECT_EQ(diametersOf(*filter->GetOutput()), std::vector<float>(12, 2.0f));
  const std::vector<std::string> messages = capture.messages();
  EXPECT_EQ(
    std::count(messages.begin(), messages.end(), "the mask must be a 3-D unsigned 8-bit image; diameters are kept"), 1);
}

namespace
{
/** The mean world position of the mask's voxels. */
Point3D
maskCentroid(const Image & mask)
{
  const auto * voxels = static_cast<const unsigned char *>(mask.GetData());
  const Vector3D spacing = mask.GetSpacing();
  const Point3D origin = mask.GetOrigin();
  const auto direction = mask.GetDirection();
  double sum[3] = { 0, 0, 0 };
  std::size_t count = 0;
  for (unsigned int z = 0; z < 40; ++z)
  {
    for (unsigned int y = 0; y < 40; ++y)
    {
      for (unsigned int x = 0; x < 40; ++x)
      {
        if (voxels[(z * 40 + y) * 40 + x] == 0)
        {
          continue;
        }
        const double index[3] = { double(x), double(y), double(z) };
        for (unsigned int r = 0; r < 3; ++r)
        {
          double world = origin[r];
          for (unsigned int c = 0; c < 3; ++c)
          {
            world += direction[r][c] * spacing[c] * index[c];
          }
          sum[r] += world;
        }
        ++count;
      }
    }
  }
  return lumotest::P(sum[0] / count, sum[1] / count, sum[2] / count);
}

/** The filter with one round, no smoothing: each move shows as it is. */
VesselCentreLineRefinementFilter::Pointer
oneRound(const VesselTreeData::Pointer & tree, const Image::Pointer & mask)
{
  auto filter = VesselCentreLineRefinementFilter::New();
  filter->SetInput(tree);
  filter->SetMask(mask);
  filter->SetNumberOfIterations(1);
  filter->SetNumberOfSmoothingIterations(0);
  return filter;
}
} // namespace

TEST(VesselCentreLineRefinementFilter, PointsBesideTheAxisMoveOntoTheMasksAxis)
{
  for (bool rotated : { false, true })
  {
    for (double radius : { 2.0, 3.5 })
    {
      // The axis of the voxels drawn: on a lattice of 1.2 mm a thin cylinder's voxels are centred up to 0.3 mm off
      // the continuous axis, and they are all a centre line can be found from.
      const Image::Pointer mask = cylinderMask(radius, rotated);
      const Point3D axis = maskCentroid(*mask);
      // 0.4 mm and 0.3 mm off the continuous axis, as thinning leaves a centre line on voxel centres.
      auto input = axisTree(static_cast<float>(2.0 * radius), 21.7f, 24.1f);
      auto filter = VesselCentreLineRefinementFilter::New();
      filter->SetInput(input);
      filter->SetMask(mask);
      filter->Update();
      const Vessel::PointList & points = filter->GetOutput()->GetVesselTreeData(0)->getRoot()->getPoints();
      ASSERT_EQ(points.size(), 12u);
      // Both ends are free (the root's first point, a terminal vessel's last) and follow their neighbours.
      for (std::size_t i = 0; i < points.size(); ++i)
      {
        const std::string where =
          "radius " + std::to_string(radius) + (rotated ? " rotated" : "") + ", point " + std::to_string(i);
        EXPECT_NEAR(points[i].x, -5.0 + 1.5 * i, 1e-3) << where;
        EXPECT_FLOAT_EQ(points[i].diameter, static_cast<float>(2.0 * radius)) << where;
        EXPECT_NEAR(points[i].y, axis[1], 0.02) << where;
        EXPECT_NEAR(points[i].z, axis[2], 0.02) << where;
      }
      EXPECT_FLOAT_EQ(input->GetVesselTreeData(0)->getRoot()->getPoint(5).y, 21.7f) << "the input is left as it was";
    }
  }
}

TEST(VesselCentreLineRefinementFilter, AMoveIsCappedAndWideOrEmptyCrossSectionsLeaveThePoint)
{
  // 1.5 mm off the axis of a 3.5 mm cylinder: the centroid is farther than the 0.75 voxel (0.9 mm) a round allows.
  auto capped = oneRound(axisTree(7.0f, 21.3f + 1.5f), cylinderMask(3.5));
  capped->Update();
  const VesselPoint moved = capped->GetOutput()->GetVesselTreeData(0)->getRoot()->getPoint(5);
  const double dy = moved.y - (21.3 + 1.5);
  const double dz = moved.z - 24.4;
  EXPECT_NEAR(std::sqrt(dy * dy + dz * dz), 0.75 * 1.2, 1e-4);
  EXPECT_LT(dy, -0.85);

  // A vessel recorded as 2.4 mm wide inside a 4 mm cylinder: every cross-section is wider than 1.3 times the
  // vessel, as at a branching, so no point moves; with the ratio raised they do.
  auto wide = oneRound(axisTree(2.4f, 21.7f), cylinderMask(2.0));
  wide->Update();
  EXPECT_FLOAT_EQ(wide->GetOutput()->GetVesselTreeData(0)->getRoot()->getPoint(5).y, 21.7f);
  wide->SetMaximumRadiusRatio(100.0);
  wide->Update();
  EXPECT_LT(wide->GetOutput()->GetVesselTreeData(0)->getRoot()->getPoint(5).y, 21.6f);

  // 19 mm beside the cylinder nothing is in reach.
  auto away = oneRound(axisTree(1.5f, 40.0f), cylinderMask(2.0));
  away->Update();
  for (const VesselPoint & p : away->GetOutput()->GetVesselTreeData(0)->getRoot()->getPoints())
  {
    EXPECT_FLOAT_EQ(p.y, 40.0f);
  }
}

TEST(VesselCentreLineRefinementFilter, AMaskOfAnotherTypeKeepsTheCentreLinesWithAWarning)
{
  lumotest::WarningCapture capture;
  auto mask = Image::New();
  Image::SizeType size;
  size.fill(4);
  mask->Initialize(itk::IOComponentEnum::FLOAT, size);
  auto filter = oneRound(axisTree(2.0f, 21.7f), mask);
  filter->Update();
  EXPECT_FLOAT_EQ(filter->GetOutput()->GetVesselTreeData(0)->getRoot()->getPoint(5).y, 21.7f);
  const std::vector<std::string> messages = capture.messages();
  EXPECT_EQ(
    std::count(messages.begin(), messages.end(), "the mask must be a 3-D unsigned 8-bit image; centre lines are kept"),
    1);
}
