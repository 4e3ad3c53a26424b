// Interaction pattern files: the shipped pattern, every malformed-file message, nothing half-registered, and the
// event table that maps raw events to state event ids.

#include "LumoTestUtilities.h"

#include <lumoEvent.h>
#include <lumoEventMapper.h>
#include <lumoStateMachineFactory.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace lumo;

namespace
{
/** The states of a type, one line each: "name(id[,start]): event->next[actions] ...", in file order. */
std::string
Describe(const StateMachineFactory & factory, const std::string & type)
{
  std::ostringstream text;
  for (const State * state : factory.GetStates(type))
  {
    text << state->GetName() << "(" << state->GetId() << (state == factory.GetStartState(type) ? ",start" : "") << "):";
    for (const auto & entry : state->GetTransitions())
    {
      text << " " << entry.first << "->" << entry.second.GetNextState()->GetName() << "[";
      for (const Action & action : entry.second.GetActions())
      {
        text << (&action == &entry.second.GetActions().front() ? "" : ",") << action.GetActionId();
      }
      text << "]";
    }
    text << "\n";
  }
  return text.str();
}

const char * const ShippedSelection = "Start(1,start): 1->Checking[30] 3->CheckingForMultipleSelect[30]\n"
                                      "Checking(2): 1003->Start[75] 1004->Start[65]\n"
                                      "CheckingForMultipleSelect(3): 1003->Start[75] 1004->Start[61]\n";

/** A pattern document: the declaration on line 1, the root on line 2, `body` from line 3 on. */
std::string
Document(const std::string & body)
{
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoInteraction version=\"1\">\n" + body +
         "</LumoInteraction>\n";
}

/** Lines 3 to 6: a click (id 1) and an answer (id 2). */
const std::string Events = "<events>\n"
                           "<event name=\"Click\" id=\"1\" type=\"MouseButtonPress\" button=\"Left\"/>\n"
                           "<event name=\"Yes\" id=\"2\"/>\n"
                           "</events>\n";

/** The message the factory gives for the text, or "" when it loads. */
std::string
LoadMessage(StateMachineFactory & factory, const std::string & text)
{
  try
  {
    factory.LoadString(text, "test.xml");
  }
  catch (const itk::ExceptionObject & error)
  {
    return error.GetDescription();
  }
  return "";
}

std::string
Malformed(int line, const std::string & what)
{
  return "Malformed interaction pattern file 'test.xml', line " + std::to_string(line) + ": " + what;
}

/** Elements nested `depth` deep, beyond tinyxml2's limit of 100. */
std::string
Nested(int depth)
{
  std::string text;
  for (int i = 0; i < depth; ++i)
  {
    text += "<a>";
  }
  return text;
}

Event
Click(MouseButton button, ModifierMask modifiers, EventType type = EventType::MouseButtonPress)
{
  return Event(nullptr, type, button, modifiers);
}
} // namespace

TEST(InteractionPatternTest, ShippedPatternHasTheSelectionStatesAndTransitions)
{
  StateMachineFactory * factory = StateMachineFactory::GetInstance();
  ASSERT_TRUE(factory->HasType("VesselTreeSelection"));
  EXPECT_EQ(Describe(*factory, "VesselTreeSelection"), ShippedSelection);
  EXPECT_EQ(factory->GetStartState("VesselTreeSelection")->GetName(), "Start");
  EXPECT_EQ(factory->GetState("VesselTreeSelection", "Checking")->GetId(), 2);
  EXPECT_EQ(factory->GetState("VesselTreeSelection", "Nowhere"), nullptr);
  EXPECT_EQ(factory->GetStartState("Nope"), nullptr);
  EXPECT_TRUE(factory->GetStates("Nope").empty());

  // The shipped event ids are those the constants name.
  const EventMapper & mapper = factory->GetEventMapper();
  EXPECT_EQ(mapper.GetEventId("LeftClick"), EventId::LeftClick);
  EXPECT_EQ(mapper.GetEventId("ShiftLeftClick"), EventId::ShiftLeftClick);
  EXPECT_EQ(mapper.GetEventId("Yes"), EventId::Yes);
  EXPECT_EQ(mapper.GetEventId("No"), EventId::No);
  EXPECT_EQ(mapper.GetEventName(1004), "Yes");
  EXPECT_EQ(mapper.GetEventName(77), "");
}

