#ifndef LinkedNode_h
#define LinkedNode_h

#include "Node.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

/** Node with a payload, a parent link and an ordered list of owned children.
 *
 *  Destroying a node destroys its whole subtree and unlinks it from its parent, so deleting any node leaves a
 *  consistent tree. Trees read from files can be arbitrarily deep, so destruction, writing and reading walk with
 *  explicit stacks instead of recursion; the order of events is the one a recursive walk would give. */
template <class T>
class LinkedNode : public Node<T>
{
public:
  using ChildList = std::vector<LinkedNode *>;

  explicit LinkedNode(LinkedNode * parent = nullptr)
    : m_parent(parent)
  {
    m_children.reserve(3);
  }
  LinkedNode(LinkedNode * parent, const T & data)
    : m_data(data)
    , m_parent(parent)
  {
    m_children.reserve(3);
  }
  LinkedNode(const LinkedNode &) = delete;
  LinkedNode &
  operator=(const LinkedNode &) = delete;

  /** Unlinks from the parent, destroys the children from the last to the first (each with its subtree), then
   *  releases the payload. */
  ~LinkedNode() override
  {
    if (m_parent != nullptr)
    {
      m_parent->removeChild(this);
    }
    destroyDescendants();
  }

  virtual T
  getData() const
  {
    return m_data;
  }
  /** Stores the new payload and returns the old one. */
  virtual T
  setData(const T & data)
  {
    T old = m_data;
    m_data = data;
    return old;
  }
  /** Child at the index; null when the index is not below the child count. */
  virtual LinkedNode *
  getChild(int index) const
  {
    if (index < 0 || static_cast<std::size_t>(index) >= m_children.size())
    {
      return nullptr;
    }
    return m_children[index];
  }
  virtual LinkedNode *
  getParent() const
  {
    return m_parent;
  }
  /** Sets the parent link only; the parent's child list is not touched. */
  virtual void
  setParent(LinkedNode * parent)
  {
    m_parent = parent;
  }
  virtual bool
  hasChildren() const
  {
    return !m_children.empty();
  }
  virtual bool
  hasParent() const
  {
    return m_parent != nullptr;
  }
  virtual int
  numberOfChildren() const
  {
    return static_cast<int>(m_children.size());
  }
  /** Removes the entry from the child list without destroying the node; false if absent. */
  virtual bool
  removeChild(LinkedNode * child)
  {
    // Entries are unique; searching from the back finds the same entry and is immediate during destruction,
    // where children go from the last to the first.
    auto it = std::find(m_children.rbegin(), m_children.rend(), child);
    if (it == m_children.rend())
    {
      return false;
    }
    m_children.erase(std::next(it).base());
    return true;
  }
  /** Puts newChild in the place of oldChild; nothing is destroyed and no parent link is changed. */
  virtual bool
  replaceChild(LinkedNode * oldChild, LinkedNode * newChild)
  {
    auto it = std::find(m_children.begin(), m_children.end(), oldChild);
    if (it == m_children.end())
    {
      return false;
    }
    *it = newChild;
    return true;
  }
  /** Exchanges the list entries of two children; false unless both are children of this node. */
  bool
  swapChildren(LinkedNode * a, LinkedNode * b)
  {
    auto ia = std::find(m_children.begin(), m_children.end(), a);
    auto ib = std::find(m_children.begin(), m_children.end(), b);
    if (ia == m_children.end() || ib == m_children.end())
    {
      return false;
    }
    std::iter_swap(ia, ib);
    return true;
  }
  /** Index of the first child whose payload is the same object; -1 if none. */
  virtual int
  childPosition(const T & payload) const
  {
    for (std::size_t i = 0; i < m_children.size(); ++i)
    {
      if (m_children[i] != nullptr && m_children[i]->m_data == payload)
      {
        return static_cast<int>(i);
      }
    }
    return -1;
  }
  virtual int
  childPosition(const LinkedNode * child) const
  {
    auto it = std::find(m_children.begin(), m_children.end(), child);
    return it == m_children.end() ? -1 : static_cast<int>(it - m_children.begin());
  }
  /** Destroys the child at the index, then stores the node at that index of the (now shorter) list, so the node
   *  takes the place of the entry that followed the destroyed child; that entry is dropped from the list without
   *  being destroyed. Callers that want a plain replacement use replaceChild. When the destroyed child was the last
   *  one, the node is appended. Answers false (and changes nothing) for an index beyond the child count. */
  virtual bool
  setChild(int index, LinkedNode * child)
  {
    if (index < 0 || static_cast<std::size_t>(index) > m_children.size())
    {
      return false;
    }
    if (static_cast<std::size_t>(index) < m_children.size())
    {
      delete m_children[index];
    }
    if (static_cast<std::size_t>(index) < m_children.size())
    {
      m_children[index] = child;
    }
    else
    {
      m_children.push_back(child);
    }
    return true;
  }
  /** Appends at the end; the caller sets the child's parent. */
  virtual void
  addChild(LinkedNode * child)
  {
    m_children.push_back(child);
  }

