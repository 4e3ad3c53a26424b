#ifndef OrderedBorderVoxelListProcessor_h
#define OrderedBorderVoxelListProcessor_h

#include "BorderVoxelListProcessor.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class BorderTypeEvaluator;

/** Deletes the simple voxels of a layer in a fixed priority order without sorting: each pass puts the simple
 *  voxels into 1792 buckets, bucket = border directions + 64 x N, where N is 1 plus the number of foreground
 *  neighbours (with the ordering flag; without it 64 x (26 - N)), and deletes bucket by bucket from 1791 down to
 *  0, each front to back, re-testing every voxel just before it goes. Passes repeat until one deletes nothing. */
class OrderedBorderVoxelListProcessor : public BorderVoxelListProcessor
{
public:
  static constexpr int bucketCount = 1792;

  /** With the ordering flag voxels with more foreground neighbours go first, without it those with fewer. */
  OrderedBorderVoxelListProcessor(VolumeAccessor<unsigned char> * binaryVolume,
                                  VolumeAccessor<float> * distanceVolume,
                                  bool ordering);
  ~OrderedBorderVoxelListProcessor() override;

  DistancePoint3DList *
  processList(const DistancePoint3DList & list) override;

  /** Replaces the border type evaluator and deletes the old one; null is ignored. */
  void
  setBorderTypeEvaluator(BorderTypeEvaluator * evaluator);
  BorderTypeEvaluator *
  getBorderTypeEvaluator() const
  {
    return m_borderTypeEvaluator;
  }
  bool
  getOrdering() const
  {
    return m_ordering;
  }
  /** The bucket of a simple voxel from its border directions (0 to 63) and its N. */
  static int
  bucketNumber(unsigned directions, int n, bool ordering)
  {
    return static_cast<int>(directions) + 64 * (ordering ? n : 26 - n);
  }

private:
  /** A voxel of the list with its position, read once from its point: the passes revisit voxels many times and
   *  the points lie scattered on the heap. */
  struct Entry
  {
    DistancePoint3D * point;
    std::size_t index; // into the voxel buffer
    unsigned short x;
    unsigned short y;
    unsigned short z;
    bool onFace; // on a face of the volume: neighbours must be read through the accessor
  };

  /** Whether the voxel is simple now; if so, also its bucket. */
  bool
  classify(const Entry & entry, bool packed, int & bucket) const;
  bool
  isSimpleNow(const Entry & entry, bool packed) const;
  /** The packed neighbourhood straight from the voxel buffer (through the accessor at the volume's faces). */
  std::uint32_t
  readPacked(const Entry & entry) const;
  /** Asks the memory system for the voxel's neighbourhood rows ahead of their use (a hint, no effect on results). */
  void
  prefetchNeighbourhood(const Entry & entry) const;
  /** Whether the evaluators are the default classes, so that the packed tests give the same answers. */
  bool
  canUsePackedTests() const;

  BorderTypeEvaluator * m_borderTypeEvaluator;
  std::vector<std::vector<Entry>> m_buckets;
  bool m_ordering;
  std::ptrdiff_t m_offsets[26];
  std::ptrdiff_t m_rowStarts[9];
};

#endif
