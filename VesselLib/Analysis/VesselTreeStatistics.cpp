#include "VesselTreeStatistics.h"

#include <algorithm>

VesselTreeStatistics::VesselTreeStatistics(const ArVesselTree & tree)
{
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || !linked->hasRoot())
  {
    return;
  }
  using Walk = LinkedTreeWalk<ar<Vessel>>;
  VesselNode * root = linked->getRootNode();
  // Depth of each node is its parent's plus one; preorder meets parents first.
  std::map<const VesselNode *, std::size_t> depths;
  for (VesselNode * node = Walk::preorder(nullptr, root); node != nullptr; node = Walk::preorder(node, root))
  {
    const std::size_t depth = node == root ? 1 : depths[node->getParent()] + 1;
    if (node->hasChildren())
    {
      depths[node] = depth;
    }
    m_depth = std::max(m_depth, depth);
    if (node->numberOfChildren() >= 2)
    {
      ++m_bifurcations;
    }
    ++m_vessels;
    const ar<Vessel> vessel = node->getData();
    if (vessel.isNull())
    {
      continue;
    }
    m_points += vessel->numberOfPoints();
    m_length += vessel->centreLineLength();
    ++m_types[vessel->getProperties().getBloodVesselType()];
    ++m_segments[vessel->getProperties().getSegmentType()];
    ++m_statuses[vessel->getProperties().getResectionStatus()];
  }
}
