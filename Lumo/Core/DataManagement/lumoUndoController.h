#ifndef lumoUndoController_h
#define lumoUndoController_h

#include "lumoOperationEvent.h"

#include <memory>
#include <string>
#include <vector>

namespace lumo
{
/** Undo and redo stacks of operation events.
 *
 *  SetOperationEvent pushes a new event on the undo stack and empties the redo stack. Undo takes the newest
 *  event, executes its inverse operation on its actor and moves it to the redo stack; Redo takes the newest event
 *  of the redo stack, executes its operation and moves it back. The event that is registered has usually been
 *  executed by the caller already; the controller does not execute it on registration.
 *
 *  GetInstance() is the application's controller (what interactors use); further controllers can be made for
 *  separate histories. While disabled, registered events are dropped. Not thread-safe (one user-interface thread). */
class UndoController
{
public:
  UndoController() = default;
  UndoController(const UndoController &) = delete;
  UndoController &
  operator=(const UndoController &) = delete;

  static UndoController *
  GetInstance();

  /** Takes ownership of the event. Returns false (and deletes the event) when disabled or the event is null. */
  bool
  SetOperationEvent(OperationEvent * operationEvent);

  /** Undoes the newest event; false when there is nothing to undo. */
  bool
  Undo();
  /** Redoes the newest undone event; false when there is nothing to redo. */
  bool
  Redo();
  /** Empties both stacks. */
  void
  Clear();

  bool
  CanUndo() const
  {
    return !m_UndoStack.empty();
  }
  bool
  CanRedo() const
  {
    return !m_RedoStack.empty();
  }
  std::size_t
  GetUndoCount() const
  {
    return m_UndoStack.size();
  }
  std::size_t
  GetRedoCount() const
  {
    return m_RedoStack.size();
  }
  /** Descriptions of the events, newest first. */
  std::vector<std::string>
  GetUndoDescriptions() const;
  std::vector<std::string>
  GetRedoDescriptions() const;

  void
  SetEnabled(bool enabled)
  {
    m_Enabled = enabled;
  }
  bool
  IsEnabled() const
  {
    return m_Enabled;
  }

private:
  std::vector<std::unique_ptr<OperationEvent>> m_UndoStack;
  std::vector<std::unique_ptr<OperationEvent>> m_RedoStack;
  bool m_Enabled{ true };
};
} // namespace lumo

#endif
