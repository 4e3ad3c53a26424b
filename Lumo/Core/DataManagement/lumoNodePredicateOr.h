#ifndef lumoNodePredicateOr_h
#define lumoNodePredicateOr_h

#include "lumoNodePredicateCompositeBase.h"

namespace lumo
{
/** True when at least one child predicate is true (so false for no children). */
class NodePredicateOr : public NodePredicateCompositeBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateOr);

  using Self = NodePredicateOr;
  using Superclass = NodePredicateCompositeBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateOr, NodePredicateCompositeBase);
  itkNewMacro(Self);
  lumoNewMacro2Param(NodePredicateOr, const NodePredicateBase *, const NodePredicateBase *);
  lumoNewMacro3Param(NodePredicateOr, const NodePredicateBase *, const NodePredicateBase *, const NodePredicateBase *);

  bool
  CheckNode(const DataNode * node) const override;

protected:
  NodePredicateOr() = default;
  NodePredicateOr(const NodePredicateBase * p1, const NodePredicateBase * p2);
  NodePredicateOr(const NodePredicateBase * p1, const NodePredicateBase * p2, const NodePredicateBase * p3);
  ~NodePredicateOr() override = default;
};
} // namespace lumo

#endif
