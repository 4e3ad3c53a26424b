// Interaction pattern files (tinyxml2): parsing, checking and registering event tables and state machine types.

#include "lumoStateMachineFactory.h"

#include <itkMacro.h>

#include <tinyxml2.h>

#include <charconv>
#include <climits>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <set>
#include <sstream>

namespace lumo
{
namespace
{
constexpr const char * ParserLocation = "lumo::StateMachineFactory";

const std::map<std::string, EventType> &
EventTypeNames()
{
  static const std::map<std::string, EventType> names = { { "MouseButtonPress", EventType::MouseButtonPress },
                                                          { "MouseButtonRelease", EventType::MouseButtonRelease },
                                                          { "MouseMove", EventType::MouseMove },
                                                          { "KeyPress", EventType::KeyPress } };
  return names;
}

const std::map<std::string, int> &
KeyNames()
{
  static const std::map<std::string, int> names = { { "Escape", Key::Escape }, { "Return", Key::Return },
                                                    { "Delete", Key::Delete }, { "BackSpace", Key::BackSpace },
                                                    { "Tab", Key::Tab },       { "Space", Key::Space },
                                                    { "Left", Key::Left },     { "Right", Key::Right },
                                                    { "Up", Key::Up },         { "Down", Key::Down } };
  return names;
}

/** Parses one document into staged copies of the event table and new types; the caller commits them. */
class PatternParser
{
public:
  PatternParser(const std::string & sourceName,
                const EventMapper & events,
                const std::map<std::string, StateMachineFactory::StateMachineType> & loadedTypes)
    : m_SourceName(sourceName)
    , m_Events(events)
    , m_LoadedTypes(loadedTypes)
  {}

  [[noreturn]] void
  Fail(const tinyxml2::XMLNode * node, const std::string & what) const
  {
    const std::string message = "Malformed interaction pattern file '" + m_SourceName + "', line " +
                                std::to_string(node ? node->GetLineNum() : 0) + ": " + what;
    throw itk::ExceptionObject(__FILE__, __LINE__, message, ParserLocation);
  }

  void
  CheckAttributes(const tinyxml2::XMLElement * element, std::initializer_list<const char *> allowed) const
  {
    for (const tinyxml2::XMLAttribute * attribute = element->FirstAttribute(); attribute; attribute = attribute->Next())
    {
      bool known = false;
      for (const char * name : allowed)
      {
        known = known || std::string(name) == attribute->Name();
      }
      if (!known)
      {
        Fail(element, std::string("unexpected attribute \"") + attribute->Name() + "\" on <" + element->Name() + ">");
      }
    }
  }

  std::string
  Required(const tinyxml2::XMLElement * element, const char * name) const
  {
    const char * value = element->Attribute(name);
    if (!value)
    {
      Fail(element, std::string("<") + element->Name() + "> without attribute \"" + name + "\"");
    }
    return value;
  }

  std::string
  RequiredName(const tinyxml2::XMLElement * element, const char * name) const
  {
    const std::string value = Required(element, name);
    if (value.empty())
    {
      Fail(element, std::string("attribute \"") + name + "\" of <" + element->Name() + "> is empty");
    }
    return value;
  }

  int
  Integer(const tinyxml2::XMLElement * element, const char * name, int minimum) const
  {
    const std::string text = Required(element, name);
    long long value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size() || value < minimum ||
        value > INT_MAX)
    {
      Fail(element,
           std::string("attribute \"") + name + "\" of <" + element->Name() + "> is \"" + text +
             "\", not an integer from " + std::to_string(minimum) + " to " + std::to_string(INT_MAX));
    }
    return static_cast<int>(value);
  }

  /** Only elements of the given name (and comments) below the node; `allowed` null: nothing at all. */
  void
  CheckChildren(const tinyxml2::XMLNode * parent, std::initializer_list<const char *> allowed) const
  {
    for (const tinyxml2::XMLNode * child = parent->FirstChild(); child; child = child->NextSibling())
    {
      if (child->ToComment())
      {
        continue;
      }
      const tinyxml2::XMLElement * element = child->ToElement();
      if (!element)
      {
        Fail(child, std::string("unexpected text in <") + parent->Value() + ">");
      }
      bool known = false;
      std::string expected;
      for (const char * name : allowed)
      {
        known = known || std::string(name) == element->Name();
        expected += std::string(expected.empty() ? "" : " or ") + "<" + name + ">";
      }
      if (!known)
      {
        Fail(element,
             std::string("unexpected element <") + element->Name() + "> in <" + parent->Value() + ">" +
               (expected.empty() ? ", expected nothing" : ", expected " + expected));
      }
    }
  }

