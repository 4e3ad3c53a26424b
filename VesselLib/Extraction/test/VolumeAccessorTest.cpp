#include "DistancePoint3D.h"
#include "NeighbourhoodOrder.h"
#include "ThreeDPicAccessor.h"
#include "VolumeAccessor.h"

#include "ExtractionTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace
{
// A 3 x 3 x 3 volume whose voxel (x, y, z) holds 1 + x + 3y + 9z, so every read names its position.
template <class T>
lumoIpPicDescriptor *
numberedCube(lumoIpPicType type, std::uint32_t bpe)
{
  const std::uint32_t sizes[3] = { 3, 3, 3 };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(type, bpe, 3, sizes);
  for (int i = 0; i < 27; ++i)
  {
    static_cast<T *>(pic->data)[i] = static_cast<T>(1 + i);
  }
  return pic;
}

template <class T>
T
numberAt(int x, int y, int z)
{
  return static_cast<T>(1 + x + 3 * y + 9 * z);
}

// Checks the 26-neighbourhood of the corner (0, 0, 0) against the documented order; outside entries hold 99.
template <class Accessor, class T>
void
expectCornerNeighbourhood(const Accessor & accessor)
{
  std::unique_ptr<T[]> values(accessor.get26Neighbourhood(0, 0, 0));
  int outside = 0;
  for (int i = 0; i < 26; ++i)
  {
    const int * offset = NeighbourhoodOrder::offsets26[i];
    if (offset[0] < 0 || offset[1] < 0 || offset[2] < 0)
    {
      EXPECT_EQ(values[i], static_cast<T>(99)) << "entry " << i;
      ++outside;
    }
    else
    {
      EXPECT_EQ(values[i], numberAt<T>(offset[0], offset[1], offset[2])) << "entry " << i;
    }
  }
  EXPECT_EQ(outside, 19); // 26 minus the 7 neighbours inside the volume
  // Spot checks of the order itself: entry 4 is z + 1, 13 is x + 1, 10 is y + 1, entry 0 is (-1, +1, +1).
  EXPECT_EQ(values[4], numberAt<T>(0, 0, 1));
  EXPECT_EQ(values[13], numberAt<T>(1, 0, 0));
  EXPECT_EQ(values[10], numberAt<T>(0, 1, 0));
}
} // namespace

TEST(NeighbourhoodOrderTest, PositionsFollowPlanesRowsAndColumns)
{
  EXPECT_EQ(NeighbourhoodOrder::index26(0, 0, 1), 4);
  EXPECT_EQ(NeighbourhoodOrder::index26(0, 0, -1), 21);
  EXPECT_EQ(NeighbourhoodOrder::index26(1, 0, 0), 13);
  EXPECT_EQ(NeighbourhoodOrder::index26(-1, 0, 0), 12);
  EXPECT_EQ(NeighbourhoodOrder::index26(0, 1, 0), 10);
  EXPECT_EQ(NeighbourhoodOrder::index26(0, -1, 0), 15);
  EXPECT_EQ(NeighbourhoodOrder::index26(-1, 1, 1), 0);
  EXPECT_EQ(NeighbourhoodOrder::index26(1, -1, -1), 25);
  EXPECT_EQ(NeighbourhoodOrder::index26(0, 0, 0), -1);
  for (int i = 0; i < 26; ++i)
  {
    const int * o = NeighbourhoodOrder::offsets26[i];
    EXPECT_EQ(NeighbourhoodOrder::index26(o[0], o[1], o[2]), i);
  }
}

TEST(ThreeDPicAccessorTest, ReadsOutsideTheVolumeYieldTheOutsideValue)
{
  ThreeDPicAccessor<unsigned short> accessor(numberedCube<unsigned short>(lumoIpPicUInt, 16), true, 7);
  EXPECT_EQ(accessor.getSizeX(), 3u);
  EXPECT_EQ(accessor.getSizeY(), 3u);
  EXPECT_EQ(accessor.getSizeZ(), 3u);
  EXPECT_EQ(accessor.getVoxel(2, 1, 0), numberAt<unsigned short>(2, 1, 0));
  EXPECT_EQ(accessor.getVoxel(65535, 0, 0), 7); // x = -1
  EXPECT_EQ(accessor.getVoxel(0, 65535, 0), 7);
  EXPECT_EQ(accessor.getVoxel(0, 0, 65535), 7);
  EXPECT_EQ(accessor.getVoxel(3, 0, 0), 7); // x = sizeX
  EXPECT_EQ(accessor.getVoxel(0, 3, 0), 7);
  EXPECT_EQ(accessor.getVoxel(0, 0, 3), 7);
  EXPECT_EQ(accessor.getVoxel(32768, 0, 0), 7); // negative as signed 16-bit
  EXPECT_EQ(accessor.getOutsideValue(), 7);
  EXPECT_TRUE(accessor.getOwnsPic());
}

