#ifndef AbstractLinkedTreeIterator_h
#define AbstractLinkedTreeIterator_h

#include "LinkedTreeWalk.h"
#include "TreeIterator.h"

#include <stdexcept>

template <class T>
class LinkedTree;

/** Common implementation of the iterators of a LinkedTree. A concrete iterator only provides its successor rule.
 *
 *  The iterator sees the tree's root through a pointer to the tree's root field, so it follows a re-rooted tree.
 *  The look-ahead node is computed lazily and dropped when the tree reports a change. Only a node is cached, never
 *  "no successor": at the end, hasNext looks again, so that nodes appended during a walk are reached. */
template <class T>
class AbstractLinkedTreeIterator : public virtual TreeIterator<T>
{
public:
  using NodeType = LinkedNode<T>;
  using Walk = LinkedTreeWalk<T>;

  bool
  hasNext() override
  {
    if (m_next == nullptr)
    {
      m_next = successor(m_current);
    }
    return m_next != nullptr;
  }

  T
  next() override
  {
    if (!hasNext())
    {
      throw std::out_of_range("AbstractLinkedTreeIterator::next(): the walk has ended");
    }
    m_current = m_next;
    m_next = nullptr;
    entered(m_current);
    hasNext();
    return m_current->getData();
  }

  bool
  isValid() const override
  {
    return m_current != nullptr;
  }

  T
  get() const override
  {
    return m_current != nullptr ? m_current->getData() : T();
  }

  Tree<T> *
  subtree() const override;

  bool
  isLeaf() const override
  {
    return m_current != nullptr && !m_current->hasChildren();
  }

  bool
  removeChild(int index) override;

  bool
  hasChild(int index) const override
  {
    return m_current != nullptr && m_current->getChild(index) != nullptr;
  }

  TreeIterator<T> *
  newChildIterator() const override;

  TreeIterator<T> *
  newRootIterator() const override;

  /** Drops the look-ahead so that it is computed again from the changed tree. */
  void
  treeChanged(const TreeIterator<T> *) override
  {
    m_next = nullptr;
  }

  /** Copies the position, the look-ahead, the root field and the tree of another iterator. */
  void
  assign(const AbstractLinkedTreeIterator & other)
  {
    m_current = other.m_current;
    m_next = other.m_next;
    m_rootField = other.m_rootField;
    m_tree = other.m_tree;
  }

  NodeType *
  getNode() const
  {
    return m_current;
  }
  LinkedTree<T> *
  getTree() const
  {
    return m_tree;
  }
  NodeType *
  getRootNode() const
  {
    return m_rootField != nullptr ? *m_rootField : nullptr;
  }

protected:
  AbstractLinkedTreeIterator(LinkedTree<T> * tree, NodeType * const * rootField, NodeType * current)
    : m_current(current)
    , m_rootField(rootField)
    , m_tree(tree)
  {}
  AbstractLinkedTreeIterator(const AbstractLinkedTreeIterator & other) = default;
  AbstractLinkedTreeIterator &
  operator=(const AbstractLinkedTreeIterator &) = default;

  /** The node after `node` in this iterator's order; `node` is null before the walk has started. */
  virtual NodeType *
  successor(NodeType * node) = 0;
  /** Called when a node becomes the current node. */
  virtual void
  entered(NodeType *)
  {}

  void
  setCurrent(NodeType * node)
  {
    m_current = node;
    m_next = nullptr;
  }

  NodeType * m_current{ nullptr };
  NodeType * m_next{ nullptr };
  NodeType * const * m_rootField{ nullptr };
  LinkedTree<T> * m_tree{ nullptr };
};

#endif