  /** Writes the node and its subtree as .ves text at the given depth (the root has depth 1). */
  virtual std::ostream &
  write(std::ostream & os, int depth) const;
  /** Reads the node and its subtree from .ves text. Stops at the first failed read, keeping what was read. */
  virtual std::istream &
  read(std::istream & is);

  const ChildList &
  children() const
  {
    return m_children;
  }

private:
  void
  destroyDescendants();

  T m_data{};
  LinkedNode * m_parent{ nullptr };
  ChildList m_children;
};

template <class T>
void
LinkedNode<T>::destroyDescendants()
{
  // Same order as the recursive definition: the last child's subtree goes first, deepest nodes before their
  // parents. Every node is deleted once it has no children left, so its destructor never recurses.
  std::vector<LinkedNode *> path;
  path.push_back(this);
  while (!path.empty())
  {
    LinkedNode * top = path.back();
    while (!top->m_children.empty() && top->m_children.back() == nullptr)
    {
      top->m_children.pop_back();
    }
    if (!top->m_children.empty())
    {
      path.push_back(top->m_children.back());
      continue;
    }
    path.pop_back();
    if (top != this)
    {
      delete top;
    }
  }
}

namespace linked_node_detail
{
inline void
indent(std::ostream & os, int depth)
{
  static const std::string spaces(96, ' ');
  long count = 3L * depth;
  while (count > 0)
  {
    const long chunk = std::min<long>(count, static_cast<long>(spaces.size()));
    os.write(spaces.data(), chunk);
    count -= chunk;
  }
}
} // namespace linked_node_detail

template <class T>
std::ostream &
LinkedNode<T>::write(std::ostream & os, int depth) const
{
  using linked_node_detail::indent;
  struct Frame
  {
    const LinkedNode * node;
    int depth;
    std::size_t nextChild;
    bool wroteChild;
  };
  std::vector<Frame> stack;

  auto open = [&](const LinkedNode * node, int d) {
    indent(os, d);
    os << node->m_data;
    os.put(' ');
    bool anyChild =
      std::any_of(node->m_children.begin(), node->m_children.end(), [](const LinkedNode * c) { return c != nullptr; });
    if (!anyChild)
    {
      os.put('-');
      return false;
    }
    os.put('\n');
    indent(os, d + 1);
    os.write("<\n", 2);
    stack.push_back(Frame{ node, d, 0, false });
    return true;
  };

  open(this, depth);
  while (!stack.empty() && os)
  {
    Frame & frame = stack.back();
    const ChildList & children = frame.node->m_children;
    while (frame.nextChild < children.size() && children[frame.nextChild] == nullptr)
    {
      ++frame.nextChild;
    }
    if (frame.nextChild < children.size())
    {
      if (frame.wroteChild)
      {
        os.write("|\n", 2);
      }
      frame.wroteChild = true;
      const LinkedNode * child = children[frame.nextChild++];
      open(child, frame.depth + 2); // may invalidate `frame`
      continue;
    }
    const int d = frame.depth;
    stack.pop_back();
    os.put('\n');
    indent(os, d + 1);
    os.write(">\n", 2);
    indent(os, d);
  }
  return os;
}

template <class T>
std::istream &
LinkedNode<T>::read(std::istream & is)
{
  // Nodes whose child lists are still open, innermost last.
  std::vector<LinkedNode *> open;
  LinkedNode * current = this;
  for (;;)
  {
    T data;
    is >> data;
    current->m_data = data;
    char mark = 0;
    if (!(is >> mark))
    {
      return is;
    }
    if (mark == '<')
    {
      open.push_back(current);
      current = new LinkedNode(current);
      open.back()->addChild(current);
      continue;
    }
    // `current` was a leaf. Close the lists that end here; any mark other than '>' announces a sibling.
    current = nullptr;
    while (!open.empty())
    {
      if (!(is >> mark))
      {
        return is;
      }
      if (mark == '>')
      {
        open.pop_back();
        continue;
      }
      current = new LinkedNode(open.back());
      open.back()->addChild(current);
      break;
    }
    if (current == nullptr)
    {
      return is;
    }
  }
}

#endif
