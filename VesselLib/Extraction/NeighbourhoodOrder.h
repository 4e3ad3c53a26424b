#ifndef NeighbourhoodOrder_h
#define NeighbourhoodOrder_h

/** Positions of the neighbourhood arrays handed out by the volume accessors. The evaluators and lookup tables of
 *  the skeletonizer index these arrays by position, so the order is fixed: plane z + 1, then z, then z - 1; in
 *  each plane the rows y + 1, y, y - 1; in each row x - 1, x, x + 1; the centre is skipped. */
class NeighbourhoodOrder
{
public:
  static constexpr int size26 = 26;
  static constexpr int size6 = 6;

  /** Offsets (dx, dy, dz) of the 26 entries. */
  static constexpr int offsets26[26][3] = { { -1, 1, 1 },  { 0, 1, 1 },   { 1, 1, 1 },   { -1, 0, 1 },   { 0, 0, 1 },
                                            { 1, 0, 1 },   { -1, -1, 1 }, { 0, -1, 1 },  { 1, -1, 1 },   { -1, 1, 0 },
                                            { 0, 1, 0 },   { 1, 1, 0 },   { -1, 0, 0 },  { 1, 0, 0 },    { -1, -1, 0 },
                                            { 0, -1, 0 },  { 1, -1, 0 },  { -1, 1, -1 }, { 0, 1, -1 },   { 1, 1, -1 },
                                            { -1, 0, -1 }, { 0, 0, -1 },  { 1, 0, -1 },  { -1, -1, -1 }, { 0, -1, -1 },
                                            { 1, -1, -1 } };

  /** Offsets of the 6 face neighbours: z + 1, z - 1, x - 1, x + 1, y + 1, y - 1. */
  static constexpr int offsets6[6][3] = { { 0, 0, 1 }, { 0, 0, -1 }, { -1, 0, 0 },
                                          { 1, 0, 0 }, { 0, 1, 0 },  { 0, -1, 0 } };

  /** Face neighbours within the 26-neighbourhood. */
  static constexpr int zPlus = 4;
  static constexpr int zMinus = 21;
  static constexpr int xPlus = 13;
  static constexpr int xMinus = 12;
  static constexpr int yPlus = 10;
  static constexpr int yMinus = 15;

  /** Position of the offset (dx, dy, dz) in the 26-neighbourhood, -1 for the centre or anything farther away. */
  static constexpr int
  index26(int dx, int dy, int dz)
  {
    if (dx < -1 || dx > 1 || dy < -1 || dy > 1 || dz < -1 || dz > 1 || (dx == 0 && dy == 0 && dz == 0))
    {
      return -1;
    }
    const int full = (dx + 1) + 3 * (1 - dy) + 9 * (1 - dz); // 0..26 with the centre at 13
    return full < 13 ? full : full - 1;
  }
};

#endif
