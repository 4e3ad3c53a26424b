#include "BorderVoxelHashMap.h"
#include "BorderVoxelListProcessor.h"
#include "CleaningSelleSkeletonizer.h"
#include "OrderedBorderVoxelListProcessor.h"
#include "RecursiveNeighbourhoodConnectionEvaluator.h"
#include "SelleSimplePointEvaluator.h"
#include "SelleSkeletonizer.h"

#include "ExtractionTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <array>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{
struct Voxel
{
  int x, y, z;
  bool
  operator<(const Voxel & o) const
  {
    return std::tie(z, y, x) < std::tie(o.z, o.y, o.x);
  }
  bool
  operator==(const Voxel & o) const
  {
    return x == o.x && y == o.y && z == o.z;
  }
};

std::vector<Voxel>
foregroundOf(const lumoIpPicDescriptor * pic)
{
  std::vector<Voxel> voxels;
  const auto * data = static_cast<const unsigned char *>(pic->data);
  std::size_t i = 0;
  for (std::uint32_t z = 0; z < pic->n[2]; ++z)
    for (std::uint32_t y = 0; y < pic->n[1]; ++y)
      for (std::uint32_t x = 0; x < pic->n[0]; ++x, ++i)
        if (data[i] != 0)
          voxels.push_back({ static_cast<int>(x), static_cast<int>(y), static_cast<int>(z) });
  return voxels;
}

// FNV-1a over the sorted linear indices: a compact pin of a voxel set.
std::uint64_t
hashOf(const lumoIpPicDescriptor * pic)
{
  std::uint64_t hash = 1469598103934665603ull;
  for (const Voxel & v : foregroundOf(pic))
  {
    const std::uint64_t index = (static_cast<std::uint64_t>(v.z) * pic->n[1] + v.y) * pic->n[0] + v.x;
    for (int b = 0; b < 8; ++b)
    {
      hash ^= (index >> (8 * b)) & 0xFFu;
      hash *= 1099511628211ull;
    }
  }
  return hash;
}

// 26-connected components of the foreground, by flood fill over the whole volume.
int
objectCount(const lumoIpPicDescriptor * pic)
{
  const int nx = pic->n[0], ny = pic->n[1], nz = pic->n[2];
  const auto * data = static_cast<const unsigned char *>(pic->data);
  std::vector<bool> seen(static_cast<std::size_t>(nx) * ny * nz);
  int count = 0;
  for (std::size_t start = 0; start < seen.size(); ++start)
  {
    if (data[start] == 0 || seen[start])
      continue;
    ++count;
    std::vector<std::size_t> stack{ start };
    seen[start] = true;
    while (!stack.empty())
    {
      const std::size_t i = stack.back();
      stack.pop_back();
      const int x = static_cast<int>(i % nx), y = static_cast<int>((i / nx) % ny), z = static_cast<int>(i / nx / ny);
      for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
          for (int dx = -1; dx <= 1; ++dx)
          {
            const int ax = x + dx, ay = y + dy, az = z + dz;
            if (ax < 0 || ay < 0 || az < 0 || ax >= nx || ay >= ny || az >= nz)
              continue;
            const std::size_t j = (static_cast<std::size_t>(az) * ny + ay) * nx + ax;
            if (data[j] != 0 && !seen[j])
            {
              seen[j] = true;
              stack.push_back(j);
            }
          }
    }
  }
  return count;
}

// Euler characteristic of the union of closed foreground cubes (objects - tunnels + cavities), by cell counting.
int
eulerCharacteristic(const lumoIpPicDescriptor * pic)
{
  std::set<std::array<int, 3>> cells;
  for (const Voxel & v : foregroundOf(pic))
    for (int c = 2 * v.z; c <= 2 * v.z + 2; ++c)
      for (int b = 2 * v.y; b <= 2 * v.y + 2; ++b)
        for (int a = 2 * v.x; a <= 2 * v.x + 2; ++a)
          cells.insert({ a, b, c });
  int chi = 0;
  for (const auto & cell : cells)
    chi += ((cell[0] & 1) + (cell[1] & 1) + (cell[2] & 1)) % 2 == 0 ? 1 : -1;
  return chi;
}

