#ifndef VesselTreeCleaner_h
#define VesselTreeCleaner_h

#include "ArVesselTree.h"

#include <cstddef>

/** Base of the algorithms that tidy an extracted vessel tree in place. The cleaning label of a vessel
 *  (Vessel::getCleaningLabel) belongs to the cleaners: each states what it writes there. */
class VesselTreeCleaner
{
public:
  VesselTreeCleaner() = default;
  VesselTreeCleaner(const VesselTreeCleaner &) = delete;
  VesselTreeCleaner &
  operator=(const VesselTreeCleaner &) = delete;
  virtual ~VesselTreeCleaner() = default;

  /** Cleans the tree and renumbers it (see renumberBreadthFirst); returns the number of vessels removed. A null or
   *  empty tree is left alone. */
  virtual std::size_t
  clean(const ArVesselTree & tree) = 0;

  /** Gives the vessels the ids 1, 2, ... in breadth-first order (children in their order), as extraction does. */
  static void
  renumberBreadthFirst(const ArVesselTree & tree);
};

#endif
