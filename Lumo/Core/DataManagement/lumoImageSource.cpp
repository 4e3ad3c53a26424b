// Base of the image sources.

#include "lumoImageSource.h"

namespace lumo
{
ImageSource::ImageSource()
{
  this->SetNumberOfRequiredOutputs(1);
  this->SetNthOutput(0, this->MakeOutput(0));
}

itk::DataObject::Pointer
ImageSource::MakeOutput(DataObjectPointerArraySizeType)
{
  return Image::New().GetPointer();
}

Image *
ImageSource::GetOutput()
{
  return dynamic_cast<Image *>(this->GetPrimaryOutput());
}

Image *
ImageSource::GetOutput(DataObjectPointerArraySizeType index)
{
  return dynamic_cast<Image *>(this->itk::ProcessObject::GetOutput(index));
}

void
ImageSource::GraftOutput(Image * graft)
{
  this->GraftNthOutput(0, graft);
}

void
ImageSource::GraftNthOutput(DataObjectPointerArraySizeType index, Image * graft)
{
  Image * output = this->GetOutput(index);
  if (output && graft)
  {
    output->Graft(graft);
  }
}

void
ImageSource::GenerateData()
{}
} // namespace lumo
