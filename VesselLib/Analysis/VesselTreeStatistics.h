#ifndef VesselTreeStatistics_h
#define VesselTreeStatistics_h

#include "ArVesselTree.h"

#include <cstddef>
#include <cstdint>
#include <map>

/** Summary figures of a vessel tree: sizes, depth, centre-line length and the label counts. */
class VesselTreeStatistics
{
public:
  /** Walks the tree once. A null or empty tree gives all zeros. */
  explicit VesselTreeStatistics(const ArVesselTree & tree);

  std::size_t
  numberOfVessels() const
  {
    return m_vessels;
  }
  std::size_t
  numberOfPoints() const
  {
    return m_points;
  }
  /** Number of vessels on the longest path from the root to a leaf (1 for a lone root). */
  std::size_t
  depth() const
  {
    return m_depth;
  }
  /** Sum of the centre-line lengths, in mm. */
  double
  totalLength() const
  {
    return m_length;
  }
  /** Vessels with a branching point: vessels with at least two children. */
  std::size_t
  numberOfBifurcations() const
  {
    return m_bifurcations;
  }
  const std::map<std::int32_t, std::size_t> &
  bloodVesselTypeCounts() const
  {
    return m_types;
  }
  const std::map<std::int32_t, std::size_t> &
  segmentCounts() const
  {
    return m_segments;
  }
  const std::map<std::int32_t, std::size_t> &
  resectionStatusCounts() const
  {
    return m_statuses;
  }

private:
  std::size_t m_vessels{ 0 };
  std::size_t m_points{ 0 };
  std::size_t m_depth{ 0 };
  std::size_t m_bifurcations{ 0 };
  double m_length{ 0.0 };
  std::map<std::int32_t, std::size_t> m_types;
  std::map<std::int32_t, std::size_t> m_segments;
  std::map<std::int32_t, std::size_t> m_statuses;
};

#endif
