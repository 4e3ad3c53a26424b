#ifndef lumoEventMapper_h
#define lumoEventMapper_h

#include "lumoInteractionConst.h"

#include <map>
#include <string>
#include <tuple>

namespace lumo
{
class Event;

/** The event table: turns a raw Event into a state event id. Each entry (an <event> of a pattern file,
 *  docs/interaction.md) has a name and an id; a raw entry also has a trigger (event type, button, modifiers, key)
 *  and the raw events that match it exactly map to its id: a left click with Shift held does not match the plain
 *  left click. Entries without a trigger name the ids that actions send ("Yes", "No"). Names, ids and triggers are
 *  each unique. The StateMachineFactory fills the table from the pattern files it loads. */
class EventMapper
{
public:
  /** One entry of the table. */
  struct EventDefinition
  {
    std::string name;
    int id{ EventId::None };
    /** EventType::None: no trigger (the fields below are unused). */
    EventType type{ EventType::None };
    /** The button of MouseButtonPress and MouseButtonRelease; MouseButton::None otherwise. */
    MouseButton button{ MouseButton::None };
    ModifierMask modifiers{ NoModifier };
    /** The key of KeyPress; Key::None otherwise. */
    int key{ Key::None };

    bool
    operator==(const EventDefinition & other) const;
  };

  /** The state event id of the raw event: that of the entry whose trigger matches its type, button (mouse button
   *  presses and releases), modifiers and key (key presses) exactly; EventId::None when nothing matches or the event
   *  is null. */
  int
  Map(const Event * event) const;

  /** Why the definition cannot join the table: "" when it can (also when the same definition is there already),
   *  otherwise, for example, `event id 1 is already used by event "LeftClick"`. */
  std::string
  CheckDefinition(const EventDefinition & definition) const;
  /** Adds the definition; returns false (table unchanged) when CheckDefinition objects or it is there already. */
  bool
  AddDefinition(const EventDefinition & definition);

  /** The id of the named event; EventId::None when there is none. */
  int
  GetEventId(const std::string & name) const;
  /** The name of the event id; "" when there is none. */
  std::string
  GetEventName(int id) const;
  /** The entry of the named event; null when there is none. */
  const EventDefinition *
  GetDefinition(const std::string & name) const;
  /** The entries by name. */
  const std::map<std::string, EventDefinition> &
  GetDefinitions() const
  {
    return m_Definitions;
  }

private:
  using Trigger = std::tuple<int, int, ModifierMask, int>;
  static Trigger
  MakeTrigger(EventType type, MouseButton button, ModifierMask modifiers, int key);

  std::map<std::string, EventDefinition> m_Definitions;
  std::map<int, std::string> m_NamesById;
  std::map<Trigger, std::string> m_NamesByTrigger;
};
} // namespace lumo

#endif
