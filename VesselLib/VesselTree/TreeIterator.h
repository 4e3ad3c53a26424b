#ifndef TreeIterator_h
#define TreeIterator_h

#include "Iterator.h"

template <class T>
class Tree;

/** Iterator over the nodes of a tree. The order is given by the concrete class (see getOrderCode()). */
template <class T>
class TreeIterator : public Iterator<T>
{
public:
  /** Order codes returned by getOrderCode(). */
  enum OrderCode
  {
    PreorderCode = 1,
    InorderCode = 2,
    PostorderCode = 3,
    LevelorderCode = 4,
    ChildCode = 5,
    RootCode = 6,
    LeafCode = 7,
    WalkCode = 8
  };

  /** The iterator stands on a node. */
  virtual bool
  isValid() const = 0;
  /** Payload of the current node; a default T when the iterator stands on nothing. */
  virtual T
  get() const = 0;
  /** A new tree that shows the current node's subtree without owning it; the caller owns the view. */
  virtual Tree<T> *
  subtree() const = 0;
  /** The current node has no children. */
  virtual bool
  isLeaf() const = 0;
  virtual int
  getOrderCode() const = 0;
  /** Unlinks and destroys the child at the index with its whole subtree and tells the tree's iterators. */
  virtual bool
  removeChild(int index) = 0;
  virtual bool
  hasChild(int index) const = 0;
  /** New iterator over the current node's children; the caller owns it. */
  virtual TreeIterator<T> *
  newChildIterator() const = 0;
  /** New iterator from the current node's parent up to the root; the caller owns it. */
  virtual TreeIterator<T> *
  newRootIterator() const = 0;
  /** New iterator of the same class on the same position; the caller owns it. */
  virtual TreeIterator<T> *
  clone() const = 0;
  /** Called by the tree when its structure changed; `where` is an iterator at the place of the change. */
  virtual void
  treeChanged(const TreeIterator<T> * where) = 0;
};

#endif
