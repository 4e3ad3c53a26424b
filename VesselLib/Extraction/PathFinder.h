#ifndef PathFinder_h
#define PathFinder_h

#include "SkeletonGraph.h"

#include <cstddef>
#include <vector>

/** Follows a chain of skeleton voxels from a node to the next node. Chain voxels have exactly two skeleton
 *  neighbours, so the way on is always the neighbour the walk did not come from. */
class PathFinder
{
public:
  /** `consumed` has one flag per voxel of the graph; the walk sets it on every chain voxel it takes. */
  PathFinder(const SkeletonGraph & graph, std::vector<char> & consumed);

  /** The edge from node `from` that leaves its voxel `fromVoxel` through the chain voxel `firstVoxel`. A walk
   *  that runs into a voxel already taken (which only a damaged skeleton offers) ends there as a loop back to
   *  `from`. */
  SkeletonGraph::Edge
  findPath(std::size_t from, std::size_t fromVoxel, std::size_t firstVoxel);

private:
  const SkeletonGraph & m_graph;
  std::vector<char> & m_consumed;
  std::vector<std::size_t> m_neighbours;
};

#endif
