#include "lumoVesselTreeFileIOFactory.h"

#include "lumoIOAdapter.h"
#include "lumoVesselTreeFileReader.h"

#include <itkVersion.h>

#include <mutex>

namespace lumo
{
VesselTreeFileIOFactory::VesselTreeFileIOFactory()
{
  this->RegisterOverride("lumoIOAdapter",
                         "lumoVesselTreeFileReader",
                         "lumo Ves VesselTree IO",
                         true,
                         itk::CreateObjectFunction<IOAdapter<VesselTreeFileReader>>::New());
}

VesselTreeFileIOFactory::~VesselTreeFileIOFactory() = default;

const char *
VesselTreeFileIOFactory::GetITKSourceVersion() const
{
  return ITK_SOURCE_VERSION;
}

const char *
VesselTreeFileIOFactory::GetDescription() const
{
  return "lumo Ves VesselTree IO";
}

void
VesselTreeFileIOFactory::RegisterOneFactory()
{
  static std::once_flag once;
  std::call_once(once, [] { itk::ObjectFactoryBase::RegisterFactory(VesselTreeFileIOFactory::New()); });
}
} // namespace lumo
