// State machines and interactors: walking the shipped selection pattern with nested events, unhandled events,
// missing actions, nesting limit, undo registration.

#include "WarningCapture.h"

#include <lumoDataNode.h>
#include <lumoDisplayPositionEvent.h>
#include <lumoInteractor.h>
#include <lumoOperation.h>
#include <lumoOperationActor.h>
#include <lumoState.h>
#include <lumoStateMachineFactory.h>
#include <lumoUndoController.h>

#include <gtest/gtest.h>

using namespace lumo;

namespace
{
/** An operation that counts the live instances, so that dropped undo events can be seen to delete theirs. */
class CountedOperation : public Operation
{
public:
  explicit CountedOperation(OperationType type)
    : Operation(type)
  {
    ++live;
  }
  CountedOperation(const CountedOperation & other)
    : Operation(other)
  {
    ++live;
  }
  ~CountedOperation() override { --live; }
  static int live;
};
int CountedOperation::live = 0;

/** Records the operation types it executes. */
class RecordingActor : public OperationActor
{
public:
  void
  ExecuteOperation(Operation * operation) override
  {
    executed.push_back(operation->GetOperationType());
  }
  std::vector<int> executed;
};

/** The selection interactor of the brief with recording actions: 30 picks (m_Hit decides) and answers with a
 *  nested Yes or No carrying the incoming raw event; 65, 61 and 75 record, and 65 registers an undo event. */
class RecordingInteractor : public Interactor
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(RecordingInteractor);

  using Self = RecordingInteractor;
  using Superclass = Interactor;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(RecordingInteractor, Interactor);
  lumoNewMacro2Param(RecordingInteractor, const std::string &, DataNode *);

  bool hit{ true };
  std::vector<int> calls;
  /** The current state's name at each call. */
  std::vector<std::string> states;
  /** The raw event each call saw. */
  std::vector<const Event *> events;
  RecordingActor actor;
  bool nestedHandled{ false };

  using Interactor::RegisterAction;

protected:
  RecordingInteractor(const std::string & type, DataNode * node)
    : Interactor(type, node)
  {
    this->RegisterAction(ActionId::CheckElement, &Self::OnCheckElement);
    this->RegisterAction(ActionId::Select, &Self::OnSelect);
    this->RegisterAction(ActionId::Deselect, &Self::OnDeselect);
    this->RegisterAction(ActionId::MultipleSelect, &Self::OnMultipleSelect);
  }

  void
  Record(Action * action, const StateEvent * stateEvent)
  {
    calls.push_back(action->GetActionId());
    states.push_back(GetCurrentState()->GetName());
    events.push_back(stateEvent->GetEvent());
  }
  bool
  OnCheckElement(Action * action, const StateEvent * stateEvent)
  {
    Record(action, stateEvent);
    const StateEvent answer(hit ? EventId::Yes : EventId::No, stateEvent->GetEvent());
    nestedHandled = this->HandleEvent(&answer);
    return nestedHandled;
  }
  bool
  OnSelect(Action * action, const StateEvent * stateEvent)
  {
    Record(action, stateEvent);
    return RegisterUndoOperation(
      &actor, new CountedOperation(1), new CountedOperation(2), "Select vessel " + std::to_string(calls.size()));
  }
  bool
  OnDeselect(Action * action, const StateEvent * stateEvent)
  {
    Record(action, stateEvent);
    return true;
  }
  bool
  OnMultipleSelect(Action * action, const StateEvent * stateEvent)
  {
    Record(action, stateEvent);
    return true;
  }
};

DisplayPositionEvent
LeftPress(ModifierMask modifiers, double x, double y)
{
  Point2D position;
  position[0] = x;
  position[1] = y;
  return DisplayPositionEvent(nullptr, EventType::MouseButtonPress, MouseButton::Left, modifiers, Key::None, position);
}
} // namespace

