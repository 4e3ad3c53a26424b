#ifndef SuppliedTissueClassifier_h
#define SuppliedTissueClassifier_h

#include "AbstractNextVesselEstimator.h"
#include "AbstractVesselTreeSampler.h"
#include "ArVesselTree.h"
#include "DistanceMeasures.h"
#include "ThreeDPicAccessor.h"

#include <cstdint>
#include <functional>

/** Assigns every organ voxel to the vessel that supplies it: the vessel owning the nearest centre-line sample.
 *
 *  The tree is sampled once, the samples are moved into the organ's frame by a 4 x 4 matrix and indexed by the
 *  estimator; then each voxel that is not background is classified at (x * voxel size + origin, ...) per axis,
 *  in single precision, giving a 16-bit vessel id volume and optionally a float distance volume.
 *
 *  The background value is one for the whole process: every constructor sets it from its organ accessor's outside
 *  value, so classifications belong to one thread at a time.
 *
 *  The voxel loop works in small blocks of voxels when the estimator supports group queries, and runs on as many
 *  work units as setWorkRunner provides; the result does not depend on the number of work units. */
class SuppliedTissueClassifier
{
public:
  /** Runs work(unit) for unit = 0 .. units - 1, possibly at the same time, and returns when all are done. */
  using WorkRunner = std::function<void(unsigned int units, const std::function<void(unsigned int)> & work)>;
  /** Told the share done so far (0 to 1), from the thread that runs work unit 0. */
  using ProgressCallback = std::function<void(double done)>;

  /** Takes a reference on the tree. The organ accessor is owned unless setOwnsOrganVolume(false). */
  SuppliedTissueClassifier(ThreeDPicAccessor<unsigned char> * organVolume, ArVesselTree tree);
  SuppliedTissueClassifier(const SuppliedTissueClassifier &) = delete;
  SuppliedTissueClassifier &
  operator=(const SuppliedTissueClassifier &) = delete;
  ~SuppliedTissueClassifier();

  /** Replaces the sampler (owned), deleting the old one. */
  void
  setVesselTreeSampler(AbstractVesselTreeSampler * sampler);
  /** Replaces the estimator (owned), deleting the old one together with the sample list it held. */
  void
  setNextVesselEstimator(AbstractNextVesselEstimator * estimator);
  void
  setComputeDistance(bool compute);
  void
  setOwnsOrganVolume(bool owns);
  /** Copies a row-major 4 x 4 matrix that takes tree positions to the organ's frame (the last row is ignored). */
  void
  setTransformation(const double matrix[4][4]);
  /** How the voxel loop is split; by default one work unit on the calling thread. */
  void
  setWorkRunner(WorkRunner runner, unsigned int units);
  void
  setProgressCallback(ProgressCallback callback);

  /** Samples (first call only), indexes and classifies. */
  void
  cumputeSuppliedTissue();

  ThreeDPicAccessor<unsigned short> *
  getVesselIDVolume() const;
  ThreeDPicAccessor<float> *
  getDistanceVolume() const;

  static ThreeDPicAccessor<unsigned short> *
  createVesselIDVolume(const std::uint32_t & sizeX, const std::uint32_t & sizeY, const std::uint32_t & sizeZ);
  static ThreeDPicAccessor<float> *
  createDistanceVolume(const std::uint32_t & sizeX, const std::uint32_t & sizeY, const std::uint32_t & sizeZ);

  /** The process-wide background value (organ voxels of this value are not classified). */
  static std::uint8_t
  getBackgroundValue();

private:
  void
  classifyVoxelByVoxel();
  void
  classifyInBlocks();

  ThreeDPicAccessor<unsigned char> * m_organVolume;
  ThreeDPicAccessor<unsigned short> * m_vesselIdVolume{ nullptr };
  ThreeDPicAccessor<float> * m_distanceVolume{ nullptr };
  AbstractNextVesselEstimator * m_estimator{ nullptr };
  AbstractDistanceMeasure * m_distanceMeasure{ nullptr };
  AbstractVesselTreeSampler * m_sampler{ nullptr };
  ArVesselTree m_tree;
  double m_transformation[4][4];
  bool m_computeDistance{ true };
  bool m_ownsOrganVolume{ true };
  bool m_ownsVesselIdVolume{ true };
  bool m_ownsDistanceVolume{ true };
  WorkRunner m_runner;
  unsigned int m_workUnits{ 1 };
  ProgressCallback m_progress;

  static std::uint8_t s_backgroundValue;
};

#endif