// A Y of three round tubes (radius 2.6 voxels) in a 40^3 volume: a trunk along z that forks into two branches.
lumoIpPicDescriptor *
yTube()
{
  lumoIpPicDescriptor * pic = newMask(40, 40, 40);
  const double segments[3][6] = { { 20, 20, 3, 20, 20, 18 }, { 20, 20, 18, 9, 11, 36 }, { 20, 20, 18, 33, 27, 35 } };
  const double radius = 2.6;
  for (int z = 0; z < 40; ++z)
    for (int y = 0; y < 40; ++y)
      for (int x = 0; x < 40; ++x)
        for (const auto & s : segments)
        {
          const double d[3] = { s[3] - s[0], s[4] - s[1], s[5] - s[2] };
          const double p[3] = { x - s[0], y - s[1], z - s[2] };
          double t = (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
          t = std::min(1.0, std::max(0.0, t));
          const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
          if (q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= radius * radius)
            maskVoxel(pic, x, y, z) = 1;
        }
  return pic;
}

// Forces the evaluator path of the list processor (one virtual call per test on a fresh array) by a connection
// evaluator that is not exactly the default class; answers are the same.
struct PlainConnection : RecursiveNeighbourhoodConnectionEvaluator
{};

void
useEvaluatorPath(Skeletonizer & skeletonizer)
{
  skeletonizer.getBorderVoxelListProcessor()->getSimplePointEvaluator()->setNeighbourhoodConnectionEvaluator(
    new PlainConnection);
}

// Frees the pics the skeletonizer leaves to its caller.
void
releasePics(Skeletonizer * skeletonizer)
{
  lumoIpPicDescriptor * binary = skeletonizer->getBinaryPic();
  lumoIpPicDescriptor * distance = skeletonizer->getDistancePic();
  delete skeletonizer;
  lumoIpPicFree(binary);
  lumoIpPicFree(distance);
}

struct TrivialSkeletonizer : Skeletonizer
{
  using Skeletonizer::Skeletonizer;
  void
  skeletonize() override
  {}
};

// Removes a scripted number of voxels per run, whatever their topology, to drive the stop rule.
class ScriptedProcessor : public BorderVoxelListProcessor
{
public:
  ScriptedProcessor(Skeletonizer & skeletonizer, std::vector<int> script)
    : BorderVoxelListProcessor(skeletonizer.getBinaryVolume(), skeletonizer.getDistanceVolume())
    , m_script(std::move(script))
  {}
  DistancePoint3DList *
  processList(const DistancePoint3DList & list) override
  {
    const int toRemove = m_runs < m_script.size() ? m_script[m_runs] : 1;
    ++m_runs;
    m_removedVoxels = 0;
    auto * survivors = new DistancePoint3DList;
    for (DistancePoint3D * point : list)
    {
      if (m_removedVoxels < toRemove)
      {
        m_binaryVolume->setVoxel(point->getX(), point->getY(), point->getZ(), 0);
        ++m_removedVoxels;
      }
      else
      {
        survivors->push_back(point);
      }
    }
    return survivors;
  }
  std::size_t m_runs{ 0 };

private:
  std::vector<int> m_script;
};
} // namespace

// ---- Construction ----

TEST(SkeletonizerDeathTest, NullAndNonThreeDimensionalInputEndTheProcess)
{
  const std::string nullMessage =
    "Skeletonizer::Skeletonizer(lumoIpPicDescriptor*, BordeVoxelListProcessor*) fehlgeschlagen: NULL \xFC"
    "bergeben!";
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      SelleSkeletonizer skeletonizer(nullptr, false, false);
    },
    ::testing::ExitedWithCode(1),
    exactly(nullMessage));
  const ChildOutcome outcome = runInChild([] { CleaningSelleSkeletonizer skeletonizer(nullptr, true, 2, true); });
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, nullMessage + "\n");

  const std::uint32_t sizes[2] = { 8, 8 };
  lumoIpPicDescriptor * flat = lumoIpPicNewVolume(lumoIpPicUInt, 8, 2, sizes);
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      SelleSkeletonizer skeletonizer(flat, false, false);
    },
    ::testing::ExitedWithCode(1),
    exactly("Sorry, only 3D-Volumes are supported!"));
  lumoIpPicFree(flat);
}

TEST(BorderVoxelListProcessorDeathTest, NullVolumeEndsTheProcess)
{
  const std::string message = "BorderVoxelListProcessor::Konstruktor: ein Parameter wurde mit Wert Null \xFC"
                              "bergeben!";
  VolumeAccessor<float> distance(0.0f);
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      BorderVoxelListProcessor processor(nullptr, &distance);
    },
    ::testing::ExitedWithCode(1),
    exactly(message));
  lumoIpPicDescriptor * mask = newMask(4, 4, 4);
  VolumeAccessor<unsigned char> binary(mask, 0, true);
  const ChildOutcome outcome = runInChild([&] { OrderedBorderVoxelListProcessor processor(&binary, nullptr, true); });
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, message + "\n");
}

