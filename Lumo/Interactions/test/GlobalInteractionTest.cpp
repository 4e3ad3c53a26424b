// The global dispatcher (mapping, confidence, ties, listeners, registration) and the status text.

#include <lumoEvent.h>
#include <lumoEventMapper.h>
#include <lumoGlobalInteraction.h>
#include <lumoState.h>
#include <lumoStateMachineFactory.h>
#include <lumoStatusBar.h>

#include <gtest/gtest.h>

using namespace lumo;

namespace
{
/** Answers a fixed confidence for events its state has a transition for, and records the actions it runs; action
 *  30 answers with Yes. */
class FixedConfidenceInteractor : public Interactor
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(FixedConfidenceInteractor);

  using Self = FixedConfidenceInteractor;
  using Superclass = Interactor;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(FixedConfidenceInteractor, Interactor);
  lumoNewMacro1Param(FixedConfidenceInteractor, double);

  double
  CanHandleEvent(const StateEvent * stateEvent) const override
  {
    return Superclass::CanHandleEvent(stateEvent) > 0.0 ? confidence : 0.0;
  }

  double confidence;
  std::vector<int> calls;
  int asked{ 0 };

protected:
  explicit FixedConfidenceInteractor(double value)
    : Interactor("VesselTreeSelection", nullptr)
    , confidence(value)
  {
    for (int id : { ActionId::CheckElement, ActionId::Select, ActionId::MultipleSelect, ActionId::Deselect })
    {
      this->RegisterAction(id, [this](Action * action, const StateEvent * stateEvent) {
        calls.push_back(action->GetActionId());
        if (action->GetActionId() == ActionId::CheckElement)
        {
          const StateEvent yes(EventId::Yes, stateEvent->GetEvent());
          return this->HandleEvent(&yes);
        }
        return true;
      });
    }
  }
};

class GlobalInteractionTest : public ::testing::Test
{
protected:
  void
  SetUp() override
  {
    GlobalInteraction::GetInstance()->Clear();
    GlobalInteraction::GetInstance()->SetEventMapper(nullptr);
  }
  void
  TearDown() override
  {
    SetUp();
  }
  GlobalInteraction * global{ GlobalInteraction::GetInstance() };
  const Event click{ nullptr, EventType::MouseButtonPress, MouseButton::Left, NoModifier };
  const Event shiftClick{ nullptr, EventType::MouseButtonPress, MouseButton::Left, ShiftModifier };
  const Event ctrlClick{ nullptr, EventType::MouseButtonPress, MouseButton::Left, ControlModifier };
};
} // namespace

TEST_F(GlobalInteractionTest, TheMostConfidentInteractorGetsTheEvent)
{
  auto low = FixedConfidenceInteractor::New(0.3);
  auto high = FixedConfidenceInteractor::New(0.8);
  EXPECT_TRUE(global->AddInteractor(low));
  EXPECT_TRUE(global->AddInteractor(high));
  EXPECT_TRUE(global->HandleEvent(&click));
  EXPECT_TRUE(low->calls.empty());
  EXPECT_EQ(high->calls, (std::vector<int>{ 30, 65 }));

  high->confidence = 0.1;
  EXPECT_TRUE(global->HandleEvent(&shiftClick));
  EXPECT_EQ(low->calls, (std::vector<int>{ 30, 61 }));
  EXPECT_EQ(high->calls, (std::vector<int>{ 30, 65 }));
}

TEST_F(GlobalInteractionTest, TiesGoToTheInteractorAddedFirst)
{
  auto first = FixedConfidenceInteractor::New(0.5);
  auto second = FixedConfidenceInteractor::New(0.5);
  global->AddInteractor(second);
  global->AddInteractor(first);
  EXPECT_TRUE(global->HandleEvent(&click));
  EXPECT_TRUE(first->calls.empty());
  EXPECT_EQ(second->calls, (std::vector<int>{ 30, 65 }));
}

TEST_F(GlobalInteractionTest, NoConfidenceOrNoMappingIsNotHandled)
{
  auto none = FixedConfidenceInteractor::New(0.0);
  global->AddInteractor(none);
  EXPECT_FALSE(global->HandleEvent(&click));
  none->confidence = 1.0;
  EXPECT_FALSE(global->HandleEvent(&ctrlClick));
  EXPECT_FALSE(global->HandleEvent(nullptr));
  EXPECT_FALSE(global->HandleStateEvent(nullptr));
  EXPECT_TRUE(none->calls.empty());
  // A state event the interactor's state has no transition for.
  const StateEvent yes(EventId::Yes, &click);
  EXPECT_FALSE(global->HandleStateEvent(&yes));
  EXPECT_TRUE(global->HandleEvent(&click));
  EXPECT_EQ(none->calls, (std::vector<int>{ 30, 65 }));
}

