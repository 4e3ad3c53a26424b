#include "VesselTestTree.h"

#include <gtest/gtest.h>

using namespace vessel_test;
using Ids = std::vector<int>;
using It = std::unique_ptr<TreeIterator<ar<Vessel>>>;

namespace
{
/** Ids of a node's children, in order. */
Ids
childIds(const VesselNode * node)
{
  Ids ids;
  for (const VesselNode * child : node->children())
  {
    ids.push_back(child->getData()->getVesselId());
  }
  return ids;
}

/** Every child's parent link points back at its parent. */
bool
linksAreConsistent(const LinkedVesselTree & tree)
{
  using Walk = LinkedTreeWalk<ar<Vessel>>;
  VesselNode * root = tree.getRootNode();
  if (root != nullptr && root->getParent() != nullptr)
  {
    return false;
  }
  for (VesselNode * n = Walk::preorder(nullptr, root); n != nullptr; n = Walk::preorder(n, root))
  {
    for (const VesselNode * child : n->children())
    {
      if (child->getParent() != n)
      {
        return false;
      }
    }
  }
  return true;
}
} // namespace

TEST(LinkedTree, SetRootOnlyOnceAndBasicQueries)
{
  LinkedVesselTree tree;
  EXPECT_FALSE(tree.hasRoot());
  EXPECT_EQ(tree.numberOfNodes(), 0);
  ar<Vessel> root = makeVessel(1);
  EXPECT_TRUE(tree.setRoot(root));
  EXPECT_FALSE(tree.setRoot(makeVessel(2)));
  EXPECT_EQ(tree.getRoot(), root);
  EXPECT_TRUE(tree.isRoot(root));
  EXPECT_TRUE(tree.contains(root));
  // A root without children answers isLeaf for any payload.
  EXPECT_TRUE(tree.isLeaf(makeVessel(99)));

  auto big = makeThreeLevelTree();
  EXPECT_EQ(big->numberOfNodes(), 6);
  ar<Vessel> four = big->getRootNode()->getChild(0)->getChild(0)->getData();
  ar<Vessel> two = big->getRootNode()->getChild(0)->getData();
  EXPECT_TRUE(big->isLeaf(four));
  EXPECT_FALSE(big->isLeaf(two));
  EXPECT_FALSE(big->isLeaf(makeVessel(99)));
  EXPECT_FALSE(big->isRoot(two));
  EXPECT_FALSE(big->contains(root));
  EXPECT_EQ(big->getRootNode()->childPosition(big->getRootNode()->getChild(1)->getData()), 1);
  EXPECT_EQ(big->getRootNode()->childPosition(four), -1);
}

TEST(LinkedTree, EqualMeansTheSamePayloadObjectsInTheSameOrder)
{
  auto tree = makeThreeLevelTree();
  auto same = std::make_unique<LinkedVesselTree>();
  ArVesselTree handle(tree.release());
  ArVesselTree copy = cloneVesselTree(handle);
  // A clone has equal content but other vessel objects.
  EXPECT_FALSE(handle->equal(*copy));
  EXPECT_EQ(preorderIds(*copy), preorderIds(*handle));

  auto * linked = asLinkedVesselTree(handle);
  auto shared = linked->copy([](const ar<Vessel> & v) { return v; });
  EXPECT_TRUE(handle->equal(*shared));
  It it(iteratorAt(*shared, 6));
  it->removeChild(0); // 6 has no child: nothing happens
  EXPECT_TRUE(handle->equal(*shared));
  It three(iteratorAt(*shared, 3));
  EXPECT_TRUE(three->removeChild(0));
  EXPECT_FALSE(handle->equal(*shared));
  EXPECT_FALSE(shared->equal(*handle));
}

TEST(LinkedTree, CloneMakesNewVesselsWithTheSameContent)
{
  auto tree = makeThreeLevelTree();
  tree->getRootNode()->getData()->appendPoint({ 1, 2, 3, 4 });
  tree->getRootNode()->getData()->getProperties().setSegmentType(S_V);
  ArVesselTree handle(tree.release());
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    ArVesselTree copy = cloneVesselTree(handle);
    EXPECT_EQ(ar<Vessel>::registrySize(), vessels + 6);
    ar<Vessel> copiedRoot = copy->getRoot();
    EXPECT_NE(copiedRoot, handle->getRoot());
    EXPECT_EQ(copiedRoot->getPoints(), handle->getRoot()->getPoints());
    EXPECT_EQ(copiedRoot->getProperties().getSegmentType(), S_V);
    EXPECT_TRUE(linksAreConsistent(*asLinkedVesselTree(copy)));
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
  EXPECT_TRUE(cloneVesselTree(ArVesselTree()).isNull());
}