TEST(SkeletonizerDeathTest, PicThatCannotBeConvertedEndsTheProcessInTheBinaryVolume)
{
  // A 16-bit header without voxels: the conversion yields nothing, and the binary volume refuses the null pic.
  const ChildOutcome outcome = runInChild([] {
    lumoIpPicDescriptor * header = lumoIpPicNew();
    header->type = lumoIpPicUInt;
    header->bpe = 16;
    header->dim = 3;
    header->n[0] = header->n[1] = header->n[2] = 4;
    SelleSkeletonizer skeletonizer(header, false, false);
  });
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.output, "VolumeAccessor::VolumeAccessor(...): thePic == null or pic->dim!=3! \n");
}

TEST(BorderVoxelListProcessorTest, DeletesSimpleVoxelsInListOrderUntilAPassDeletesNothing)
{
  lumoIpPicDescriptor * mask = newMask(5, 5, 5);
  const int square[4][2] = { { 1, 1 }, { 2, 1 }, { 1, 2 }, { 2, 2 } };
  DistancePoint3DList list;
  for (const auto & xy : square)
  {
    maskVoxel(mask, xy[0], xy[1], 2) = 1;
    list.push_back(new DistancePoint3D(xy[0], xy[1], 2, 1.0f, 0.0f, 0.0f));
  }
  VolumeAccessor<unsigned char> binary(mask, 0, true);
  VolumeAccessor<float> distance(0.0f);
  BorderVoxelListProcessor processor(&binary, &distance);
  // (1, 1) goes (an L remains), then (2, 1) (two neighbours that touch), and the last two are endpoints.
  std::unique_ptr<DistancePoint3DList> survivors(processor.processList(list));
  EXPECT_EQ(processor.getRemovedVoxels(), 2);
  ASSERT_EQ(survivors->size(), 2u);
  EXPECT_EQ((*survivors)[0], list[2]);
  EXPECT_EQ((*survivors)[1], list[3]);
  EXPECT_EQ(binary.getVoxel(1, 1, 2), 0);
  EXPECT_EQ(binary.getVoxel(2, 1, 2), 0);
  EXPECT_EQ(binary.getVoxel(1, 2, 2), 1);
  for (DistancePoint3D * point : list)
    delete point;
}

TEST(SkeletonizerTest, ConvertsOtherElementTypesAndTakesOverTheInput)
{
  const std::uint32_t sizes[3] = { 6, 5, 4 };
  lumoIpPicDescriptor * wide = lumoIpPicNewVolume(lumoIpPicUInt, 16, 3, sizes);
  static_cast<unsigned short *>(wide->data)[(2 * 5 + 2) * 6 + 3] = 1000;
  auto * skeletonizer = new SelleSkeletonizer(wide, true, false); // frees `wide`
  lumoIpPicDescriptor * binary = skeletonizer->getBinaryPic();
  ASSERT_NE(binary, nullptr);
  EXPECT_NE(binary, wide);
  EXPECT_EQ(binary->type, lumoIpPicUInt);
  EXPECT_EQ(binary->bpe, 8u);
  EXPECT_EQ(skeletonizer->getBinaryVolume()->getVoxel(3, 2, 2), 1000 % 256); // cast as the Pic utilities do
  EXPECT_EQ(skeletonizer->getBinaryVolume()->getOutsideValue(), 0);
  EXPECT_FALSE(skeletonizer->getBinaryVolume()->getOwnsPic());

  lumoIpPicDescriptor * distance = skeletonizer->getDistancePic();
  ASSERT_NE(distance, nullptr);
  EXPECT_EQ(distance->type, lumoIpPicFloat);
  EXPECT_EQ(distance->bpe, 32u);
  EXPECT_EQ(distance->dim, 3u);
  EXPECT_EQ(distance->n[0], 6u);
  EXPECT_EQ(distance->n[2], 4u);
  EXPECT_FALSE(skeletonizer->getDistanceVolume()->getOwnsPic());

  skeletonizer->skeletonize();
  EXPECT_EQ(skeletonizer->getBinaryVolume()->getVoxel(3, 2, 2), 1); // an isolated voxel stays, as a border voxel
  EXPECT_EQ(skeletonizer->getDistanceVolume()->getVoxel(3, 2, 2), 1.0f);
  releasePics(skeletonizer);
}

TEST(SkeletonizerTest, WithoutDistanceVolumeTheDistanceAccessorIsEmpty)
{
  lumoIpPicDescriptor * mask = newMask(5, 5, 5);
  maskVoxel(mask, 2, 2, 2) = 1;
  auto * skeletonizer = new SelleSkeletonizer(mask, false, true);
  EXPECT_EQ(skeletonizer->getDistancePic(), nullptr);
  EXPECT_TRUE(skeletonizer->getDistanceVolume()->isEmpty());
  EXPECT_EQ(skeletonizer->getBinaryPic(), mask); // already unsigned 8-bit: taken as it is
  skeletonizer->skeletonize();
  EXPECT_EQ(skeletonizer->getDistanceVolume()->getVoxel(2, 2, 2), 0.0f);
  ASSERT_EQ(skeletonizer->getResultList()->size(), 1u);
  EXPECT_EQ(skeletonizer->getResultList()->front()->getDistance(), 1.0f);
  releasePics(skeletonizer);
}

