#ifndef LinkedTreeWalk_h
#define LinkedTreeWalk_h

#include "LinkedNode.h"

/** Successor rules of the traversal orders, shared by the iterators and the tree's own walks. Children are taken in
 *  child-list order and null entries are skipped. `root` bounds every walk: it is the root of the tree (or of the
 *  view) being walked, so a walk never leaves it. All rules are iterative. */
template <class T>
class LinkedTreeWalk
{
public:
  using NodeType = LinkedNode<T>;

  static NodeType *
  firstChild(const NodeType * node)
  {
    for (NodeType * child : node->children())
    {
      if (child != nullptr)
      {
        return child;
      }
    }
    return nullptr;
  }

  /** The next non-null entry after `node` in its parent's child list; null for the root or the last child. */
  static NodeType *
  nextSibling(const NodeType * node, const NodeType * root)
  {
    if (node == root || node->getParent() == nullptr)
    {
      return nullptr;
    }
    const auto & siblings = node->getParent()->children();
    // Children lists are short: a scan is cheaper than any index bookkeeping.
    std::size_t i = 0;
    while (i < siblings.size() && siblings[i] != node)
    {
      ++i;
    }
    for (++i; i < siblings.size(); ++i)
    {
      if (siblings[i] != nullptr)
      {
        return siblings[i];
      }
    }
    return nullptr;
  }

  static NodeType *
  previousSibling(const NodeType * node, const NodeType * root)
  {
    if (node == root || node->getParent() == nullptr)
    {
      return nullptr;
    }
    const auto & siblings = node->getParent()->children();
    NodeType * previous = nullptr;
    for (NodeType * sibling : siblings)
    {
      if (sibling == node)
      {
        return previous;
      }
      if (sibling != nullptr)
      {
        previous = sibling;
      }
    }
    return nullptr;
  }

  /** Is `node` the first non-null child of its parent? */
  static bool
  isFirstChild(const NodeType * node)
  {
    return node->getParent() != nullptr && firstChild(node->getParent()) == node;
  }

  static NodeType *
  deepestFirstDescendant(NodeType * node)
  {
    for (NodeType * child = firstChild(node); child != nullptr; child = firstChild(node))
    {
      node = child;
    }
    return node;
  }

  /** Preorder: first child, else next sibling, else the next sibling of the nearest ancestor that has one. */
  static NodeType *
  preorder(NodeType * node, NodeType * root)
  {
    if (node == nullptr)
    {
      return root;
    }
    if (NodeType * child = firstChild(node))
    {
      return child;
    }
    while (node != root && node != nullptr)
    {
      if (NodeType * sibling = nextSibling(node, root))
      {
        return sibling;
      }
      node = node->getParent();
    }
    return nullptr;
  }

  /** Postorder: the walk ends at the root; otherwise the next sibling's deepest first descendant, else the
   *  parent. */
  static NodeType *
  postorder(NodeType * node, NodeType * root)
  {
    if (node == nullptr)
    {
      return root == nullptr ? nullptr : deepestFirstDescendant(root);
    }
    if (node == root)
    {
      return nullptr;
    }
    if (NodeType * sibling = nextSibling(node, root))
    {
      return deepestFirstDescendant(sibling);
    }
    return node->getParent();
  }

  /** Inorder for ordered trees: the first child's subtree, then the node, then the other children's subtrees. */
  static NodeType *
  inorder(NodeType * node, NodeType * root)
  {
    if (node == nullptr)
    {
      return root == nullptr ? nullptr : deepestFirstDescendant(root);
    }
    // After a node comes its second child's subtree, if it has one.
    if (NodeType * first = firstChild(node))
    {
      if (NodeType * second = nextSibling(first, nullptr))
      {
        return deepestFirstDescendant(second);
      }
    }
    // The node's subtree is done: climb.
    while (node != root && node->getParent() != nullptr)
    {
      NodeType * parent = node->getParent();
      if (isFirstChild(node))
      {
        return parent;
      }
      if (NodeType * sibling = nextSibling(node, root))
      {
        return deepestFirstDescendant(sibling);
      }
      node = parent;
    }
    return nullptr;
  }

  /** Leaf order: the next node in preorder that has no children. */
  static NodeType *
  leaf(NodeType * node, NodeType * root)
  {
    do
    {
      node = preorder(node, root);
    } while (node != nullptr && firstChild(node) != nullptr);
    return node;
  }

  /** Depth of `node` below `root` (0 for the root itself). */
  static int
  depth(const NodeType * node, const NodeType * root)
  {
    int d = 0;
    while (node != nullptr && node != root)
    {
      node = node->getParent();
      ++d;
    }
    return d;
  }
};

#endif
