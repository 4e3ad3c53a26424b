#ifndef VesselElement_h
#define VesselElement_h

#include <cstdint>
#include <list>

/** One centre-line sample of a vessel: position in the tree's coordinates, the diameter there and the id of the
 *  vessel that owns the point (its low 16 bits). */
struct VesselElement
{
  float x;
  float y;
  float z;
  float diameter;
  std::uint16_t vesselId;
};

/** Samples in sampling order. The order is the sample index of the nearest-vessel search, where ties go to the
 *  sample taken first. */
using VesselElementList = std::list<VesselElement>;

#endif
