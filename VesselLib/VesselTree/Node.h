#ifndef Node_h
#define Node_h

/** Abstract node of a tree carrying a payload of type T. */
template <class T>
class Node
{
public:
  virtual ~Node() = default;

protected:
  Node() = default;
  Node(const Node &) = default;
  Node &
  operator=(const Node &) = default;
};

#endif
