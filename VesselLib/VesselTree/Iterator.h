#ifndef Iterator_h
#define Iterator_h

/** Root of the iterator interfaces: a forward walk over payloads of type T. */
template <class T>
class Iterator
{
public:
  virtual ~Iterator() = default;

  /** Whether next() has a node to go to. */
  virtual bool
  hasNext() = 0;
  /** Steps to the next node and returns its payload; throws std::out_of_range past the end. */
  virtual T
  next() = 0;

protected:
  Iterator() = default;
  Iterator(const Iterator &) = default;
  Iterator &
  operator=(const Iterator &) = default;
};

#endif