TEST(InteractionPatternTest, EmbeddedTextIsTheSourceFileAndLoadsFromItsPath)
{
  std::ifstream stream(LUMO_INTERACTION_PATTERN_FILE, std::ios::binary);
  ASSERT_TRUE(stream) << LUMO_INTERACTION_PATTERN_FILE;
  std::ostringstream text;
  text << stream.rdbuf();
  EXPECT_EQ(text.str(), StateMachineFactory::GetShippedPatterns());

  StateMachineFactory factory;
  factory.LoadFile(LUMO_INTERACTION_PATTERN_FILE);
  EXPECT_EQ(factory.GetTypeNames(), std::vector<std::string>{ "VesselTreeSelection" });
  EXPECT_EQ(Describe(factory, "VesselTreeSelection"), ShippedSelection);
}

TEST(InteractionPatternTest, LoadsAFileByPathWithEventsOfEarlierFiles)
{
  lumotest::TemporaryDirectory directory;
  StateMachineFactory factory;
  factory.LoadString(StateMachineFactory::GetShippedPatterns(), "shipped");
  const std::string fileName = directory.File("more.xml");
  {
    std::ofstream file(fileName);
    // The answers come from the shipped table; LeftClick is repeated identically, which is allowed.
    file << Document(
      "<events>\n"
      "<event name=\"LeftClick\" id=\"1\" type=\"MouseButtonPress\" button=\"Left\" modifiers=\"\"/>\n"
      "</events>\n"
      "<stateMachine name=\"Toggle\">\n"
      "<state name=\"Off\" id=\"0\" start=\"true\"><transition event=\"LeftClick\" next=\"On\"/></state>\n"
      "<state name=\"On\" id=\"1\" start=\"false\"><transition event=\"Yes\" next=\"Off\">"
      "<action id=\"7\"/><action id=\"8\"/></transition></state>\n"
      "</stateMachine>\n");
  }
  factory.LoadFile(fileName);
  EXPECT_EQ(factory.GetTypeNames(), (std::vector<std::string>{ "Toggle", "VesselTreeSelection" }));
  EXPECT_EQ(Describe(factory, "Toggle"), "Off(0,start): 1->On[]\nOn(1): 1004->Off[7,8]\n");
}

TEST(InteractionPatternTest, FileErrorsNameTheFile)
{
  lumotest::TemporaryDirectory directory;
  StateMachineFactory factory;
  const std::string missing = directory.File("missing.xml");
  try
  {
    factory.LoadFile(missing);
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & error)
  {
    EXPECT_EQ(std::string(error.GetDescription()),
              "Could not read interaction pattern file '" + missing + "': the file does not exist");
  }
  const std::string broken = directory.File("broken.xml");
  {
    std::ofstream file(broken);
    file << Document("<events>\n<event name=\"A\" id=\"-1\"/>\n</events>\n");
  }
  try
  {
    factory.LoadFile(broken);
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & error)
  {
    EXPECT_EQ(std::string(error.GetDescription()),
              "Malformed interaction pattern file '" + broken +
                "', line 4: attribute \"id\" of <event> is \"-1\", not an integer from 1 to 2147483647");
  }
  const std::string large = directory.File("large.xml");
  {
    std::ofstream file(large);
    file << Document("<!--" + std::string(StateMachineFactory::MaximumFileSize, 'x') + "-->\n");
  }
  try
  {
    factory.LoadFile(large);
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & error)
  {
    EXPECT_EQ(std::string(error.GetDescription()),
              "Could not read interaction pattern file '" + large + "': larger than 1048576 bytes");
  }
  EXPECT_TRUE(factory.GetTypeNames().empty());
  EXPECT_TRUE(factory.GetEventMapper().GetDefinitions().empty());
}

