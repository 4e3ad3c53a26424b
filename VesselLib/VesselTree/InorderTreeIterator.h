#ifndef InorderTreeIterator_h
#define InorderTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

/** Inorder: the first child's subtree, then the node, then the other children's subtrees in order.
 *  Started without a node, the first call of next() gives the first node of the walk; started at a node, the walk
 *  goes on from that node. */
template <class T>
class InorderTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  InorderTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * start = nullptr)
    : Superclass(tree, rootField, start)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::InorderCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new InorderTreeIterator(*this);
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    return Superclass::Walk::inorder(node, this->getRootNode());
  }
};

#endif
