#include "ChildMergingTreeCleaner.h"

#include <vector>

std::size_t
ChildMergingTreeCleaner::clean(const ArVesselTree & tree)
{
  LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || linked->getRootNode() == nullptr)
  {
    return 0;
  }
  std::size_t merged = 0;
  std::vector<VesselNode *> stack{ linked->getRootNode() };
  while (!stack.empty())
  {
    VesselNode * node = stack.back();
    stack.pop_back();
    ar<Vessel> vessel = node->getData();
    std::int32_t count = 0;
    while (node->numberOfChildren() == 1 && !vessel.isNull() && !node->getChild(0)->getData().isNull())
    {
      VesselNode * child = node->getChild(0);
      const ar<Vessel> childVessel = child->getData();
      Vessel::PointList points = vessel->getPoints();
      const Vessel::PointList & tail = childVessel->getPoints();
      std::size_t skip = 0;
      if (!points.empty() && !tail.empty() && tail.front().x == points.back().x && tail.front().y == points.back().y &&
          tail.front().z == points.back().z)
      {
        skip = 1;
      }
      points.insert(points.end(), tail.begin() + static_cast<std::ptrdiff_t>(skip), tail.end());
      vessel->setPoints(std::move(points));
      count +=
        1 + (childVessel->isCleaningLabelSet() && childVessel->getCleaningLabel() > 0 ? childVessel->getCleaningLabel()
                                                                                      : 0);
      const std::vector<VesselNode *> grandchildren = child->children();
      for (VesselNode * grandchild : grandchildren)
      {
        child->removeChild(grandchild);
        grandchild->setParent(node);
        node->addChild(grandchild);
      }
      delete child; // unlinks itself from the node
      ++merged;
    }
    if (!vessel.isNull())
    {
      vessel->setCleaningLabel(count);
    }
    for (VesselNode * child : node->children())
    {
      stack.push_back(child);
    }
  }
  renumberBreadthFirst(tree);
  return merged;
}
