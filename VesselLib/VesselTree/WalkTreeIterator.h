#ifndef WalkTreeIterator_h
#define WalkTreeIterator_h

#include "AbstractLinkedTreeIterator.h"
#include "ArbitraryTreeIterator.h"

/** Iterator that moves freely: to the root, the parent, a child or a sibling. next() steps in preorder. */
template <class T>
class WalkTreeIterator
  : public AbstractLinkedTreeIterator<T>
  , public ArbitraryTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;
  using Walk = typename Superclass::Walk;

  WalkTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * start)
    : Superclass(tree, rootField, start)
  {}

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::WalkCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new WalkTreeIterator(*this);
  }

  bool
  goToRoot() override
  {
    return moveTo(this->getRootNode());
  }
  bool
  goToParent() override
  {
    if (this->m_current == nullptr || this->m_current == this->getRootNode())
    {
      return false;
    }
    return moveTo(this->m_current->getParent());
  }
  bool
  goToChild(int index) override
  {
    return this->m_current != nullptr && moveTo(this->m_current->getChild(index));
  }
  bool
  goToNextSibling() override
  {
    return this->m_current != nullptr && moveTo(Walk::nextSibling(this->m_current, this->getRootNode()));
  }
  bool
  goToPreviousSibling() override
  {
    return this->m_current != nullptr && moveTo(Walk::previousSibling(this->m_current, this->getRootNode()));
  }
  bool
  hasParent() const override
  {
    return this->m_current != nullptr && this->m_current != this->getRootNode() &&
           this->m_current->getParent() != nullptr;
  }
  int
  numberOfChildren() const override
  {
    return this->m_current != nullptr ? this->m_current->numberOfChildren() : 0;
  }

protected:
  NodeType *
  successor(NodeType * node) override
  {
    return Walk::preorder(node, this->getRootNode());
  }

private:
  bool
  moveTo(NodeType * node)
  {
    if (node == nullptr)
    {
      return false;
    }
    this->setCurrent(node);
    return true;
  }
};

#endif
