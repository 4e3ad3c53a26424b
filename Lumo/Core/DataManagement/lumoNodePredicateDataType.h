#ifndef lumoNodePredicateDataType_h
#define lumoNodePredicateDataType_h

#include "lumoDataNode.h"
#include "lumoNodePredicateBase.h"
#include "lumoTNodePredicateDataType.h"

#include <string>

namespace lumo
{
/** True when the node has data whose GetNameOfClass() is exactly the given name ("Image", "Surface",
 *  "VesselTreeData"...; subclasses have names of their own and do not match). */
class NodePredicateDataType : public NodePredicateBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateDataType);

  using Self = NodePredicateDataType;
  using Superclass = NodePredicateBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateDataType, NodePredicateBase);
  lumoNewMacro1Param(NodePredicateDataType, const std::string &);

  bool
  CheckNode(const DataNode * node) const override;

  const std::string &
  GetValidDataType() const
  {
    return m_ValidDataType;
  }

protected:
  explicit NodePredicateDataType(const std::string & dataTypeName);
  ~NodePredicateDataType() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::string m_ValidDataType;
};

} // namespace lumo

#endif
