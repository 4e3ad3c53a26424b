#ifndef arboPhantomDegradation_h
#define arboPhantomDegradation_h

#include "lumoImage.h"

#include "ArVesselTree.h"

#include <cstdint>

namespace arbo
{
/** What makes the phantom's masks look like a segmentation made from real images. Zero everywhere leaves them
 *  untouched. */
struct Degradation
{
  /** Share of the boundary voxels (mask voxels with a background face neighbour and background voxels with a mask
   *  face neighbour) that are flipped, in percent; in [0, 100]. */
  double noise{ 0.0 };
  /** Small cavities per vessel mask, each a ball of 0.3 of the local radius (at least half a voxel) near the centre
   *  line of a vessel at least 1.5 mm in radius. */
  unsigned int holes{ 0 };
  /** Small disconnected pieces per vessel mask, balls of 1 to 2.5 mm radius inside the organ, at least 5 mm from
   *  every vessel. */
  unsigned int fragments{ 0 };
  /** Places where a portal and a hepatic branch come into contact: at the closest pairs of centre-line points
   *  (both radii at least 2 mm, at least 20 mm apart from each other) each mask gets a bridge of half the smaller
   * radius to the other vessel's centre line and a ball of the other vessel there, as a segmentation that merges
   * touching vessels. */
  unsigned int touching{ 0 };
};

/** Degrades the organ, portal and hepatic masks (unsigned 8-bit, 0/1, one grid) in place, deterministically for the
 *  seed: touching first, then holes, fragments and noise, each with a random stream of its own. */
void
degradePhantom(lumo::Image * organ,
               lumo::Image * portal,
               lumo::Image * hepatic,
               const ArVesselTree & portalTree,
               const ArVesselTree & hepaticTree,
               const Degradation & degradation,
               std::uint64_t seed);
} // namespace arbo

#endif
