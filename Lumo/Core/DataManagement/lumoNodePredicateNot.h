#ifndef lumoNodePredicateNot_h
#define lumoNodePredicateNot_h

#include "lumoNodePredicateCompositeBase.h"

namespace lumo
{
/** The negation of one predicate: true for a (non-null) node that the child rejects. A null node gives false. */
class NodePredicateNot : public NodePredicateCompositeBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateNot);

  using Self = NodePredicateNot;
  using Superclass = NodePredicateCompositeBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateNot, NodePredicateCompositeBase);
  lumoNewMacro1Param(NodePredicateNot, const NodePredicateBase *);

  bool
  CheckNode(const DataNode * node) const override;

protected:
  /** Throws itk::InvalidArgumentError for a null predicate. */
  explicit NodePredicateNot(const NodePredicateBase * predicate);
  ~NodePredicateNot() override = default;
};
} // namespace lumo

#endif
