#include "lumoVesselTreeSource.h"

namespace lumo
{
VesselTreeSource::VesselTreeSource()
{
  this->SetNumberOfRequiredOutputs(1);
  this->SetNthOutput(0, this->MakeOutput(0));
}

VesselTreeSource::~VesselTreeSource() = default;

itk::DataObject::Pointer
VesselTreeSource::MakeOutput(DataObjectPointerArraySizeType)
{
  return VesselTreeData::New().GetPointer();
}

VesselTreeSource::OutputType *
VesselTreeSource::GetOutput()
{
  return this->GetOutput(0);
}

VesselTreeSource::OutputType *
VesselTreeSource::GetOutput(DataObjectPointerArraySizeType index)
{
  return dynamic_cast<OutputType *>(this->ProcessObject::GetOutput(index));
}

void
VesselTreeSource::SetOutput(OutputType * output)
{
  this->SetNthOutput(0, output);
}

void
VesselTreeSource::GraftOutput(OutputType * graft)
{
  if (this->GetNumberOfIndexedOutputs() == 0 || graft == nullptr)
  {
    return;
  }
  OutputType * output = this->GetOutput(0);
  if (output != nullptr)
  {
    output->Graft(graft);
  }
}
} // namespace lumo
