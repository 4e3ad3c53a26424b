#ifndef lumoStateMachine_h
#define lumoStateMachine_h

#include "lumoAction.h"
#include "lumoCommon.h"
#include "lumoStateEvent.h"

#include <itkObject.h>

#include <functional>
#include <map>
#include <string>
#include <type_traits>

namespace lumo
{
class Operation;
class OperationActor;
class State;
class UndoController;

/** A state machine of a type loaded by StateMachineFactory::GetInstance() (docs/interaction.md). It starts in the
 *  type's start state. HandleEvent looks up the transition for the state event id in the current state; when
 *  there is none the event is not handled (false, state unchanged). Otherwise the machine first moves to the
 *  transition's next state and then runs the transition's actions in order, each through the function a
 *  subclass registered for the action id (RegisterAction). An action may call HandleEvent with a new state event
 *  (nested handling): that event is handled in the state the outer transition has reached, and the outer
 *  transition's remaining actions run after it. Nesting deeper than MaximumNestingDepth is refused.
 *
 *  Undo: while undo is enabled (the default), RegisterUndoOperation hands operation events to the undo controller
 *  (UndoController::GetInstance() unless another one is set). */
class StateMachine : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(StateMachine);

  using Self = StateMachine;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(StateMachine, itk::Object);
  /** New(type name); throws itk::ExceptionObject for a type the factory does not know. */
  lumoNewMacro1Param(StateMachine, const std::string &);

  /** What an action runs: the action (its id) and the state event that triggered the transition. Returns whether
   *  the action did its work; the state machine does not act on it (the transition has been taken). */
  using ActionFunction = std::function<bool(Action *, const StateEvent *)>;

  /** The state machine type's name ("VesselTreeSelection"). */
  const std::string &
  GetType() const
  {
    return m_Type;
  }
  /** The current state (never null). */
  const State *
  GetCurrentState() const
  {
    return m_CurrentState;
  }
  /** Back to the start state. */
  void
  ResetToStartState();

  /** Handles the state event as described above: true when a transition was taken, false when the current state
   *  has none for the event id (or the event is null, or nesting is too deep). Actions without a registered
   *  function are skipped with a warning. */
  virtual bool
  HandleEvent(const StateEvent * stateEvent);

  static constexpr unsigned int MaximumNestingDepth = 64;

  /** Whether RegisterUndoOperation passes operation events to the undo controller; default true. */
  bool
  IsUndoEnabled() const
  {
    return m_UndoEnabled;
  }
  void
  EnableUndo(bool enable)
  {
    m_UndoEnabled = enable;
  }
  /** The undo controller used; UndoController::GetInstance() by default, never null (null sets the default). */
  UndoController *
  GetUndoController() const
  {
    return m_UndoController;
  }
  void
  SetUndoController(UndoController * undoController);

protected:
  explicit StateMachine(const std::string & type);
  ~StateMachine() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** Registers the function run for the action id; a later registration for the same id replaces it. */
  void
  RegisterAction(int actionId, ActionFunction function);
  /** Registers a member function of the subclass: RegisterAction(30, &Self::OnCheckElement). */
  template <class T>
  void
  RegisterAction(int actionId, bool (T::*method)(Action *, const StateEvent *))
  {
    static_assert(std::is_base_of<StateMachine, T>::value, "the action must be a member of a state machine");
    T * self = static_cast<T *>(this);
    RegisterAction(actionId, ActionFunction([self, method](Action * action, const StateEvent * stateEvent) {
                     return (self->*method)(action, stateEvent);
                   }));
  }
  /** Whether a function is registered for the action id. */
  bool
  HasAction(int actionId) const
  {
    return m_Actions.count(actionId) != 0;
  }

  /** Registers an undo event (operation, inverse, actor, description) with the undo controller when undo is
   *  enabled; takes ownership of both operations in any case (they are deleted when the event is dropped). The
   *  caller has executed the operation itself. Returns whether the controller kept the event. */
  bool
  RegisterUndoOperation(OperationActor * actor,
                        Operation * operation,
                        Operation * inverseOperation,
                        const std::string & description);

  /** The undo switch, public through IsUndoEnabled/EnableUndo. */
  bool m_UndoEnabled{ true };

private:
  std::string m_Type;
  const State * m_StartState{ nullptr };
  const State * m_CurrentState{ nullptr };
  std::map<int, ActionFunction> m_Actions;
  UndoController * m_UndoController;
  unsigned int m_NestingDepth{ 0 };
};
} // namespace lumo

#endif
