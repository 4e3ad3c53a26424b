#include "BreadthFirstTreeExtractor.h"

#include "FatalExit.h"
#include "SkeletonGraphExtractor.h"

#include <algorithm>
#include <deque>
#include <memory>

namespace
{
std::uint64_t
voxelKey(unsigned short x, unsigned short y, unsigned short z)
{
  return (static_cast<std::uint64_t>(z) << 32) | (static_cast<std::uint64_t>(y) << 16) | x;
}
} // namespace

BreadthFirstTreeExtractor::BreadthFirstTreeExtractor()
  : m_graphExtractor(new SkeletonGraphExtractor)
{}

BreadthFirstTreeExtractor::~BreadthFirstTreeExtractor()
{
  delete m_graphExtractor;
}

void
BreadthFirstTreeExtractor::setGraphExtractor(SkeletonGraphExtractor * extractor)
{
  if (extractor == nullptr || extractor == m_graphExtractor)
  {
    return;
  }
  delete m_graphExtractor;
  m_graphExtractor = extractor;
}

float
BreadthFirstTreeExtractor::getDiameter(unsigned short x, unsigned short y, unsigned short z)
{
  if (m_distanceVolume != nullptr && !m_distanceVolume->isEmpty() && m_distanceVolume->getData() != nullptr)
  {
    return 2.0f * (m_distanceVolume->getVoxel(x, y, z) - 0.5f * m_skeleton->getVoxelSizeX());
  }
  if (m_haveDistances)
  {
    const auto it = m_distances.find(voxelKey(x, y, z));
    if (it == m_distances.end())
    {
      fatalExit("BreadthFirstTreeExtractor::getDiameter(): fehlender Distanzwert");
    }
    return 2.0f * (it->second - 0.5f * m_skeleton->getMinimumVoxelSize());
  }
  fatalExit("BreadthFirstTreeExtractor::getDiameter(): fehlende Distanzen!");
}

VesselPoint
BreadthFirstTreeExtractor::voxelPoint(const SkeletonGraph & graph, std::size_t voxel)
{
  const unsigned short x = graph.voxelX(voxel);
  const unsigned short y = graph.voxelY(voxel);
  const unsigned short z = graph.voxelZ(voxel);
  return VesselPoint{ static_cast<float>(x) * m_skeleton->getVoxelSizeX(),
                      static_cast<float>(y) * m_skeleton->getVoxelSizeY(),
                      static_cast<float>(z) * m_skeleton->getVoxelSizeZ(),
                      getDiameter(x, y, z) };
}

VesselPoint
BreadthFirstTreeExtractor::nodePoint(const SkeletonGraph & graph, std::size_t node)
{
  const SkeletonGraph::Node & n = graph.getNodes()[node];
  const std::size_t r = n.representative;
  return VesselPoint{ n.x * m_skeleton->getVoxelSizeX(),
                      n.y * m_skeleton->getVoxelSizeY(),
                      n.z * m_skeleton->getVoxelSizeZ(),
                      getDiameter(graph.voxelX(r), graph.voxelY(r), graph.voxelZ(r)) };
}

