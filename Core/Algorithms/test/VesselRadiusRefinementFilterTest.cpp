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

/** One vessel along the cylinder's axis with the given (wrong) diameter at every point. */
VesselTreeData::Pointer
axisTree(float diameter, float y = 21.3f)
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  for (int i = 0; i < 12; ++i)
  {
    tree->getRoot()->appendPoint({ -5.0f + 1.5f * i, y, 24.4f, diameter });
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
