#ifndef lumoNodePredicateProperty_h
#define lumoNodePredicateProperty_h

#include "lumoBaseProperty.h"
#include "lumoNodePredicateBase.h"

#include <string>

namespace lumo
{
/** Tests a node property: with a value, true when the node's property under the key (looked up as
 *  DataNode::GetProperty(key, rendererName) does: the renderer's list, then the general one) equals the value
 *  (same class, IsEqual); without a value, true when the node has the property at all. */
class NodePredicateProperty : public NodePredicateBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateProperty);

  using Self = NodePredicateProperty;
  using Superclass = NodePredicateBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateProperty, NodePredicateBase);
  lumoNewMacro1Param(NodePredicateProperty, const std::string &);
  lumoNewMacro2Param(NodePredicateProperty, const std::string &, BaseProperty *);
  lumoNewMacro3Param(NodePredicateProperty, const std::string &, BaseProperty *, const std::string &);

  bool
  CheckNode(const DataNode * node) const override;

  const std::string &
  GetKey() const
  {
    return m_Key;
  }
  const BaseProperty *
  GetValidProperty() const
  {
    return m_ValidProperty;
  }

protected:
  explicit NodePredicateProperty(const std::string & key,
                                 BaseProperty * property = nullptr,
                                 const std::string & rendererName = "");
  ~NodePredicateProperty() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::string m_Key;
  BaseProperty::Pointer m_ValidProperty;
  std::string m_RendererName;
};
} // namespace lumo

#endif
