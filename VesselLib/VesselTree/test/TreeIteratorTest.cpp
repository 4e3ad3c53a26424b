#include "VesselTestTree.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace vessel_test;
using Ids = std::vector<int>;
using It = std::unique_ptr<TreeIterator<ar<Vessel>>>;

class TreeIteratorOrder : public ::testing::Test
{
protected:
  std::unique_ptr<LinkedVesselTree> tree = makeThreeLevelTree();

  It
  at(int id)
  {
    return It(iteratorAt(*tree, id));
  }
};

TEST_F(TreeIteratorOrder, PreorderFromTheStartAndFromANode)
{
  It all(tree->newPreorderIterator());
  EXPECT_EQ(all->getOrderCode(), 1);
  EXPECT_FALSE(all->isValid());
  EXPECT_EQ(idsOf(*all), (Ids{ 1, 2, 4, 5, 3, 6 }));
  EXPECT_TRUE(all->isValid());
  EXPECT_THROW(all->next(), std::out_of_range);

  It fromTwo(tree->newPreorderIterator(*at(2)));
  EXPECT_EQ(fromTwo->get()->getVesselId(), 2);
  EXPECT_EQ(idsOf(*fromTwo), (Ids{ 4, 5, 3, 6 }));
}

TEST_F(TreeIteratorOrder, AnIteratorAtTheEndReachesANodeAppendedAfterwards)
{
  It all(tree->newPreorderIterator());
  EXPECT_EQ(idsOf(*all), (Ids{ 1, 2, 4, 5, 3, 6 }));
  EXPECT_FALSE(all->hasNext());
  // The walk stands on 6; a child appended to it now is the next node, and asking again finds it.
  auto * last = dynamic_cast<AbstractLinkedTreeIterator<ar<Vessel>> &>(*all).getNode();
  addChild(last, 7);
  EXPECT_TRUE(all->hasNext());
  EXPECT_EQ(all->next()->getVesselId(), 7);
  EXPECT_FALSE(all->hasNext());
}

TEST_F(TreeIteratorOrder, PostorderVisitsChildrenBeforeTheirParent)
{
  It all(tree->newPostorderIterator());
  EXPECT_EQ(all->getOrderCode(), 3);
  EXPECT_EQ(idsOf(*all), (Ids{ 4, 5, 2, 6, 3, 1 }));
  It fromFive(tree->newPostorderIterator(*at(5)));
  EXPECT_EQ(idsOf(*fromFive), (Ids{ 2, 6, 3, 1 }));
}

TEST_F(TreeIteratorOrder, InorderPutsANodeAfterItsFirstChildsSubtree)
{
  It all(tree->newInorderIterator());
  EXPECT_EQ(all->getOrderCode(), 2);
  EXPECT_EQ(idsOf(*all), (Ids{ 4, 2, 5, 1, 6, 3 }));
  It fromTwo(tree->newInorderIterator(*at(2)));
  EXPECT_EQ(idsOf(*fromTwo), (Ids{ 5, 1, 6, 3 }));
}

TEST_F(TreeIteratorOrder, LevelorderWithItsLevelBounds)
{
  It all(tree->newLevelorderIterator(0, 100));
  EXPECT_EQ(all->getOrderCode(), 4);
  EXPECT_EQ(idsOf(*all), (Ids{ 1, 2, 3, 4, 5, 6 }));
  It onlyLevelOne(tree->newLevelorderIterator(1, 1));
  EXPECT_EQ(idsOf(*onlyLevelOne), (Ids{ 2, 3 }));
  It upToOne(tree->newLevelorderIterator(1));
  EXPECT_EQ(idsOf(*upToOne), (Ids{ 1, 2, 3 }));
  It belowTwo(tree->newLevelorderIterator(*at(2), 1));
  EXPECT_EQ(belowTwo->get()->getVesselId(), 2);
  EXPECT_EQ(idsOf(*belowTwo), (Ids{ 4, 5 }));
  It deepOnly(tree->newLevelorderIterator(2, 2));
  EXPECT_EQ(idsOf(*deepOnly), (Ids{ 4, 5, 6 }));
}