TEST(InteractionPatternTest, MalformedFilesAreRefusedWithExactMessages)
{
  const std::string machine = "<stateMachine name=\"M\">\n"; // line 7 after Events
  // A machine M after Events: its states, or (from line 8) the body of its start state A.
  const auto inMachine = [&machine](const std::string & states) {
    return Document(Events + machine + states + "</stateMachine>\n");
  };
  const auto inStartState = [&inMachine](const std::string & body) {
    return inMachine("<state name=\"A\" id=\"1\" start=\"true\">\n" + body + "</state>\n");
  };
  const std::vector<std::pair<std::string, std::string>> cases = {
    // XML and root
    { "<LumoInteraction version=\"1\">\n<events>\n</LumoInteraction>\n",
      Malformed(2, "not well-formed XML (XML_ERROR_MISMATCHED_ELEMENT)") },
    { "", Malformed(0, "not well-formed XML (XML_ERROR_EMPTY_DOCUMENT)") },
    { Nested(120), Malformed(1, "not well-formed XML (XML_ELEMENT_DEPTH_EXCEEDED)") },
    { "<Patterns version=\"1\"/>\n", Malformed(1, "the root element is <Patterns>, expected <LumoInteraction>") },
    { "<LumoInteraction/>\n", Malformed(1, "<LumoInteraction> without attribute \"version\"") },
    { "<LumoInteraction version=\"2\"/>\n", Malformed(1, "unsupported version \"2\", expected \"1\"") },
    { Document("<states/>\n"),
      Malformed(3, "unexpected element <states> in <LumoInteraction>, expected <events> or <stateMachine>") },
    { Document("text\n"), Malformed(3, "unexpected text in <LumoInteraction>") },
    // events
    { Document("<events>\n<event name=\"A\" id=\"1\" colour=\"red\"/>\n</events>\n"),
      Malformed(4, "unexpected attribute \"colour\" on <event>") },
    { Document("<events>\n<event name=\"A\"/>\n</events>\n"), Malformed(4, "<event> without attribute \"id\"") },
    { Document("<events>\n<event id=\"1\"/>\n</events>\n"), Malformed(4, "<event> without attribute \"name\"") },
    { Document("<events>\n<event name=\"\" id=\"1\"/>\n</events>\n"),
      Malformed(4, "attribute \"name\" of <event> is empty") },
    { Document("<events>\n<event name=\"A\" id=\"abc\"/>\n</events>\n"),
      Malformed(4, "attribute \"id\" of <event> is \"abc\", not an integer from 1 to 2147483647") },
    { Document("<events>\n<event name=\"A\" id=\"0\"/>\n</events>\n"),
      Malformed(4, "attribute \"id\" of <event> is \"0\", not an integer from 1 to 2147483647") },
    { Document("<events>\n<event name=\"A\" id=\"2147483648\"/>\n</events>\n"),
      Malformed(4, "attribute \"id\" of <event> is \"2147483648\", not an integer from 1 to 2147483647") },
    { Document("<events>\n<event name=\"A\" id=\" 1\"/>\n</events>\n"),
      Malformed(4, "attribute \"id\" of <event> is \" 1\", not an integer from 1 to 2147483647") },
    { Document("<events>\n<event name=\"A\" id=\"1.5\"/>\n</events>\n"),
      Malformed(4, "attribute \"id\" of <event> is \"1.5\", not an integer from 1 to 2147483647") },
    { Document("<events>\n<event name=\"A\" id=\"1\">x</event>\n</events>\n"),
      Malformed(4, "unexpected text in <event>") },
    { Document("<events>\n<event name=\"A\" id=\"1\"><b/></event>\n</events>\n"),
      Malformed(4, "unexpected element <b> in <event>, expected nothing") },
    { Document("<events>\n<item/>\n</events>\n"),
      Malformed(4, "unexpected element <item> in <events>, expected <event>") },
    { Document(Events +
               "<events>\n<event name=\"Click\" id=\"1\" type=\"MouseButtonPress\" button=\"Left\"/>\n</events>\n"),
      Malformed(8, "event \"Click\" appears twice") },
    { Document(Events + "<events>\n<event name=\"Other\" id=\"1\"/>\n</events>\n"),
      Malformed(8, "event id 1 is already used by event \"Click\"") },
    { Document(Events + "<events>\n<event name=\"Press\" id=\"3\" type=\"MouseButtonPress\" button=\"Left\" "
                        "modifiers=\"\"/>\n</events>\n"),
      Malformed(8, "event \"Press\" has the same trigger as event \"Click\"") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"Wheel\"/>\n</events>\n"),
      Malformed(4,
                "attribute \"type\" of <event> is \"Wheel\", expected MouseButtonPress, MouseButtonRelease, MouseMove "
                "or KeyPress") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"MouseButtonPress\" button=\"Fourth\"/>\n</events>\n"),
      Malformed(4, "attribute \"button\" of <event> is \"Fourth\", expected Left, Right or Middle") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"MouseButtonRelease\"/>\n</events>\n"),
      Malformed(4, "<event> of type MouseButtonRelease without attribute \"button\"") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"MouseMove\" button=\"Left\"/>\n</events>\n"),
      Malformed(4, "attribute \"button\" is not allowed on <event> of type MouseMove") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"KeyPress\"/>\n</events>\n"),
      Malformed(4, "<event> of type KeyPress without attribute \"key\"") },
    { Document(
        "<events>\n<event name=\"A\" id=\"1\" type=\"MouseButtonPress\" button=\"Left\" key=\"D\"/>\n</events>\n"),
      Malformed(4, "attribute \"key\" is not allowed on <event> of type MouseButtonPress") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"KeyPress\" key=\"F13\"/>\n</events>\n"),
      Malformed(4,
                "attribute \"key\" of <event> is \"F13\", expected one printable character or one of Escape, Return, "
                "Delete, BackSpace, Tab, Space, Left, Right, Up, Down") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"KeyPress\" key=\" \"/>\n</events>\n"),
      Malformed(4,
                "attribute \"key\" of <event> is \" \", expected one printable character or one of Escape, Return, "
                "Delete, BackSpace, Tab, Space, Left, Right, Up, Down") },
    { Document(
        "<events>\n<event name=\"A\" id=\"1\" type=\"KeyPress\" key=\"D\" modifiers=\"Shift+Meta\"/>\n</events>\n"),
      Malformed(4,
                "attribute \"modifiers\" of <event> is \"Shift+Meta\": unknown modifier \"Meta\", expected Shift, Ctrl "
                "or Alt joined by +") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"KeyPress\" key=\"D\" modifiers=\"Ctrl+\"/>\n</events>\n"),
      Malformed(4,
                "attribute \"modifiers\" of <event> is \"Ctrl+\": unknown modifier \"\", expected Shift, Ctrl or Alt "
                "joined by +") },
    { Document("<events>\n<event name=\"A\" id=\"1\" type=\"KeyPress\" key=\"D\" modifiers=\"Alt+Alt\"/>\n</events>\n"),
      Malformed(4, "attribute \"modifiers\" of <event> is \"Alt+Alt\": modifier \"Alt\" appears twice") },
    { Document("<events>\n<event name=\"A\" id=\"1\" modifiers=\"Shift\"/>\n</events>\n"),
      Malformed(4, "<event> without attribute \"type\" cannot have attribute \"modifiers\"") },
    // state machines
    { Document(Events + "<stateMachine/>\n"), Malformed(7, "<stateMachine> without attribute \"name\"") },
    { inMachine("<state name=\"A\" id=\"1\" start=\"true\"/>\n</stateMachine>\n" + machine +
                "<state name=\"A\" id=\"1\" start=\"true\"/>\n"),
      Malformed(10, "state machine type \"M\" appears twice") },
    { inMachine("<transition event=\"Click\" next=\"A\"/>\n"),
      Malformed(8, "unexpected element <transition> in <stateMachine>, expected <state>") },
    { inMachine(""), Malformed(7, "state machine \"M\" has no start state") },
    { inMachine("<state name=\"A\" id=\"1\"/>\n"), Malformed(7, "state machine \"M\" has no start state") },
    { inMachine("<state name=\"A\" id=\"1\" start=\"true\"/>\n<state name=\"B\" id=\"2\" start=\"true\"/>\n"),
      Malformed(9, "state machine \"M\" has a second start state \"B\" (the first is \"A\")") },
    { inMachine("<state name=\"A\" id=\"1\" start=\"yes\"/>\n"),
      Malformed(8, "attribute \"start\" of <state> is \"yes\", expected \"true\" or \"false\"") },
    { inMachine("<state name=\"A\" id=\"1\" start=\"true\"/>\n<state name=\"A\" id=\"2\"/>\n"),
      Malformed(9, "state \"A\" appears twice in state machine \"M\"") },
    { inMachine("<state name=\"A\" id=\"1\" start=\"true\"/>\n<state name=\"B\" id=\"1\"/>\n"),
      Malformed(9, "state id 1 appears twice in state machine \"M\"") },
    { inMachine("<state name=\"A\" id=\"-1\" start=\"true\"/>\n"),
      Malformed(8, "attribute \"id\" of <state> is \"-1\", not an integer from 0 to 2147483647") },
    { inStartState("<transition event=\"Clack\" next=\"A\"/>\n"), Malformed(9, "unknown event \"Clack\"") },
    { inStartState("<transition event=\"Click\" next=\"B\"/>\n"),
      Malformed(9, "unknown next state \"B\" in state machine \"M\"") },
    { inStartState("<transition event=\"Click\"/>\n"), Malformed(9, "<transition> without attribute \"next\"") },
    { inStartState("<transition event=\"Click\" next=\"A\"/>\n<transition event=\"Click\" next=\"A\"/>\n"),
      Malformed(10, "state \"A\" has a second transition for event \"Click\"") },
    { inStartState("<transition event=\"Click\" next=\"A\">\n<action id=\"3x\"/>\n</transition>\n"),
      Malformed(10, "attribute \"id\" of <action> is \"3x\", not an integer from 0 to 2147483647") },
    { inStartState("<transition event=\"Click\" next=\"A\">\n<action id=\"3\" parameter=\"1\"/>\n</transition>\n"),
      Malformed(10, "unexpected attribute \"parameter\" on <action>") },
    { inStartState("<transition event=\"Click\" next=\"A\">\n<state name=\"B\" id=\"2\"/>\n</transition>\n"),
      Malformed(10, "unexpected element <state> in <transition>, expected <action>") },
  };
  for (const auto & entry : cases)
  {
    StateMachineFactory factory;
    EXPECT_EQ(LoadMessage(factory, entry.first), entry.second) << entry.first;
    EXPECT_TRUE(factory.GetTypeNames().empty()) << entry.first;
    EXPECT_TRUE(factory.GetEventMapper().GetDefinitions().empty()) << entry.first;
  }
}

