#ifndef lumoOperationEvent_h
#define lumoOperationEvent_h

#include "lumoOperation.h"

#include <itkObject.h>

#include <memory>
#include <string>

namespace lumo
{
class OperationActor;

/** An undo pair: the operation, its inverse, the actor that executes both and a description ("Select").
 *  The event owns both operations. When the actor is an itk::Object (every lumo::BaseData is), the event holds a
 *  reference to it, so undo never reaches a destroyed actor; other actors must outlive the event. */
class OperationEvent
{
public:
  /** Takes ownership of both operations (either may be null). */
  OperationEvent(OperationActor * actor,
                 Operation * operation,
                 Operation * inverseOperation,
                 std::string description = "");
  ~OperationEvent();
  OperationEvent(const OperationEvent &) = delete;
  OperationEvent &
  operator=(const OperationEvent &) = delete;

  OperationActor *
  GetActor() const
  {
    return m_Actor;
  }
  Operation *
  GetOperation() const
  {
    return m_Operation.get();
  }
  Operation *
  GetInverseOperation() const
  {
    return m_InverseOperation.get();
  }
  const std::string &
  GetDescription() const
  {
    return m_Description;
  }

  /** Executes the operation on the actor (redo). */
  void
  ExecuteOperation();
  /** Executes the inverse operation on the actor (undo). */
  void
  ExecuteInverseOperation();

private:
  OperationActor * m_Actor;
  itk::Object::Pointer m_ActorReference;
  std::unique_ptr<Operation> m_Operation;
  std::unique_ptr<Operation> m_InverseOperation;
  std::string m_Description;
};
} // namespace lumo

#endif
