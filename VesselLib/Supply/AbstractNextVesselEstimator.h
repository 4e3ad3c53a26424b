#ifndef AbstractNextVesselEstimator_h
#define AbstractNextVesselEstimator_h

#include "DistanceMeasures.h"
#include "TissueElement.h"
#include "VesselElement.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/** Scratch memory of group queries, one per thread, reused from group to group so that queries allocate nothing
 *  once it has grown. */
struct NextVesselWorkspace
{
  std::vector<std::pair<std::uint32_t, double>> matches;
  std::vector<float> candidates;       // x, y, z per candidate
  std::vector<std::uint32_t> indices;  // sample index per candidate
  std::vector<double> centreDistances; // per candidate, ascending
  std::vector<double> radii;           // per position: distance to the group's centre
};

/** Finds the vessel nearest to an organ voxel. */
class AbstractNextVesselEstimator
{
public:
  virtual AbstractDistanceMeasure *
  getDistanceMeasure() = 0;
  virtual ~AbstractNextVesselEstimator() = default;
  virtual void
  setDistanceMeasure(AbstractDistanceMeasure * measure) = 0;
  virtual void
  setVesselElementList(VesselElementList * list) = 0;
  virtual VesselElementList *
  getVesselElementList() = 0;
  /** Fills in the element's vessel id and distance. */
  virtual void
  estimate(TissueElement & element) = 0;

  /** Whether estimateGroup may run on several threads at once, each with its own workspace. */
  virtual bool
  supportsConcurrentQueries() const
  {
    return false;
  }
  /** The nearest vessel for each of count positions (x, y, z each), as estimate would give it. Positions that lie
   *  close together (a small block of voxels) let an estimator share work between them. The default asks
   *  estimate once per position. */
  virtual void
  estimateGroup(const float * positions,
                std::size_t count,
                std::uint16_t * vesselIds,
                float * distances,
                NextVesselWorkspace & workspace);
};

#endif
