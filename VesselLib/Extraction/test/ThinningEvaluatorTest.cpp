#include "LobregtEulerCharacteristicEvaluator.h"
#include "NeighbourhoodOrder.h"
#include "OrderedBorderVoxelListProcessor.h"
#include "PackedNeighbourhood.h"
#include "RecursiveNeighbourhoodConnectionEvaluator.h"
#include "SelleBorderTypeEvaluator.h"
#include "SelleSimplePointEvaluator.h"
#include "SimpleEndpointEvaluator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace
{
using Neighbourhood = std::array<unsigned char, 26>;

// ---- An independent topology count, by plain flood fills and cell counting in a padded 5 x 5 x 5 box. ----

struct Box
{
  bool voxel[5][5][5] = {}; // [z][y][x]; the outer shell stays background
};

Box
boxOf(const Neighbourhood & neighbourhood, bool centre)
{
  Box box;
  for (int i = 0; i < 26; ++i)
  {
    const int * o = NeighbourhoodOrder::offsets26[i];
    box.voxel[2 + o[2]][2 + o[1]][2 + o[0]] = neighbourhood[i] != 0;
  }
  box.voxel[2][2][2] = centre;
  return box;
}

// Neighbour lists of the 125 box cells, for 6- and 26-adjacency.
struct BoxAdjacency
{
  int count6[125] = {};
  int count26[125] = {};
  int list6[125][6];
  int list26[125][26];
  BoxAdjacency()
  {
    for (int cell = 0; cell < 125; ++cell)
    {
      const int x = cell % 5, y = (cell / 5) % 5, z = cell / 25;
      for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
          for (int dx = -1; dx <= 1; ++dx)
          {
            const int steps = (dx != 0) + (dy != 0) + (dz != 0);
            const int nx = x + dx, ny = y + dy, nz = z + dz;
            if (steps == 0 || nx < 0 || ny < 0 || nz < 0 || nx > 4 || ny > 4 || nz > 4)
              continue;
            const int next = (nz * 5 + ny) * 5 + nx;
            list26[cell][count26[cell]++] = next;
            if (steps == 1)
              list6[cell][count6[cell]++] = next;
          }
    }
  }
};

// Components of the voxels equal to `value`, by plain flood fill with 26- or 6-adjacency.
int
components(const Box & box, bool value, bool adjacency26)
{
  static const BoxAdjacency adjacency;
  const bool * voxels = &box.voxel[0][0][0];
  bool seen[125] = {};
  int stack[125];
  int count = 0;
  for (int cell = 0; cell < 125; ++cell)
  {
    if (voxels[cell] != value || seen[cell])
      continue;
    ++count;
    int top = 0;
    stack[top++] = cell;
    seen[cell] = true;
    while (top > 0)
    {
      const int current = stack[--top];
      const int n = adjacency26 ? adjacency.count26[current] : adjacency.count6[current];
      const int * list = adjacency26 ? adjacency.list26[current] : adjacency.list6[current];
      for (int i = 0; i < n; ++i)
      {
        if (voxels[list[i]] == value && !seen[list[i]])
        {
          seen[list[i]] = true;
          stack[top++] = list[i];
        }
      }
    }
  }
  return count;
}

// Euler characteristic of the union of the closed voxel cubes: vertices - edges + faces - cubes. Cells are
// addressed in doubled coordinates (odd along the axes a cell spans); each set voxel covers the 3 x 3 x 3 cells
// of its closure.
int
eulerCharacteristic(const Box & box)
{
  bool covered[11][11][11] = {};
  for (int z = 1; z <= 3; ++z)
    for (int y = 1; y <= 3; ++y)
      for (int x = 1; x <= 3; ++x)
        if (box.voxel[z][y][x])
          for (int c = 2 * z; c <= 2 * z + 2; ++c)
            for (int b = 2 * y; b <= 2 * y + 2; ++b)
              for (int a = 2 * x; a <= 2 * x + 2; ++a)
                covered[c][b][a] = true;
  int chi = 0;
  for (int c = 2; c <= 8; ++c)
    for (int b = 2; b <= 8; ++b)
      for (int a = 2; a <= 8; ++a)
        if (covered[c][b][a])
          chi += ((a & 1) + (b & 1) + (c & 1)) % 2 == 0 ? 1 : -1;
  return chi;
}

struct Topology
{
  int objects;
  int tunnels;
  int cavities;
  int euler;
  bool
  operator==(const Topology & other) const
  {
    return objects == other.objects && tunnels == other.tunnels && cavities == other.cavities;
  }
};

Topology
topologyOf(const Box & box)
{
  const int objects = components(box, true, true);
  const int backgrounds = components(box, false, false);
  const int cavities = backgrounds - 1; // the shell is background and belongs to the outside component
  const int euler = eulerCharacteristic(box);
  return { objects, objects + cavities - euler, cavities, euler };
}

// Random neighbourhoods over a spread of densities, reproducible on every platform (raw mt19937 output only).
class NeighbourhoodSource
{
public:
  explicit NeighbourhoodSource(std::uint32_t seed)
    : m_generator(seed)
  {}
  Neighbourhood
  next()
  {
    static const std::uint32_t densities[] = { 20, 45, 70, 100, 128, 160, 190, 215, 235 }; // of 256
    const std::uint32_t density = densities[m_count++ % 9];
    Neighbourhood neighbourhood{};
    for (auto & entry : neighbourhood)
    {
      entry = (m_generator() >> 24) < density ? 1 : 0;
    }
    return neighbourhood;
  }

private:
  std::mt19937 m_generator;
  std::uint32_t m_count{ 0 };
};
} // namespace

