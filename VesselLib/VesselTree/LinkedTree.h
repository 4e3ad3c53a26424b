#ifndef LinkedTree_h
#define LinkedTree_h

#include "Tree.h"
#include "LinkedNode.h"
#include "LinkedTreeWalk.h"
#include "PreorderTreeIterator.h"
#include "PostorderTreeIterator.h"
#include "InorderTreeIterator.h"
#include "LeafTreeIterator.h"
#include "LevelorderTreeIterator.h"
#include "ChildTreeIterator.h"
#include "RootTreeIterator.h"
#include "WalkTreeIterator.h"

#include <algorithm>
#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/** Ordered tree of LinkedNode<T> with an owned root and a list of registered (not owned) iterators.
 *
 *  A view (made by an iterator's subtree()) shows a subtree of another tree: it never destroys the nodes it shows
 *  and refuses to re-root. */
template <class T>
class LinkedTree : public Tree<T>
{
public:
  using NodeType = LinkedNode<T>;
  using Walk = LinkedTreeWalk<T>;

  LinkedTree() = default;
  /** A tree on an existing root node; with view set the nodes stay owned elsewhere. */
  LinkedTree(NodeType * root, bool view)
    : m_root(root)
    , m_view(view)
  {}

  ~LinkedTree() override
  {
    if (!m_view)
    {
      delete m_root;
    }
  }

  NodeType *
  getRootNode() const
  {
    return m_root;
  }
  /** Makes a parentless node the root, for builders. The previous root's subtree is destroyed. */
  void
  setRootNode(NodeType * root)
  {
    if (root == m_root)
    {
      return;
    }
    if (!m_view)
    {
      delete m_root;
    }
    m_root = root;
  }
  /** Hands the root node with its subtree to the caller, who owns it from then on; the tree is left empty. */
  NodeType *
  releaseRootNode()
  {
    NodeType * root = m_root;
    m_root = nullptr;
    return root;
  }
  bool
  isView() const
  {
    return m_view;
  }

  bool
  reRoot(TreeIterator<T> & position) override;
  bool
  setRoot(const T & payload) override;
  bool
  hasRoot() const override
  {
    return m_root != nullptr;
  }
  T
  getRoot() const override
  {
    return m_root != nullptr ? m_root->getData() : T();
  }
  bool
  contains(const T & payload) const override
  {
    return findNode(payload) != nullptr;
  }
  int
  numberOfNodes() const override
  {
    int count = 0;
    for (NodeType * n = Walk::preorder(nullptr, m_root); n != nullptr; n = Walk::preorder(n, m_root))
    {
      ++count;
    }
    return count;
  }
  bool
  equal(const Tree<T> & other) const override;
  /** True at once for a root without children, whatever the payload; otherwise whether the first node carrying the
   *  payload is a leaf. */
  bool
  isLeaf(const T & payload) const override
  {
    if (m_root != nullptr && !m_root->hasChildren())
    {
      return true;
    }
    NodeType * node = findNode(payload);
    return node != nullptr && !node->hasChildren();
  }
  bool
  isRoot(const T & payload) const override
  {
    return m_root != nullptr && m_root->getData() == payload;
  }
  void
  clear() override
  {
    if (!m_view)
    {
      delete m_root;
    }
    m_root = nullptr;
  }
  /** Exchanges the places of the two nodes; a parentless one was the root and the other becomes the root.
   *  Swapping a node with one of its ancestors links the tree into a cycle; swapping the same pair again undoes
   *  it. */
  bool
  swapSubtrees(TreeIterator<T> & a, TreeIterator<T> & b) override;

  TreeIterator<T> *
  newPreorderIterator() const override
  {
    return new PreorderTreeIterator<T>(self(), &m_root);
  }
  TreeIterator<T> *
  newPreorderIterator(const TreeIterator<T> & from) const override
  {
    return new PreorderTreeIterator<T>(self(), &m_root, nodeOf(from));
  }
  TreeIterator<T> *
  newPostorderIterator() const override
  {
    return new PostorderTreeIterator<T>(self(), &m_root);
  }
  TreeIterator<T> *
  newPostorderIterator(const TreeIterator<T> & from) const override
  {
    return new PostorderTreeIterator<T>(self(), &m_root, nodeOf(from));
  }
  TreeIterator<T> *
  newInorderIterator() const override
  {
    return new InorderTreeIterator<T>(self(), &m_root);
  }
  TreeIterator<T> *
  newInorderIterator(const TreeIterator<T> & from) const override
  {
    return new InorderTreeIterator<T>(self(), &m_root, nodeOf(from));
  }
  TreeIterator<T> *
  newLeafIterator(const TreeIterator<T> & from) const override
  {
    return new LeafTreeIterator<T>(self(), &m_root, nodeOf(from));
  }
  TreeIterator<T> *
  newLeafIterator() const override
  {
    return new LeafTreeIterator<T>(self(), &m_root);
  }
  TreeIterator<T> *
  newLevelorderIterator(int firstLevel, int lastLevel) const override
  {
    return new LevelorderTreeIterator<T>(self(), &m_root, nullptr, firstLevel, lastLevel);
  }
  TreeIterator<T> *
  newLevelorderIterator(const TreeIterator<T> & from, int firstLevel, int lastLevel) const override
  {
    return new LevelorderTreeIterator<T>(self(), &m_root, nodeOf(from), firstLevel, lastLevel);
  }
  TreeIterator<T> *
  newLevelorderIterator(int lastLevel) const override
  {
    return newLevelorderIterator(0, lastLevel);
  }
  TreeIterator<T> *
  newLevelorderIterator(const TreeIterator<T> & from, int lastLevel) const override
  {
    return newLevelorderIterator(from, 0, lastLevel);
  }
  /** Stands on the root. */
  ArbitraryTreeIterator<T> *
  newWalkIterator() const override
  {
    return new WalkTreeIterator<T>(self(), &m_root, m_root);
  }
  ArbitraryTreeIterator<T> *
  newWalkIterator(const TreeIterator<T> & from) const override
  {
    return new WalkTreeIterator<T>(self(), &m_root, nodeOf(from));
  }

  std::ostream &
  write(std::ostream & os) const override;
  std::istream &
  read(std::istream & is) override;

  bool
  registerIterator(TreeIterator<T> * iterator) override
  {
    if (std::find(m_iterators.begin(), m_iterators.end(), iterator) != m_iterators.end())
    {
      return false;
    }
    m_iterators.push_back(iterator);
    return true;
  }
  bool
  unregisterIterator(TreeIterator<T> * iterator) override
  {
    auto it = std::find(m_iterators.begin(), m_iterators.end(), iterator);
    if (it == m_iterators.end())
    {
      return false;
    }
    m_iterators.erase(it);
    return true;
  }
  void
  notifyIterators(const TreeIterator<T> * where) override
  {
    for (TreeIterator<T> * iterator : m_iterators)
    {
      iterator->treeChanged(where);
    }
  }

  /** A new tree of the same shape whose payloads are copyPayload(payload), built without recursion. */
  std::unique_ptr<LinkedTree>
  copy(const std::function<T(const T &)> & copyPayload) const;

  /** First node in preorder whose payload is the same object; null if none. */
  NodeType *
  findNode(const T & payload) const
  {
    for (NodeType * n = Walk::preorder(nullptr, m_root); n != nullptr; n = Walk::preorder(n, m_root))
    {
      if (n->getData() == payload)
      {
        return n;
      }
    }
    return nullptr;
  }

private:
  LinkedTree<T> *
  self() const
  {
    return const_cast<LinkedTree<T> *>(this);
  }
  static NodeType *
  nodeOf(const TreeIterator<T> & iterator)
  {
    auto * linked = dynamic_cast<const AbstractLinkedTreeIterator<T> *>(&iterator);
    return linked != nullptr ? linked->getNode() : nullptr;
  }

  NodeType * m_root{ nullptr };
  std::vector<TreeIterator<T> *> m_iterators;
  bool m_view{ false };
};

template <class T>
bool
LinkedTree<T>::reRoot(TreeIterator<T> & position)
{
  NodeType * node = nodeOf(position);
  if (m_view || node == nullptr || node->getParent() == nullptr)
  {
    return false;
  }
  NodeType * parent = node->getParent();
  m_root = node;
  node->addChild(parent);
  parent->removeChild(node);
  node->setParent(nullptr);

  NodeType * grandParent = parent->getParent();
  parent->setParent(node);
  NodeType * previous = parent;
  while (grandParent != nullptr)
  {
    NodeType * next = grandParent->getParent();
    previous->addChild(grandParent);
    grandParent->removeChild(previous);
    grandParent->setParent(previous);
    previous = grandParent;
    grandParent = next;
  }
  return true;
}

template <class T>
bool
LinkedTree<T>::setRoot(const T & payload)
{
  if (m_root != nullptr)
  {
    return false;
  }
  m_root = new NodeType(nullptr, payload);
  std::unique_ptr<TreeIterator<T>> where(newPreorderIterator());
  notifyIterators(where.get());
  return true;
}

template <class T>
bool
LinkedTree<T>::equal(const Tree<T> & other) const
{
  std::unique_ptr<TreeIterator<T>> mine(newPreorderIterator());
  std::unique_ptr<TreeIterator<T>> theirs(other.newPreorderIterator());
  for (;;)
  {
    const bool a = mine->hasNext();
    const bool b = theirs->hasNext();
    if (a != b)
    {
      return false;
    }
    if (!a)
    {
      return true;
    }
    if (mine->next() != theirs->next())
    {
      return false;
    }
  }
}

template <class T>
bool
LinkedTree<T>::swapSubtrees(TreeIterator<T> & a, TreeIterator<T> & b)
{
  NodeType * na = nodeOf(a);
  NodeType * nb = nodeOf(b);
  if (na == nullptr || nb == nullptr || na == nb)
  {
    return false;
  }
  NodeType * pa = na->getParent();
  NodeType * pb = nb->getParent();
  if (pa == nullptr && pb == nullptr)
  {
    return false;
  }
  if (pa != nullptr && pa == pb)
  {
    // Siblings: exchange the two entries of the one list.
    pa->swapChildren(na, nb);
  }
  else
  {
    if (pa != nullptr)
    {
      pa->replaceChild(na, nb);
    }
    else
    {
      m_root = nb;
    }
    if (pb != nullptr)
    {
      pb->replaceChild(nb, na);
    }
    else
    {
      m_root = na;
    }
  }
  na->setParent(pb);
  nb->setParent(pa);
  return true;
}

template <class T>
std::ostream &
LinkedTree<T>::write(std::ostream & os) const
{
  os << "VALD-KRN 2000 Tree\n";
  os << "{ ";
  if (m_root != nullptr)
  {
    os.put('\n');
    m_root->write(os, 1);
  }
  os << "\n}" << std::endl;
  return os;
}

template <class T>
std::istream &
LinkedTree<T>::read(std::istream & is)
{
  if (m_root != nullptr)
  {
    return is;
  }
  std::string word;
  is >> word >> word >> word;
  char brace = 0;
  is >> brace;
  auto * root = new NodeType(nullptr);
  m_root = root;
  root->read(is);
  is >> word;
  return is;
}

template <class T>
std::unique_ptr<LinkedTree<T>>
LinkedTree<T>::copy(const std::function<T(const T &)> & copyPayload) const
{
  auto result = std::make_unique<LinkedTree<T>>();
  if (m_root == nullptr)
  {
    return result;
  }
  result->m_root = new NodeType(nullptr, copyPayload(m_root->getData()));
  // Pairs of (original, copy) whose children still have to be copied.
  std::vector<std::pair<const NodeType *, NodeType *>> pending{ { m_root, result->m_root } };
  while (!pending.empty())
  {
    auto [original, duplicate] = pending.back();
    pending.pop_back();
    for (const NodeType * child : original->children())
    {
      if (child == nullptr)
      {
        continue;
      }
      auto * childCopy = new NodeType(duplicate, copyPayload(child->getData()));
      duplicate->addChild(childCopy);
      pending.emplace_back(child, childCopy);
    }
  }
  return result;
}

// Members of the iterator base that need the complete tree.

template <class T>
Tree<T> *
AbstractLinkedTreeIterator<T>::subtree() const
{
  return new LinkedTree<T>(m_current, true);
}

template <class T>
bool
AbstractLinkedTreeIterator<T>::removeChild(int index)
{
  if (m_current == nullptr)
  {
    return false;
  }
  NodeType * child = m_current->getChild(index);
  if (child == nullptr)
  {
    return false;
  }
  delete child; // unlinks itself from m_current
  if (m_tree != nullptr)
  {
    m_tree->notifyIterators(this);
  }
  return true;
}

template <class T>
TreeIterator<T> *
AbstractLinkedTreeIterator<T>::newChildIterator() const
{
  return new ChildTreeIterator<T>(m_tree, m_rootField, m_current);
}

template <class T>
TreeIterator<T> *
AbstractLinkedTreeIterator<T>::newRootIterator() const
{
  return new RootTreeIterator<T>(m_tree, m_rootField, m_current);
}

#endif
