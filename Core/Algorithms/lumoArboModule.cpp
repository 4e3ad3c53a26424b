// Registration happens when ModuleLoader calls the activator, not in a static initialiser of this library: the
// library is also linked into programs (arbo, the tests) that have not asked for the factory, and a static
// initialiser would change the default properties of their nodes and log on every start. A program that links the
// module calls lumo::RegisterArboCoreObjectFactory() itself; that function registers once, so a program that
// links the module and also loads it (once or twice) still has one factory.

#include "lumoArboModule.h"

#include "lumoArboModuleActivator.h"

namespace lumo
{
const ModuleInfo &
GetArboModuleInfo()
{
  // A function-local static is initialised exactly once; concurrent callers wait for that initialisation.
  static const ModuleInfo info("LumoArbo",
                               ModuleInfo::GetLocationOfAddress(reinterpret_cast<const void *>(&GetArboModuleInfo)),
                               "LumoExt Segmentation lumoIpPic VesselLib SceneSerialization LegacyAdaptors Lumo",
                               LUMOARBO_VERSION);
  return info;
}
} // namespace lumo

extern "C" lumo::ModuleActivator *
_us_module_activator_instance_()
{
  static lumo::ArboModuleActivator activator;
  return &activator;
}
