#ifndef KDTreeNextVesselEstimator_h
#define KDTreeNextVesselEstimator_h

#include "AbstractNextVesselEstimator.h"

#include <cstdint>
#include <memory>
#include <vector>

/** Exact nearest-vessel search over the samples of a VesselElementList, indexed in a k-d tree.
 *
 *  Selection: the nearest sample wins; among samples at exactly the same distance the one with the lowest list
 *  index (the one sampled first) wins, however many tie. Squared distances are computed in double precision from
 *  the float coordinates, in one way for every candidate, so that equal distances compare equal.
 *
 *  Group queries (estimateGroup) are what the classifier uses: one k-d tree query bounds the candidates of a
 *  whole block of voxels (by the triangle inequality), and each voxel scans that short list. Queries only read
 *  the index and may run concurrently, each thread with its own workspace. */
class KDTreeNextVesselEstimator : public AbstractNextVesselEstimator
{
public:
  KDTreeNextVesselEstimator();
  KDTreeNextVesselEstimator(const KDTreeNextVesselEstimator &) = delete;
  KDTreeNextVesselEstimator &
  operator=(const KDTreeNextVesselEstimator &) = delete;

  /** The measure held (owned); estimate does not use it. */
  AbstractDistanceMeasure *
  getDistanceMeasure() override;
  ~KDTreeNextVesselEstimator() override;
  /** Stores the measure; a previously held one is not deleted here. Throws for null. */
  void
  setDistanceMeasure(AbstractDistanceMeasure * measure) override;
  /** Indexes the list (not owned), replacing an earlier index. Throws for a null or empty list, keeping the
   *  previous state. */
  void
  setVesselElementList(VesselElementList * list) override;
  /** Null before the first successful setVesselElementList. */
  VesselElementList *
  getVesselElementList() override;
  void
  estimate(TissueElement & element) override;

  bool
  supportsConcurrentQueries() const override
  {
    return true;
  }
  void
  estimateGroup(const float * positions,
                std::size_t count,
                std::uint16_t * vesselIds,
                float * distances,
                NextVesselWorkspace & workspace) override;

  /** Number of neighbours of the classic k-nearest query (3, or the list size if smaller); kept for reference. */
  int
  getK() const
  {
    return m_k;
  }

private:
  void
  initANN();
  void
  releaseIndex();
  void
  search(const float * positions,
         std::size_t count,
         std::uint16_t * vesselIds,
         float * distances,
         NextVesselWorkspace & workspace) const;

  struct Index;

  VesselElementList * m_list{ nullptr };
  AbstractDistanceMeasure * m_measure{ nullptr };
  std::vector<std::uint16_t> m_vesselIds;
  bool m_initialised{ false };
  int m_k{ 0 };
  int m_dimension{ 3 };
  std::vector<float> m_points; // x, y, z per sample, in list order
  std::unique_ptr<Index> m_index;
  NextVesselWorkspace m_workspace; // for estimate, which is called from one thread
};

#endif
