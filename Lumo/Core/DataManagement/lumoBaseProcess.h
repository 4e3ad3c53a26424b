#ifndef lumoBaseProcess_h
#define lumoBaseProcess_h

#include "lumoCommon.h"

#include <itkProcessObject.h>

namespace lumo
{
class BaseData;

/** Base of every process object of the toolkit: sources, filters and readers. It is an itk::ProcessObject and
 *  keeps ITK's demand-driven (lazy) pipeline: Update() of an output, or of the process object, runs
 *  GenerateOutputInformation and GenerateData only when the process object or one of its inputs changed since
 *  the last run. Subclasses make their outputs in MakeOutput and usually create output 0 in their constructor.
 *
 *  Adds ResizeOutputs (new outputs made with MakeOutput), and typed helpers. */
class BaseProcess : public itk::ProcessObject
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(BaseProcess);

  using Self = BaseProcess;
  using Superclass = itk::ProcessObject;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(BaseProcess, itk::ProcessObject);

  /** Sets the number of indexed outputs; outputs that appear are made with MakeOutput(index). */
  virtual void
  ResizeOutputs(DataObjectPointerArraySizeType count);

  /** Output index as a BaseData (null when absent or of another class). */
  BaseData *
  GetOutputData(DataObjectPointerArraySizeType index = 0);

  using Superclass::MakeOutput;

protected:
  BaseProcess();
  ~BaseProcess() override;
};
} // namespace lumo

#endif
