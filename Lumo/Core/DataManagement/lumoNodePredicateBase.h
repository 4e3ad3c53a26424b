#ifndef lumoNodePredicateBase_h
#define lumoNodePredicateBase_h

#include "lumoCommon.h"

#include <itkObject.h>

namespace lumo
{
class DataNode;

/** A condition on data nodes, for DataStorage::GetSubset and friends. CheckNode answers false for a null node. */
class NodePredicateBase : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(NodePredicateBase);

  using Self = NodePredicateBase;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(NodePredicateBase, itk::Object);

  virtual bool
  CheckNode(const DataNode * node) const = 0;

protected:
  NodePredicateBase() = default;
  ~NodePredicateBase() override = default;
};
} // namespace lumo

#endif
