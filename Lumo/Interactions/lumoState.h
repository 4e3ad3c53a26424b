#ifndef lumoState_h
#define lumoState_h

#include "lumoTransition.h"

#include <map>
#include <string>

namespace lumo
{
/** A state of a state machine type: its name and id (both unique within the type) and its transitions, at most one
 *  per state event id. Made and owned by the StateMachineFactory; state machines refer to it. Not copyable (the
 *  transitions of other states point to it). */
class State
{
public:
  State(std::string name, int id)
    : m_Name(std::move(name))
    , m_Id(id)
  {}
  State(const State &) = delete;
  State &
  operator=(const State &) = delete;

  const std::string &
  GetName() const
  {
    return m_Name;
  }
  int
  GetId() const
  {
    return m_Id;
  }

  /** Adds the transition; false (nothing added) when the state has one for that event id already. */
  bool
  AddTransition(const Transition & transition)
  {
    return m_Transitions.emplace(transition.GetEventId(), transition).second;
  }
  /** The transition for the state event id; null when there is none. */
  const Transition *
  GetTransition(int eventId) const
  {
    const auto found = m_Transitions.find(eventId);
    return found == m_Transitions.end() ? nullptr : &found->second;
  }
  Transition *
  GetTransition(int eventId)
  {
    const auto found = m_Transitions.find(eventId);
    return found == m_Transitions.end() ? nullptr : &found->second;
  }
  /** The transitions by event id. */
  const std::map<int, Transition> &
  GetTransitions() const
  {
    return m_Transitions;
  }

private:
  std::string m_Name;
  int m_Id;
  std::map<int, Transition> m_Transitions;
};
} // namespace lumo

#endif
