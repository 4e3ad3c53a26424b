#ifndef lumoEvent_h
#define lumoEvent_h

#include "lumoInteractionConst.h"

namespace lumo
{
class BaseRenderer;

/** A raw user-interface event as the application delivers it: the renderer it happened in, its kind, the mouse
 *  button, the modifier keys held and the key (lumoInteractionConst.h). The EventMapper turns it into a state
 *  event id. A plain, copyable value; the sender is not owned (and may be null where no renderer is involved). */
class Event
{
public:
  Event(BaseRenderer * sender,
        EventType type,
        MouseButton button = MouseButton::None,
        ModifierMask modifiers = NoModifier,
        int key = Key::None)
    : m_Sender(sender)
    , m_Type(type)
    , m_Button(button)
    , m_Modifiers(modifiers)
    , m_Key(key)
  {}
  virtual ~Event() = default;
  Event(const Event &) = default;
  Event &
  operator=(const Event &) = default;

  BaseRenderer *
  GetSender() const
  {
    return m_Sender;
  }
  EventType
  GetType() const
  {
    return m_Type;
  }
  MouseButton
  GetButton() const
  {
    return m_Button;
  }
  /** The modifier keys held, a mask of ShiftModifier, ControlModifier and AltModifier. */
  ModifierMask
  GetModifiers() const
  {
    return m_Modifiers;
  }
  /** Whether every modifier of the mask is held. */
  bool
  HasModifiers(ModifierMask modifiers) const
  {
    return (m_Modifiers & modifiers) == modifiers;
  }
  /** The key code (Key::None for mouse events). */
  int
  GetKey() const
  {
    return m_Key;
  }

private:
  BaseRenderer * m_Sender;
  EventType m_Type;
  MouseButton m_Button;
  ModifierMask m_Modifiers;
  int m_Key;
};
} // namespace lumo

#endif
