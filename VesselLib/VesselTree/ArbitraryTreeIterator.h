#ifndef ArbitraryTreeIterator_h
#define ArbitraryTreeIterator_h

#include "TreeIterator.h"

/** Interface of an iterator that moves freely through a tree. Every move answers whether it happened; a move that
 *  is not possible leaves the iterator where it was. */
template <class T>
class ArbitraryTreeIterator : public virtual TreeIterator<T>
{
public:
  virtual bool
  goToRoot() = 0;
  virtual bool
  goToParent() = 0;
  virtual bool
  goToChild(int index) = 0;
  virtual bool
  goToNextSibling() = 0;
  virtual bool
  goToPreviousSibling() = 0;
  virtual bool
  hasParent() const = 0;
  virtual int
  numberOfChildren() const = 0;
};

#endif
