#ifndef LobregtEulerCharacteristicEvaluator_h
#define LobregtEulerCharacteristicEvaluator_h

#include "EulerCharacteristicEvaluator.h"

/** Lobregt's local Euler characteristic (26-connected foreground, 6-connected background). The change caused by
 *  deleting the centre is summed over the eight 2 x 2 x 2 octants that contain it.
 *
 *  Octant o (0..7) spans the offsets {0, sx} x {0, sy} x {0, sz} from the centre, with sx = +1 when bit 0 of o is
 *  set (else -1), sy from bit 1 and sz from bit 2. Its voxel at (i * sx, j * sy, k * sz), i, j, k in {0, 1}, is
 *  bit i + 2j + 4k of the octant's table index, so the centre is bit 0. The table holds eight times the share of
 *  the octant's middle vertex in the Euler characteristic of the union of closed voxel cubes (vertex 1, each of
 *  its edges -1/2, faces +1/4, cubes -1/8); it is the same under every rotation and reflection of the cube, which
 *  is what lets the mirrored octants use one table. An octant contributes table[centre cleared] - table[centre
 *  set]; the sum is eight times the change of the Euler characteristic. */
class LobregtEulerCharacteristicEvaluator : public EulerCharacteristicEvaluator
{
public:
  bool
  changesEulerCharacteristic(const unsigned char * neighbourhood) const override;

  /** Eight times the change of the Euler characteristic when the centre is deleted. */
  static int
  eulerChange(const unsigned char * neighbourhood);
  /** The contribution of one octant. */
  static int
  octantChange(int octant, const unsigned char * neighbourhood);
  /** Neighbourhood positions of the octant's voxels by table bit (bit 0, the centre, is -1). */
  static void
  octantPositions(int octant, int positions[8]);
  /** The 256-entry table. */
  static int
  tableValue(int index);
};

#endif
