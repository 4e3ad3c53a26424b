#ifndef lumoProgressBar_h
#define lumoProgressBar_h

namespace lumo
{
/** The process-wide progress indicator. Long operations announce their steps with AddStepsToDo and report them
 *  with Progress; when all announced steps are done the bar finishes its line and starts again from zero.
 *  The bar is drawn on stderr ("\r[#####.....]  50%") only when stderr is a terminal and quiet mode is off;
 *  otherwise the counting goes on silently (command-line tools in pipelines and tests stay clean). */
class ProgressBar
{
public:
  static ProgressBar *
  GetInstance();

  /** Adds steps to the total to do. */
  void
  AddStepsToDo(unsigned int steps);

  /** Marks steps as done (at most up to the total). */
  void
  Progress(unsigned int steps = 1);

  /** Forgets all steps; a drawn bar is finished with a line end. */
  void
  Reset();

  /** Quiet mode: never draw. */
  void
  SetQuiet(bool quiet);
  bool
  GetQuiet() const;

  /** Whether the bar would be drawn now (stderr is a terminal and quiet mode is off). */
  bool
  IsDrawing() const;

  unsigned int
  GetTotalSteps() const;
  unsigned int
  GetStepsDone() const;

  ProgressBar(const ProgressBar &) = delete;
  ProgressBar &
  operator=(const ProgressBar &) = delete;

private:
  ProgressBar() = default;
  void
  Draw();

  unsigned int m_TotalSteps{ 0 };
  unsigned int m_StepsDone{ 0 };
  int m_LastPercent{ -1 };
  bool m_Quiet{ false };
  bool m_LineOpen{ false };
};
} // namespace lumo

#endif