TEST(SkeletonizerTest, VoxelSizesGoToBothVolumesInTheBaseAndToTheBinaryVolumeInSelle)
{
  auto * base = new TrivialSkeletonizer(newMask(3, 3, 3), true, false);
  base->setVoxelSizeX(0.5f);
  base->setVoxelSizeY(0.7f);
  base->setVoxelSizeZ(2.0f);
  EXPECT_EQ(base->getBinaryVolume()->getVoxelSizeX(), 0.5f);
  EXPECT_EQ(base->getDistanceVolume()->getVoxelSizeX(), 0.5f);
  EXPECT_EQ(base->getDistanceVolume()->getVoxelSizeY(), 0.7f);
  EXPECT_EQ(base->getDistanceVolume()->getVoxelSizeZ(), 2.0f);
  releasePics(base);

  auto * selle = new SelleSkeletonizer(newMask(3, 3, 3), true, false);
  EXPECT_EQ(selle->getMinimumVoxelSize(), 1.0f);
  selle->setVoxelSizeX(2.0f);
  selle->setVoxelSizeY(0.8f);
  selle->setVoxelSizeZ(1.5f);
  EXPECT_EQ(selle->getBinaryVolume()->getVoxelSizeY(), 0.8f);
  EXPECT_EQ(selle->getDistanceVolume()->getVoxelSizeY(), 1.0f);
  EXPECT_EQ(selle->getBinaryVolume()->getAxisOrder(), 3); // y <= z <= x
  EXPECT_EQ(selle->getMinimumVoxelSize(), 0.8f);
  selle->setVoxelSizeZ(0.5f);
  EXPECT_EQ(selle->getMinimumVoxelSize(), 0.5f);
  releasePics(selle);
}

TEST(SkeletonizerTest, ReplacingTheListProcessorDeletesTheOldOne)
{
  auto * skeletonizer = new SelleSkeletonizer(newMask(4, 4, 4), true, false);
  auto * processor = new ScriptedProcessor(*skeletonizer, {});
  skeletonizer->setBorderVoxelListProcessor(processor); // the default one is deleted (the leak check would see it)
  skeletonizer->setBorderVoxelListProcessor(nullptr);
  EXPECT_EQ(skeletonizer->getBorderVoxelListProcessor(), processor);
  releasePics(skeletonizer);
}

// ---- Thinning rules ----

TEST(SelleSkeletonizerTest, IsolatedVoxelsAndLineEndsSurvive)
{
  lumoIpPicDescriptor * mask = newMask(20, 12, 12);
  maskVoxel(mask, 2, 2, 2) = 1; // isolated
  for (int x = 4; x <= 15; ++x) // a straight line
    maskVoxel(mask, x, 9, 9) = 7;
  for (int i = 0; i < 5; ++i) // a diagonal line
    maskVoxel(mask, 10 + i, 1 + i, 1 + i) = 1;
  const std::vector<Voxel> before = foregroundOf(mask);
  auto * skeletonizer = new SelleSkeletonizer(mask, true, false);
  skeletonizer->skeletonize();
  EXPECT_EQ(foregroundOf(skeletonizer->getBinaryPic()), before);
  // Nothing could be removed: iterations 1 and 2 were idle, so the counter ended at 3.
  EXPECT_EQ(skeletonizer->getIterationCounter(), 3u);
  EXPECT_EQ(skeletonizer->getResultList()->size(), before.size());
  for (const Voxel & v : before)
    EXPECT_EQ(skeletonizer->getBinaryVolume()->getVoxel(v.x, v.y, v.z), 1);
  releasePics(skeletonizer);
}

