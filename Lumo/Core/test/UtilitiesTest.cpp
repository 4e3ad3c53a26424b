// Undo and redo, unique ids, the progress bar, logging and the ITK warning format.

#include "LumoTestUtilities.h"

#include <lumoBaseData.h>
#include <lumoLogger.h>
#include <lumoOperation.h>
#include <lumoProgressBar.h>
#include <lumoUIDGenerator.h>
#include <lumoUndoController.h>

#include <gtest/gtest.h>

#include <itkOutputWindow.h>

#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <set>
#include <sstream>
#include <unistd.h>

using namespace lumo;

namespace
{
/** An operation carrying a value. */
class SetValueOperation : public Operation
{
public:
  SetValueOperation(OperationType type, int value)
    : Operation(type)
    , m_Value(value)
  {}
  int m_Value;
};

/** A data object with one integer, changed by operations of type 1 (set) and recording what it executed. */
class CounterData : public BaseData
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CounterData);

  using Self = CounterData;
  using Superclass = BaseData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CounterData, BaseData);

protected:
  CounterData() = default;
  ~CounterData() override = default;

public:
  void
  ExecuteOperation(Operation * operation) override
  {
    auto * set = dynamic_cast<SetValueOperation *>(operation);
    if (set && set->GetOperationType() == 1)
    {
      value = set->m_Value;
      history.push_back(value);
    }
  }
  int value{ 0 };
  std::vector<int> history;
};

/** Sets a new value through the controller: registers the pair and executes the operation, as interactors do. */
void
SetThroughUndo(UndoController & controller, CounterData * data, int newValue, const std::string & description)
{
  auto * doOperation = new SetValueOperation(1, newValue);
  auto * undoOperation = new SetValueOperation(1, data->value);
  controller.SetOperationEvent(new OperationEvent(data, doOperation, undoOperation, description));
  data->ExecuteOperation(doOperation);
}
} // namespace

TEST(UndoControllerTest, UndoAndRedoOrder)
{
  UndoController controller;
  CounterData::Pointer data = CounterData::New();
  SetThroughUndo(controller, data, 1, "one");
  SetThroughUndo(controller, data, 2, "two");
  SetThroughUndo(controller, data, 3, "three");
  EXPECT_EQ(controller.GetUndoDescriptions(), (std::vector<std::string>{ "three", "two", "one" }));
  EXPECT_FALSE(controller.CanRedo());

  EXPECT_TRUE(controller.Undo());
  EXPECT_EQ(data->value, 2);
  EXPECT_TRUE(controller.Undo());
  EXPECT_EQ(data->value, 1);
  EXPECT_EQ(controller.GetRedoDescriptions(), (std::vector<std::string>{ "two", "three" }));
  EXPECT_TRUE(controller.Redo());
  EXPECT_EQ(data->value, 2);
  EXPECT_TRUE(controller.Undo());
  EXPECT_TRUE(controller.Undo());
  EXPECT_EQ(data->value, 0);
  EXPECT_FALSE(controller.Undo()); // nothing left
  EXPECT_EQ(data->value, 0);
  EXPECT_EQ(data->history, (std::vector<int>{ 1, 2, 3, 2, 1, 2, 1, 0 }));

  // A new event empties the redo stack.
  EXPECT_TRUE(controller.Redo());
  EXPECT_EQ(data->value, 1);
  SetThroughUndo(controller, data, 7, "seven");
  EXPECT_FALSE(controller.CanRedo());
  EXPECT_FALSE(controller.Redo());
  EXPECT_EQ(controller.GetUndoDescriptions(), (std::vector<std::string>{ "seven", "one" }));
  EXPECT_TRUE(controller.Undo());
  EXPECT_EQ(data->value, 1);

  controller.Clear();
  EXPECT_FALSE(controller.CanUndo());
  EXPECT_FALSE(controller.CanRedo());

  controller.SetEnabled(false);
  EXPECT_FALSE(controller.SetOperationEvent(new OperationEvent(data, nullptr, nullptr, "dropped")));
  EXPECT_EQ(controller.GetUndoCount(), 0u);
  EXPECT_NE(UndoController::GetInstance(), nullptr);
}

TEST(UndoControllerTest, EventKeepsItsDataActorAlive)
{
  UndoController controller;
  {
    CounterData::Pointer data = CounterData::New();
    SetThroughUndo(controller, data, 5, "five");
  }
  // The data object is held by the event: undo reaches a live object.
  EXPECT_TRUE(controller.Undo());
}

TEST(UIDGeneratorTest, LengthPrefixAndUniqueness)
{
  UIDGenerator generator("OBJECT_", 8);
  std::set<std::string> seen;
  for (int i = 0; i < 2000; ++i)
  {
    const std::string uid = generator.GetUID();
    ASSERT_EQ(uid.size(), 15u);
    ASSERT_EQ(uid.rfind("OBJECT_", 0), 0u);
    for (std::size_t c = 7; c < uid.size(); ++c)
    {
      ASSERT_TRUE(std::isalnum(static_cast<unsigned char>(uid[c]))) << uid;
    }
    ASSERT_TRUE(seen.insert(uid).second) << "repeated " << uid;
  }
  // Unique across generators too, even with a tiny space: 1 character of 62 gives 62 ids, all different.
  std::set<std::string> tiny;
  for (int i = 0; i < 62; ++i)
  {
    ASSERT_TRUE(tiny.insert(UIDGenerator("TINY_", 1).GetUID()).second);
  }
  EXPECT_EQ(UIDGenerator().GetUID().rfind("UID_", 0), 0u);
  EXPECT_EQ(UIDGenerator().GetUID().size(), 12u);
  EXPECT_EQ(UIDGenerator(nullptr, 5).GetUID().size(), 5u);
  EXPECT_THROW(UIDGenerator("X", 0), itk::InvalidArgumentError);
}

