#include "SpurTreeCleaner.h"

#include <vector>

SpurTreeCleaner::SpurTreeCleaner(float lengthToRadius)
  : m_lengthToRadius(lengthToRadius)
{}

bool
SpurTreeCleaner::isSpur(const VesselNode & node) const
{
  const VesselNode * parent = node.getParent();
  if (parent == nullptr || node.hasChildren() || node.getData().isNull() || parent->getData().isNull())
  {
    return false;
  }
  const Vessel & vessel = *node.getData();
  const Vessel & parentVessel = *parent->getData();
  if (parentVessel.numberOfPoints() == 0)
  {
    return false;
  }
  const float radius = 0.5f * parentVessel.getPoint(parentVessel.numberOfPoints() - 1).diameter;
  return vessel.centreLineLength() < static_cast<double>(m_lengthToRadius * radius);
}

std::size_t
SpurTreeCleaner::clean(const ArVesselTree & tree)
{
  LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || linked->getRootNode() == nullptr)
  {
    return 0;
  }
  std::vector<VesselNode *> spurs;
  std::vector<VesselNode *> stack{ linked->getRootNode() };
  while (!stack.empty())
  {
    VesselNode * node = stack.back();
    stack.pop_back();
    const bool spur = isSpur(*node);
    if (!node->getData().isNull())
    {
      node->getData()->setCleaningLabel(spur ? 1 : 0);
    }
    if (spur)
    {
      spurs.push_back(node);
    }
    for (VesselNode * child : node->children())
    {
      stack.push_back(child);
    }
  }
  for (VesselNode * spur : spurs)
  {
    delete spur; // unlinks itself from its parent
  }
  renumberBreadthFirst(tree);
  return spurs.size();
}