TEST(SelleSkeletonizerTest, SolidBlockThinsToAShapeOfItsCentreAndStops)
{
  auto block = [] {
    lumoIpPicDescriptor * mask = newMask(11, 11, 11);
    for (int z = 2; z <= 8; ++z)
      for (int y = 2; y <= 8; ++y)
        for (int x = 2; x <= 8; ++x)
          maskVoxel(mask, x, y, z) = 1;
    return mask;
  };
  // More neighbours first: the corners are left as ends of the four diagonals through the centre.
  auto * skeletonizer = new SelleSkeletonizer(block(), true, false);
  skeletonizer->skeletonize();
  std::vector<Voxel> diagonals;
  for (int k = 0; k <= 3; ++k)
    for (int sz = -1; sz <= 1; sz += 2)
      for (int sy = -1; sy <= 1; sy += 2)
        for (int sx = -1; sx <= 1; sx += 2)
          if (k > 0 || (sx < 0 && sy < 0 && sz < 0))
            diagonals.push_back({ 5 + k * sx, 5 + k * sy, 5 + k * sz });
  std::sort(diagonals.begin(), diagonals.end());
  EXPECT_EQ(foregroundOf(skeletonizer->getBinaryPic()), diagonals);
  // Three layers remove voxels; the centre's layer (4) and the next are idle and end the loop.
  EXPECT_EQ(skeletonizer->getIterationCounter(), 6u);
  // The centre is 4 voxels from the background: its distance came inwards layer by layer.
  VolumeAccessor<float> & distance = *skeletonizer->getDistanceVolume();
  EXPECT_EQ(distance.getVoxel(5, 5, 5), 4.0f);
  EXPECT_EQ(distance.getVoxel(3, 5, 5), 2.0f);
  EXPECT_EQ(distance.getVoxel(2, 5, 5), 1.0f);
  EXPECT_EQ(distance.getVoxel(3, 3, 5), 2.0f); // x - 1 and y - 1 offer 2 each: x - 1 wins, no diagonal sum
  EXPECT_EQ(distance.getVoxel(0, 0, 0), 0.0f);
  releasePics(skeletonizer);

  // Fewer neighbours first: a short line along y through the centre.
  skeletonizer = new SelleSkeletonizer(block(), false, true);
  skeletonizer->skeletonize();
  EXPECT_EQ(foregroundOf(skeletonizer->getBinaryPic()), (std::vector<Voxel>{ { 5, 4, 5 }, { 5, 5, 5 }, { 5, 6, 5 } }));
  EXPECT_EQ(skeletonizer->getIterationCounter(), 6u);
  releasePics(skeletonizer);
}

TEST(SelleSkeletonizerTest, SecondIdleIterationEndsThinningEvenWhenNotConsecutive)
{
  lumoIpPicDescriptor * mask = newMask(16, 5, 5);
  for (int x = 2; x <= 13; ++x)
    maskVoxel(mask, x, 2, 2) = 1;
  auto * skeletonizer = new SelleSkeletonizer(mask, true, false);
  auto * processor = new ScriptedProcessor(*skeletonizer, { 0, 1, 0, 1, 1, 1 });
  skeletonizer->setBorderVoxelListProcessor(processor);
  skeletonizer->skeletonize();
  EXPECT_EQ(processor->m_runs, 3u); // idle, removing, idle: stop, although more would go
  EXPECT_EQ(skeletonizer->getIterationCounter(), 4u);
  EXPECT_EQ(foregroundOf(skeletonizer->getBinaryPic()).size(), 11u);
  releasePics(skeletonizer);
}

