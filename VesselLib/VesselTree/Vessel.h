#ifndef Vessel_h
#define Vessel_h

#include "VesselPoint.h"
#include "VesselProperties.h"
#include "ar.h"

#include <cstdint>
#include <iosfwd>
#include <vector>

/** One unbranched vessel segment: its centre line with diameters, its labels and its ids.
 *  Always held through ar<Vessel>, so that nodes, id maps and filters share one object. */
class Vessel
{
public:
  using PointList = std::vector<VesselPoint>;

  Vessel() = default;
  Vessel(const Vessel &) = default;
  Vessel &
  operator=(const Vessel &) = default;

  /** Centre line, in order along the vessel (the sequence the .ves format stores). */
  std::size_t
  numberOfPoints() const
  {
    return m_points.size();
  }
  const VesselPoint &
  getPoint(std::size_t index) const
  {
    return m_points[index];
  }
  void
  setPoint(std::size_t index, const VesselPoint & point)
  {
    m_points[index] = point;
  }
  const PointList &
  getPoints() const
  {
    return m_points;
  }
  /** Appends at the end and clears the pristine flag. */
  void
  appendPoint(const VesselPoint & point)
  {
    m_points.push_back(point);
    m_pristine = false;
  }
  /** Replaces the whole centre line (smoothing, resampling) and clears the pristine flag. */
  void
  setPoints(PointList points)
  {
    m_points = std::move(points);
    m_pristine = false;
  }

  /** Working sequences of the algorithms that build trees; never persisted. */
  PointList &
  getFirstAuxiliaryPoints()
  {
    return m_firstAuxiliaryPoints;
  }
  PointList &
  getSecondAuxiliaryPoints()
  {
    return m_secondAuxiliaryPoints;
  }

  VesselProperties &
  getProperties()
  {
    return m_properties;
  }
  const VesselProperties &
  getProperties() const
  {
    return m_properties;
  }

  /** True from construction until a point is appended or the vessel is read from text. */
  bool
  isPristine() const
  {
    return m_pristine;
  }
  void
  clearPristine()
  {
    m_pristine = false;
  }

  /** Identifies the vessel within its tree; -1 means unset. */
  std::int32_t
  getVesselId() const
  {
    return m_vesselId;
  }
  void
  setVesselId(std::int32_t id)
  {
    m_vesselId = id;
  }

  /** Second integer label, used by the tree cleaners; -1 means unset. */
  std::int32_t
  getCleaningLabel() const
  {
    return m_cleaningLabel;
  }
  void
  setCleaningLabel(std::int32_t label)
  {
    m_cleaningLabel = label;
  }
  bool
  isCleaningLabelSet() const
  {
    return static_cast<std::uint32_t>(m_cleaningLabel) != 0xFFFFFFFFu;
  }

  /** Length of the centre line in mm (sum of the distances between consecutive points). */
  double
  centreLineLength() const;

private:
  PointList m_firstAuxiliaryPoints;
  PointList m_points;
  PointList m_secondAuxiliaryPoints;
  VesselProperties m_properties;
  bool m_pristine{ true };
  std::int32_t m_vesselId{ -1 };
  std::int32_t m_cleaningLabel{ -1 };
};

/** Writes one vessel record of the .ves text format. A null handle is written as a default vessel. */
std::ostream &
operator<<(std::ostream & os, const ar<Vessel> & vessel);

/** Creates a new default Vessel, holds it in the handle and reads one vessel record into it. The stream fails on
 *  malformed text; fields not reached keep their defaults. */
std::istream &
operator>>(std::istream & is, ar<Vessel> & vessel);

#endif
