#ifndef SelleBorderTypeEvaluator_h
#define SelleBorderTypeEvaluator_h

#include "BorderTypeEvaluator.h"

/** A voxel is a border voxel in a direction when its face neighbour there is background and at most one voxel of
 *  the 3 x 3 side plane in that direction is foreground. Entries count as foreground when non-zero, so interior
 *  labels (3) weigh like any other foreground voxel. */
class SelleBorderTypeEvaluator : public BorderTypeEvaluator
{
public:
  bool
  isBorderZPlus(const unsigned char * neighbourhood) const override;
  bool
  isBorderZMinus(const unsigned char * neighbourhood) const override;
  bool
  isBorderXPlus(const unsigned char * neighbourhood) const override;
  bool
  isBorderXMinus(const unsigned char * neighbourhood) const override;
  bool
  isBorderYPlus(const unsigned char * neighbourhood) const override;
  bool
  isBorderYMinus(const unsigned char * neighbourhood) const override;

  /** Directions in the order of the operations above: z + 1, z - 1, x + 1, x - 1, y + 1, y - 1. The face neighbour
   *  and the side plane of each direction as indices into the neighbourhood (PackedNeighbourhood packs them). */
  static constexpr int faceIndex[6] = { 4, 21, 13, 12, 10, 15 };
  static constexpr int sidePlane[6][9] = { { 0, 1, 2, 3, 4, 5, 6, 7, 8 },       { 17, 18, 19, 20, 21, 22, 23, 24, 25 },
                                           { 2, 5, 8, 11, 13, 16, 19, 22, 25 }, { 0, 3, 6, 9, 12, 14, 17, 20, 23 },
                                           { 0, 1, 2, 9, 10, 11, 17, 18, 19 },  { 6, 7, 8, 14, 15, 16, 23, 24, 25 } };

private:
  static bool
  isBorder(int direction, const unsigned char * neighbourhood);
};

#endif
