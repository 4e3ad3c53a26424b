#ifndef VesselTestTree_h
#define VesselTestTree_h

#include "ArVesselTree.h"

#include <cstdint>
#include <memory>
#include <vector>

/** Builders shared by the tree tests. */
namespace vessel_test
{
inline ar<Vessel>
makeVessel(int id)
{
  ar<Vessel> vessel(new Vessel());
  vessel->setVesselId(id);
  return vessel;
}

/** Appends a child node carrying a new vessel with the id, as the tree builders do. */
inline VesselNode *
addChild(VesselNode * parent, int id)
{
  auto * node = new VesselNode(parent, makeVessel(id));
  parent->addChild(node);
  return node;
}

/** One vessel of a hand-made tree: id, labels and centre-line points. */
struct VesselRecipe
{
  std::int32_t id;
  std::int32_t type;
  std::int32_t segment;
  std::int32_t status;
  std::vector<VesselPoint> points;
};

inline ar<Vessel>
makeVessel(const VesselRecipe & recipe)
{
  ar<Vessel> vessel(new Vessel());
  vessel->setVesselId(recipe.id);
  vessel->getProperties().setBloodVesselType(recipe.type);
  vessel->getProperties().setSegmentType(recipe.segment);
  vessel->getProperties().setResectionStatus(recipe.status);
  for (const VesselPoint & p : recipe.points)
  {
    vessel->appendPoint(p);
  }
  return vessel;
}

/** A root with the given children, each child a leaf. */
inline ArVesselTree
makeStar(const VesselRecipe & root, const std::vector<VesselRecipe> & children)
{
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  tree->setRoot(makeVessel(root));
  for (const VesselRecipe & child : children)
  {
    auto * node = new VesselNode(tree->getRootNode(), makeVessel(child));
    tree->getRootNode()->addChild(node);
  }
  return handle;
}

/** The first recipe as the root, every other one a leaf child of it (none: an empty tree). */
inline ArVesselTree
makeStar(const std::vector<VesselRecipe> & vessels)
{
  if (vessels.empty())
  {
    return ArVesselTree(new LinkedVesselTree());
  }
  return makeStar(vessels.front(), std::vector<VesselRecipe>(vessels.begin() + 1, vessels.end()));
}

/** The fixed three-level tree used by the iterator tests:
 *        1
 *      /   \
 *     2     3
 *    / \     \
 *   4   5     6          */
inline std::unique_ptr<LinkedVesselTree>
makeThreeLevelTree()
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  VesselNode * root = tree->getRootNode();
  VesselNode * a = addChild(root, 2);
  VesselNode * b = addChild(root, 3);
  addChild(a, 4);
  addChild(a, 5);
  addChild(b, 6);
  return tree;
}

/** Ids in the order the iterator gives them. */
inline std::vector<int>
idsOf(TreeIterator<ar<Vessel>> & iterator)
{
  std::vector<int> ids;
  while (iterator.hasNext())
  {
    ids.push_back(iterator.next()->getVesselId());
  }
  return ids;
}

inline std::vector<int>
preorderIds(const Tree<ar<Vessel>> & tree)
{
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree.newPreorderIterator());
  return idsOf(*it);
}

/** An iterator standing on the node with the id (preorder search); the caller owns it. */
inline TreeIterator<ar<Vessel>> *
iteratorAt(const Tree<ar<Vessel>> & tree, int id)
{
  TreeIterator<ar<Vessel>> * it = tree.newPreorderIterator();
  while (it->hasNext())
  {
    if (it->next()->getVesselId() == id)
    {
      return it;
    }
  }
  delete it;
  return nullptr;
}
} // namespace vessel_test

#endif
