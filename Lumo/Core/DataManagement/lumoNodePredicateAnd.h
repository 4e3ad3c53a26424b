#ifndef lumoNodePredicateAnd_h
#define lumoNodePredicateAnd_h

#include "lumoNodePredicateCompositeBase.h"

namespace lumo
{
/** True when every child predicate is true (and so for no children at all). */
class NodePredicateAnd : public NodePredicateCompositeBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateAnd);

  using Self = NodePredicateAnd;
  using Superclass = NodePredicateCompositeBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateAnd, NodePredicateCompositeBase);
  itkNewMacro(Self);
  lumoNewMacro2Param(NodePredicateAnd, const NodePredicateBase *, const NodePredicateBase *);
  lumoNewMacro3Param(NodePredicateAnd, const NodePredicateBase *, const NodePredicateBase *, const NodePredicateBase *);

  bool
  CheckNode(const DataNode * node) const override;

protected:
  NodePredicateAnd() = default;
  NodePredicateAnd(const NodePredicateBase * p1, const NodePredicateBase * p2);
  NodePredicateAnd(const NodePredicateBase * p1, const NodePredicateBase * p2, const NodePredicateBase * p3);
  ~NodePredicateAnd() override = default;
};
} // namespace lumo

#endif