  void
  Parse(const tinyxml2::XMLDocument & document)
  {
    const tinyxml2::XMLElement * root = document.RootElement();
    if (!root || std::string(root->Name()) != "LumoInteraction")
    {
      Fail(root, std::string("the root element is <") + (root ? root->Name() : "") + ">, expected <LumoInteraction>");
    }
    CheckAttributes(root, { "version" });
    const std::string version = Required(root, "version");
    if (version != "1")
    {
      Fail(root, "unsupported version \"" + version + "\", expected \"1\"");
    }
    CheckChildren(root, { "events", "stateMachine" });
    for (const tinyxml2::XMLElement * events = root->FirstChildElement("events"); events;
         events = events->NextSiblingElement("events"))
    {
      CheckAttributes(events, {});
      CheckChildren(events, { "event" });
      for (const tinyxml2::XMLElement * event = events->FirstChildElement("event"); event;
           event = event->NextSiblingElement("event"))
      {
        ParseEvent(event);
      }
    }
    for (const tinyxml2::XMLElement * machine = root->FirstChildElement("stateMachine"); machine;
         machine = machine->NextSiblingElement("stateMachine"))
    {
      ParseStateMachine(machine);
    }
  }

  EventMapper &
  GetEvents()
  {
    return m_Events;
  }
  std::map<std::string, StateMachineFactory::StateMachineType> &
  GetNewTypes()
  {
    return m_NewTypes;
  }

private:
  ModifierMask
  Modifiers(const tinyxml2::XMLElement * element) const
  {
    const char * value = element->Attribute("modifiers");
    const std::string text = value ? value : "";
    ModifierMask mask = NoModifier;
    if (text.empty())
    {
      return mask;
    }
    std::size_t start = 0;
    for (;;)
    {
      const std::size_t plus = text.find('+', start);
      const std::string part = text.substr(start, plus == std::string::npos ? std::string::npos : plus - start);
      ModifierMask bit = NoModifier;
      if (part == "Shift")
      {
        bit = ShiftModifier;
      }
      else if (part == "Ctrl")
      {
        bit = ControlModifier;
      }
      else if (part == "Alt")
      {
        bit = AltModifier;
      }
      else
      {
        Fail(element,
             "attribute \"modifiers\" of <event> is \"" + text + "\": unknown modifier \"" + part +
               "\", expected Shift, Ctrl or Alt joined by +");
      }
      if (mask & bit)
      {
        Fail(element,
             "attribute \"modifiers\" of <event> is \"" + text + "\": modifier \"" + part + "\" appears twice");
      }
      mask |= bit;
      if (plus == std::string::npos)
      {
        return mask;
      }
      start = plus + 1;
    }
  }

  void
  ParseEvent(const tinyxml2::XMLElement * element)
  {
    CheckAttributes(element, { "name", "id", "type", "button", "modifiers", "key" });
    CheckChildren(element, {});
    EventMapper::EventDefinition definition;
    definition.name = RequiredName(element, "name");
    definition.id = Integer(element, "id", 1);
    if (!m_EventNames.insert(definition.name).second)
    {
      Fail(element, "event \"" + definition.name + "\" appears twice");
    }
    const char * type = element->Attribute("type");
    if (!type)
    {
      for (const char * name : { "button", "modifiers", "key" })
      {
        if (element->Attribute(name))
        {
          Fail(element, std::string("<event> without attribute \"type\" cannot have attribute \"") + name + "\"");
        }
      }
    }
    else
    {
      const auto found = EventTypeNames().find(type);
      if (found == EventTypeNames().end())
      {
        Fail(element,
             std::string("attribute \"type\" of <event> is \"") + type +
               "\", expected MouseButtonPress, MouseButtonRelease, MouseMove or KeyPress");
      }
      definition.type = found->second;
      const bool buttonEvent =
        definition.type == EventType::MouseButtonPress || definition.type == EventType::MouseButtonRelease;
      const char * button = element->Attribute("button");
      const char * key = element->Attribute("key");
      if (buttonEvent && !button)
      {
        Fail(element, std::string("<event> of type ") + type + " without attribute \"button\"");
      }
      if (!buttonEvent && button)
      {
        Fail(element, std::string("attribute \"button\" is not allowed on <event> of type ") + type);
      }
      if (definition.type == EventType::KeyPress && !key)
      {
        Fail(element, "<event> of type KeyPress without attribute \"key\"");
      }
      if (definition.type != EventType::KeyPress && key)
      {
        Fail(element, std::string("attribute \"key\" is not allowed on <event> of type ") + type);
      }
      if (button)
      {
        const std::string text = button;
        if (text == "Left")
        {
          definition.button = MouseButton::Left;
        }
        else if (text == "Right")
        {
          definition.button = MouseButton::Right;
        }
        else if (text == "Middle")
        {
          definition.button = MouseButton::Middle;
        }
        else
        {
          Fail(element, "attribute \"button\" of <event> is \"" + text + "\", expected Left, Right or Middle");
        }
      }
      if (key)
      {
        const std::string text = key;
        const auto named = KeyNames().find(text);
        if (named != KeyNames().end())
        {
          definition.key = named->second;
        }
        else if (text.size() == 1 && text[0] > ' ' && text[0] < 127)
        {
          definition.key = text[0];
        }
        else
        {
          Fail(element,
               "attribute \"key\" of <event> is \"" + text +
                 "\", expected one printable character or one of Escape, Return, Delete, BackSpace, Tab, Space, "
                 "Left, Right, Up, Down");
        }
      }
      definition.modifiers = Modifiers(element);
    }
    const std::string conflict = m_Events.CheckDefinition(definition);
    if (!conflict.empty())
    {
      Fail(element, conflict);
    }
    m_Events.AddDefinition(definition);
  }