// ---- Euler table and octant bits ----

TEST(LobregtEulerCharacteristicEvaluatorTest, TableIsEightTimesTheLocalEulerShareForEveryOctantConfiguration)
{
  // Window voxel (i, j, k) is bit i + 2j + 4k; the shared middle vertex gets vertex 1, each covered incident edge
  // -1/2, face +1/4, cube -1/8.
  for (int index = 0; index < 256; ++index)
  {
    auto set = [index](int i, int j, int k) { return (index >> (i + 2 * j + 4 * k)) & 1; };
    int edges = 0;
    int faces = 0;
    for (int axis = 0; axis < 3; ++axis)
    {
      for (int side = 0; side < 2; ++side)
      {
        bool covered = false;
        for (int v = 0; v < 8; ++v)
        {
          const int c[3] = { v & 1, (v >> 1) & 1, (v >> 2) & 1 };
          covered = covered || (c[axis] == side && set(c[0], c[1], c[2]));
        }
        edges += covered;
      }
      for (int u = 0; u < 2; ++u)
      {
        for (int w = 0; w < 2; ++w)
        {
          bool covered = false;
          for (int v = 0; v < 8; ++v)
          {
            const int c[3] = { v & 1, (v >> 1) & 1, (v >> 2) & 1 };
            const int a1 = (axis + 1) % 3;
            const int a2 = (axis + 2) % 3;
            covered = covered || (c[a1] == u && c[a2] == w && set(c[0], c[1], c[2]));
          }
          faces += covered;
        }
      }
    }
    const int cubes = __builtin_popcount(static_cast<unsigned>(index));
    const int expected = index == 0 ? 0 : 8 - 4 * edges + 2 * faces - cubes;
    EXPECT_EQ(LobregtEulerCharacteristicEvaluator::tableValue(index), expected) << "index " << index;
  }
}

