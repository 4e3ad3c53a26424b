// Undo pairs of operations.

#include "lumoOperationEvent.h"

#include "lumoOperationActor.h"

namespace lumo
{
OperationEvent::OperationEvent(OperationActor * actor,
                               Operation * operation,
                               Operation * inverseOperation,
                               std::string description)
  : m_Actor(actor)
  , m_ActorReference(dynamic_cast<itk::Object *>(actor))
  , m_Operation(operation)
  , m_InverseOperation(inverseOperation)
  , m_Description(std::move(description))
{}

OperationEvent::~OperationEvent() = default;

void
OperationEvent::ExecuteOperation()
{
  if (m_Actor && m_Operation)
  {
    m_Actor->ExecuteOperation(m_Operation.get());
  }
}

void
OperationEvent::ExecuteInverseOperation()
{
  if (m_Actor && m_InverseOperation)
  {
    m_Actor->ExecuteOperation(m_InverseOperation.get());
  }
}
} // namespace lumo
