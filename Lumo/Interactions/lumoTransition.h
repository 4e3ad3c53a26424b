#ifndef lumoTransition_h
#define lumoTransition_h

#include "lumoAction.h"

#include <string>
#include <vector>

namespace lumo
{
class State;

/** A transition of a state: the state event id that triggers it, the state it leads to and the actions run, in
 *  order, when it is taken. Made by the StateMachineFactory; the next state is owned by the same state machine
 *  type. */
class Transition
{
public:
  Transition(int eventId, std::string nextStateName)
    : m_EventId(eventId)
    , m_NextStateName(std::move(nextStateName))
  {}

  int
  GetEventId() const
  {
    return m_EventId;
  }
  const std::string &
  GetNextStateName() const
  {
    return m_NextStateName;
  }
  /** The state the transition leads to; null until the factory has resolved the name. */
  const State *
  GetNextState() const
  {
    return m_NextState;
  }
  void
  SetNextState(const State * nextState)
  {
    m_NextState = nextState;
  }
  const std::vector<Action> &
  GetActions() const
  {
    return m_Actions;
  }
  void
  AddAction(const Action & action)
  {
    m_Actions.push_back(action);
  }

private:
  int m_EventId;
  std::string m_NextStateName;
  const State * m_NextState{ nullptr };
  std::vector<Action> m_Actions;
};
} // namespace lumo

#endif