TEST(LobregtEulerCharacteristicEvaluatorTest, OctantBitsPutTheCentreAtBitZeroAndSpanOneCorner)
{
  for (int octant = 0; octant < 8; ++octant)
  {
    int positions[8];
    LobregtEulerCharacteristicEvaluator::octantPositions(octant, positions);
    EXPECT_EQ(positions[0], -1);
    const int sx = (octant & 1) ? 1 : -1;
    const int sy = (octant & 2) ? 1 : -1;
    const int sz = (octant & 4) ? 1 : -1;
    EXPECT_EQ(positions[1], NeighbourhoodOrder::index26(sx, 0, 0));
    EXPECT_EQ(positions[2], NeighbourhoodOrder::index26(0, sy, 0));
    EXPECT_EQ(positions[4], NeighbourhoodOrder::index26(0, 0, sz));
    EXPECT_EQ(positions[7], NeighbourhoodOrder::index26(sx, sy, sz));
  }
}

TEST(LobregtEulerCharacteristicEvaluatorTest, KnownShapes)
{
  const LobregtEulerCharacteristicEvaluator evaluator;
  Neighbourhood empty{};
  // Deleting an isolated voxel removes one object: change -1, times eight.
  EXPECT_EQ(LobregtEulerCharacteristicEvaluator::eulerChange(empty.data()), -8);
  EXPECT_TRUE(evaluator.changesEulerCharacteristic(empty.data()));
  // Deleting the middle of a full cube opens a cavity: +1.
  Neighbourhood full;
  full.fill(1);
  EXPECT_EQ(LobregtEulerCharacteristicEvaluator::eulerChange(full.data()), 8);
  // The end of a line: no change.
  Neighbourhood lineEnd{};
  lineEnd[NeighbourhoodOrder::xPlus] = 1;
  EXPECT_EQ(LobregtEulerCharacteristicEvaluator::eulerChange(lineEnd.data()), 0);
  EXPECT_FALSE(evaluator.changesEulerCharacteristic(lineEnd.data()));
  Neighbourhood ring{};
  for (int dx = -1; dx <= 1; ++dx)
    for (int dy = -1; dy <= 1; ++dy)
      if (dx != 0 || dy != 0)
        ring[NeighbourhoodOrder::index26(dx, dy, 0)] = 1;
  // The centre completes a filled 3 x 3 square; without it the square is a ring (one tunnel): change -1.
  EXPECT_EQ(LobregtEulerCharacteristicEvaluator::eulerChange(ring.data()), -8);
}

// The property the octant bits must give: a voxel that the simple point test lets go never changes the number of
// objects, tunnels or cavities; and one that changes none of them (and is no endpoint) is always let go.
TEST(SelleSimplePointEvaluatorTest, DeletionKeepsObjectsTunnelsAndCavitiesOnRandomNeighbourhoods)
{
  const SelleSimplePointEvaluator evaluator;
  NeighbourhoodSource source(20240611u);
  const int samples = 300000;
  int deletable = 0;
  int keptEndpoints = 0;
  int keptForTopology = 0;
  int failures = 0;
  for (int sample = 0; sample < samples && failures < 20; ++sample)
  {
    const Neighbourhood neighbourhood = source.next();
    const Topology before = topologyOf(boxOf(neighbourhood, true));
    const Topology after = topologyOf(boxOf(neighbourhood, false));
    const int foreground = static_cast<int>(std::count(neighbourhood.begin(), neighbourhood.end(), 1));
    const bool preserved = before == after;
    const bool expected = preserved && foreground >= 2;
    const bool answer = evaluator.isSimplePoint(neighbourhood.data());
    // The Euler evaluator alone measures exactly eight times the change of the independent cell count.
    const int eulerChange = LobregtEulerCharacteristicEvaluator::eulerChange(neighbourhood.data());
    if (answer != expected || eulerChange != 8 * (after.euler - before.euler))
    {
      ++failures;
      ADD_FAILURE() << "sample " << sample << ": evaluator " << answer << ", objects " << before.objects << "->"
                    << after.objects << ", tunnels " << before.tunnels << "->" << after.tunnels << ", cavities "
                    << before.cavities << "->" << after.cavities << ", euler sum " << eulerChange;
    }
    deletable += answer ? 1 : 0;
    keptEndpoints += (preserved && foreground < 2) ? 1 : 0;
    keptForTopology += preserved ? 0 : 1;
  }
  EXPECT_EQ(failures, 0);
  // The sample must exercise both answers in quantity, or it proves nothing.
  EXPECT_GT(deletable, samples / 10);
  EXPECT_GT(keptForTopology, samples / 10);
  EXPECT_GT(keptEndpoints, 100);
}

