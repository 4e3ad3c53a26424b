#ifndef VesselIdRenumbering_h
#define VesselIdRenumbering_h

#include "ArVesselTree.h"

#include <cstddef>

/** Vessel ids that the supply areas cannot tell apart, and their repair.
 *
 *  The supply areas write a vessel's id into a 16-bit volume in which 0 stands for "no vessel", so they tell two
 *  vessels apart only when their ids differ in the low 16 bits and neither is 0 there. Trees from other tools often
 *  break this (every id 0 or -1, ids copied between branches); the library takes the ids as they are, and callers
 *  that read foreign files repair them here. */
class VesselIdRenumbering
{
public:
  struct Report
  {
    std::size_t vessels{ 0 };
    /** Vessels whose id an earlier vessel (in pre-order) already has. */
    std::size_t duplicates{ 0 };
    /** Vessels whose id is unique but collides with another's, or with 0, in the low 16 bits. */
    std::size_t collisions{ 0 };

    bool
    needsRenumbering() const
    {
      return duplicates + collisions > 0;
    }
  };

  /** Counts the problems; a null tree gives an empty report. */
  static Report
  inspect(const ArVesselTree & tree);

  /** Gives the vessels the ids 1, 2, ... in pre-order (a tree of more than 65,535 vessels still collides). */
  static void
  renumberInPreorder(const ArVesselTree & tree);
};

#endif