TEST(SelleSkeletonizerTest, LayersFollowTheDistanceWithAnisotropicVoxels)
{
  lumoIpPicDescriptor * mask = newMask(12, 12, 10);
  for (int z = 2; z <= 6; ++z)
    for (int y = 2; y <= 8; ++y)
      for (int x = 2; x <= 8; ++x)
        maskVoxel(mask, x, y, z) = 5;
  auto * skeletonizer = new SelleSkeletonizer(mask, true, false);
  skeletonizer->setVoxelSizeX(1.0f);
  skeletonizer->setVoxelSizeY(1.0f);
  skeletonizer->setVoxelSizeZ(2.0f);
  skeletonizer->initialize();
  skeletonizer->splitLayer();

  std::set<Voxel> layer;
  std::set<Voxel> deferred;
  for (const DistancePoint3D * p : skeletonizer->getCurrentLayerList())
    layer.insert({ p->getX(), p->getY(), p->getZ() });
  for (const DistancePoint3D * p : skeletonizer->getDeferredList())
    deferred.insert({ p->getX(), p->getY(), p->getZ() });
  VolumeAccessor<unsigned char> & binary = *skeletonizer->getBinaryVolume();
  VolumeAccessor<float> & distance = *skeletonizer->getDistanceVolume();
  for (int z = 2; z <= 6; ++z)
    for (int y = 2; y <= 8; ++y)
      for (int x = 2; x <= 8; ++x)
      {
        const bool sideFace = x == 2 || x == 8 || y == 2 || y == 8;
        const bool capFace = z == 2 || z == 6;
        const Voxel v{ x, y, z };
        EXPECT_EQ(layer.count(v), sideFace ? 1u : 0u) << x << " " << y << " " << z;
        EXPECT_EQ(deferred.count(v), !sideFace && capFace ? 1u : 0u) << x << " " << y << " " << z;
        EXPECT_EQ(binary.getVoxel(x, y, z), sideFace || capFace ? 1 : 3);
        EXPECT_EQ(distance.getVoxel(x, y, z), sideFace ? 1.0f : capFace ? 2.0f : 0.0f);
      }
  // The border map is filled in scan order with x outermost, z innermost.
  const DistancePoint3DList & points = skeletonizer->getBorderVoxels().getPoints();
  ASSERT_EQ(points.size(), layer.size() + deferred.size());
  for (std::size_t i = 1; i < points.size(); ++i)
  {
    const auto key = [](const DistancePoint3D * p) { return std::make_tuple(p->getX(), p->getY(), p->getZ()); };
    EXPECT_LT(key(points[i - 1]), key(points[i]));
  }
  // A corner on an x, a y and a z face takes the x face: the first axis in order of increasing voxel size.
  const DistancePoint3D * corner = skeletonizer->getBorderVoxels().find(2, 2, 2);
  ASSERT_NE(corner, nullptr);
  EXPECT_EQ(corner->getVectorX(), 1.0f);
  EXPECT_EQ(corner->getVectorY(), 0.0f);
  EXPECT_EQ(corner->getVectorZ(), 0.0f);
  releasePics(skeletonizer);

  // With (2, 1, 1) the order is y, z, x and the smallest voxel size is that of y.
  lumoIpPicDescriptor * block = newMask(6, 6, 6);
  for (int z = 1; z <= 4; ++z)
    for (int y = 1; y <= 4; ++y)
      for (int x = 1; x <= 4; ++x)
        maskVoxel(block, x, y, z) = 1;
  auto * other = new SelleSkeletonizer(block, true, false);
  other->setVoxelSizeX(2.0f);
  other->initialize();
  const DistancePoint3D * xzEdge = other->getBorderVoxels().find(1, 2, 1);
  ASSERT_NE(xzEdge, nullptr);
  EXPECT_EQ(xzEdge->getVectorZ(), 1.0f); // z before x
  const DistancePoint3D * xFace = other->getBorderVoxels().find(1, 2, 2);
  ASSERT_NE(xFace, nullptr);
  EXPECT_EQ(xFace->getVectorX(), 2.0f);
  EXPECT_EQ(xFace->getDistance(), 2.0f);
  releasePics(other);
}

TEST(SelleSkeletonizerTest, DeferredVoxelWithoutBorderNeighboursIsReportedAndKeepsItsVector)
{
  // A dent in the top of a block: the voxel under it faces the background only along z and all its face
  // neighbours are interior, so with voxel size 2 along z it waits and finds no neighbour in the border.
  lumoIpPicDescriptor * mask = newMask(11, 11, 9);
  for (int z = 1; z <= 6; ++z)
    for (int y = 1; y <= 9; ++y)
      for (int x = 1; x <= 9; ++x)
        maskVoxel(mask, x, y, z) = 1;
  maskVoxel(mask, 5, 5, 6) = 0;
  auto * skeletonizer = new SelleSkeletonizer(mask, true, false);
  skeletonizer->setVoxelSizeZ(2.0f);
  testing::internal::CaptureStdout();
  skeletonizer->initialize();
  skeletonizer->splitLayer();
  skeletonizer->updateBorder();
  const std::string output = testing::internal::GetCapturedStdout();
  EXPECT_EQ(output, "Error in Selle Skeletonizer::getNextNeighbour(...): Point has no neighbours!\n");
  const DistancePoint3D * dent = skeletonizer->getBorderVoxels().find(5, 5, 5);
  ASSERT_NE(dent, nullptr);
  EXPECT_EQ(dent->getVectorZ(), 2.0f);
  EXPECT_EQ(skeletonizer->getDistanceVolume()->getVoxel(5, 5, 5), 2.0f);
  releasePics(skeletonizer);
}

TEST(SelleSkeletonizerTest, NextNeighbourIsTheShortestCarriedVectorWithTiesToTheEarlierDirection)
{
  lumoIpPicDescriptor * mask = newMask(9, 9, 9);
  for (int z = 1; z <= 7; ++z)
    for (int y = 1; y <= 7; ++y)
      for (int x = 1; x <= 7; ++x)
        maskVoxel(mask, x, y, z) = 1;
  auto * skeletonizer = new SelleSkeletonizer(mask, true, false);
  skeletonizer->initialize();
  skeletonizer->splitLayer();
  skeletonizer->updateBorder();
  // (2, 2, 4) became border from its x - 1 neighbour (1, 2, 4) and y - 1 neighbour (2, 1, 4), both at distance 1
  // along their own axes: the candidates (2, 0, 0)... are (1 + 1, 0, 0) and (0, 1 + 1, 0) - equal; x - 1 wins.
  const DistancePoint3D * inner = skeletonizer->getBorderVoxels().find(2, 2, 4);
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->getVectorX(), 2.0f);
  EXPECT_EQ(inner->getVectorY(), 0.0f);
  // (4, 2, 4) has only y - 1 in the old border.
  const DistancePoint3D * face = skeletonizer->getBorderVoxels().find(4, 2, 4);
  ASSERT_NE(face, nullptr);
  EXPECT_EQ(face->getVectorY(), 2.0f);
  EXPECT_EQ(face->getDistance(), 2.0f);
  releasePics(skeletonizer);
}

