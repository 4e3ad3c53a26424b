#include "lumoVesselTreeDataSerializerFactory.h"

#include "lumoVesselTreeDataSerializer.h"

#include <itkVersion.h>

#include <mutex>

namespace lumo
{
VesselTreeDataSerializerFactory::VesselTreeDataSerializerFactory()
{
  this->RegisterOverride("VesselTreeDataSerializer",
                         "VesselTreeDataSerializer",
                         "Serializer of vessel tree data for the toolkit's scene format",
                         true,
                         itk::CreateObjectFunction<VesselTreeDataSerializer>::New());
}

VesselTreeDataSerializerFactory::~VesselTreeDataSerializerFactory() = default;

const char *
VesselTreeDataSerializerFactory::GetITKSourceVersion() const
{
  return ITK_SOURCE_VERSION;
}

const char *
VesselTreeDataSerializerFactory::GetDescription() const
{
  return "Serializer of vessel tree data for the toolkit's scene format";
}

void
VesselTreeDataSerializerFactory::RegisterOneFactory()
{
  static std::once_flag once;
  std::call_once(once, [] { itk::ObjectFactoryBase::RegisterFactory(Self::New()); });
}
} // namespace lumo
