// Predicates made of child predicates.

#include "lumoNodePredicateCompositeBase.h"

namespace lumo
{
void
NodePredicateCompositeBase::AddPredicate(const NodePredicateBase * predicate)
{
  if (predicate)
  {
    m_ChildPredicates.emplace_back(predicate);
    this->Modified();
  }
}

void
NodePredicateCompositeBase::RemovePredicate(const NodePredicateBase * predicate)
{
  const auto end = std::remove_if(m_ChildPredicates.begin(),
                                  m_ChildPredicates.end(),
                                  [&](const NodePredicateBase::ConstPointer & p) { return p == predicate; });
  if (end != m_ChildPredicates.end())
  {
    m_ChildPredicates.erase(end, m_ChildPredicates.end());
    this->Modified();
  }
}

void
NodePredicateCompositeBase::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "ChildPredicates: " << m_ChildPredicates.size() << std::endl;
}
} // namespace lumo
