#ifndef RootTreeIterator_h
#define RootTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

/** Climbs from a node to the root: stands on the start node, and next() gives its parent, then the grandparent,
 *  up to and including the root. A walk started at the root is empty. */
template <class T>
class RootTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  RootTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * start)
    : Superclass(tree, rootField, start)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::RootCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new RootTreeIterator(*this);
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    if (node == nullptr || node == this->getRootNode())
    {
      return nullptr;
    }
    return node->getParent();
  }
};

#endif
