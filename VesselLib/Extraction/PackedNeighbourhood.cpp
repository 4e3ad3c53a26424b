#include "PackedNeighbourhood.h"

#include "LobregtEulerCharacteristicEvaluator.h"
#include "SelleBorderTypeEvaluator.h"

#include <vector>

namespace
{
// The 26 bits, widened to the full 3 x 3 x 3 cube with a zero centre (bit 13): bit = col + 3 row + 9 plane with
// col = dx + 1, row = 1 - dy, plane = 1 - dz, which is the neighbourhood order with the centre put back.
inline std::uint32_t
toCube(std::uint32_t packed)
{
  return (packed & 0x1FFFu) | ((packed >> 13) << 14);
}

constexpr std::uint32_t firstColumn = 0x1249249u; // col 0 in every row and plane
constexpr std::uint32_t lastColumn = firstColumn << 2;
constexpr std::uint32_t firstRow = 0x1C0E07u; // row 0 in every plane
constexpr std::uint32_t lastRow = firstRow << 6;
constexpr std::uint32_t lastPlane = 0x7FC0000u;

// All cube positions within one step (26-adjacency) of the set.
inline std::uint32_t
dilate(std::uint32_t set)
{
  std::uint32_t grown = set | ((set & ~lastColumn) << 1) | ((set & ~firstColumn) >> 1);
  grown |= ((grown & ~lastRow) << 3) | ((grown & ~firstRow) >> 3);
  grown |= ((grown & ~lastPlane) << 9) | (grown >> 9);
  return grown;
}

struct EulerHalves
{
  // Index (outer plane, 9 bits) << 8 | (middle plane without the centre, 8 bits).
  std::vector<signed char> upper;
  std::vector<signed char> lower;
  EulerHalves()
    : upper(1u << 17)
    , lower(1u << 17)
  {
    for (std::uint32_t outer = 0; outer < 512; ++outer)
    {
      for (std::uint32_t middle = 0; middle < 256; ++middle)
      {
        unsigned char upperSide[26] = {};
        unsigned char lowerSide[26] = {};
        for (int i = 0; i < 9; ++i)
        {
          upperSide[i] = (outer >> i) & 1u;
          lowerSide[17 + i] = (outer >> i) & 1u;
        }
        for (int i = 0; i < 8; ++i)
        {
          upperSide[9 + i] = (middle >> i) & 1u;
          lowerSide[9 + i] = (middle >> i) & 1u;
        }
        int up = 0;
        int down = 0;
        for (int octant = 0; octant < 8; ++octant)
        {
          if (octant & 4)
          {
            up += LobregtEulerCharacteristicEvaluator::octantChange(octant, upperSide);
          }
          else
          {
            down += LobregtEulerCharacteristicEvaluator::octantChange(octant, lowerSide);
          }
        }
        upper[(outer << 8) | middle] = static_cast<signed char>(up);
        lower[(outer << 8) | middle] = static_cast<signed char>(down);
      }
    }
  }
};

const EulerHalves &
eulerHalves()
{
  static const EulerHalves halves;
  return halves;
}

// The face neighbour and the side plane of each border direction as bit masks.
struct PackedSidePlanes
{
  std::uint32_t face[6];
  std::uint32_t plane[6];
  PackedSidePlanes()
  {
    for (int d = 0; d < 6; ++d)
    {
      face[d] = 1u << SelleBorderTypeEvaluator::faceIndex[d];
      plane[d] = 0;
      for (int i = 0; i < 9; ++i)
      {
        plane[d] |= 1u << SelleBorderTypeEvaluator::sidePlane[d][i];
      }
    }
  }
};

const PackedSidePlanes &
packedSidePlanes()
{
  static const PackedSidePlanes planes;
  return planes;
}
} // namespace

std::uint32_t
PackedNeighbourhood::pack(const unsigned char * neighbourhood)
{
  std::uint32_t packed = 0;
  for (int i = 0; i < 26; ++i)
  {
    packed |= static_cast<std::uint32_t>(neighbourhood[i] != 0) << i;
  }
  return packed;
}

int
PackedNeighbourhood::eulerChange(std::uint32_t packed)
{
  const EulerHalves & halves = eulerHalves();
  const std::uint32_t middle = (packed >> 9) & 0xFFu;
  return halves.upper[((packed & 0x1FFu) << 8) | middle] + halves.lower[((packed >> 17) << 8) | middle];
}

bool
PackedNeighbourhood::isConnected(std::uint32_t packed)
{
  if (packed == 0)
  {
    return false;
  }
  const std::uint32_t foreground = toCube(packed);
  std::uint32_t reached = 1u << (31 - __builtin_clz(foreground));
  for (;;)
  {
    const std::uint32_t next = dilate(reached) & foreground;
    if (next == reached)
    {
      return reached == foreground;
    }
    reached = next;
  }
}

bool
PackedNeighbourhood::isDeletable(std::uint32_t packed)
{
  // Cheapest test first; the answer is the conjunction, so the order does not matter.
  return foregroundCount(packed) > 1 && eulerChange(packed) == 0 && isConnected(packed);
}

bool
PackedNeighbourhood::isBorder(int direction, std::uint32_t packed)
{
  const PackedSidePlanes & planes = packedSidePlanes();
  return (packed & planes.face[direction]) == 0 && foregroundCount(packed & planes.plane[direction]) < 2;
}

unsigned
PackedNeighbourhood::borderDirections(std::uint32_t packed)
{
  // Direction order of SelleBorderTypeEvaluator: z + 1, z - 1, x + 1, x - 1, y + 1, y - 1.
  static constexpr unsigned bits[6] = { 32, 16, 8, 4, 2, 1 };
  unsigned directions = 0;
  for (int d = 0; d < 6; ++d)
  {
    if (isBorder(d, packed))
    {
      directions |= bits[d];
    }
  }
  return directions;
}
