#include "lumoResectionProposalSource.h"

namespace lumo
{
ResectionProposalSource::ResectionProposalSource()
{
  this->SetNumberOfRequiredOutputs(2);
  this->SetNthOutput(0, this->MakeOutput(0));
  this->SetNthOutput(1, this->MakeOutput(1));
}

ResectionProposalSource::~ResectionProposalSource() = default;

Image *
ResectionProposalSource::GetResectionImage()
{
  return dynamic_cast<Image *>(this->GetOutput(0));
}

Surface *
ResectionProposalSource::GetResectionSurface(unsigned int i)
{
  if (i + 1 >= this->GetNumberOfIndexedOutputs())
  {
    return nullptr;
  }
  return dynamic_cast<Surface *>(this->GetOutput(i + 1));
}

unsigned int
ResectionProposalSource::GetNumberOfResectionSurfaces() const
{
  const auto outputs = static_cast<unsigned int>(this->GetNumberOfIndexedOutputs());
  return outputs > 0 ? outputs - 1 : 0;
}

itk::DataObject::Pointer
ResectionProposalSource::MakeOutput(DataObjectPointerArraySizeType index)
{
  if (index == 0)
  {
    return Image::New().GetPointer();
  }
  return Surface::New().GetPointer();
}

void
ResectionProposalSource::GraftOutput(Image * graft)
{
  this->GraftNthOutput(0, graft);
}

void
ResectionProposalSource::GraftNthOutput(DataObjectPointerArraySizeType index, itk::DataObject * graft)
{
  if (graft == nullptr || index >= this->GetNumberOfIndexedOutputs())
  {
    return;
  }
  if (itk::DataObject * output = this->GetOutput(index))
  {
    output->Graft(graft);
  }
}

void
ResectionProposalSource::GenerateOutputRequestedRegion(itk::DataObject *)
{
  for (DataObjectPointerArraySizeType i = 0; i < this->GetNumberOfIndexedOutputs(); ++i)
  {
    if (itk::DataObject * output = this->GetOutput(i))
    {
      output->SetRequestedRegionToLargestPossibleRegion();
    }
  }
}
} // namespace lumo