TEST_F(TreeIteratorOrder, LeavesInPreorder)
{
  It leaves(tree->newLeafIterator());
  EXPECT_EQ(leaves->getOrderCode(), 7);
  EXPECT_EQ(idsOf(*leaves), (Ids{ 4, 5, 6 }));
  It fromFour(tree->newLeafIterator(*at(4)));
  EXPECT_EQ(idsOf(*fromFour), (Ids{ 5, 6 }));
}

TEST_F(TreeIteratorOrder, ChildAndRootIterators)
{
  It root(tree->newPreorderIterator());
  root->next();
  It children(root->newChildIterator());
  EXPECT_EQ(children->getOrderCode(), 5);
  EXPECT_EQ(idsOf(*children), (Ids{ 2, 3 }));
  It noChildren(at(6)->newChildIterator());
  EXPECT_FALSE(noChildren->hasNext());

  It up(at(5)->newRootIterator());
  EXPECT_EQ(up->getOrderCode(), 6);
  EXPECT_EQ(idsOf(*up), (Ids{ 2, 1 }));
  It fromRoot(root->newRootIterator());
  EXPECT_FALSE(fromRoot->hasNext());
}

TEST_F(TreeIteratorOrder, WalkIteratorMovesFreely)
{
  std::unique_ptr<ArbitraryTreeIterator<ar<Vessel>>> walk(tree->newWalkIterator());
  EXPECT_EQ(walk->get()->getVesselId(), 1);
  EXPECT_FALSE(walk->hasParent());
  EXPECT_FALSE(walk->goToParent());
  EXPECT_EQ(walk->numberOfChildren(), 2);
  EXPECT_TRUE(walk->goToChild(0));
  EXPECT_EQ(walk->get()->getVesselId(), 2);
  EXPECT_TRUE(walk->goToNextSibling());
  EXPECT_EQ(walk->get()->getVesselId(), 3);
  EXPECT_FALSE(walk->goToNextSibling());
  EXPECT_TRUE(walk->goToPreviousSibling());
  EXPECT_TRUE(walk->goToChild(1));
  EXPECT_EQ(walk->get()->getVesselId(), 5);
  EXPECT_FALSE(walk->goToChild(0));
  EXPECT_TRUE(walk->hasParent());
  // next() goes on in preorder from wherever the walk stands.
  EXPECT_EQ(idsOf(*walk), (Ids{ 3, 6 }));
  EXPECT_TRUE(walk->goToRoot());
  EXPECT_EQ(walk->get()->getVesselId(), 1);
}

TEST_F(TreeIteratorOrder, SubtreeViewWalksOnlyItsPartAndOwnsNothing)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    std::unique_ptr<Tree<ar<Vessel>>> view(at(2)->subtree());
    EXPECT_EQ(preorderIds(*view), (Ids{ 2, 4, 5 }));
    It post(view->newPostorderIterator());
    EXPECT_EQ(idsOf(*post), (Ids{ 4, 5, 2 }));
    It child(iteratorAt(*view, 4));
    EXPECT_FALSE(view->reRoot(*child));
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
  EXPECT_EQ(preorderIds(*tree), (Ids{ 1, 2, 4, 5, 3, 6 }));
}

TEST_F(TreeIteratorOrder, EmptyTreeGivesEmptyWalks)
{
  LinkedVesselTree empty;
  for (TreeIterator<ar<Vessel>> * raw : { empty.newPreorderIterator(),
                                          empty.newPostorderIterator(),
                                          empty.newInorderIterator(),
                                          empty.newLeafIterator(),
                                          empty.newLevelorderIterator(0, 5) })
  {
    It it(raw);
    EXPECT_FALSE(it->hasNext()) << "order " << it->getOrderCode();
  }
}

TEST_F(TreeIteratorOrder, ACloneContinuesFromTheSamePosition)
{
  It it(at(2));
  It copy(it->clone());
  EXPECT_EQ(copy->getOrderCode(), 1);
  EXPECT_EQ(idsOf(*copy), (Ids{ 4, 5, 3, 6 }));
  EXPECT_EQ(idsOf(*it), (Ids{ 4, 5, 3, 6 }));
}
