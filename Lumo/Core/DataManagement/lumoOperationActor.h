#ifndef lumoOperationActor_h
#define lumoOperationActor_h

namespace lumo
{
class Operation;

/** Something that executes operations: data objects (lumo::BaseData) and anything else that takes part in undo. */
class OperationActor
{
public:
  virtual ~OperationActor() = default;

  /** Executes the operation; operations of unknown type or class are ignored (or warned about) by the actor. */
  virtual void
  ExecuteOperation(Operation * operation) = 0;
};
} // namespace lumo

#endif
