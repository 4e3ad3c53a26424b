#include "lumoResectionProposalDescriptorPropertySerializerFactory.h"

#include "lumoResectionProposalDescriptorPropertySerializer.h"

#include <itkVersion.h>

#include <mutex>

namespace lumo
{
ResectionProposalDescriptorPropertySerializerFactory::ResectionProposalDescriptorPropertySerializerFactory()
{
  this->RegisterOverride("ResectionProposalDescriptorPropertySerializer",
                         "ResectionProposalDescriptorPropertySerializer",
                         "Serializer of the resection proposal descriptor property",
                         true,
                         itk::CreateObjectFunction<ResectionProposalDescriptorPropertySerializer>::New());
}

ResectionProposalDescriptorPropertySerializerFactory::~ResectionProposalDescriptorPropertySerializerFactory() = default;

const char *
ResectionProposalDescriptorPropertySerializerFactory::GetITKSourceVersion() const
{
  return ITK_SOURCE_VERSION;
}

const char *
ResectionProposalDescriptorPropertySerializerFactory::GetDescription() const
{
  return "Serializer of the resection proposal descriptor property";
}

void
ResectionProposalDescriptorPropertySerializerFactory::RegisterOneFactory()
{
  static std::once_flag once;
  std::call_once(once, [] { itk::ObjectFactoryBase::RegisterFactory(Self::New()); });
}
} // namespace lumo