TEST(ThreeDPicAccessorTest, WritesOutsideAreDroppedAndInsideLand)
{
  lumoIpPicDescriptor * pic = numberedCube<float>(lumoIpPicFloat, 32);
  {
    ThreeDPicAccessor<float> accessor(pic, false, -1.0f);
    accessor.setVoxel(1, 2, 2, 0.5f);
    accessor.setVoxel(65535, 0, 0, 42.0f);
    accessor.setVoxel(3, 0, 0, 42.0f);
    accessor.setVoxel(0, 0, 32768, 42.0f);
    EXPECT_EQ(accessor.getVoxel(1, 2, 2), 0.5f);
    EXPECT_EQ(accessor.getPic(), pic);
    EXPECT_FALSE(accessor.getOwnsPic());
  }
  // Only the one inside write changed the buffer, and the accessor did not free the pic it does not own.
  for (int i = 0; i < 27; ++i)
  {
    const float expected = i == 1 + 3 * 2 + 9 * 2 ? 0.5f : static_cast<float>(1 + i);
    EXPECT_EQ(static_cast<float *>(pic->data)[i], expected) << i;
  }
  lumoIpPicFree(pic);
}

TEST(ThreeDPicAccessorTest, NeighbourhoodsAtACornerFollowTheFixedOrder)
{
  ThreeDPicAccessor<unsigned char> accessor(numberedCube<unsigned char>(lumoIpPicUInt, 8), true, 99);
  expectCornerNeighbourhood<ThreeDPicAccessor<unsigned char>, unsigned char>(accessor);

  std::unique_ptr<unsigned char[]> faces(accessor.get6Neighbourhood(1, 1, 1));
  EXPECT_EQ(faces[0], numberAt<unsigned char>(1, 1, 2));
  EXPECT_EQ(faces[1], numberAt<unsigned char>(1, 1, 0));
  EXPECT_EQ(faces[2], numberAt<unsigned char>(0, 1, 1));
  EXPECT_EQ(faces[3], numberAt<unsigned char>(2, 1, 1));
  EXPECT_EQ(faces[4], numberAt<unsigned char>(1, 2, 1));
  EXPECT_EQ(faces[5], numberAt<unsigned char>(1, 0, 1));
  std::unique_ptr<unsigned char[]> cornerFaces(accessor.get6Neighbourhood(0, 0, 0));
  EXPECT_EQ(cornerFaces[1], 99);
  EXPECT_EQ(cornerFaces[2], 99);
  EXPECT_EQ(cornerFaces[5], 99);
}

TEST(ThreeDPicAccessorTest, VoxelSizeAndOriginStartAtOneAndZero)
{
  ThreeDPicAccessor<float> accessor(numberedCube<float>(lumoIpPicFloat, 32), true, 0.0f);
  EXPECT_EQ(accessor.getVoxelSizeX(), 1.0f);
  EXPECT_EQ(accessor.getVoxelSizeY(), 1.0f);
  EXPECT_EQ(accessor.getVoxelSizeZ(), 1.0f);
  EXPECT_EQ(accessor.getOriginX(), 0.0f);
  accessor.setVoxelSize(0.5f, 0.75f, 2.0f);
  accessor.setVoxelSizeY(0.7f);
  accessor.setOrigin(-10.0f, 5.0f, 3.0f);
  accessor.setOriginZ(4.0f);
  EXPECT_EQ(accessor.getVoxelSizeX(), 0.5f);
  EXPECT_EQ(accessor.getVoxelSizeY(), 0.7f);
  EXPECT_EQ(accessor.getVoxelSizeZ(), 2.0f);
  EXPECT_EQ(accessor.getOriginX(), -10.0f);
  EXPECT_EQ(accessor.getOriginY(), 5.0f);
  EXPECT_EQ(accessor.getOriginZ(), 4.0f);
}

TEST(ThreeDPicAccessorDeathTest, NullOrNonThreeDimensionalPicEndsTheProcess)
{
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      ThreeDPicAccessor<unsigned char> accessor(nullptr, false, 0);
    },
    ::testing::ExitedWithCode(1),
    exactly("ThreeDPicAccessor::ThreeDPicAccessor(...): thePic == null!"));

  const std::uint32_t sizes[2] = { 4, 4 };
  lumoIpPicDescriptor * flat = lumoIpPicNewVolume(lumoIpPicUInt, 8, 2, sizes);
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      ThreeDPicAccessor<unsigned char> accessor(flat, false, 0);
    },
    ::testing::ExitedWithCode(1),
    exactly("ThreeDPicAccessor::ThreeDPicAccessor(...): pic->dim!=3! "));
  lumoIpPicFree(flat);
}