  void
  ParseStateMachine(const tinyxml2::XMLElement * element)
  {
    CheckAttributes(element, { "name" });
    const std::string typeName = RequiredName(element, "name");
    if (m_NewTypes.count(typeName))
    {
      Fail(element, "state machine type \"" + typeName + "\" appears twice");
    }
    if (m_LoadedTypes.count(typeName))
    {
      Fail(element, "state machine type \"" + typeName + "\" is already loaded");
    }
    CheckChildren(element, { "state" });

    // First the states, so that transitions can lead to states further down.
    StateMachineFactory::StateMachineType type;
    std::map<std::string, State *> byName;
    std::set<int> ids;
    for (const tinyxml2::XMLElement * state = element->FirstChildElement("state"); state;
         state = state->NextSiblingElement("state"))
    {
      CheckAttributes(state, { "name", "id", "start" });
      const std::string name = RequiredName(state, "name");
      const int id = Integer(state, "id", 0);
      if (byName.count(name))
      {
        Fail(state, "state \"" + name + "\" appears twice in state machine \"" + typeName + "\"");
      }
      if (!ids.insert(id).second)
      {
        Fail(state, "state id " + std::to_string(id) + " appears twice in state machine \"" + typeName + "\"");
      }
      bool start = false;
      if (const char * text = state->Attribute("start"))
      {
        if (std::string(text) != "true" && std::string(text) != "false")
        {
          Fail(state,
               std::string("attribute \"start\" of <state> is \"") + text + "\", expected \"true\" or \"false\"");
        }
        start = std::string(text) == "true";
      }
      type.states.push_back(std::make_unique<State>(name, id));
      byName[name] = type.states.back().get();
      if (start)
      {
        if (type.startState)
        {
          Fail(state,
               "state machine \"" + typeName + "\" has a second start state \"" + name + "\" (the first is \"" +
                 type.startState->GetName() + "\")");
        }
        type.startState = type.states.back().get();
      }
    }
    if (!type.startState)
    {
      Fail(element, "state machine \"" + typeName + "\" has no start state");
    }

    for (const tinyxml2::XMLElement * stateElement = element->FirstChildElement("state"); stateElement;
         stateElement = stateElement->NextSiblingElement("state"))
    {
      State * state = byName.at(stateElement->Attribute("name"));
      CheckChildren(stateElement, { "transition" });
      for (const tinyxml2::XMLElement * transition = stateElement->FirstChildElement("transition"); transition;
           transition = transition->NextSiblingElement("transition"))
      {
        CheckAttributes(transition, { "event", "next" });
        const std::string eventName = RequiredName(transition, "event");
        const std::string nextName = RequiredName(transition, "next");
        const int eventId = m_Events.GetEventId(eventName);
        if (eventId == EventId::None)
        {
          Fail(transition, "unknown event \"" + eventName + "\"");
        }
        const auto next = byName.find(nextName);
        if (next == byName.end())
        {
          Fail(transition, "unknown next state \"" + nextName + "\" in state machine \"" + typeName + "\"");
        }
        Transition made(eventId, nextName);
        made.SetNextState(next->second);
        CheckChildren(transition, { "action" });
        for (const tinyxml2::XMLElement * action = transition->FirstChildElement("action"); action;
             action = action->NextSiblingElement("action"))
        {
          CheckAttributes(action, { "id" });
          CheckChildren(action, {});
          made.AddAction(Action(Integer(action, "id", 0)));
        }
        if (!state->AddTransition(made))
        {
          Fail(transition,
               "state \"" + state->GetName() + "\" has a second transition for event \"" + eventName + "\"");
        }
      }
    }
    m_NewTypes.emplace(typeName, std::move(type));
  }

