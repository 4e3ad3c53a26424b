#include "SkeletonGraphExtractor.h"

#include "BranchingCluster.h"
#include "PathFinder.h"

#include <cstring>

namespace
{
std::size_t
snapStart(const SkeletonGraph & graph, long x, long y, long z)
{
  const std::size_t exact = graph.findVoxel(x, y, z);
  if (exact != SkeletonGraph::none)
  {
    return exact;
  }
  std::size_t best = SkeletonGraph::none;
  long bestDistance = 0;
  for (std::size_t v = 0; v < graph.numberOfVoxels(); ++v)
  {
    const long dx = graph.voxelX(v) - x;
    const long dy = graph.voxelY(v) - y;
    const long dz = graph.voxelZ(v) - z;
    const long distance = dx * dx + dy * dy + dz * dz;
    if (best == SkeletonGraph::none || distance < bestDistance)
    {
      best = v;
      bestDistance = distance;
    }
  }
  return best;
}
} // namespace

SkeletonGraph *
SkeletonGraphExtractor::extractGraph(const VolumeAccessor<unsigned char> & skeleton, const Point3D & start)
{
  auto * graph = new SkeletonGraph(skeleton.getSizeX(), skeleton.getSizeY(), skeleton.getSizeZ());
  m_startWasSnapped = false;
  const unsigned char * data = skeleton.getData();
  if (data == nullptr)
  {
    return graph;
  }
  const std::uint64_t elements =
    static_cast<std::uint64_t>(skeleton.getSizeX()) * skeleton.getSizeY() * skeleton.getSizeZ();
  for (std::uint64_t i = 0; i < elements; ++i)
  {
    // Skeletons are sparse: skip empty stretches a word at a time.
    std::uint64_t word = 0;
    while (i + 8 <= elements && (std::memcpy(&word, data + i, 8), word == 0))
    {
      i += 8;
    }
    if (i < elements && data[i] != 0)
    {
      graph->addVoxel(i);
    }
  }
  if (graph->numberOfVoxels() == 0)
  {
    return graph;
  }

  // The start point's coordinates are signed 16-bit for the accessors; read them the same way here.
  const long startX = static_cast<short>(start.getX());
  const long startY = static_cast<short>(start.getY());
  const long startZ = static_cast<short>(start.getZ());
  const std::size_t startVoxel = snapStart(*graph, startX, startY, startZ);
  m_startX = graph->voxelX(startVoxel);
  m_startY = graph->voxelY(startVoxel);
  m_startZ = graph->voxelZ(startVoxel);
  m_startWasSnapped = m_startX != startX || m_startY != startY || m_startZ != startZ;

  const std::size_t count = graph->numberOfVoxels();
  std::vector<unsigned char> degree(count);
  std::vector<std::size_t> around;
  for (std::size_t v = 0; v < count; ++v)
  {
    graph->neighbours(v, around);
    degree[v] = static_cast<unsigned char>(around.size());
  }

  // Nodes in memory order of their first voxel.
  std::vector<std::size_t> stack;
  std::vector<char> inCluster(count, 0);
  for (std::size_t v = 0; v < count; ++v)
  {
    if (graph->nodeOfVoxel(v) != SkeletonGraph::none)
    {
      continue;
    }
    SkeletonGraph::Node node{ SkeletonGraph::NodeKind::EndPoint, {}, 0.0f, 0.0f, 0.0f, v, {} };
    if (degree[v] >= 3)
    {
      BranchingCluster cluster;
      stack.assign(1, v);
      inCluster[v] = 1;
      while (!stack.empty())
      {
        const std::size_t current = stack.back();
        stack.pop_back();
        cluster.addVoxel(current, graph->voxelX(current), graph->voxelY(current), graph->voxelZ(current));
        graph->neighbours(current, around);
        for (std::size_t n : around)
        {
          if (degree[n] >= 3 && inCluster[n] == 0)
          {
            inCluster[n] = 1;
            stack.push_back(n);
          }
        }
      }
      node.kind = SkeletonGraph::NodeKind::Branching;
      node.voxels = cluster.getVoxels();
      node.x = cluster.getCentreX();
      node.y = cluster.getCentreY();
      node.z = cluster.getCentreZ();
      node.representative = cluster.getRepresentative();
    }
    else if (degree[v] <= 1 || v == startVoxel)
    {
      node.kind = degree[v] == 0
                    ? SkeletonGraph::NodeKind::Isolated
                    : (degree[v] == 1 ? SkeletonGraph::NodeKind::EndPoint : SkeletonGraph::NodeKind::Start);
      node.voxels.push_back(v);
      node.x = graph->voxelX(v);
      node.y = graph->voxelY(v);
      node.z = graph->voxelZ(v);
    }
    else
    {
      continue; // a chain voxel
    }
    const std::size_t id = graph->addNode(node);
    if (graph->nodeOfVoxel(startVoxel) == id)
    {
      graph->setStartNode(id);
    }
  }

  std::vector<char> consumed(count, 0);
  PathFinder pathFinder(*graph, consumed);
  for (std::size_t id = 0; id < graph->getNodes().size(); ++id)
  {
    const std::vector<std::size_t> voxels = graph->getNodes()[id].voxels;
    for (std::size_t voxel : voxels)
    {
      graph->neighbours(voxel, around);
      const std::vector<std::size_t> next = around;
      for (std::size_t n : next)
      {
        const std::size_t other = graph->nodeOfVoxel(n);
        if (other == SkeletonGraph::none)
        {
          if (consumed[n] == 0)
          {
            graph->addEdge(pathFinder.findPath(id, voxel, n));
          }
        }
        else if (other > id)
        {
          // Neighbouring nodes without a chain between them; the lower number adds the edge, once per pair.
          bool known = false;
          for (std::size_t e : graph->getNodes()[id].edges)
          {
            const SkeletonGraph::Edge & edge = graph->getEdges()[e];
            known = known || (edge.voxels.empty() && (edge.to == other || edge.from == other));
          }
          if (!known)
          {
            graph->addEdge(SkeletonGraph::Edge{ id, other, {} });
          }
        }
      }
    }
  }
  return graph;
}
