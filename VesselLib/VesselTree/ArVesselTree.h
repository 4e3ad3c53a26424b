#ifndef ArVesselTree_h
#define ArVesselTree_h

#include "LinkedTree.h"
#include "Vessel.h"

#include <vector>

/** A vessel tree: a LinkedTree of shared vessels, itself held through a counted handle. */
using VesselTree = Tree<ar<Vessel>>;
using LinkedVesselTree = LinkedTree<ar<Vessel>>;
using VesselNode = LinkedNode<ar<Vessel>>;
using ArVesselTree = ar<Tree<ar<Vessel>>>;

/** Deep copy of a vessel tree: same shape, new Vessel objects with the same content. Null for a null handle or a
 *  tree that is not a LinkedTree. */
ArVesselTree
cloneVesselTree(const ArVesselTree & tree);

/** One tree of several: a new root vessel without points (so it takes part in no measurement) holds deep copies of
 *  the trees' roots as its children, in the given order. The vessel ids of the result are renumbered from 1 in
 *  preorder, the root taking 1, so that they are unique. Null and empty trees are skipped. */
ArVesselTree
joinVesselTrees(const std::vector<ArVesselTree> & trees);

/** The LinkedTree behind a handle, or null. */
inline LinkedVesselTree *
asLinkedVesselTree(const ArVesselTree & tree)
{
  return dynamic_cast<LinkedVesselTree *>(tree.get());
}

#endif