TEST(SelleSimplePointEvaluatorTest, EvaluatorsRunAsConfiguredAndOnlyDefaultsAllowPackedTests)
{
  struct CountingConnection : RecursiveNeighbourhoodConnectionEvaluator
  {
    mutable int calls = 0;
    bool
    isConnected(const unsigned char * neighbourhood) const override
    {
      ++calls;
      return RecursiveNeighbourhoodConnectionEvaluator::isConnected(neighbourhood);
    }
  };
  SelleSimplePointEvaluator evaluator;
  EXPECT_TRUE(evaluator.hasDefaultEvaluators());
  auto * counting = new CountingConnection;
  evaluator.setNeighbourhoodConnectionEvaluator(counting);
  evaluator.setNeighbourhoodConnectionEvaluator(nullptr); // ignored
  EXPECT_EQ(evaluator.getNeighbourhoodConnectionEvaluator(), counting);
  EXPECT_FALSE(evaluator.hasDefaultEvaluators());
  Neighbourhood bar{};
  bar[NeighbourhoodOrder::xPlus] = 1;
  bar[NeighbourhoodOrder::xMinus] = 1;
  EXPECT_FALSE(evaluator.isSimplePoint(bar.data())); // not connected: the other tests do not decide
  EXPECT_EQ(counting->calls, 1);
  Neighbourhood corner{};
  corner[NeighbourhoodOrder::xPlus] = 1;
  corner[NeighbourhoodOrder::yPlus] = 1;
  EXPECT_TRUE(evaluator.isSimplePoint(corner.data()));
  EXPECT_EQ(counting->calls, 2);
}

// ---- The packed tests of the list processor's inner loop must answer as the evaluators do. ----

TEST(PackedNeighbourhoodTest, AgreesWithTheEvaluatorsOnRandomNeighbourhoods)
{
  const SelleSimplePointEvaluator simple;
  const RecursiveNeighbourhoodConnectionEvaluator connection;
  const SelleBorderTypeEvaluator border;
  NeighbourhoodSource source(7u);
  for (int sample = 0; sample < 400000; ++sample)
  {
    const Neighbourhood n = source.next();
    const std::uint32_t packed = PackedNeighbourhood::pack(n.data());
    ASSERT_EQ(PackedNeighbourhood::isDeletable(packed), simple.isSimplePoint(n.data())) << sample;
    ASSERT_EQ(PackedNeighbourhood::isConnected(packed), connection.isConnected(n.data())) << sample;
    ASSERT_EQ(PackedNeighbourhood::eulerChange(packed), LobregtEulerCharacteristicEvaluator::eulerChange(n.data()))
      << sample;
    const unsigned directions =
      (border.isBorderYMinus(n.data()) ? 1u : 0u) | (border.isBorderYPlus(n.data()) ? 2u : 0u) |
      (border.isBorderXMinus(n.data()) ? 4u : 0u) | (border.isBorderXPlus(n.data()) ? 8u : 0u) |
      (border.isBorderZMinus(n.data()) ? 16u : 0u) | (border.isBorderZPlus(n.data()) ? 32u : 0u);
    ASSERT_EQ(PackedNeighbourhood::borderDirections(packed), directions) << sample;
  }
}