namespace
{
/** Runs the function with stderr redirected into a file and answers what was written. */
template <typename TFunction>
std::string
CaptureStderr(TFunction && function)
{
  lumotest::TemporaryDirectory directory;
  const std::string file = directory.File("stderr.txt");
  std::fflush(stderr);
  const int saved = ::dup(STDERR_FILENO);
  const int target = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  ::dup2(target, STDERR_FILENO);
  ::close(target);
  function();
  std::fflush(stderr);
  ::dup2(saved, STDERR_FILENO);
  ::close(saved);
  std::ifstream in(file);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}
} // namespace

TEST(ProgressBarTest, SilentWhenStderrIsNotATerminal)
{
  ProgressBar * bar = ProgressBar::GetInstance();
  bar->Reset();
  const std::string written = CaptureStderr([&] {
    EXPECT_FALSE(bar->IsDrawing()); // a file, not a terminal
    bar->AddStepsToDo(4);
    bar->Progress();
    EXPECT_EQ(bar->GetStepsDone(), 1u);
    EXPECT_EQ(bar->GetTotalSteps(), 4u);
    bar->Progress(2);
    bar->Progress(5); // at most the total; done: back to zero
  });
  EXPECT_EQ(written, "");
  EXPECT_EQ(bar->GetTotalSteps(), 0u);
  EXPECT_EQ(bar->GetStepsDone(), 0u);

  bar->SetQuiet(true);
  EXPECT_TRUE(bar->GetQuiet());
  EXPECT_FALSE(bar->IsDrawing());
  bar->SetQuiet(false);
}

TEST(LoggerTest, LinesLevelsAndSink)
{
  const std::string written = CaptureStderr([] {
    LUMO_INFO << "ArboCoreObjectFactory c'tor";
    LUMO_WARN << "odd spacing " << 0.5;
    LUMO_ERROR << "lumo::VesselTreeDataSerializer::Serialize"
               << " Object at 0x1 is not an lumo::VesselTreeData.";
    Logger::SetLevel(Logger::Level::Warning);
    LUMO_INFO << "dropped";
    LUMO_WARN << "kept";
    Logger::SetLevel(Logger::Level::Info);
  });
  EXPECT_EQ(written,
            "[info] ArboCoreObjectFactory c'tor\n"
            "[warning] odd spacing 0.5\n"
            "[error] lumo::VesselTreeDataSerializer::Serialize Object at 0x1 is not an lumo::VesselTreeData.\n"
            "[warning] kept\n");

  std::vector<std::pair<Logger::Level, std::string>> received;
  Logger::SetSink([&](Logger::Level level, const std::string & message) { received.emplace_back(level, message); });
  LUMO_ERROR << "to the sink " << 42;
  Logger::SetSink(nullptr);
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(received[0].first, Logger::Level::Error);
  EXPECT_EQ(received[0].second, "to the sink 42");
}

namespace
{
/** Captures the warning texts that ITK objects display. */
class CapturingOutputWindow : public itk::OutputWindow
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CapturingOutputWindow);

  using Self = CapturingOutputWindow;
  using Superclass = itk::OutputWindow;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CapturingOutputWindow, OutputWindow);

protected:
  CapturingOutputWindow() = default;
  ~CapturingOutputWindow() override = default;

public:
  void
  DisplayWarningText(const char * text) override
  {
    warnings.emplace_back(text);
  }
  std::vector<std::string> warnings;
};

/** A toolkit-style class that warns. */
class Warner : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Warner);

  using Self = Warner;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(Warner, Object);

protected:
  Warner() = default;
  ~Warner() override = default;

public:
  int
  Warn()
  {
    const int line = __LINE__ + 1;
    itkWarningMacro(<< "vessel map at timestep " << 0 << " is empty!");
    return line;
  }
};
} // namespace

TEST(ItkWarningFormatTest, ExactText)
{
  CapturingOutputWindow::Pointer window = CapturingOutputWindow::New();
  itk::OutputWindow::Pointer previous = itk::OutputWindow::GetInstance();
  itk::OutputWindow::SetInstance(window);
  const bool globalWarnings = itk::Object::GetGlobalWarningDisplay();
  itk::Object::GlobalWarningDisplayOn();

  Warner::Pointer warner = Warner::New();
  const int line = warner->Warn();

  std::ostringstream expected;
  expected << "WARNING: In " << __FILE__ << ", line " << line << "\n"
           << "Warner (" << static_cast<const void *>(warner.GetPointer()) << "): vessel map at timestep 0 is empty!"
           << "\n\n";
  ASSERT_EQ(window->warnings.size(), 1u);
  EXPECT_EQ(window->warnings[0], expected.str());

  // Only while global warnings are on.
  itk::Object::GlobalWarningDisplayOff();
  warner->Warn();
  EXPECT_EQ(window->warnings.size(), 1u);

  itk::Object::SetGlobalWarningDisplay(globalWarnings);
  itk::OutputWindow::SetInstance(previous);
}
