#ifndef ChildTreeIterator_h
#define ChildTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

/** The children of one node, in child-list order. Starts before the first child. */
template <class T>
class ChildTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  ChildTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * parent)
    : Superclass(tree, rootField, nullptr)
    , m_parent(parent)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::ChildCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new ChildTreeIterator(*this);
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    if (m_parent == nullptr)
    {
      return nullptr;
    }
    if (node == nullptr)
    {
      return Superclass::Walk::firstChild(m_parent);
    }
    return Superclass::Walk::nextSibling(node, nullptr);
  }

private:
  NodeType * m_parent{ nullptr };
};

#endif
