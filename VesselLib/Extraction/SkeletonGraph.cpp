#include "SkeletonGraph.h"

#include <algorithm>

SkeletonGraph::SkeletonGraph(std::uint32_t sizeX, std::uint32_t sizeY, std::uint32_t sizeZ)
  : m_sizeX(sizeX)
  , m_sizeY(sizeY)
  , m_sizeZ(sizeZ)
{}

void
SkeletonGraph::addVoxel(std::uint64_t linearIndex)
{
  m_voxels.push_back(linearIndex);
  m_nodeOfVoxel.push_back(none);
}

std::size_t
SkeletonGraph::findVoxel(long x, long y, long z) const
{
  if (x < 0 || y < 0 || z < 0 || x >= static_cast<long>(m_sizeX) || y >= static_cast<long>(m_sizeY) ||
      z >= static_cast<long>(m_sizeZ))
  {
    return none;
  }
  const std::uint64_t key =
    (static_cast<std::uint64_t>(z) * m_sizeY + static_cast<std::uint64_t>(y)) * m_sizeX + static_cast<std::uint64_t>(x);
  const auto it = std::lower_bound(m_voxels.begin(), m_voxels.end(), key);
  return it != m_voxels.end() && *it == key ? static_cast<std::size_t>(it - m_voxels.begin()) : none;
}

void
SkeletonGraph::neighbours(std::size_t voxel, std::vector<std::size_t> & result) const
{
  result.clear();
  const long x = voxelX(voxel);
  const long y = voxelY(voxel);
  const long z = voxelZ(voxel);
  for (long dz = -1; dz <= 1; ++dz)
  {
    for (long dy = -1; dy <= 1; ++dy)
    {
      for (long dx = -1; dx <= 1; ++dx)
      {
        if (dx == 0 && dy == 0 && dz == 0)
        {
          continue;
        }
        const std::size_t neighbour = findVoxel(x + dx, y + dy, z + dz);
        if (neighbour != none)
        {
          result.push_back(neighbour);
        }
      }
    }
  }
}

std::size_t
SkeletonGraph::addNode(const Node & node)
{
  const std::size_t id = m_nodes.size();
  for (std::size_t voxel : node.voxels)
  {
    m_nodeOfVoxel[voxel] = id;
  }
  m_nodes.push_back(node);
  return id;
}

std::size_t
SkeletonGraph::addEdge(const Edge & edge)
{
  const std::size_t id = m_edges.size();
  m_edges.push_back(edge);
  m_nodes[edge.from].edges.push_back(id);
  if (edge.to != edge.from)
  {
    m_nodes[edge.to].edges.push_back(id);
  }
  return id;
}