TEST(CleaningSelleSkeletonizerTest, PostCleanOpensSmallLoopsButKeepsEndpoints)
{
  // A diamond of four voxels around an empty centre: each is needed for the loop, so thinning keeps them all.
  auto diamond = [] {
    lumoIpPicDescriptor * mask = newMask(12, 12, 12);
    maskVoxel(mask, 6, 5, 5) = 1;
    maskVoxel(mask, 7, 6, 5) = 1;
    maskVoxel(mask, 6, 7, 5) = 1;
    maskVoxel(mask, 5, 6, 5) = 1;
    return mask;
  };
  auto * plain = new SelleSkeletonizer(diamond(), false, true);
  plain->skeletonize();
  EXPECT_EQ(foregroundOf(plain->getBinaryPic()).size(), 4u);
  releasePics(plain);

  // Cleaning removes the first in border order, (5, 6, 5); the others are then endpoints or hold the arc.
  auto * cleaning = new CleaningSelleSkeletonizer(diamond(), false, 1, true);
  EXPECT_EQ(cleaning->getCleanedIterations(), 1u);
  cleaning->skeletonize();
  const std::vector<Voxel> expected = { { 6, 5, 5 }, { 7, 6, 5 }, { 6, 7, 5 } };
  std::vector<Voxel> got = foregroundOf(cleaning->getBinaryPic());
  std::sort(got.begin(), got.end());
  std::vector<Voxel> sortedExpected = expected;
  std::sort(sortedExpected.begin(), sortedExpected.end());
  EXPECT_EQ(got, sortedExpected);
  EXPECT_EQ(cleaning->getResultList()->size(), 3u);
  releasePics(cleaning);
}

TEST(CleaningSelleSkeletonizerTest, PostCleanReportsVoxelsWithoutNeighboursInEachPass)
{
  lumoIpPicDescriptor * mask = newMask(7, 7, 7);
  maskVoxel(mask, 3, 3, 3) = 1;
  auto * skeletonizer = new CleaningSelleSkeletonizer(mask, true, 1, false);
  testing::internal::CaptureStdout();
  skeletonizer->skeletonize();
  const std::string output = testing::internal::GetCapturedStdout();
  // Two passes in the one cleaned iteration; the voxel is kept.
  EXPECT_EQ(output, "PostClean: no Startpoints found!\nPostClean: no Startpoints found!\n");
  EXPECT_EQ(skeletonizer->getBinaryVolume()->getVoxel(3, 3, 3), 1);
  releasePics(skeletonizer);
}

// ---- The pinned skeletons of a Y-shaped tube ----

namespace
{
struct Configuration
{
  const char * name;
  bool cleaning;
  bool ordering;
  std::uint32_t cleanedIterations;
  bool noDistanceVolume;
  std::size_t voxels;
  std::uint64_t hash;
  std::uint32_t iterations;
};

const Configuration configurations[] = {
  { "selle, fewer neighbours first", false, false, 0, false, 47, 5521796874985870677ull, 6 },
  { "selle, more neighbours first", false, true, 0, false, 62, 15562908955532060708ull, 6 },
  // The tube has no small loops: cleaning must not change the skeleton.
  { "cleaning 2 iterations, no distances", true, false, 2, true, 47, 5521796874985870677ull, 6 },
};

Skeletonizer *
thinnedYTube(const Configuration & c, bool evaluatorPath)
{
  SelleSkeletonizer * skeletonizer =
    c.cleaning ? new CleaningSelleSkeletonizer(yTube(), c.ordering, c.cleanedIterations, c.noDistanceVolume)
               : new SelleSkeletonizer(yTube(), c.ordering, c.noDistanceVolume);
  if (evaluatorPath)
    useEvaluatorPath(*skeletonizer);
  skeletonizer->skeletonize();
  return skeletonizer;
}
} // namespace

