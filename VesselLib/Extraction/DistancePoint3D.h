#ifndef DistancePoint3D_h
#define DistancePoint3D_h

#include "Point3D.h"

#include <vector>

/** A voxel with the vector (in physical units) to its nearest background voxel, as the skeletonizer propagates
 *  it from the border inwards. Length and squared length always match the vector: every setter recomputes them. */
class DistancePoint3D : public Point3D
{
public:
  DistancePoint3D(unsigned short x, unsigned short y, unsigned short z, float dx, float dy, float dz);

  /** Recomputes squared length and length from the stored vector. */
  virtual void
  updateDistance();

  float
  getVectorX() const
  {
    return m_vectorX;
  }
  float
  getVectorY() const
  {
    return m_vectorY;
  }
  float
  getVectorZ() const
  {
    return m_vectorZ;
  }
  float
  getDistance() const
  {
    return m_distance;
  }
  float
  getSquaredDistance() const
  {
    return m_squaredDistance;
  }
  void
  setVectorX(float dx);
  void
  setVectorY(float dy);
  void
  setVectorZ(float dz);
  void
  setVector(float dx, float dy, float dz);

  /** The squared length as every distance of the skeletonizer is computed: z-term + (y-term + x-term). The order
   *  of the float additions is fixed so that comparisons of candidate vectors come out the same everywhere. */
  static float
  squaredLength(float dx, float dy, float dz)
  {
    return dz * dz + (dy * dy + dx * dx);
  }

private:
  float m_vectorX;
  float m_vectorY;
  float m_vectorZ;
  float m_distance{ 0.0f };
  float m_squaredDistance{ 0.0f };
};

/** The lists of border voxels handed between the skeletonizer and its list processor. */
using DistancePoint3DList = std::vector<DistancePoint3D *>;

#endif
