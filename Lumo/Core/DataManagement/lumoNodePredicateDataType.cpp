// The data type predicate.

#include "lumoNodePredicateDataType.h"

namespace lumo
{
NodePredicateDataType::NodePredicateDataType(const std::string & dataTypeName)
  : m_ValidDataType(dataTypeName)
{}

bool
NodePredicateDataType::CheckNode(const DataNode * node) const
{
  return node && node->GetData() && m_ValidDataType == node->GetData()->GetNameOfClass();
}

void
NodePredicateDataType::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "ValidDataType: " << m_ValidDataType << std::endl;
}
} // namespace lumo
