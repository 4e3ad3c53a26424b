#ifndef VesselProperties_h
#define VesselProperties_h

#include "VesselLabels.h"

#include <cstdint>

/** The clinical labels of one vessel. Setting a field here applies no rule; the rules that keep type and segment
 *  consistent live in VesselLabelRules and are applied by the labelling operations. */
class VesselProperties
{
public:
  VesselProperties() = default;
  VesselProperties(const VesselProperties &) = default;
  VesselProperties &
  operator=(const VesselProperties &) = default;
  virtual ~VesselProperties() = default;

  bool
  isVisible() const
  {
    return m_visible;
  }
  void
  setVisible(bool visible)
  {
    m_visible = visible;
  }
  bool
  isActive() const
  {
    return m_active;
  }
  void
  setActive(bool active)
  {
    m_active = active;
  }
  std::int32_t
  getSegmentType() const
  {
    return m_segmentType;
  }
  void
  setSegmentType(std::int32_t segment)
  {
    m_segmentType = segment;
  }
  std::int32_t
  getResectionStatus() const
  {
    return m_resectionStatus;
  }
  void
  setResectionStatus(std::int32_t status)
  {
    m_resectionStatus = status;
  }
  std::int32_t
  getBloodVesselType() const
  {
    return m_bloodVesselType;
  }
  void
  setBloodVesselType(std::int32_t type)
  {
    m_bloodVesselType = type;
  }
  std::int32_t
  getReserved() const
  {
    return m_reserved;
  }
  void
  setReserved(std::int32_t value)
  {
    m_reserved = value;
  }

private:
  bool m_visible{ true };
  bool m_active{ false };
  std::int32_t m_segmentType{ S_Undefined };
  std::int32_t m_resectionStatus{ UndefinedResectionStatus };
  std::int32_t m_bloodVesselType{ PortalVein };
  std::int32_t m_reserved{ 0 };
};

#endif