TEST(InteractionPatternTest, NothingOfARefusedFileIsRegistered)
{
  StateMachineFactory factory;
  factory.LoadString(StateMachineFactory::GetShippedPatterns(), "shipped");
  const std::string before = Describe(factory, "VesselTreeSelection");
  const std::size_t eventsBefore = factory.GetEventMapper().GetDefinitions().size();

  // New events and a good first type, then a broken second type: none of it stays.
  const std::string text =
    Document("<events>\n<event name=\"RightClick\" id=\"2\" type=\"MouseButtonPress\" button=\"Right\"/>\n</events>\n"
             "<stateMachine name=\"Good\">\n<state name=\"A\" id=\"1\" start=\"true\"/>\n</stateMachine>\n"
             "<stateMachine name=\"Bad\">\n<state name=\"A\" id=\"1\"/>\n</stateMachine>\n");
  EXPECT_EQ(LoadMessage(factory, text), Malformed(9, "state machine \"Bad\" has no start state"));
  EXPECT_EQ(factory.GetTypeNames(), std::vector<std::string>{ "VesselTreeSelection" });
  EXPECT_EQ(factory.GetEventMapper().GetDefinitions().size(), eventsBefore);
  EXPECT_EQ(factory.GetEventMapper().GetEventId("RightClick"), EventId::None);
  const Event rightClick = Click(MouseButton::Right, NoModifier);
  EXPECT_EQ(factory.GetEventMapper().Map(&rightClick), EventId::None);
  EXPECT_EQ(Describe(factory, "VesselTreeSelection"), before);

  // A type of that name exists already; an event defined differently.
  EXPECT_EQ(LoadMessage(factory,
                        Document("<stateMachine name=\"VesselTreeSelection\">\n<state name=\"A\" id=\"1\" "
                                 "start=\"true\"/>\n</stateMachine>\n")),
            Malformed(3, "state machine type \"VesselTreeSelection\" is already loaded"));
  EXPECT_EQ(LoadMessage(factory, Document("<events>\n<event name=\"Yes\" id=\"5\"/>\n</events>\n")),
            Malformed(4, "event \"Yes\" is already defined differently"));
  EXPECT_EQ(factory.GetEventMapper().GetEventId("Yes"), EventId::Yes);

  // The same text without the broken type loads.
  factory.LoadString(
    Document("<events>\n<event name=\"RightClick\" id=\"2\" type=\"MouseButtonPress\" button=\"Right\"/>\n</events>\n"
             "<stateMachine name=\"Good\">\n<state name=\"A\" id=\"1\" start=\"true\"/>\n</stateMachine>\n"),
    "test.xml");
  EXPECT_EQ(factory.GetTypeNames(), (std::vector<std::string>{ "Good", "VesselTreeSelection" }));
  EXPECT_EQ(factory.GetEventMapper().GetEventId("RightClick"), 2);
}

