// The negation of a predicate.

#include "lumoNodePredicateNot.h"

namespace lumo
{
NodePredicateNot::NodePredicateNot(const NodePredicateBase * predicate)
{
  if (!predicate)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "NodePredicateNot: the predicate is null", "lumo::NodePredicateNot::NodePredicateNot");
  }
  this->AddPredicate(predicate);
}

bool
NodePredicateNot::CheckNode(const DataNode * node) const
{
  if (!node || m_ChildPredicates.empty())
  {
    return false;
  }
  return !m_ChildPredicates.front()->CheckNode(node);
}
} // namespace lumo