ArVesselTree
BreadthFirstTreeExtractor::getTree(VolumeAccessor<unsigned char> * skeleton,
                                   DistancePoint3DList * skeletalPoints,
                                   const Point3D & start)
{
  m_skeleton = skeleton;
  m_leftOutParts = 0;
  m_leftOutVoxels = 0;
  m_skeletonVoxels = 0;
  m_distances.clear();
  m_haveDistances = skeletalPoints != nullptr;
  if (skeletalPoints != nullptr)
  {
    m_distances.reserve(skeletalPoints->size());
    for (const DistancePoint3D * point : *skeletalPoints)
    {
      m_distances[voxelKey(point->getX(), point->getY(), point->getZ())] = point->getDistance();
    }
  }

  auto * tree = new LinkedVesselTree;
  ArVesselTree result(tree);
  if (skeleton == nullptr)
  {
    return result;
  }
  const Point3D root = m_startAtThickestEndPoint && skeletalPoints != nullptr
                         ? thickestEndPoint(*skeleton, *skeletalPoints, start)
                         : start;
  std::unique_ptr<SkeletonGraph> graph(m_graphExtractor->extractGraph(*skeleton, root));
  m_skeletonVoxels = graph->numberOfVoxels();
  const std::size_t startNode = graph->getStartNode();
  if (startNode == SkeletonGraph::none)
  {
    return result;
  }
  const std::vector<SkeletonGraph::Node> & nodes = graph->getNodes();
  const std::vector<SkeletonGraph::Edge> & edges = graph->getEdges();
  std::vector<char> visited(nodes.size(), 0);
  std::vector<char> used(edges.size(), 0);
  std::int32_t nextId = 1;

  // The edge's voxels in order away from `from`.
  auto makeVessel = [&](std::size_t from, const SkeletonGraph::Edge * edge, bool throughFarNode) {
    ar<Vessel> vessel(new Vessel);
    vessel->setVesselId(nextId++);
    vessel->appendPoint(nodePoint(*graph, from));
    if (edge != nullptr)
    {
      if (edge->from == from)
      {
        for (std::size_t voxel : edge->voxels)
        {
          vessel->appendPoint(voxelPoint(*graph, voxel));
        }
      }
      else
      {
        for (auto it = edge->voxels.rbegin(); it != edge->voxels.rend(); ++it)
        {
          vessel->appendPoint(voxelPoint(*graph, *it));
        }
      }
      if (throughFarNode)
      {
        vessel->appendPoint(nodePoint(*graph, edge->from == from ? edge->to : edge->from));
      }
    }
    return vessel;
  };

  std::deque<std::pair<std::size_t, VesselNode *>> queue;
  visited[startNode] = 1;
  const SkeletonGraph::Node & first = nodes[startNode];
  if (first.edges.size() == 1 && edges[first.edges[0]].from != edges[first.edges[0]].to)
  {
    const std::size_t e = first.edges[0];
    const SkeletonGraph::Edge & edge = edges[e];
    used[e] = 1;
    const std::size_t far = edge.from == startNode ? edge.to : edge.from;
    tree->setRoot(makeVessel(startNode, &edge, true));
    visited[far] = 1;
    queue.emplace_back(far, tree->getRootNode());
  }
  else
  {
    tree->setRoot(makeVessel(startNode, nullptr, false));
    queue.emplace_back(startNode, tree->getRootNode());
  }

  while (!queue.empty())
  {
    const std::size_t node = queue.front().first;
    VesselNode * parent = queue.front().second;
    queue.pop_front();
    for (std::size_t e : nodes[node].edges)
    {
      if (used[e] != 0)
      {
        continue;
      }
      used[e] = 1;
      const SkeletonGraph::Edge & edge = edges[e];
      const std::size_t far = edge.from == node ? edge.to : edge.from;
      if (far == node && edge.voxels.size() <= 2)
      {
        continue; // a tiny loop of a branching cluster with itself: part of the branching, not a vessel
      }
      const bool closesLoop = far == node || visited[far] != 0;
      if (closesLoop && edge.voxels.empty())
      {
        continue;
      }
      auto * child = new VesselNode(parent, makeVessel(node, &edge, !closesLoop));
      parent->addChild(child);
      if (!closesLoop)
      {
        visited[far] = 1;
        queue.emplace_back(far, child);
      }
    }
  }

  std::vector<char> reached(graph->numberOfVoxels(), 0);
  for (std::size_t n = 0; n < nodes.size(); ++n)
  {
    if (visited[n] == 0)
    {
      continue;
    }
    for (std::size_t voxel : nodes[n].voxels)
    {
      reached[voxel] = 1;
    }
    for (std::size_t e : nodes[n].edges)
    {
      for (std::size_t voxel : edges[e].voxels)
      {
        reached[voxel] = 1;
      }
    }
  }
  countLeftOut(*graph, reached);
  return result;
}

Point3D
BreadthFirstTreeExtractor::thickestEndPoint(const VolumeAccessor<unsigned char> & skeleton,
                                            const DistancePoint3DList & points,
                                            const Point3D & fallback) const
{
  const DistancePoint3D * best = nullptr;
  bool bestIsEnd = false;
  std::uint64_t bestIndex = 0;
  unsigned char around[26];
  for (const DistancePoint3D * point : points)
  {
    if (skeleton.getVoxel(point->getX(), point->getY(), point->getZ()) == 0)
    {
      continue;
    }
    skeleton.read26Neighbourhood(point->getX(), point->getY(), point->getZ(), around);
    int neighbours = 0;
    for (unsigned char value : around)
    {
      neighbours += value != 0 ? 1 : 0;
    }
    const bool isEnd = neighbours <= 1;
    const std::uint64_t index = skeleton.linearIndex(point->getX(), point->getY(), point->getZ());
    if (best == nullptr || (isEnd && !bestIsEnd) ||
        (isEnd == bestIsEnd && (point->getDistance() > best->getDistance() ||
                                (point->getDistance() == best->getDistance() && index < bestIndex))))
    {
      best = point;
      bestIsEnd = isEnd;
      bestIndex = index;
    }
  }
  return best == nullptr ? fallback : Point3D(best->getX(), best->getY(), best->getZ());
}

void
BreadthFirstTreeExtractor::countLeftOut(const SkeletonGraph & graph, const std::vector<char> & reached)
{
  std::vector<char> seen(reached);
  std::vector<std::size_t> stack;
  std::vector<std::size_t> around;
  for (std::size_t v = 0; v < graph.numberOfVoxels(); ++v)
  {
    if (seen[v] != 0)
    {
      continue;
    }
    ++m_leftOutParts;
    seen[v] = 1;
    stack.assign(1, v);
    while (!stack.empty())
    {
      const std::size_t current = stack.back();
      stack.pop_back();
      ++m_leftOutVoxels;
      graph.neighbours(current, around);
      for (std::size_t n : around)
      {
        if (seen[n] == 0)
        {
          seen[n] = 1;
          stack.push_back(n);
        }
      }
    }
  }
}
