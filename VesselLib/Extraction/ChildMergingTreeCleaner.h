#ifndef ChildMergingTreeCleaner_h
#define ChildMergingTreeCleaner_h

#include "VesselTreeCleaner.h"

/** Merges every vessel that has exactly one child with that child: a branching that lost all but one branch (to
 *  spur removal or pruning) is no branching, and the two pieces are one vessel. The child's centre line is appended
 *  (without its first point when that repeats the parent's last one, as extraction makes it) and its children
 *  become the vessel's children. The cleaning label of a vessel becomes the number of vessels merged into it. */
class ChildMergingTreeCleaner : public VesselTreeCleaner
{
public:
  std::size_t
  clean(const ArVesselTree & tree) override;
};

#endif
