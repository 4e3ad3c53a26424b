#include "LobregtEulerCharacteristicEvaluator.h"

#include "NeighbourhoodOrder.h"

namespace
{
const signed char lobregtTable[256] = {
  0,  1,  1,  0,  1,  0,  -2, -1, 1,  -2, 0,  -1, 0,  -1, -1, 0,  1,  0,  -2, -1, -2, -1, -1, -2, -6, -3, -3, -2, -3,
  -2, 0,  -1, 1,  -2, 0,  -1, -6, -3, -3, -2, -2, -1, -1, -2, -3, 0,  -2, -1, 0,  -1, -1, 0,  -3, -2, 0,  -1, -3, 0,
  -2, -1, 0,  1,  1,  0,  1,  -2, -6, -3, 0,  -1, -3, -2, -2, -1, -3, 0,  -1, -2, -2, -1, 0,  -1, -3, -2, -1, 0,  0,
  -1, -3, 0,  0,  1,  -2, -1, 1,  0,  -2, -1, -3, 0,  -3, 0,  0,  1,  -1, 4,  0,  3,  0,  3,  1,  2,  -1, -2, -2, -1,
  -2, -1, 1,  0,  0,  3,  1,  2,  1,  2,  2,  1,  1,  -6, -2, -3, -2, -3, -1, 0,  0,  -3, -1, -2, -1, -2, -2, -1, -2,
  -3, -1, 0,  -1, 0,  4,  3,  -3, 0,  0,  1,  0,  1,  3,  2,  0,  -3, -1, -2, -3, 0,  0,  1,  -1, 0,  0,  -1, -2, 1,
  -1, 0,  -1, -2, -2, -1, 0,  1,  3,  2,  -2, 1,  -1, 0,  1,  2,  2,  1,  0,  -3, -3, 0,  -1, -2, 0,  1,  -1, 0,  -2,
  1,  0,  -1, -1, 0,  -1, -2, 0,  1,  -2, -1, 3,  2,  -2, 1,  1,  2,  -1, 0,  2,  1,  -1, 0,  -2, 1,  -2, 1,  1,  2,
  -2, 3,  -1, 2,  -1, 2,  0,  1,  0,  -1, -1, 0,  -1, 0,  2,  1,  -1, 2,  0,  1,  0,  1,  1,  0
};

struct OctantTable
{
  int positions[8][8];
  OctantTable()
  {
    for (int octant = 0; octant < 8; ++octant)
    {
      const int sx = (octant & 1) ? 1 : -1;
      const int sy = (octant & 2) ? 1 : -1;
      const int sz = (octant & 4) ? 1 : -1;
      for (int bit = 0; bit < 8; ++bit)
      {
        const int i = bit & 1;
        const int j = (bit >> 1) & 1;
        const int k = (bit >> 2) & 1;
        positions[octant][bit] = NeighbourhoodOrder::index26(i * sx, j * sy, k * sz);
      }
    }
  }
};

const OctantTable &
octants()
{
  static const OctantTable table;
  return table;
}
} // namespace

int
LobregtEulerCharacteristicEvaluator::tableValue(int index)
{
  return lobregtTable[index];
}

void
LobregtEulerCharacteristicEvaluator::octantPositions(int octant, int positions[8])
{
  for (int bit = 0; bit < 8; ++bit)
  {
    positions[bit] = octants().positions[octant][bit];
  }
}

int
LobregtEulerCharacteristicEvaluator::octantChange(int octant, const unsigned char * neighbourhood)
{
  const int * positions = octants().positions[octant];
  int index = 0;
  for (int bit = 1; bit < 8; ++bit)
  {
    if (neighbourhood[positions[bit]] != 0)
    {
      index |= 1 << bit;
    }
  }
  return lobregtTable[index] - lobregtTable[index | 1];
}

int
LobregtEulerCharacteristicEvaluator::eulerChange(const unsigned char * neighbourhood)
{
  int sum = 0;
  for (int octant = 0; octant < 8; ++octant)
  {
    sum += octantChange(octant, neighbourhood);
  }
  return sum;
}

bool
LobregtEulerCharacteristicEvaluator::changesEulerCharacteristic(const unsigned char * neighbourhood) const
{
  return eulerChange(neighbourhood) != 0;
}
