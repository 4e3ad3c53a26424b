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

  /** Splits each target vessel where the labels of the source vessels nearest to its points change and stay
   *  changed for at least `minimumPoints` points, so that one target vessel covering parts of two differently
   *  labelled source vessels (a branching the target lacks or has elsewhere) can take both labels. The later part
   *  becomes a child of the earlier one, the vessel's children move to the last part; the parts share the point at
   *  the split. Existing ids stay; new parts take ids above the largest. Answers how many parts were added. */
  static std::size_t
  splitAtLabelChanges(const ArVesselTree & source, const ArVesselTree & target, std::size_t minimumPoints = 3);
};

#endif
