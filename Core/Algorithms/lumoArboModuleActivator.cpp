#include "lumoArboModuleActivator.h"

#include "lumoArboCoreObjectFactory.h"
#include "lumoArboModule.h"

namespace lumo
{
void
ArboModuleActivator::Load()
{
  RegisterArboCoreObjectFactory();
}

const ModuleInfo &
ArboModuleActivator::GetModuleInfo() const
{
  return GetArboModuleInfo();
}
} // namespace lumo
