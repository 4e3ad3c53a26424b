#ifndef AbstractVesselTreeSampler_h
#define AbstractVesselTreeSampler_h

#include "ArVesselTree.h"
#include "VesselElement.h"

/** Turns a vessel tree into a flat list of centre-line samples. Vessels are visited in pre-order, the points of a
 *  vessel in stored order; every stored point of a vessel that passes the sampler's test becomes one sample. */
class AbstractVesselTreeSampler
{
public:
  /** A new list (the caller owns it), empty when no vessel passes. */
  virtual VesselElementList *
  sampleVesselTree(ArVesselTree tree);
  virtual ~AbstractVesselTreeSampler() = default;

protected:
  /** Whether the vessel contributes its points. */
  virtual bool
  samplesVessel(const Vessel & vessel) const = 0;
};

#endif
