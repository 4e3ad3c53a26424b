#include "lumoCalyxSceneIOReaderFactory.h"

#include "lumoIOAdapter.h"
#include "lumoCalyxSceneFileReader.h"

#include <itkVersion.h>

#include <mutex>

namespace lumo
{
CalyxSceneIOReaderFactory::CalyxSceneIOReaderFactory()
{
  this->RegisterOverride("lumoIOAdapter",
                         "lumoCalyxSceneFileReader",
                         "lumo CalyxScene IO",
                         true,
                         itk::CreateObjectFunction<IOAdapter<CalyxSceneFileReader>>::New());
}

CalyxSceneIOReaderFactory::~CalyxSceneIOReaderFactory() = default;

const char *
CalyxSceneIOReaderFactory::GetITKSourceVersion() const
{
  return ITK_SOURCE_VERSION;
}

const char *
CalyxSceneIOReaderFactory::GetDescription() const
{
  return "CalyxSceneFile IO Factory, stupidly wraps the Calyx scene loading for lumoIOAdapter";
}

void
CalyxSceneIOReaderFactory::RegisterOneFactory()
{
  static std::once_flag once;
  std::call_once(once, [] { itk::ObjectFactoryBase::RegisterFactory(CalyxSceneIOReaderFactory::New()); });
}
} // namespace lumo