TEST(PackedNeighbourhoodTest, EulerHalvesAgreeForEveryUpperAndMiddlePlane)
{
  const std::uint32_t lowerPlanes[] = { 0u, 0x1FFu, 0x155u, 0x0AAu, 0x010u };
  for (std::uint32_t lower : lowerPlanes)
  {
    for (std::uint32_t upperAndMiddle = 0; upperAndMiddle < (1u << 17); ++upperAndMiddle)
    {
      const std::uint32_t packed = upperAndMiddle | (lower << 17);
      Neighbourhood n{};
      for (int i = 0; i < 26; ++i)
      {
        n[i] = (packed >> i) & 1u;
      }
      ASSERT_EQ(PackedNeighbourhood::eulerChange(packed), LobregtEulerCharacteristicEvaluator::eulerChange(n.data()))
        << std::hex << packed;
    }
  }
}

TEST(PackedNeighbourhoodTest, ConnectivityOfSmallShapes)
{
  auto packedOf = [](std::initializer_list<std::array<int, 3>> offsets) {
    std::uint32_t packed = 0;
    for (const auto & o : offsets)
      packed |= 1u << NeighbourhoodOrder::index26(o[0], o[1], o[2]);
    return packed;
  };
  EXPECT_FALSE(PackedNeighbourhood::isConnected(0));
  EXPECT_TRUE(PackedNeighbourhood::isConnected(packedOf({ { 1, 1, 1 } })));
  EXPECT_FALSE(PackedNeighbourhood::isConnected(packedOf({ { 1, 1, 1 }, { -1, -1, -1 } })));
  EXPECT_FALSE(PackedNeighbourhood::isConnected(packedOf({ { 1, 0, 0 }, { -1, 0, 0 } })));
  // Around the empty centre through the plane z + 1.
  EXPECT_TRUE(PackedNeighbourhood::isConnected(packedOf({ { 1, 0, 0 }, { 1, 0, 1 }, { 0, 0, 1 }, { -1, 0, 0 } })));
  // Column wrap-around must not connect x + 1 of one row with x - 1 of the next.
  EXPECT_FALSE(PackedNeighbourhood::isConnected(packedOf({ { 1, 1, 0 }, { -1, 0, -1 } })));
}

// ---- Border type, endpoint, connection and buckets ----

TEST(SelleBorderTypeEvaluatorTest, FaceNeighbourAndSidePlaneDecide)
{
  const SelleBorderTypeEvaluator evaluator;
  auto isBorder = [&evaluator](int direction, const Neighbourhood & n) {
    switch (direction)
    {
      case 0:
        return evaluator.isBorderZPlus(n.data());
      case 1:
        return evaluator.isBorderZMinus(n.data());
      case 2:
        return evaluator.isBorderXPlus(n.data());
      case 3:
        return evaluator.isBorderXMinus(n.data());
      case 4:
        return evaluator.isBorderYPlus(n.data());
      default:
        return evaluator.isBorderYMinus(n.data());
    }
  };
  const int directions[6][3] = { { 0, 0, 1 }, { 0, 0, -1 }, { 1, 0, 0 }, { -1, 0, 0 }, { 0, 1, 0 }, { 0, -1, 0 } };
  for (int d = 0; d < 6; ++d)
  {
    const int * dir = directions[d];
    const int face = NeighbourhoodOrder::index26(dir[0], dir[1], dir[2]);
    EXPECT_EQ(face, SelleBorderTypeEvaluator::faceIndex[d]);
    // The side plane is every neighbour whose offset along the direction's axis equals the direction's sign.
    std::vector<int> plane;
    for (int i = 0; i < 26; ++i)
    {
      const int * o = NeighbourhoodOrder::offsets26[i];
      if (o[0] * dir[0] + o[1] * dir[1] + o[2] * dir[2] == 1)
        plane.push_back(i);
    }
    ASSERT_EQ(plane.size(), 9u);
    EXPECT_TRUE(std::equal(plane.begin(), plane.end(), SelleBorderTypeEvaluator::sidePlane[d]));

    Neighbourhood n{};
    // Everything else set: still a border in d while the side plane is empty.
    for (int i = 0; i < 26; ++i)
      n[i] = std::find(plane.begin(), plane.end(), i) == plane.end() ? 1 : 0;
    EXPECT_TRUE(isBorder(d, n)) << d;
    const int sideVoxel = plane[0] == face ? plane[1] : plane[0];
    n[sideVoxel] = 3; // one foreground voxel in the side plane, an interior label
    EXPECT_TRUE(isBorder(d, n)) << d;
    n[plane[8] == face ? plane[7] : plane[8]] = 1; // two
    EXPECT_FALSE(isBorder(d, n)) << d;
    // A set face neighbour makes it no border whatever the side plane holds.
    Neighbourhood faceOnly{};
    faceOnly[face] = 1;
    EXPECT_FALSE(isBorder(d, faceOnly)) << d;
    Neighbourhood empty{};
    EXPECT_TRUE(isBorder(d, empty)) << d;
  }
}