TEST(EventMappingTest, ClickAndShiftClickMapToTheirIdsAndNothingElseMaps)
{
  const EventMapper & mapper = StateMachineFactory::GetInstance()->GetEventMapper();
  auto map = [&mapper](const Event & event) { return mapper.Map(&event); };
  EXPECT_EQ(map(Click(MouseButton::Left, NoModifier)), EventId::LeftClick);
  EXPECT_EQ(map(Click(MouseButton::Left, ShiftModifier)), EventId::ShiftLeftClick);
  EXPECT_EQ(map(Click(MouseButton::Left, ShiftModifier | ControlModifier)), EventId::None);
  EXPECT_EQ(map(Click(MouseButton::Left, ControlModifier)), EventId::None);
  EXPECT_EQ(map(Click(MouseButton::Right, NoModifier)), EventId::None);
  EXPECT_EQ(map(Click(MouseButton::Left, NoModifier, EventType::MouseButtonRelease)), EventId::None);
  EXPECT_EQ(map(Click(MouseButton::None, NoModifier, EventType::MouseMove)), EventId::None);
  EXPECT_EQ(map(Event(nullptr, EventType::KeyPress, MouseButton::None, NoModifier, 'D')), EventId::None);
  EXPECT_EQ(map(Event(nullptr, EventType::None)), EventId::None);
  EXPECT_EQ(mapper.Map(nullptr), EventId::None);
  // A key code on a mouse event plays no part.
  EXPECT_EQ(map(Event(nullptr, EventType::MouseButtonPress, MouseButton::Left, NoModifier, 'x')), EventId::LeftClick);
}

