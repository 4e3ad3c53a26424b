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
  lumoClassMacro(NodePredicateCompositeBase, NodePredicateBase);

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

  ChildPredicates m_ChildPredicates;
};
} // namespace lumo

#endif
