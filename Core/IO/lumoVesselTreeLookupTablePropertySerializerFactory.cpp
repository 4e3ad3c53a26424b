#include "lumoVesselTreeLookupTablePropertySerializerFactory.h"

#include "lumoVesselTreeLookupTablePropertySerializer.h"

#include <itkVersion.h>

#include <mutex>

namespace lumo
{
VesselTreeLookupTablePropertySerializerFactory::VesselTreeLookupTablePropertySerializerFactory()
{
  this->RegisterOverride("VesselTreeLookupTablePropertySerializer",
                         "VesselTreeLookupTablePropertySerializer",
                         "Serializer of the vessel tree lookup table property",
                         true,
                         itk::CreateObjectFunction<VesselTreeLookupTablePropertySerializer>::New());
}

VesselTreeLookupTablePropertySerializerFactory::~VesselTreeLookupTablePropertySerializerFactory() = default;

const char *
VesselTreeLookupTablePropertySerializerFactory::GetITKSourceVersion() const
{
  return ITK_SOURCE_VERSION;
}

const char *
VesselTreeLookupTablePropertySerializerFactory::GetDescription() const
{
  return "Serializer of the vessel tree lookup table property";
}

void
VesselTreeLookupTablePropertySerializerFactory::RegisterOneFactory()
{
  static std::once_flag once;
  std::call_once(once, [] { itk::ObjectFactoryBase::RegisterFactory(Self::New()); });
}
} // namespace lumo
