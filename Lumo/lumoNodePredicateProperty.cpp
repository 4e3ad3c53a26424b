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
} // namespace lumo
