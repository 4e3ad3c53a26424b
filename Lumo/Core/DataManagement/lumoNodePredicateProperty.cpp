// The property predicate.

#include "lumoNodePredicateProperty.h"

#include "lumoDataNode.h"

namespace lumo
{
NodePredicateProperty::NodePredicateProperty(const std::string & key,
                                             BaseProperty * property,
                                             const std::string & rendererName)
  : m_Key(key)
  , m_ValidProperty(property)
  , m_RendererName(rendererName)
{}

bool
NodePredicateProperty::CheckNode(const DataNode * node) const
{
  if (!node)
  {
    return false;
  }
  const BaseProperty * property = node->GetProperty(m_Key, m_RendererName);
  if (!property)
  {
    return false;
  }
  if (m_ValidProperty.IsNull())
  {
    return true;
  }
  return *property == *m_ValidProperty;
}

void
NodePredicateProperty::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Key: " << m_Key << std::endl;
  os << indent
     << "ValidProperty: " << (m_ValidProperty ? m_ValidProperty->GetValueAsString() : std::string("(any value)"))
     << std::endl;
  os << indent << "RendererName: " << m_RendererName << std::endl;
}
} // namespace lumo
