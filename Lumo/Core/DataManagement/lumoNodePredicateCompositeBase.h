#ifndef lumoNodePredicateCompositeBase_h
#define lumoNodePredicateCompositeBase_h

#include "lumoNodePredicateBase.h"

#include <vector>

namespace lumo
{
/** A predicate made of child predicates (held by reference count). */
class NodePredicateCompositeBase : public NodePredicateBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateCompositeBase);

  using Self = NodePredicateCompositeBase;
  using Superclass = NodePredicateBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateCompositeBase, NodePredicateBase);

  using ChildPredicates = std::vector<NodePredicateBase::ConstPointer>;

  /** Null is ignored. */
  void
  AddPredicate(const NodePredicateBase * predicate);
  /** Removes every occurrence of the predicate. */
  void
  RemovePredicate(const NodePredicateBase * predicate);
  const ChildPredicates &
  GetPredicates() const
  {
    return m_ChildPredicates;
  }

protected:
  NodePredicateCompositeBase() = default;
  ~NodePredicateCompositeBase() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  ChildPredicates m_ChildPredicates;
};
} // namespace lumo

#endif
