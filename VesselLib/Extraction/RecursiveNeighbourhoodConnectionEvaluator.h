#ifndef RecursiveNeighbourhoodConnectionEvaluator_h
#define RecursiveNeighbourhoodConnectionEvaluator_h

#include "NeighbourhoodConnectionEvaluator.h"

/** Depth-first flood fill over the 26-adjacency of the neighbourhood positions, starting at the highest
 *  foreground position. An empty neighbourhood counts as not connected. */
class RecursiveNeighbourhoodConnectionEvaluator : public NeighbourhoodConnectionEvaluator
{
public:
  bool
  isConnected(const unsigned char * neighbourhood) const override;

  /** Number of positions 26-adjacent to a position (6 for a corner, 10 for an edge, 16 for a face centre). */
  static int
  adjacentCount(int position);
  /** The i-th position adjacent to a position, in increasing order. */
  static int
  adjacentPosition(int position, int i);

private:
  static void
  visit(int position, const bool * marked, bool * reached, int & reachedCount);
};

#endif
