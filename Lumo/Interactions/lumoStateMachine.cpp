#include "lumoStateMachine.h"

#include "lumoOperationEvent.h"
#include "lumoState.h"
#include "lumoStateMachineFactory.h"
#include "lumoUndoController.h"

#include <memory>

namespace lumo
{
StateMachine::StateMachine(const std::string & type)
  : m_Type(type)
  , m_UndoController(UndoController::GetInstance())
{
  m_StartState = StateMachineFactory::GetInstance()->GetStartState(type);
  if (!m_StartState)
  {
    throw itk::ExceptionObject(
      __FILE__, __LINE__, "StateMachine: unknown state machine type \"" + type + "\"", "lumo::StateMachine");
  }
  m_CurrentState = m_StartState;
}

void
StateMachine::ResetToStartState()
{
  m_CurrentState = m_StartState;
}

void
StateMachine::SetUndoController(UndoController * undoController)
{
  m_UndoController = undoController ? undoController : UndoController::GetInstance();
}

void
StateMachine::RegisterAction(int actionId, ActionFunction function)
{
  if (function)
  {
    m_Actions[actionId] = std::move(function);
  }
  else
  {
    m_Actions.erase(actionId);
  }
}

bool
StateMachine::HandleEvent(const StateEvent * stateEvent)
{
  if (!stateEvent)
  {
    return false;
  }
  const Transition * transition = m_CurrentState->GetTransition(stateEvent->GetId());
  if (!transition)
  {
    return false;
  }
  if (m_NestingDepth >= MaximumNestingDepth)
  {
    itkWarningMacro("event " << stateEvent->GetId() << " refused in state \"" << m_CurrentState->GetName()
                             << "\": events nested more than " << MaximumNestingDepth << " deep");
    return false;
  }
  const State * from = m_CurrentState;
  m_CurrentState = transition->GetNextState();
  struct DepthGuard
  {
    unsigned int & depth;
    ~DepthGuard() { --depth; }
  } guard{ ++m_NestingDepth };
  for (const Action & templateAction : transition->GetActions())
  {
    const auto function = m_Actions.find(templateAction.GetActionId());
    if (function == m_Actions.end())
    {
      itkWarningMacro("no function registered for action "
                      << templateAction.GetActionId() << " (state machine type \"" << m_Type << "\", transition from \""
                      << from->GetName() << "\" to \"" << transition->GetNextState()->GetName() << "\")");
      continue;
    }
    Action action = templateAction;
    // A copy of the function: an action may register functions itself.
    const ActionFunction run = function->second;
    run(&action, stateEvent);
  }
  return true;
}

bool
StateMachine::RegisterUndoOperation(OperationActor * actor,
                                    Operation * operation,
                                    Operation * inverseOperation,
                                    const std::string & description)
{
  auto event = std::make_unique<OperationEvent>(actor, operation, inverseOperation, description);
  if (!m_UndoEnabled)
  {
    return false;
  }
  return m_UndoController->SetOperationEvent(event.release());
}

void
StateMachine::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Type: " << m_Type << '\n';
  os << indent << "CurrentState: " << m_CurrentState->GetName() << '\n';
  os << indent << "UndoEnabled: " << (m_UndoEnabled ? "true" : "false") << '\n';
}
} // namespace lumo
