#include "lumoCalyxDataNodeFactory.h"

namespace lumo
{
CalyxDataNodeFactory::CalyxDataNodeFactory() = default;

CalyxDataNodeFactory::~CalyxDataNodeFactory() = default;

void
CalyxDataNodeFactory::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "InitialProperties: " << (m_InitialProperties ? m_InitialProperties->GetMap()->size() : 0)
     << std::endl;
}

void
CalyxDataNodeFactory::PrepareNode(DataNode * node)
{
  if (m_InitialProperties.IsNull())
  {
    return;
  }
  // Copies: a default set on the node assigns its value into the property it finds, which must not change the
  // caller's list.
  for (const auto & [key, property] : *m_InitialProperties->GetMap())
  {
    itk::LightObject::Pointer copy = property->Clone();
    node->ReplaceProperty(key, dynamic_cast<BaseProperty *>(copy.GetPointer()));
  }
}
} // namespace lumo
