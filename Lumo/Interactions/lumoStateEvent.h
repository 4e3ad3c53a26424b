#ifndef lumoStateEvent_h
#define lumoStateEvent_h

namespace lumo
{
class Event;

/** What a state machine handles: a state event id (from the event table of the pattern files, or one that an
 *  action sends, such as EventId::Yes) and the raw event it comes from (not owned; may be null). A plain value,
 *  usually on the stack of whoever calls StateMachine::HandleEvent. */
class StateEvent
{
public:
  explicit StateEvent(int id, const Event * event = nullptr)
    : m_Id(id)
    , m_Event(event)
  {}

  int
  GetId() const
  {
    return m_Id;
  }
  /** The raw event carried along (the mouse position of a click...); null when there is none. */
  const Event *
  GetEvent() const
  {
    return m_Event;
  }

private:
  int m_Id;
  const Event * m_Event;
};
} // namespace lumo

#endif
