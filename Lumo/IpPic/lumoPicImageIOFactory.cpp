#include "lumoPicImageIOFactory.h"

#include "lumoPicImageIO.h"

#include "itkCreateObjectFunction.h"
#include "itkVersion.h"

namespace lumo
{
PicImageIOFactory::PicImageIOFactory()
{
  this->RegisterOverride("itkImageIOBase",
                         "lumoPicImageIO",
                         "Lumo Pic image IO (.pic, .pic.gz)",
                         true,
                         itk::CreateObjectFunction<PicImageIO>::New());
}

PicImageIOFactory::~PicImageIOFactory() = default;

const char *
PicImageIOFactory::GetITKSourceVersion() const
{
  return ITK_SOURCE_VERSION;
}

const char *
PicImageIOFactory::GetDescription() const
{
  return "Lumo Pic image IO factory: reads and writes .pic and .pic.gz files";
}

void
PicImageIOFactory::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
}
} // namespace lumo
