#ifndef SpurTreeCleaner_h
#define SpurTreeCleaner_h

#include "VesselTreeCleaner.h"

/** Removes the spurs that thinning leaves where a vessel's surface is bumpy: a spur is a terminal vessel (not the
 *  root) whose centre line is short compared with the radius of its parent where it leaves it, because it runs
 *  from the parent's centre line to the surface and no further. A real side branch of that length could not be
 *  told from a bump and goes too.
 *
 *  All spurs are found first and marked with cleaning label 1 (other vessels get 0), then removed, so that removing
 *  one does not change the verdict on its siblings. One pass: a parent left as a leaf is judged by the next call. */
class SpurTreeCleaner : public VesselTreeCleaner
{
public:
  /** lengthToRadius: a terminal vessel shorter than this times its parent's end radius is a spur. */
  explicit SpurTreeCleaner(float lengthToRadius = 1.5f);

  std::size_t
  clean(const ArVesselTree & tree) override;

  void
  setLengthToRadius(float ratio)
  {
    m_lengthToRadius = ratio;
  }
  float
  getLengthToRadius() const
  {
    return m_lengthToRadius;
  }

  /** Whether the terminal vessel of the node is a spur of its parent's vessel. */
  bool
  isSpur(const VesselNode & node) const;

private:
  float m_lengthToRadius;
};

#endif
