#ifndef PackedNeighbourhood_h
#define PackedNeighbourhood_h

#include <cstdint>

/** The thinning tests on a 26-neighbourhood packed into one word (bit i set when entry i of NeighbourhoodOrder
 *  is non-zero). They answer exactly as the default evaluators do on the unpacked array, with no allocation and
 *  no virtual call, for the inner loop of the list processor. */
class PackedNeighbourhood
{
public:
  static std::uint32_t
  pack(const unsigned char * neighbourhood);

  /** SelleSimplePointEvaluator with its default evaluators: connected, Euler unchanged, no endpoint. */
  static bool
  isDeletable(std::uint32_t packed);
  /** LobregtEulerCharacteristicEvaluator::eulerChange, from two lookups: the four octants on the z + 1 side
   *  depend only on the planes z + 1 and z, the other four only on z - 1 and z. */
  static int
  eulerChange(std::uint32_t packed);
  /** RecursiveNeighbourhoodConnectionEvaluator: a bit-parallel flood fill on the 3 x 3 x 3 cube. */
  static bool
  isConnected(std::uint32_t packed);
  /** SelleBorderTypeEvaluator's test in one direction (its order: z + 1, z - 1, x + 1, x - 1, y + 1, y - 1). */
  static bool
  isBorder(int direction, std::uint32_t packed);
  /** The six border directions as bucket bits: y - 1 = 1, y + 1 = 2, x - 1 = 4, x + 1 = 8, z - 1 = 16,
   *  z + 1 = 32. */
  static unsigned
  borderDirections(std::uint32_t packed);
  static int
  foregroundCount(std::uint32_t packed)
  {
    // Bit arithmetic rather than __builtin_popcount, which is a library call on the baseline x86-64 target.
    packed = packed - ((packed >> 1) & 0x55555555u);
    packed = (packed & 0x33333333u) + ((packed >> 2) & 0x33333333u);
    return static_cast<int>((((packed + (packed >> 4)) & 0x0F0F0F0Fu) * 0x01010101u) >> 24);
  }
};

#endif
