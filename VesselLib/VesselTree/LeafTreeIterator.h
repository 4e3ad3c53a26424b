#ifndef LeafTreeIterator_h
#define LeafTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

/** Leaves only, in preorder.
 *  Started without a node, the first call of next() gives the first node of the walk; started at a node, the walk
 *  goes on from that node. */
template <class T>
class LeafTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  LeafTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * start = nullptr)
    : Superclass(tree, rootField, start)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::LeafCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new LeafTreeIterator(*this);
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    return Superclass::Walk::leaf(node, this->getRootNode());
  }
};

#endif