TEST(LinkedTree, ReRootAtAChildOfTheRootAppendsTheOldRootAfterItsChildren)
{
  auto tree = makeThreeLevelTree();
  It two(iteratorAt(*tree, 2));
  EXPECT_TRUE(tree->reRoot(*two));
  EXPECT_EQ(tree->getRoot()->getVesselId(), 2);
  EXPECT_EQ(childIds(tree->getRootNode()), (Ids{ 4, 5, 1 }));
  EXPECT_EQ(childIds(tree->getRootNode()->getChild(2)), (Ids{ 3 }));
  EXPECT_EQ(preorderIds(*tree), (Ids{ 2, 4, 5, 1, 3, 6 }));
  EXPECT_TRUE(linksAreConsistent(*tree));
  // The root itself cannot be re-rooted at.
  It root(iteratorAt(*tree, 2));
  EXPECT_FALSE(tree->reRoot(*root));
}

TEST(LinkedTree, ReRootAtALeafReversesTheWholePath)
{
  auto tree = makeThreeLevelTree();
  It six(iteratorAt(*tree, 6));
  EXPECT_TRUE(tree->reRoot(*six));
  EXPECT_EQ(preorderIds(*tree), (Ids{ 6, 3, 1, 2, 4, 5 }));
  EXPECT_EQ(childIds(tree->getRootNode()), (Ids{ 3 }));
  EXPECT_EQ(childIds(tree->getRootNode()->getChild(0)), (Ids{ 1 }));
  EXPECT_EQ(childIds(tree->getRootNode()->getChild(0)->getChild(0)), (Ids{ 2 }));
  EXPECT_TRUE(linksAreConsistent(*tree));
  It nothing(tree->newPreorderIterator());
  EXPECT_FALSE(tree->reRoot(*nothing));
}

TEST(LinkedTree, SwapSubtrees)
{
  auto tree = makeThreeLevelTree();
  It five(iteratorAt(*tree, 5));
  It three(iteratorAt(*tree, 3));
  EXPECT_TRUE(tree->swapSubtrees(*five, *three));
  EXPECT_EQ(preorderIds(*tree), (Ids{ 1, 2, 4, 3, 6, 5 }));
  EXPECT_TRUE(linksAreConsistent(*tree));

  // Siblings exchange places in their common list.
  It two(iteratorAt(*tree, 2));
  It again(iteratorAt(*tree, 5));
  EXPECT_TRUE(tree->swapSubtrees(*two, *again));
  EXPECT_EQ(childIds(tree->getRootNode()), (Ids{ 5, 2 }));
  EXPECT_TRUE(linksAreConsistent(*tree));
}

TEST(LinkedTree, SwappingANodeWithTheRootMakesItTheRoot)
{
  auto tree = makeThreeLevelTree();
  It root(iteratorAt(*tree, 1));
  It four(iteratorAt(*tree, 4));
  EXPECT_TRUE(tree->swapSubtrees(*root, *four));
  EXPECT_EQ(tree->getRoot()->getVesselId(), 4);
  EXPECT_EQ(tree->getRootNode()->getParent(), nullptr);
  // The old root now hangs where 4 was, below its own descendant: swapping back restores the tree.
  EXPECT_TRUE(tree->swapSubtrees(*root, *four));
  EXPECT_EQ(preorderIds(*tree), (Ids{ 1, 2, 4, 5, 3, 6 }));
  EXPECT_TRUE(linksAreConsistent(*tree));

  LinkedVesselTree single;
  single.setRoot(makeVessel(1));
  It a(single.newWalkIterator());
  It b(single.newWalkIterator());
  EXPECT_FALSE(single.swapSubtrees(*a, *b));
}

