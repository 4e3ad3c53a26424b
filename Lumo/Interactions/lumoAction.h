#ifndef lumoAction_h
#define lumoAction_h

namespace lumo
{
/** One action of a transition: its id, for which the state machine calls the function registered under that id
 *  (StateMachine::RegisterAction). The pattern files give no parameters; a plain, copyable value. */
class Action
{
public:
  explicit Action(int actionId)
    : m_ActionId(actionId)
  {}

  int
  GetActionId() const
  {
    return m_ActionId;
  }

private:
  int m_ActionId;
};
} // namespace lumo

#endif