TEST(VolumeAccessorTest, BoundsNeighbourhoodsAndOwnership)
{
  VolumeAccessor<unsigned char> accessor(numberedCube<unsigned char>(lumoIpPicUInt, 8), 99, true);
  EXPECT_FALSE(accessor.isEmpty());
  EXPECT_EQ(accessor.getVoxel(65535, 0, 0), 99);
  EXPECT_EQ(accessor.getVoxel(3, 0, 0), 99);
  EXPECT_EQ(accessor.getVoxel(0, 0, 32768), 99);
  EXPECT_EQ(accessor.getVoxel(2, 2, 2), 27);
  accessor.setVoxel(3, 0, 0, 5);
  accessor.setVoxel(0, 1, 0, 5);
  EXPECT_EQ(accessor.getVoxel(0, 1, 0), 5);
  EXPECT_EQ(accessor.getVoxel(1, 1, 0), numberAt<unsigned char>(1, 1, 0));
  accessor.setVoxel(0, 1, 0, numberAt<unsigned char>(0, 1, 0));
  expectCornerNeighbourhood<VolumeAccessor<unsigned char>, unsigned char>(accessor);

  unsigned char onStack[26];
  accessor.read26Neighbourhood(1, 1, 1, onStack);
  std::unique_ptr<unsigned char[]> allocated(accessor.get26Neighbourhood(1, 1, 1));
  for (int i = 0; i < 26; ++i)
  {
    EXPECT_EQ(onStack[i], allocated[i]);
  }
  std::unique_ptr<unsigned char[]> faces(accessor.get6Neighbourhood(0, 0, 0));
  EXPECT_EQ(faces[0], numberAt<unsigned char>(0, 0, 1));
  EXPECT_EQ(faces[1], 99);
  EXPECT_EQ(faces[3], numberAt<unsigned char>(1, 0, 0));
  EXPECT_EQ(faces[4], numberAt<unsigned char>(0, 1, 0));
}

TEST(VolumeAccessorTest, AxisOrderCodeAndMinimumVoxelSize)
{
  VolumeAccessor<float> accessor(numberedCube<float>(lumoIpPicFloat, 32), 0.0f, true);
  EXPECT_EQ(accessor.getAxisOrder(), 0);
  EXPECT_EQ(accessor.getMinimumVoxelSize(), 1.0f);

  struct Case
  {
    float x, y, z;
    int code;
    float minimum;
  };
  const Case cases[] = { { 1, 1, 1, 0, 1 },
                         { 2, 1, 1, 3, 1 },
                         { 1, 2, 1, 1, 1 },
                         { 1, 2, 3, 0, 1 },
                         { 1, 3, 2, 1, 1 },
                         { 2, 1, 3, 2, 1 },
                         { 3, 1, 2, 3, 1 },
                         { 2, 3, 1, 4, 1 },
                         { 3, 2, 1, 5, 1 },
                         { 0.5f, 0.5f, 2, 0, 0.5f },
                         { 0.7f, 0.6f, 0.6f, 3, 0.6f } };
  for (const Case & c : cases)
  {
    accessor.setVoxelSize(c.x, c.y, c.z);
    EXPECT_EQ(accessor.getAxisOrder(), c.code) << c.x << " " << c.y << " " << c.z;
    EXPECT_EQ(accessor.getMinimumVoxelSize(), c.minimum) << c.x << " " << c.y << " " << c.z;
  }
  // The single setters recompute too.
  accessor.setVoxelSize(1, 1, 1);
  accessor.setVoxelSizeX(2);
  EXPECT_EQ(accessor.getAxisOrder(), 3);
  accessor.setVoxelSizeX(1);
  accessor.setVoxelSizeY(2);
  EXPECT_EQ(accessor.getAxisOrder(), 1);
  accessor.setVoxelSizeZ(0.25f);
  EXPECT_EQ(accessor.getAxisOrder(), 4);
  EXPECT_EQ(accessor.getMinimumVoxelSize(), 0.25f);
  // A NaN size satisfies no row: both fields keep their values.
  accessor.setVoxelSizeY(std::nanf(""));
  EXPECT_EQ(accessor.getAxisOrder(), 4);
  EXPECT_EQ(accessor.getMinimumVoxelSize(), 0.25f);
}

