#include "VesselLabelRules.h"

#include "Vessel.h"

void
VesselLabelRules::applyBloodVesselType(Vessel & vessel, std::int32_t type)
{
  VesselProperties & properties = vessel.getProperties();
  if (type != PortalVein && VesselLabels::isPortalSegment(properties.getSegmentType()))
  {
    properties.setSegmentType(S_Undefined);
  }
  if (type != HepaticVein && properties.getSegmentType() >= 12)
  {
    properties.setSegmentType(S_Undefined);
  }
  properties.setBloodVesselType(type);
  properties.setActive(false);
}

bool
VesselLabelRules::applySegmentType(Vessel & vessel, std::int32_t segment)
{
  VesselProperties & properties = vessel.getProperties();
  const std::int32_t type = properties.getBloodVesselType();
  const bool fits = segment == S_Undefined || (VesselLabels::isPortalSegment(segment) && type == PortalVein) ||
                    (VesselLabels::isHepaticTerritory(segment) && type == HepaticVein);
  if (fits)
  {
    properties.setSegmentType(segment);
    properties.setActive(false);
  }
  return fits;
}

void
VesselLabelRules::applyResectionStatus(Vessel & vessel, std::int32_t status)
{
  vessel.getProperties().setResectionStatus(status);
  vessel.getProperties().setActive(false);
}

void
VesselLabelRules::applyVisibility(Vessel & vessel, bool visible)
{
  vessel.getProperties().setVisible(visible);
  vessel.getProperties().setActive(false);
}
