#include "lumoVesselTreeToVesselTreeFilter.h"

namespace lumo
{
VesselTreeToVesselTreeFilter::VesselTreeToVesselTreeFilter() = default;

VesselTreeToVesselTreeFilter::~VesselTreeToVesselTreeFilter() = default;

void
VesselTreeToVesselTreeFilter::SetInput(const InputType * input)
{
  this->SetInput(0, input);
}

void
VesselTreeToVesselTreeFilter::SetInput(DataObjectPointerArraySizeType index, const InputType * input)
{
  if (index + 1 > this->GetNumberOfIndexedInputs())
  {
    this->SetNumberOfIndexedInputs(index + 1);
  }
  this->SetNthInput(index, const_cast<InputType *>(input));
}

const VesselTreeToVesselTreeFilter::InputType *
VesselTreeToVesselTreeFilter::GetInput()
{
  return this->GetInput(0);
}

const VesselTreeToVesselTreeFilter::InputType *
VesselTreeToVesselTreeFilter::GetInput(DataObjectPointerArraySizeType index)
{
  if (index >= this->GetNumberOfIndexedInputs())
  {
    return nullptr;
  }
  return dynamic_cast<const InputType *>(this->ProcessObject::GetInput(index));
}
} // namespace lumo
