// Operation events and the undo controller.

#include "lumoUndoController.h"
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

UndoController *
UndoController::GetInstance()
{
  static UndoController instance;
  return &instance;
}

bool
UndoController::SetOperationEvent(OperationEvent * operationEvent)
{
  std::unique_ptr<OperationEvent> owned(operationEvent);
  if (!owned || !m_Enabled)
  {
    return false;
  }
  m_UndoStack.push_back(std::move(owned));
  m_RedoStack.clear();
  return true;
}

bool
UndoController::Undo()
{
  if (m_UndoStack.empty())
  {
    return false;
  }
  std::unique_ptr<OperationEvent> event = std::move(m_UndoStack.back());
  m_UndoStack.pop_back();
  event->ExecuteInverseOperation();
  m_RedoStack.push_back(std::move(event));
  return true;
}

bool
UndoController::Redo()
{
  if (m_RedoStack.empty())
  {
    return false;
  }
  std::unique_ptr<OperationEvent> event = std::move(m_RedoStack.back());
  m_RedoStack.pop_back();
  event->ExecuteOperation();
  m_UndoStack.push_back(std::move(event));
  return true;
}

void
UndoController::Clear()
{
  m_UndoStack.clear();
  m_RedoStack.clear();
}

std::vector<std::string>
UndoController::GetUndoDescriptions() const
{
  std::vector<std::string> result;
  for (auto it = m_UndoStack.rbegin(); it != m_UndoStack.rend(); ++it)
  {
    result.push_back((*it)->GetDescription());
  }
  return result;
}

std::vector<std::string>
UndoController::GetRedoDescriptions() const
{
  std::vector<std::string> result;
  for (auto it = m_RedoStack.rbegin(); it != m_RedoStack.rend(); ++it)
  {
    result.push_back((*it)->GetDescription());
  }
  return result;
}
} // namespace lumo