  std::string m_SourceName;
  EventMapper m_Events;
  const std::map<std::string, StateMachineFactory::StateMachineType> & m_LoadedTypes;
  std::map<std::string, StateMachineFactory::StateMachineType> m_NewTypes;
  std::set<std::string> m_EventNames;
};

[[noreturn]] void
CannotRead(const std::string & fileName, const std::string & why)
{
  throw itk::ExceptionObject(
    __FILE__, __LINE__, "Could not read interaction pattern file '" + fileName + "': " + why, ParserLocation);
}
} // namespace

StateMachineFactory *
StateMachineFactory::GetInstance()
{
  static StateMachineFactory * instance = [] {
    auto * factory = new StateMachineFactory;
    factory->LoadString(GetShippedPatterns(), GetShippedPatternsName());
    return factory;
  }();
  return instance;
}

const char *
StateMachineFactory::GetShippedPatternsName()
{
  return "LumoInteraction.xml";
}

void
StateMachineFactory::LoadFile(const std::string & fileName)
{
  std::error_code error;
  if (fileName.empty() || !std::filesystem::is_regular_file(fileName, error))
  {
    CannotRead(fileName, "the file does not exist");
  }
  const auto size = std::filesystem::file_size(fileName, error);
  if (error)
  {
    CannotRead(fileName, "its size cannot be read");
  }
  if (size > MaximumFileSize)
  {
    CannotRead(fileName, "larger than " + std::to_string(MaximumFileSize) + " bytes");
  }
  std::ifstream stream(fileName, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  if (!stream)
  {
    CannotRead(fileName, "the file cannot be read");
  }
  LoadString(text.str(), fileName);
}

void
StateMachineFactory::LoadString(const std::string & text, const std::string & sourceName)
{
  if (text.size() > MaximumFileSize)
  {
    CannotRead(sourceName, "larger than " + std::to_string(MaximumFileSize) + " bytes");
  }
  tinyxml2::XMLDocument document;
  if (document.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS)
  {
    throw itk::ExceptionObject(__FILE__,
                               __LINE__,
                               "Malformed interaction pattern file '" + sourceName + "', line " +
                                 std::to_string(document.ErrorLineNum()) + ": not well-formed XML (" +
                                 document.ErrorName() + ")",
                               ParserLocation);
  }
  PatternParser parser(sourceName, m_EventMapper, m_Types);
  parser.Parse(document);
  // Everything checked: commit.
  m_EventMapper = parser.GetEvents();
  for (auto & entry : parser.GetNewTypes())
  {
    m_Types.emplace(entry.first, std::move(entry.second));
  }
}

bool
StateMachineFactory::HasType(const std::string & typeName) const
{
  return m_Types.count(typeName) != 0;
}

std::vector<std::string>
StateMachineFactory::GetTypeNames() const
{
  std::vector<std::string> names;
  for (const auto & entry : m_Types)
  {
    names.push_back(entry.first);
  }
  return names;
}

const State *
StateMachineFactory::GetStartState(const std::string & typeName) const
{
  const auto found = m_Types.find(typeName);
  return found == m_Types.end() ? nullptr : found->second.startState;
}

const State *
StateMachineFactory::GetState(const std::string & typeName, const std::string & stateName) const
{
  for (const State * state : GetStates(typeName))
  {
    if (state->GetName() == stateName)
    {
      return state;
    }
  }
  return nullptr;
}

std::vector<const State *>
StateMachineFactory::GetStates(const std::string & typeName) const
{
  std::vector<const State *> states;
  const auto found = m_Types.find(typeName);
  if (found != m_Types.end())
  {
    for (const auto & state : found->second.states)
    {
      states.push_back(state.get());
    }
  }
  return states;
}
} // namespace lumo