TEST(VolumeAccessorTest, EmptyAccessorDropsWritesAndReadsTheOutsideValue)
{
  VolumeAccessor<float> empty(0.0f);
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_EQ(empty.getPic(), nullptr);
  EXPECT_FALSE(empty.getOwnsPic());
  EXPECT_EQ(empty.getSizeX(), 0u);
  EXPECT_EQ(empty.getSizeY(), 0u);
  EXPECT_EQ(empty.getSizeZ(), 0u);
  EXPECT_EQ(empty.getVoxelSizeZ(), 1.0f);
  EXPECT_EQ(empty.getOriginX(), 0.0f);
  empty.setVoxel(0, 0, 0, 3.0f);
  EXPECT_EQ(empty.getVoxel(0, 0, 0), 0.0f);
}

TEST(VolumeAccessorTest, NonThreeDimensionalPicIsNotRejectedButLeftWithoutVoxels)
{
  const std::uint32_t sizes[2] = { 4, 4 };
  lumoIpPicDescriptor * flat = lumoIpPicNewVolume(lumoIpPicUInt, 8, 2, sizes);
  {
    VolumeAccessor<unsigned char> accessor(flat, 9, true);
    EXPECT_FALSE(accessor.isEmpty());
    EXPECT_EQ(accessor.getSizeX(), 0u);
    EXPECT_EQ(accessor.getPic(), nullptr);
    EXPECT_FALSE(accessor.getOwnsPic());
    EXPECT_EQ(accessor.getVoxel(0, 0, 0), 9);
  }
  lumoIpPicFree(flat); // not taken over
}

TEST(VolumeAccessorDeathTest, NullPicEndsTheProcess)
{
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      VolumeAccessor<unsigned char> accessor(nullptr, 0, false);
    },
    ::testing::ExitedWithCode(1),
    exactly("VolumeAccessor::VolumeAccessor(...): thePic == null or pic->dim!=3! "));
  const ChildOutcome outcome = runInChild([] { VolumeAccessor<float> accessor(nullptr, 0.0f, true); });
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "VolumeAccessor::VolumeAccessor(...): thePic == null or pic->dim!=3! \n");
}

TEST(Point3DTest, CoordinatesAreSixteenBitAndSettable)
{
  Point3D point(1, 2, 3);
  EXPECT_EQ(point.getX(), 1);
  EXPECT_EQ(point.getY(), 2);
  EXPECT_EQ(point.getZ(), 3);
  point.set(65535, 0, 7);
  point.setY(40000);
  EXPECT_EQ(point.getX(), 65535);
  EXPECT_EQ(point.getY(), 40000);
  EXPECT_EQ(point.getZ(), 7);
  point.setX(4);
  point.setZ(5);
  EXPECT_EQ(point.getX(), 4);
  EXPECT_EQ(point.getZ(), 5);
}

TEST(DistancePoint3DTest, DistanceAlwaysMatchesTheVector)
{
  DistancePoint3D point(4, 5, 6, 3.0f, 4.0f, 12.0f);
  EXPECT_EQ(point.getX(), 4);
  EXPECT_EQ(point.getVectorX(), 3.0f);
  EXPECT_EQ(point.getVectorY(), 4.0f);
  EXPECT_EQ(point.getVectorZ(), 12.0f);
  EXPECT_EQ(point.getSquaredDistance(), 169.0f);
  EXPECT_EQ(point.getDistance(), 13.0f);

  point.setVectorX(0.0f);
  EXPECT_EQ(point.getSquaredDistance(), 160.0f);
  EXPECT_EQ(point.getDistance(), std::sqrt(160.0f));
  point.setVectorY(0.0f);
  EXPECT_EQ(point.getDistance(), 12.0f);
  point.setVectorZ(2.0f);
  EXPECT_EQ(point.getSquaredDistance(), 4.0f);
  point.setVector(1.0f, 1.0f, 1.0f);
  EXPECT_EQ(point.getSquaredDistance(), 3.0f);
  EXPECT_EQ(point.getDistance(), std::sqrt(3.0f));

  DistancePoint3D zero(0, 0, 0, 0.0f, 0.0f, 0.0f);
  EXPECT_EQ(zero.getDistance(), 0.0f);
}

TEST(DistancePoint3DTest, SquaredLengthAddsZToTheSumOfYAndX)
{
  // In float, 4 + (1e8 + 4) rounds twice to 1e8, while (4 + 4) + 1e8 would be 1e8 + 8: the grouping is pinned.
  DistancePoint3D point(0, 0, 0, 2.0f, 10000.0f, 2.0f);
  EXPECT_EQ(point.getSquaredDistance(), 1e8f);
  EXPECT_EQ(DistancePoint3D::squaredLength(2.0f, 10000.0f, 2.0f), 1e8f);
  EXPECT_EQ(point.getDistance(), 10000.0f);
  point.setVector(2.0f, 2.0f, 10000.0f);
  EXPECT_EQ(point.getSquaredDistance(), 1e8f + 8.0f);
}