TEST_F(GlobalInteractionTest, InteractorsAreKeptOnceInTheOrderAdded)
{
  auto a = FixedConfidenceInteractor::New(0.5);
  auto b = FixedConfidenceInteractor::New(0.5);
  auto c = FixedConfidenceInteractor::New(0.5);
  EXPECT_TRUE(global->AddInteractor(a));
  EXPECT_TRUE(global->AddInteractor(b));
  EXPECT_FALSE(global->AddInteractor(a));
  EXPECT_FALSE(global->AddInteractor(nullptr));
  EXPECT_TRUE(global->AddInteractor(c));
  EXPECT_EQ(global->GetInteractors(), (std::vector<Interactor *>{ a, b, c }));
  EXPECT_TRUE(global->RemoveInteractor(b));
  EXPECT_FALSE(global->RemoveInteractor(b));
  EXPECT_FALSE(global->InteractorRegistered(b));
  EXPECT_TRUE(global->InteractorRegistered(c));
  EXPECT_EQ(global->GetInteractors(), (std::vector<Interactor *>{ a, c }));

  // The dispatcher holds a reference.
  Interactor * raw = c.GetPointer();
  const int references = raw->GetReferenceCount();
  c = nullptr;
  EXPECT_EQ(raw->GetReferenceCount(), references - 1);
  EXPECT_TRUE(global->InteractorRegistered(raw));
}

TEST_F(GlobalInteractionTest, ListenersGetEveryMappedEventToo)
{
  auto interactor = FixedConfidenceInteractor::New(0.9);
  auto listener = FixedConfidenceInteractor::New(0.0);
  EXPECT_TRUE(global->AddListener(listener));
  EXPECT_FALSE(global->AddListener(listener));
  EXPECT_TRUE(global->HandleEvent(&click));
  EXPECT_EQ(listener->calls, (std::vector<int>{ 30, 65 }));
  global->AddInteractor(interactor);
  EXPECT_TRUE(global->HandleEvent(&shiftClick));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 61 }));
  EXPECT_EQ(listener->calls, (std::vector<int>{ 30, 65, 30, 61 }));
  EXPECT_EQ(global->GetListeners(), std::vector<StateMachine *>{ listener });
  EXPECT_TRUE(global->RemoveListener(listener));
  EXPECT_FALSE(global->RemoveListener(listener));
}

TEST_F(GlobalInteractionTest, AnotherEventMapperCanBeSet)
{
  EXPECT_EQ(global->GetEventMapper(), &StateMachineFactory::GetInstance()->GetEventMapper());
  EventMapper mapper;
  EventMapper::EventDefinition definition;
  definition.name = "CtrlClickSelects";
  definition.id = EventId::LeftClick;
  definition.type = EventType::MouseButtonPress;
  definition.button = MouseButton::Left;
  definition.modifiers = ControlModifier;
  ASSERT_TRUE(mapper.AddDefinition(definition));
  global->SetEventMapper(&mapper);
  auto interactor = FixedConfidenceInteractor::New(0.5);
  global->AddInteractor(interactor);
  EXPECT_FALSE(global->HandleEvent(&click));
  EXPECT_TRUE(global->HandleEvent(&ctrlClick));
  EXPECT_EQ(interactor->calls, (std::vector<int>{ 30, 65 }));
}

TEST(StatusBarTest, KeepsTheTextAndShowsItThroughTheImplementation)
{
  StatusBar * bar = StatusBar::GetInstance();
  EXPECT_EQ(bar, StatusBar::GetInstance());
  EXPECT_FALSE(bar->HasImplementation());
  bar->DisplayText("no window yet");
  EXPECT_EQ(bar->GetText(), "no window yet");

  std::vector<std::string> shown;
  bar->SetImplementation([&shown](const std::string & text) { shown.push_back(text); });
  EXPECT_TRUE(bar->HasImplementation());
  EXPECT_TRUE(shown.empty());
  bar->DisplayText("Vessel 12 selected");
  bar->DisplayText("");
  EXPECT_EQ(shown, (std::vector<std::string>{ "Vessel 12 selected", "" }));
  EXPECT_EQ(bar->GetText(), "");

  bar->SetImplementation(nullptr);
  EXPECT_FALSE(bar->HasImplementation());
  bar->DisplayText("kept only");
  EXPECT_EQ(shown.size(), 2u);
  EXPECT_EQ(bar->GetText(), "kept only");
  bar->DisplayText("");
}
