#ifndef PostorderTreeIterator_h
#define PostorderTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

/** Postorder: a node's children's subtrees in order, then the node.
 *  Started without a node, the first call of next() gives the first node of the walk; started at a node, the walk
 *  goes on from that node. */
template <class T>
class PostorderTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  PostorderTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * start = nullptr)
    : Superclass(tree, rootField, start)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::PostorderCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new PostorderTreeIterator(*this);
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    return Superclass::Walk::postorder(node, this->getRootNode());
  }
};

#endif
