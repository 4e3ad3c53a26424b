#ifndef SelleSkeletonizer_h
#define SelleSkeletonizer_h

#include "DistancePoint3D.h"
#include "Skeletonizer.h"

#include <cstdint>

class BorderVoxelHashMap;

/** Thinning after Selle: the object is peeled from outside inwards in layers ordered by the Euclidean distance
 *  to the background. Every border voxel carries a vector to its nearest background voxel, propagated inwards
 *  from face neighbour to face neighbour; layer i holds the border voxels whose distance is at most i times the
 *  smallest voxel size. The list processor deletes the simple voxels of a layer; their interior face neighbours
 *  become the new border. Labels in the binary volume: 0 background or deleted, 1 border voxel, 3 interior.
 *
 *  Thinning stops at the second iteration that deletes nothing, whether or not the two follow each other. */
class SelleSkeletonizer : public Skeletonizer
{
public:
  SelleSkeletonizer(lumoIpPicDescriptor * pic, bool ordering, bool noDistanceVolume);
  ~SelleSkeletonizer() override;

  void
  skeletonize() override;
  /** On the binary volume only, then the minimum voxel size is taken again from its axis order. */
  void
  setVoxelSizeX(float size) override;
  void
  setVoxelSizeY(float size) override;
  void
  setVoxelSizeZ(float size) override;

  /** Labels the volume and builds the first border: every foreground voxel with a background face neighbour. */
  virtual void
  initialize();
  /** The face neighbour (order x - 1, x + 1, y - 1, y + 1, z - 1, z + 1) in the previous border whose vector,
   *  carried over to (x, y, z), is shortest; the earlier one wins a tie. Null, with a message, when there is
   *  none. */
  virtual DistancePoint3D *
  getNextNeighbour(unsigned short x, unsigned short y, unsigned short z);
  /** Splits the border into the current layer and the voxels deferred to a later one. */
  virtual void
  splitLayer();
  /** Builds the next border from the deferred voxels, the survivors of the layer and the interior face
   *  neighbours of the layer. */
  virtual void
  updateBorder();
  /** True when any of the six face neighbours is 0. */
  virtual bool
  isBorderVoxel(const unsigned char * sixNeighbourhood);
  /** The voxels of the last layer that survived, owned by the skeletonizer. */
  virtual DistancePoint3DList *
  getResultList();

  std::uint32_t
  getIterationCounter() const
  {
    return m_iterationCounter;
  }
  float
  getMinimumVoxelSize() const
  {
    return m_minimumVoxelSize;
  }
  const DistancePoint3DList &
  getCurrentLayerList() const
  {
    return m_currentLayer;
  }
  const DistancePoint3DList &
  getDeferredList() const
  {
    return m_deferred;
  }
  const BorderVoxelHashMap &
  getBorderVoxels() const
  {
    return *m_borderVoxels;
  }

protected:
  /** Runs after each layer's list processing, before the border moves on; nothing here. */
  virtual void
  afterLayer(DistancePoint3DList & resultList);

private:
  void
  updateMinimumVoxelSize();
  /** The vector of `from` carried over to the face neighbour `to`. */
  void
  carriedVector(const DistancePoint3D & from,
                unsigned short x,
                unsigned short y,
                unsigned short z,
                float & dx,
                float & dy,
                float & dz) const;

  std::uint32_t m_iterationCounter{ 1 };
  float m_minimumVoxelSize{ 1.0f };
  BorderVoxelHashMap * m_borderVoxels;
  BorderVoxelHashMap * m_previousBorderVoxels{ nullptr };
  BorderVoxelHashMap * m_spareBorderVoxels{ nullptr }; // an emptied map kept for reuse: large tables are costly to map
  DistancePoint3DList m_currentLayer;
  DistancePoint3DList m_deferred;
  DistancePoint3DList * m_resultList{ nullptr };
};

#endif
