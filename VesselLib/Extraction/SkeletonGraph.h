#ifndef SkeletonGraph_h
#define SkeletonGraph_h

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

/** The skeleton of a vessel mask as a graph: nodes are end points, branching clusters, isolated voxels and the
 *  start voxel; edges are the chains of voxels between them. Voxels are numbered in memory order of the volume
 *  (x fastest); every voxel belongs to at most one node or edge. Built by SkeletonGraphExtractor. */
class SkeletonGraph
{
public:
  static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

  enum class NodeKind
  {
    EndPoint,  // one skeleton neighbour
    Branching, // a branching cluster
    Isolated,  // no skeleton neighbour
    Start      // the start voxel inside a chain, where the graph is cut so that the tree can begin there
  };

  struct Node
  {
    NodeKind kind;
    std::vector<std::size_t> voxels;
    float x, y, z;              // the position the vessels meet at
    std::size_t representative; // the voxel whose distance gives the diameter there
    std::vector<std::size_t> edges;
  };

  /** The voxels strictly between the two nodes, in order from `from` to `to`. */
  struct Edge
  {
    std::size_t from;
    std::size_t to;
    std::vector<std::size_t> voxels;
  };

  SkeletonGraph(std::uint32_t sizeX, std::uint32_t sizeY, std::uint32_t sizeZ);

  /** Voxels must be added in increasing linear index. */
  void
  addVoxel(std::uint64_t linearIndex);
  std::size_t
  numberOfVoxels() const
  {
    return m_voxels.size();
  }
  /** The voxel's number, or none when (x, y, z) is not a skeleton voxel or outside. */
  std::size_t
  findVoxel(long x, long y, long z) const;
  unsigned short
  voxelX(std::size_t voxel) const
  {
    return static_cast<unsigned short>(m_voxels[voxel] % m_sizeX);
  }
  unsigned short
  voxelY(std::size_t voxel) const
  {
    return static_cast<unsigned short>((m_voxels[voxel] / m_sizeX) % m_sizeY);
  }
  unsigned short
  voxelZ(std::size_t voxel) const
  {
    return static_cast<unsigned short>(m_voxels[voxel] / (static_cast<std::uint64_t>(m_sizeX) * m_sizeY));
  }
  /** The skeleton neighbours of a voxel (26-adjacency), in the order z - 1 to z + 1, y - 1 to y + 1, x - 1 to
   *  x + 1. */
  void
  neighbours(std::size_t voxel, std::vector<std::size_t> & result) const;

  std::size_t
  addNode(const Node & node);
  std::size_t
  addEdge(const Edge & edge);
  const std::vector<Node> &
  getNodes() const
  {
    return m_nodes;
  }
  const std::vector<Edge> &
  getEdges() const
  {
    return m_edges;
  }
  /** The node a voxel belongs to, or none for a chain voxel. */
  std::size_t
  nodeOfVoxel(std::size_t voxel) const
  {
    return m_nodeOfVoxel[voxel];
  }
  std::size_t
  getStartNode() const
  {
    return m_startNode;
  }
  void
  setStartNode(std::size_t node)
  {
    m_startNode = node;
  }

private:
  std::uint32_t m_sizeX;
  std::uint32_t m_sizeY;
  std::uint32_t m_sizeZ;
  std::vector<std::uint64_t> m_voxels;
  std::vector<std::size_t> m_nodeOfVoxel;
  std::vector<Node> m_nodes;
  std::vector<Edge> m_edges;
  std::size_t m_startNode{ none };
};

#endif
