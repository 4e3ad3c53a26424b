// Undo and redo stacks.

#include "lumoUndoController.h"

namespace lumo
{
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
