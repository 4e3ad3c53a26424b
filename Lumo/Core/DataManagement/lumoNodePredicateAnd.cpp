// The conjunction of predicates.

#include "lumoNodePredicateAnd.h"

namespace lumo
{
NodePredicateAnd::NodePredicateAnd(const NodePredicateBase * p1, const NodePredicateBase * p2)
{
  this->AddPredicate(p1);
  this->AddPredicate(p2);
}

NodePredicateAnd::NodePredicateAnd(const NodePredicateBase * p1,
                                   const NodePredicateBase * p2,
                                   const NodePredicateBase * p3)
{
  this->AddPredicate(p1);
  this->AddPredicate(p2);
  this->AddPredicate(p3);
}

bool
NodePredicateAnd::CheckNode(const DataNode * node) const
{
  if (!node)
  {
    return false;
  }
  for (const auto & child : m_ChildPredicates)
  {
    if (!child->CheckNode(node))
    {
      return false;
    }
  }
  return true;
}
} // namespace lumo