TEST(EventMappingTest, KeysMoveAndReleaseMapFromALoadedTable)
{
  StateMachineFactory factory;
  factory.LoadString(
    Document("<events>\n"
             "<event name=\"D\" id=\"10\" type=\"KeyPress\" key=\"D\"/>\n"
             "<event name=\"CtrlD\" id=\"11\" type=\"KeyPress\" key=\"D\" modifiers=\"Ctrl\"/>\n"
             "<event name=\"Delete\" id=\"12\" type=\"KeyPress\" key=\"Delete\"/>\n"
             "<event name=\"Plus\" id=\"13\" type=\"KeyPress\" key=\"+\" modifiers=\"Shift\"/>\n"
             "<event name=\"Move\" id=\"20\" type=\"MouseMove\"/>\n"
             "<event name=\"AltMiddleRelease\" id=\"21\" type=\"MouseButtonRelease\" button=\"Middle\" "
             "modifiers=\"Alt+Ctrl+Shift\"/>\n"
             "</events>\n"),
    "keys.xml");
  const EventMapper & mapper = factory.GetEventMapper();
  auto key = [&mapper](int code, ModifierMask modifiers) {
    const Event event(nullptr, EventType::KeyPress, MouseButton::None, modifiers, code);
    return mapper.Map(&event);
  };
  EXPECT_EQ(key('D', NoModifier), 10);
  EXPECT_EQ(key('D', ControlModifier), 11);
  EXPECT_EQ(key('d', NoModifier), EventId::None);
  EXPECT_EQ(key('D', AltModifier), EventId::None);
  EXPECT_EQ(key(Key::Delete, NoModifier), 12);
  EXPECT_EQ(key('+', ShiftModifier), 13);
  EXPECT_EQ(key('+', NoModifier), EventId::None);
  const Event move(nullptr, EventType::MouseMove, MouseButton::Left, NoModifier);
  EXPECT_EQ(mapper.Map(&move), 20);
  const Event release(
    nullptr, EventType::MouseButtonRelease, MouseButton::Middle, AltModifier | ControlModifier | ShiftModifier);
  EXPECT_EQ(mapper.Map(&release), 21);
  const EventMapper::EventDefinition * definition = mapper.GetDefinition("AltMiddleRelease");
  ASSERT_NE(definition, nullptr);
  EXPECT_EQ(definition->modifiers, AltModifier | ControlModifier | ShiftModifier);
  EXPECT_EQ(definition->button, MouseButton::Middle);
}