TEST(StateMachineTest, ClickOnAVesselChecksThenSelectsThroughANestedEvent)
{
  auto node = DataNode::New();
  auto interactor = RecordingInteractor::New("VesselTreeSelection", node);
  EXPECT_EQ(interactor->GetDataNode(), node.GetPointer());
  EXPECT_EQ(interactor->GetType(), "VesselTreeSelection");
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Start");
  EXPECT_STREQ(interactor->GetNameOfClass(), "RecordingInteractor");

  const DisplayPositionEvent click = LeftPress(NoModifier, 120.0, 45.5);
  const StateEvent stateEvent(EventId::LeftClick, &click);
  EXPECT_TRUE(interactor->HandleEvent(&stateEvent));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 65 }));
  // 30 runs in the state the click led to; the nested Yes is handled there and 65 runs back in Start.
  EXPECT_EQ(interactor->states, (std::vector<std::string>{ "Checking", "Start" }));
  EXPECT_TRUE(interactor->nestedHandled);
  EXPECT_EQ(interactor->events, (std::vector<const Event *>{ &click, &click }));
  const auto * seen = dynamic_cast<const DisplayPositionEvent *>(interactor->events[1]);
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen->GetDisplayPosition()[0], 120.0);
  EXPECT_EQ(seen->GetDisplayPosition()[1], 45.5);
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Start");
}

TEST(StateMachineTest, ClickOnNothingDeselects)
{
  auto interactor = RecordingInteractor::New("VesselTreeSelection", nullptr);
  interactor->hit = false;
  const DisplayPositionEvent click = LeftPress(NoModifier, 1.0, 2.0);
  const StateEvent stateEvent(EventId::LeftClick, &click);
  EXPECT_TRUE(interactor->HandleEvent(&stateEvent));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 75 }));
  EXPECT_EQ(interactor->states, (std::vector<std::string>{ "Checking", "Start" }));
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Start");
}

TEST(StateMachineTest, ShiftClickAddsToTheSelectionOrDeselects)
{
  auto interactor = RecordingInteractor::New("VesselTreeSelection", nullptr);
  const DisplayPositionEvent click = LeftPress(ShiftModifier, 1.0, 2.0);
  const StateEvent stateEvent(EventId::ShiftLeftClick, &click);
  EXPECT_TRUE(interactor->HandleEvent(&stateEvent));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 61 }));
  EXPECT_EQ(interactor->states, (std::vector<std::string>{ "CheckingForMultipleSelect", "Start" }));

  interactor->hit = false;
  interactor->calls.clear();
  EXPECT_TRUE(interactor->HandleEvent(&stateEvent));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 75 }));
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Start");
}

TEST(StateMachineTest, EventsWithoutTransitionAreNotHandled)
{
  auto interactor = RecordingInteractor::New("VesselTreeSelection", nullptr);
  const StateEvent yes(EventId::Yes);
  const StateEvent unknown(999);
  EXPECT_FALSE(interactor->HandleEvent(&yes));
  EXPECT_FALSE(interactor->HandleEvent(&unknown));
  EXPECT_FALSE(interactor->HandleEvent(nullptr));
  EXPECT_TRUE(interactor->calls.empty());
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Start");
  EXPECT_EQ(interactor->CanHandleEvent(&yes), 0.0);
  EXPECT_EQ(interactor->CanHandleEvent(nullptr), 0.0);
  const StateEvent click(EventId::LeftClick);
  EXPECT_EQ(interactor->CanHandleEvent(&click), 0.5);
}

TEST(StateMachineTest, ActionsWithoutFunctionAreSkippedWithAWarning)
{
  lumotest::WarningCapture warnings;
  auto interactor = Interactor::New("VesselTreeSelection", nullptr);
  const StateEvent click(EventId::LeftClick);
  EXPECT_TRUE(interactor->HandleEvent(&click));
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Checking");
  EXPECT_EQ(warnings.messages(),
            std::vector<std::string>{ "no function registered for action 30 (state machine type "
                                      "\"VesselTreeSelection\", transition from \"Start\" to \"Checking\")" });
  // In Checking only the answers have transitions.
  EXPECT_FALSE(interactor->HandleEvent(&click));
  EXPECT_EQ(interactor->CanHandleEvent(&click), 0.0);
  const StateEvent no(EventId::No);
  EXPECT_EQ(interactor->CanHandleEvent(&no), 0.5);
  interactor->ResetToStartState();
  EXPECT_EQ(interactor->GetCurrentState()->GetName(), "Start");
}

