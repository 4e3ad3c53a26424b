#include "lumoEventMapper.h"

#include "lumoEvent.h"

namespace lumo
{
bool
EventMapper::EventDefinition::operator==(const EventDefinition & other) const
{
  return name == other.name && id == other.id && type == other.type && button == other.button &&
         modifiers == other.modifiers && key == other.key;
}

EventMapper::Trigger
EventMapper::MakeTrigger(EventType type, MouseButton button, ModifierMask modifiers, int key)
{
  const bool buttonEvent = type == EventType::MouseButtonPress || type == EventType::MouseButtonRelease;
  return Trigger(static_cast<int>(type),
                 static_cast<int>(buttonEvent ? button : MouseButton::None),
                 modifiers,
                 type == EventType::KeyPress ? key : Key::None);
}

int
EventMapper::Map(const Event * event) const
{
  if (!event || event->GetType() == EventType::None)
  {
    return EventId::None;
  }
  const auto found =
    m_NamesByTrigger.find(MakeTrigger(event->GetType(), event->GetButton(), event->GetModifiers(), event->GetKey()));
  return found == m_NamesByTrigger.end() ? EventId::None : m_Definitions.at(found->second).id;
}

std::string
EventMapper::CheckDefinition(const EventDefinition & definition) const
{
  const auto known = m_Definitions.find(definition.name);
  if (known != m_Definitions.end())
  {
    return known->second == definition ? std::string()
                                       : "event \"" + definition.name + "\" is already defined differently";
  }
  if (definition.id == EventId::None)
  {
    return "event id 0 is reserved";
  }
  const auto byId = m_NamesById.find(definition.id);
  if (byId != m_NamesById.end())
  {
    return "event id " + std::to_string(definition.id) + " is already used by event \"" + byId->second + "\"";
  }
  if (definition.type != EventType::None)
  {
    const auto byTrigger =
      m_NamesByTrigger.find(MakeTrigger(definition.type, definition.button, definition.modifiers, definition.key));
    if (byTrigger != m_NamesByTrigger.end())
    {
      return "event \"" + definition.name + "\" has the same trigger as event \"" + byTrigger->second + "\"";
    }
  }
  return std::string();
}

bool
EventMapper::AddDefinition(const EventDefinition & definition)
{
  if (m_Definitions.count(definition.name) || !CheckDefinition(definition).empty())
  {
    return false;
  }
  m_Definitions.emplace(definition.name, definition);
  m_NamesById.emplace(definition.id, definition.name);
  if (definition.type != EventType::None)
  {
    m_NamesByTrigger.emplace(MakeTrigger(definition.type, definition.button, definition.modifiers, definition.key),
                             definition.name);
  }
  return true;
}

int
EventMapper::GetEventId(const std::string & name) const
{
  const auto found = m_Definitions.find(name);
  return found == m_Definitions.end() ? EventId::None : found->second.id;
}

std::string
EventMapper::GetEventName(int id) const
{
  const auto found = m_NamesById.find(id);
  return found == m_NamesById.end() ? std::string() : found->second;
}

const EventMapper::EventDefinition *
EventMapper::GetDefinition(const std::string & name) const
{
  const auto found = m_Definitions.find(name);
  return found == m_Definitions.end() ? nullptr : &found->second;
}
} // namespace lumo
