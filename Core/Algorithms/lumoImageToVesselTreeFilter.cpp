#include "lumoImageToVesselTreeFilter.h"

namespace lumo
{
ImageToVesselTreeFilter::ImageToVesselTreeFilter()
{
  this->SetNumberOfRequiredInputs(1);
}

ImageToVesselTreeFilter::~ImageToVesselTreeFilter() = default;

void
ImageToVesselTreeFilter::SetInput(const Image * image)
{
  this->SetInput(0, image);
}

void
ImageToVesselTreeFilter::SetInput(DataObjectPointerArraySizeType index, const Image * image)
{
  this->SetNthInput(index, const_cast<Image *>(image));
}

const Image *
ImageToVesselTreeFilter::GetInput(DataObjectPointerArraySizeType index)
{
  if (index >= this->GetNumberOfIndexedInputs())
  {
    return nullptr;
  }
  return dynamic_cast<const Image *>(this->ProcessObject::GetInput(index));
}
} // namespace lumo
