// The disjunction of predicates.

#include "lumoNodePredicateOr.h"

namespace lumo
{
NodePredicateOr::NodePredicateOr(const NodePredicateBase * p1, const NodePredicateBase * p2)
{
  this->AddPredicate(p1);
  this->AddPredicate(p2);
}

NodePredicateOr::NodePredicateOr(const NodePredicateBase * p1,
                                 const NodePredicateBase * p2,
                                 const NodePredicateBase * p3)
{
  this->AddPredicate(p1);
  this->AddPredicate(p2);
  this->AddPredicate(p3);
}

bool
NodePredicateOr::CheckNode(const DataNode * node) const
{
  if (!node)
  {
    return false;
  }
  for (const auto & child : m_ChildPredicates)
  {
    if (child->CheckNode(node))
    {
      return true;
    }
  }
  return false;
}
} // namespace lumo
