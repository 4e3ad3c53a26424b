#include "VesselTreeCleaner.h"

#include <deque>

void
VesselTreeCleaner::renumberBreadthFirst(const ArVesselTree & tree)
{
  LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || linked->getRootNode() == nullptr)
  {
    return;
  }
  std::int32_t id = 1;
  std::deque<VesselNode *> queue{ linked->getRootNode() };
  while (!queue.empty())
  {
    VesselNode * node = queue.front();
    queue.pop_front();
    if (!node->getData().isNull())
    {
      node->getData()->setVesselId(id++);
    }
    for (VesselNode * child : node->children())
    {
      queue.push_back(child);
    }
  }
}