TEST(EventMappingTest, TableRefusesConflictsAndAcceptsTheSameDefinitionAgain)
{
  EventMapper mapper;
  EventMapper::EventDefinition click;
  click.name = "Click";
  click.id = 1;
  click.type = EventType::MouseButtonPress;
  click.button = MouseButton::Left;
  EXPECT_EQ(mapper.CheckDefinition(click), "");
  EXPECT_TRUE(mapper.AddDefinition(click));
  EXPECT_EQ(mapper.CheckDefinition(click), "");
  EXPECT_FALSE(mapper.AddDefinition(click));

  EventMapper::EventDefinition other = click;
  other.name = "Other";
  EXPECT_EQ(mapper.CheckDefinition(other), "event id 1 is already used by event \"Click\"");
  other.id = 2;
  EXPECT_EQ(mapper.CheckDefinition(other), "event \"Other\" has the same trigger as event \"Click\"");
  other.modifiers = ShiftModifier;
  EXPECT_EQ(mapper.CheckDefinition(other), "");
  other.id = 0;
  EXPECT_EQ(mapper.CheckDefinition(other), "event id 0 is reserved");
  EventMapper::EventDefinition changed = click;
  changed.button = MouseButton::Right;
  EXPECT_EQ(mapper.CheckDefinition(changed), "event \"Click\" is already defined differently");
  EXPECT_FALSE(mapper.AddDefinition(changed));
  EXPECT_EQ(mapper.GetDefinitions().size(), 1u);
}
