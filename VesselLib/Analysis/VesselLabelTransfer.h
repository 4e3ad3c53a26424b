#ifndef VesselLabelTransfer_h
#define VesselLabelTransfer_h

#include "ArVesselTree.h"

#include <cstddef>

/** Copies the labels of one tree onto another tree of the same vessels, for instance from a labelled reference onto
 *  a tree freshly extracted from an image: each target vessel takes the blood vessel type, segment and resection
 *  status of the source vessel that is nearest to most of its centre-line points. */
class VesselLabelTransfer
{
public:
  /** Labels the target in place; answers how many target vessels were labelled (vessels without points, and every
   *  vessel when the source has no points, keep their labels). */
  static std::size_t
  transfer(const ArVesselTree & source, const ArVesselTree & target);
};

#endif