TEST(SelleSkeletonizerTest, YTubeSkeletonsArePinned)
{
  lumoIpPicDescriptor * tube = yTube();
  const std::size_t tubeVoxels = foregroundOf(tube).size();
  EXPECT_EQ(objectCount(tube), 1);
  EXPECT_EQ(eulerCharacteristic(tube), 1);
  lumoIpPicFree(tube);

  for (const Configuration & c : configurations)
  {
    SCOPED_TRACE(c.name);
    auto * skeletonizer = static_cast<SelleSkeletonizer *>(thinnedYTube(c, false));
    const lumoIpPicDescriptor * skeleton = skeletonizer->getBinaryPic();
    const std::vector<Voxel> voxels = foregroundOf(skeleton);
    EXPECT_EQ(tubeVoxels, 1347u);

    // Topology kept: one object without tunnels or cavities.
    EXPECT_EQ(objectCount(skeleton), 1);
    EXPECT_EQ(eulerCharacteristic(skeleton), 1);
    // Thin: no skeleton voxel could still go.
    const SelleSimplePointEvaluator simple;
    for (const Voxel & v : voxels)
    {
      unsigned char n[26];
      skeletonizer->getBinaryVolume()->read26Neighbourhood(v.x, v.y, v.z, n);
      EXPECT_FALSE(simple.isSimplePoint(n)) << v.x << " " << v.y << " " << v.z;
    }
    // The three ends are reached.
    for (const Voxel & end : { Voxel{ 20, 20, 3 }, Voxel{ 9, 11, 36 }, Voxel{ 33, 27, 35 } })
    {
      int nearest = 1 << 30;
      for (const Voxel & v : voxels)
        nearest = std::min(
          nearest, (v.x - end.x) * (v.x - end.x) + (v.y - end.y) * (v.y - end.y) + (v.z - end.z) * (v.z - end.z));
      EXPECT_LE(nearest, 9) << end.x << " " << end.y << " " << end.z;
    }
    EXPECT_EQ(voxels.size(), c.voxels);
    EXPECT_EQ(hashOf(skeleton), c.hash);
    EXPECT_EQ(skeletonizer->getIterationCounter(), c.iterations);
    releasePics(skeletonizer);
  }
}

TEST(SelleSkeletonizerTest, PackedTestsGiveTheSameSkeletonAsTheEvaluators)
{
  for (const Configuration & c : configurations)
  {
    SCOPED_TRACE(c.name);
    Skeletonizer * fast = thinnedYTube(c, false);
    Skeletonizer * reference = thinnedYTube(c, true);
    EXPECT_EQ(foregroundOf(fast->getBinaryPic()), foregroundOf(reference->getBinaryPic()));
    const auto * fastResult = static_cast<SelleSkeletonizer *>(fast)->getResultList();
    const auto * referenceResult = static_cast<SelleSkeletonizer *>(reference)->getResultList();
    ASSERT_EQ(fastResult->size(), referenceResult->size());
    for (std::size_t i = 0; i < fastResult->size(); ++i)
    {
      EXPECT_EQ((*fastResult)[i]->getX(), (*referenceResult)[i]->getX());
      EXPECT_EQ((*fastResult)[i]->getY(), (*referenceResult)[i]->getY());
      EXPECT_EQ((*fastResult)[i]->getZ(), (*referenceResult)[i]->getZ());
      EXPECT_EQ((*fastResult)[i]->getDistance(), (*referenceResult)[i]->getDistance());
    }
    releasePics(fast);
    releasePics(reference);
  }

  // Random blobs touching the faces of the volume, where the packed read falls back to the accessor.
  std::mt19937 generator(99u);
  for (int round = 0; round < 4; ++round)
  {
    lumoIpPicDescriptor * mask = newMask(18, 16, 14);
    for (int blob = 0; blob < 6; ++blob)
    {
      const int cx = generator() % 18, cy = generator() % 16, cz = generator() % 14;
      const int r2 = 4 + generator() % 12;
      for (int z = 0; z < 14; ++z)
        for (int y = 0; y < 16; ++y)
          for (int x = 0; x < 18; ++x)
            if ((x - cx) * (x - cx) + (y - cy) * (y - cy) + (z - cz) * (z - cz) <= r2)
              maskVoxel(mask, x, y, z) = 1;
    }
    lumoIpPicDescriptor * copy = lumoIpPicClone(mask);
    auto * fast = new SelleSkeletonizer(mask, round % 2 == 0, false);
    auto * reference = new SelleSkeletonizer(copy, round % 2 == 0, false);
    useEvaluatorPath(*reference);
    fast->skeletonize();
    reference->skeletonize();
    EXPECT_EQ(foregroundOf(fast->getBinaryPic()), foregroundOf(reference->getBinaryPic())) << round;
    EXPECT_EQ(fast->getIterationCounter(), reference->getIterationCounter());
    releasePics(fast);
    releasePics(reference);
  }
}
