#include "lumoResectionProposalGeneratorBase.h"

namespace lumo
{
ResectionProposalGeneratorBase::ResectionProposalGeneratorBase() = default;

ResectionProposalGeneratorBase::~ResectionProposalGeneratorBase() = default;

void
ResectionProposalGeneratorBase::SetInput(DataObjectPointerArraySizeType index, BaseData * input)
{
  // SetNthInput marks the process object modified only when the input changes.
  this->SetNthInput(index, input);
}

BaseData *
ResectionProposalGeneratorBase::GetInput()
{
  if (this->GetNumberOfIndexedInputs() < 1)
  {
    return nullptr;
  }
  return this->GetInput(0);
}

BaseData *
ResectionProposalGeneratorBase::GetInput(DataObjectPointerArraySizeType index)
{
  if (index >= this->GetNumberOfIndexedInputs())
  {
    return nullptr;
  }
  return dynamic_cast<BaseData *>(this->itk::ProcessObject::GetInput(index));
}

void
ResectionProposalGeneratorBase::SetOrganSegmentation(Image * organ)
{
  this->SetInput(0, organ);
}

Image *
ResectionProposalGeneratorBase::GetOrganSegmentation()
{
  return dynamic_cast<Image *>(this->GetInput(0));
}

void
ResectionProposalGeneratorBase::SetSafetyMargin(Image * margin)
{
  this->SetInput(1, margin);
}

Image *
ResectionProposalGeneratorBase::GetSafetyMargin()
{
  return dynamic_cast<Image *>(this->GetInput(1));
}
} // namespace lumo
