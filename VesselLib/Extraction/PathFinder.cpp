#include "PathFinder.h"

PathFinder::PathFinder(const SkeletonGraph & graph, std::vector<char> & consumed)
  : m_graph(graph)
  , m_consumed(consumed)
{}

SkeletonGraph::Edge
PathFinder::findPath(std::size_t from, std::size_t fromVoxel, std::size_t firstVoxel)
{
  SkeletonGraph::Edge edge{ from, from, {} };
  std::size_t previous = fromVoxel;
  std::size_t current = firstVoxel;
  for (;;)
  {
    const std::size_t node = m_graph.nodeOfVoxel(current);
    if (node != SkeletonGraph::none)
    {
      edge.to = node;
      return edge;
    }
    if (m_consumed[current] != 0)
    {
      return edge;
    }
    m_consumed[current] = 1;
    edge.voxels.push_back(current);
    m_graph.neighbours(current, m_neighbours);
    std::size_t next = SkeletonGraph::none;
    for (std::size_t neighbour : m_neighbours)
    {
      if (neighbour != previous)
      {
        next = neighbour;
        break;
      }
    }
    if (next == SkeletonGraph::none)
    {
      return edge; // cannot happen for a chain voxel; ends the walk safely
    }
    previous = current;
    current = next;
  }
}
