#ifndef LevelorderTreeIterator_h
#define LevelorderTreeIterator_h

#include "AbstractLinkedTreeIterator.h"

#include <deque>
#include <utility>

/** Breadth-first walk, level by level, each level in child order. Levels count from the start node (level 0): only
 *  nodes of the levels firstLevel..lastLevel are visited. Started without a node, the walk begins at the root and
 *  the first call of next() gives the first visited node; started at a node, the iterator stands on that node and
 *  next() goes on below it. The pending nodes are the iterator's own state. */
template <class T>
class LevelorderTreeIterator : public AbstractLinkedTreeIterator<T>
{
public:
  using Superclass = AbstractLinkedTreeIterator<T>;
  using NodeType = typename Superclass::NodeType;

  LevelorderTreeIterator(LinkedTree<T> * tree,
                         NodeType * const * rootField,
                         NodeType * start,
                         int firstLevel,
                         int lastLevel)
    : Superclass(tree, rootField, start)
    , m_firstLevel(firstLevel)
    , m_lastLevel(lastLevel)
  {
    if (start != nullptr)
    {
      m_currentLevel = 0;
      expand(start, 0);
    }
    else if (this->getRootNode() != nullptr)
    {
      m_pending.emplace_back(this->getRootNode(), 0);
    }
  }

  int
  getOrderCode() const override
  {
    return TreeIterator<T>::LevelorderCode;
  }
  TreeIterator<T> *
  clone() const override
  {
    return new LevelorderTreeIterator(*this);
  }
  /** Level of the current node below the start node. */
  int
  getLevel() const
  {
    return m_currentLevel;
  }

protected:
  NodeType *
  successor(NodeType *) override
  {
    while (!m_pending.empty())
    {
      auto [node, level] = m_pending.front();
      m_pending.pop_front();
      expand(node, level);
      if (level >= m_firstLevel)
      {
        m_nextLevel = level;
        return node;
      }
    }
    return nullptr;
  }
  void
  entered(NodeType *) override
  {
    m_currentLevel = m_nextLevel;
  }

private:
  void
  expand(NodeType * node, int level)
  {
    if (level >= m_lastLevel)
    {
      return;
    }
    for (NodeType * child : node->children())
    {
      if (child != nullptr)
      {
        m_pending.emplace_back(child, level + 1);
      }
    }
  }

  int m_firstLevel{ 0 };
  int m_lastLevel{ 0 };
  int m_currentLevel{ -1 };
  int m_nextLevel{ -1 };
  std::deque<std::pair<NodeType *, int>> m_pending;
};

#endif
