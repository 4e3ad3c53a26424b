#ifndef lumoTNodePredicateDataType_h
#define lumoTNodePredicateDataType_h

#include "lumoDataNode.h"
#include "lumoNodePredicateBase.h"

namespace lumo
{
/** True when the node has data of class T or of a subclass of T (dynamic_cast). */
template <typename T>
class TNodePredicateDataType : public NodePredicateBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TNodePredicateDataType);

  using Self = TNodePredicateDataType;
  using Superclass = NodePredicateBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(TNodePredicateDataType, NodePredicateBase);
  itkNewMacro(Self);

  bool
  CheckNode(const DataNode * node) const override
  {
    return node && dynamic_cast<const T *>(node->GetData()) != nullptr;
  }

protected:
  TNodePredicateDataType() = default;
  ~TNodePredicateDataType() override = default;
};
} // namespace lumo

#endif
