#ifndef PreorderTreeIterator_h
#define PreorderTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

/** Preorder: a node, then its children's subtrees in order.
 *  Started without a node, the first call of next() gives the first node of the walk; started at a node, the walk
 *  goes on from that node. */
template <class T>
class PreorderTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  PreorderTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * start = nullptr)
    : Superclass(tree, rootField, start)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::PreorderCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new PreorderTreeIterator(*this);
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    return Superclass::Walk::preorder(node, this->getRootNode());
  }
};

#endif