TEST(StateMachineTest, UnknownTypeThrows)
{
  try
  {
    StateMachine::New("NoSuchPattern");
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & error)
  {
    EXPECT_EQ(std::string(error.GetDescription()), "StateMachine: unknown state machine type \"NoSuchPattern\"");
  }
}

TEST(StateMachineTest, NestingIsLimited)
{
  // A pattern whose only transition answers itself; its events come from the shipped table.
  StateMachineFactory * factory = StateMachineFactory::GetInstance();
  if (!factory->HasType("TestLoop"))
  {
    factory->LoadString("<LumoInteraction version=\"1\"><stateMachine name=\"TestLoop\"><state name=\"A\" id=\"0\" "
                        "start=\"true\"><transition event=\"Yes\" next=\"A\"><action id=\"1\"/></transition></state>"
                        "</stateMachine></LumoInteraction>",
                        "loop.xml");
  }
  auto machine = RecordingInteractor::New("TestLoop", nullptr);
  int runs = 0;
  machine->RegisterAction(1, [&runs, &machine](Action *, const StateEvent * stateEvent) {
    ++runs;
    return machine->HandleEvent(stateEvent);
  });
  lumotest::WarningCapture warnings;
  const StateEvent yes(EventId::Yes);
  EXPECT_TRUE(machine->HandleEvent(&yes));
  EXPECT_EQ(runs, static_cast<int>(StateMachine::MaximumNestingDepth));
  EXPECT_EQ(warnings.messages(),
            std::vector<std::string>{ "event 1004 refused in state \"A\": events nested more than 64 deep" });
  // The depth is back to zero: the next event runs as deep again.
  runs = 0;
  warnings.clear();
  EXPECT_TRUE(machine->HandleEvent(&yes));
  EXPECT_EQ(runs, static_cast<int>(StateMachine::MaximumNestingDepth));
}

TEST(StateMachineUndoTest, SelectRegistersWithTheUndoControllerWhileEnabled)
{
  // Operations other tests left in the application's controller.
  const int before = CountedOperation::live;
  auto interactor = RecordingInteractor::New("VesselTreeSelection", nullptr);
  EXPECT_TRUE(interactor->IsUndoEnabled());
  EXPECT_EQ(interactor->GetUndoController(), UndoController::GetInstance());

  UndoController controller;
  interactor->SetUndoController(&controller);
  EXPECT_EQ(interactor->GetUndoController(), &controller);
  const StateEvent click(EventId::LeftClick);
  EXPECT_TRUE(interactor->HandleEvent(&click));
  EXPECT_EQ(controller.GetUndoCount(), 1u);
  EXPECT_EQ(controller.GetUndoDescriptions(), std::vector<std::string>{ "Select vessel 2" });
  EXPECT_EQ(CountedOperation::live, before + 2);
  EXPECT_TRUE(controller.Undo());
  EXPECT_TRUE(controller.Redo());
  EXPECT_EQ(interactor->actor.executed, (std::vector<int>{ 2, 1 }));

  // Disabled: the event is dropped and its operations deleted.
  interactor->EnableUndo(false);
  EXPECT_FALSE(interactor->IsUndoEnabled());
  EXPECT_TRUE(interactor->HandleEvent(&click));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 65, 30, 65 }));
  EXPECT_EQ(controller.GetUndoCount(), 1u);
  EXPECT_EQ(CountedOperation::live, before + 2);

  // Enabled again; a disabled controller drops too.
  interactor->EnableUndo(true);
  EXPECT_TRUE(interactor->HandleEvent(&click));
  EXPECT_EQ(controller.GetUndoCount(), 2u);
  controller.SetEnabled(false);
  EXPECT_TRUE(interactor->HandleEvent(&click));
  EXPECT_EQ(controller.GetUndoCount(), 2u);
  controller.Clear();
  EXPECT_EQ(CountedOperation::live, before);

  interactor->SetUndoController(nullptr);
  EXPECT_EQ(interactor->GetUndoController(), UndoController::GetInstance());
}