TEST(LinkedTree, SetChildOverwritesTheEntryAfterTheDestroyedChild)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    LinkedVesselTree tree;
    tree.setRoot(makeVessel(1));
    VesselNode * root = tree.getRootNode();
    addChild(root, 2);
    VesselNode * three = addChild(root, 3);
    addChild(root, 4);
    auto * replacement = new VesselNode(root, makeVessel(9));
    EXPECT_TRUE(root->setChild(0, replacement));
    // 2 is destroyed, and 9 lands on the place of 3, which is dropped from the list but not destroyed.
    EXPECT_EQ(childIds(root), (Ids{ 9, 4 }));
    EXPECT_EQ(three->getParent(), root);
    EXPECT_EQ(ar<Vessel>::registrySize(), vessels + 4);
    delete three;
    EXPECT_EQ(childIds(root), (Ids{ 9, 4 }));

    // The last child: the node is appended after the destruction.
    auto * last = new VesselNode(root, makeVessel(8));
    EXPECT_TRUE(root->setChild(1, last));
    EXPECT_EQ(childIds(root), (Ids{ 9, 8 }));
    EXPECT_FALSE(root->setChild(5, nullptr));
    EXPECT_EQ(root->getChild(5), nullptr);
    EXPECT_EQ(root->getChild(-1), nullptr);
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}

TEST(LinkedTree, RemovingAChildDestroysItsWholeSubtreeAndTellsTheIterators)
{
  auto tree = makeThreeLevelTree();
  ar<Vessel> four = tree->getRootNode()->getChild(0)->getChild(0)->getData();
  const std::size_t vessels = ar<Vessel>::registrySize();
  EXPECT_EQ(ar<Vessel>::count(four.get()), 2);

  It watcher(iteratorAt(*tree, 3));
  ASSERT_TRUE(watcher->hasNext()); // caches 6 as the look-ahead
  EXPECT_TRUE(tree->registerIterator(watcher.get()));
  EXPECT_FALSE(tree->registerIterator(watcher.get()));

  It root(tree->newWalkIterator());
  EXPECT_TRUE(root->hasChild(0));
  EXPECT_FALSE(root->hasChild(2));
  EXPECT_FALSE(root->removeChild(2));
  EXPECT_TRUE(root->removeChild(0));
  EXPECT_EQ(preorderIds(*tree), (Ids{ 1, 3, 6 }));
  // Vessels 2 and 5 are gone; 4 lives on through our handle only.
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels - 2);
  EXPECT_EQ(ar<Vessel>::count(four.get()), 1);
  EXPECT_EQ(idsOf(*watcher), (Ids{ 6 }));
  EXPECT_TRUE(tree->unregisterIterator(watcher.get()));
  EXPECT_FALSE(tree->unregisterIterator(watcher.get()));
}

TEST(LinkedTree, DeletingANodeUnlinksItFromItsParent)
{
  auto tree = makeThreeLevelTree();
  VesselNode * two = tree->getRootNode()->getChild(0);
  delete two;
  EXPECT_EQ(childIds(tree->getRootNode()), (Ids{ 3 }));
  EXPECT_EQ(tree->numberOfNodes(), 3);
  tree->clear();
  EXPECT_FALSE(tree->hasRoot());
  EXPECT_EQ(tree->numberOfNodes(), 0);
}

TEST(LinkedTree, JoiningTreesPutsCopiesUnderAnEmptyRootWithFreshIds)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    ArVesselTree first(makeThreeLevelTree().release());
    auto second = std::make_unique<LinkedVesselTree>();
    second->setRoot(makeVessel(1));
    second->getRoot()->appendPoint({ 1, 2, 3, 4 });
    second->getRoot()->getProperties().setBloodVesselType(HepaticVein);
    addChild(second->getRootNode(), 2);
    ArVesselTree secondHandle(second.release());
    ArVesselTree joined = joinVesselTrees({ first, ArVesselTree(), secondHandle });
    // 1 new root + 6 + 2 copies.
    EXPECT_EQ(joined->numberOfNodes(), 9);
    EXPECT_EQ(preorderIds(*joined), (Ids{ 1, 2, 3, 4, 5, 6, 7, 8, 9 }));
    EXPECT_EQ(joined->getRoot()->numberOfPoints(), 0u);
    EXPECT_EQ(joined->getRoot()->getProperties().getBloodVesselType(), UndefinedBloodVesselType);
    VesselNode * hepatic = asLinkedVesselTree(joined)->getRootNode()->getChild(1);
    EXPECT_EQ(hepatic->getData()->getProperties().getBloodVesselType(), HepaticVein);
    EXPECT_EQ(hepatic->getData()->getPoints(), secondHandle->getRoot()->getPoints());
    EXPECT_NE(hepatic->getData(), secondHandle->getRoot());
    // The originals keep their ids.
    EXPECT_EQ(preorderIds(*first), (Ids{ 1, 2, 4, 5, 3, 6 }));
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}
