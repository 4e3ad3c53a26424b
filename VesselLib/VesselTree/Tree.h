#ifndef Tree_h
#define Tree_h

#include "TreeIterator.h"
#include "ArbitraryTreeIterator.h"

#include <iosfwd>

/** Abstract ordered tree of payloads of type T. Iterators returned by the factory operations are owned by the
 *  caller. */
template <class T>
class Tree
{
public:
  virtual ~Tree() = default;

  /** Makes the iterator's node the root by reversing the parent links on its path to the old root. */
  virtual bool
  reRoot(TreeIterator<T> & position) = 0;
  /** Creates the root with the payload when the tree has none; false (and no change) otherwise. */
  virtual bool
  setRoot(const T & payload) = 0;
  virtual bool
  hasRoot() const = 0;
  /** Payload of the root; a default T for an empty tree. */
  virtual T
  getRoot() const = 0;
  virtual bool
  contains(const T & payload) const = 0;
  virtual int
  numberOfNodes() const = 0;
  /** Same payload objects in the same preorder. */
  virtual bool
  equal(const Tree<T> & other) const = 0;
  virtual bool
  isLeaf(const T & payload) const = 0;
  virtual bool
  isRoot(const T & payload) const = 0;
  /** Destroys every node; registered iterators are not told. */
  virtual void
  clear() = 0;
  virtual bool
  swapSubtrees(TreeIterator<T> & a, TreeIterator<T> & b) = 0;

  virtual TreeIterator<T> *
  newPreorderIterator() const = 0;
  virtual TreeIterator<T> *
  newPreorderIterator(const TreeIterator<T> & from) const = 0;
  virtual TreeIterator<T> *
  newPostorderIterator() const = 0;
  virtual TreeIterator<T> *
  newPostorderIterator(const TreeIterator<T> & from) const = 0;
  virtual TreeIterator<T> *
  newInorderIterator() const = 0;
  virtual TreeIterator<T> *
  newInorderIterator(const TreeIterator<T> & from) const = 0;
  virtual TreeIterator<T> *
  newLeafIterator(const TreeIterator<T> & from) const = 0;
  virtual TreeIterator<T> *
  newLeafIterator() const = 0;
  /** Breadth-first over the levels firstLevel..lastLevel (0 is the start node). */
  virtual TreeIterator<T> *
  newLevelorderIterator(int firstLevel, int lastLevel) const = 0;
  virtual TreeIterator<T> *
  newLevelorderIterator(const TreeIterator<T> & from, int firstLevel, int lastLevel) const = 0;
  /** Breadth-first over the levels 0..lastLevel. */
  virtual TreeIterator<T> *
  newLevelorderIterator(int lastLevel) const = 0;
  virtual TreeIterator<T> *
  newLevelorderIterator(const TreeIterator<T> & from, int lastLevel) const = 0;
  virtual ArbitraryTreeIterator<T> *
  newWalkIterator() const = 0;
  virtual ArbitraryTreeIterator<T> *
  newWalkIterator(const TreeIterator<T> & from) const = 0;

  /** The .ves text of the tree. */
  virtual std::ostream &
  write(std::ostream & os) const = 0;
  /** Reads a tree from .ves text; reads nothing when the tree already has a root. */
  virtual std::istream &
  read(std::istream & is) = 0;

  virtual bool
  registerIterator(TreeIterator<T> * iterator) = 0;
  virtual bool
  unregisterIterator(TreeIterator<T> * iterator) = 0;
  virtual void
  notifyIterators(const TreeIterator<T> * where) = 0;

protected:
  Tree() = default;
  Tree(const Tree &) = delete;
  Tree &
  operator=(const Tree &) = delete;
};

#endif
