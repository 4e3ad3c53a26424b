#ifndef CleaningSelleSkeletonizer_h
#define CleaningSelleSkeletonizer_h

#include "SelleSkeletonizer.h"

#include <cstdint>

/** Selle thinning that cleans the survivors of each of the first iterations with PostClean: a surviving voxel
 *  is deleted when its foreground neighbours stay connected within its 5 x 5 x 5 block without it. This removes
 *  the small loops and two-voxel-thick spots that the strictly topological thinning must keep. */
class CleaningSelleSkeletonizer : public SelleSkeletonizer
{
public:
  /** PostClean runs after the layers of iterations 1 to cleanedIterations. */
  CleaningSelleSkeletonizer(lumoIpPicDescriptor * pic,
                            bool ordering,
                            std::uint32_t cleanedIterations,
                            bool noDistanceVolume);

  /** Two passes over the list. In each, a voxel is deleted when every foreground voxel of its 3 x 3 x 3
   *  neighbourhood is reached by a 26-connected flood fill through its 5 x 5 x 5 block with the voxel itself
   *  cleared; endpoints (at most one foreground neighbour) are kept, so line ends are not shortened. Deleted
   *  voxels leave the list. A voxel without any foreground neighbour is reported and kept. */
  virtual void
  PostClean(DistancePoint3DList & list);

  std::uint32_t
  getCleanedIterations() const
  {
    return m_cleanedIterations;
  }

protected:
  void
  afterLayer(DistancePoint3DList & resultList) override;

private:
  std::uint32_t m_cleanedIterations;
};

#endif