TEST(SimpleEndpointEvaluatorTest, AtMostOneForegroundNeighbour)
{
  const SimpleEndpointEvaluator evaluator;
  Neighbourhood n{};
  EXPECT_TRUE(evaluator.isEndpoint(n.data()));
  n[25] = 1;
  EXPECT_TRUE(evaluator.isEndpoint(n.data()));
  n[0] = 3;
  EXPECT_FALSE(evaluator.isEndpoint(n.data()));
}

TEST(RecursiveNeighbourhoodConnectionEvaluatorTest, AdjacencyTableAndFill)
{
  // Corner 0 is adjacent to 1, 3, 4, 9, 10, 12.
  ASSERT_EQ(RecursiveNeighbourhoodConnectionEvaluator::adjacentCount(0), 6);
  const int expected[6] = { 1, 3, 4, 9, 10, 12 };
  for (int i = 0; i < 6; ++i)
    EXPECT_EQ(RecursiveNeighbourhoodConnectionEvaluator::adjacentPosition(0, i), expected[i]);
  for (int p = 0; p < 26; ++p)
  {
    const int * o = NeighbourhoodOrder::offsets26[p];
    const int nonZero = (o[0] != 0) + (o[1] != 0) + (o[2] != 0);
    const int count = nonZero == 3 ? 6 : nonZero == 2 ? 10 : 16;
    EXPECT_EQ(RecursiveNeighbourhoodConnectionEvaluator::adjacentCount(p), count) << p;
  }
  const RecursiveNeighbourhoodConnectionEvaluator evaluator;
  Neighbourhood n{};
  EXPECT_FALSE(evaluator.isConnected(n.data()));
  n[0] = 1;
  EXPECT_TRUE(evaluator.isConnected(n.data()));
  n[25] = 1;
  EXPECT_FALSE(evaluator.isConnected(n.data()));
  for (int i : { 1, 2, 5, 13, 16, 25 }) // a chain from 0 around to 25... 1-2, 2-5, 5-13, 13-16, 16-25
    n[i] = 1;
  n[8] = 0;
  EXPECT_TRUE(evaluator.isConnected(n.data()));
}

TEST(OrderedBorderVoxelListProcessorTest, BucketNumbers)
{
  EXPECT_EQ(OrderedBorderVoxelListProcessor::bucketNumber(63, 27, true), 1791);
  EXPECT_EQ(OrderedBorderVoxelListProcessor::bucketNumber(0, 3, true), 192);
  EXPECT_EQ(OrderedBorderVoxelListProcessor::bucketNumber(5, 3, false), 5 + 64 * 23);
  EXPECT_EQ(OrderedBorderVoxelListProcessor::bucketNumber(63, 26, false), 63);
  EXPECT_EQ(OrderedBorderVoxelListProcessor::bucketCount, 1792);
}
