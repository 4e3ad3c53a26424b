#ifndef VesselLabelRules_h
#define VesselLabelRules_h

#include <cstdint>

class Vessel;

/** The labelling rules applied when labels are set on selected (active) vessels. They keep a vessel's segment
 *  consistent with its vascular system: portal segments belong to portal veins, hepatic territories to hepatic
 *  veins. Setting a field directly on VesselProperties applies none of them. */
class VesselLabelRules
{
public:
  /** A segment that does not fit the new type falls back to S_Undefined; then the type is set and the vessel is
   *  deactivated. */
  static void
  applyBloodVesselType(Vessel & vessel, std::int32_t type);
  /** The vessel takes the segment only if it is S_Undefined or fits the vessel's type, and is then deactivated;
   *  otherwise nothing changes. Answers whether the segment was taken. */
  static bool
  applySegmentType(Vessel & vessel, std::int32_t segment);
  /** Sets the status and deactivates the vessel. */
  static void
  applyResectionStatus(Vessel & vessel, std::int32_t status);
  /** Sets the visibility and deactivates the vessel. */
  static void
  applyVisibility(Vessel & vessel, bool visible);
};

#endif
