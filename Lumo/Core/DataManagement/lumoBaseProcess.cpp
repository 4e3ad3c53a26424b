// Base of the process objects.

#include "lumoBaseProcess.h"

#include "lumoBaseData.h"

namespace lumo
{
BaseProcess::BaseProcess() = default;

BaseProcess::~BaseProcess() = default;

void
BaseProcess::ResizeOutputs(DataObjectPointerArraySizeType count)
{
  const DataObjectPointerArraySizeType previous = this->GetNumberOfIndexedOutputs();
  this->SetNumberOfIndexedOutputs(count);
  for (DataObjectPointerArraySizeType index = previous; index < count; ++index)
  {
    this->SetNthOutput(index, this->MakeOutput(index));
  }
}

BaseData *
BaseProcess::GetOutputData(DataObjectPointerArraySizeType index)
{
  return dynamic_cast<BaseData *>(this->GetOutput(index));
}
} // namespace lumo
