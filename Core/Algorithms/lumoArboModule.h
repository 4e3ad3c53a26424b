#ifndef lumoArboModule_h
#define lumoArboModule_h

// The module's record and its activator function, which ModuleLoader looks up by name.

#include "lumoModuleActivator.h"
#include "lumoModuleInfo.h"

namespace lumo
{
/** The record of this module: name "LumoArbo", location the path of the shared object that holds the module,
 *  dependencies "LumoExt Segmentation lumoIpPic VesselLib SceneSerialization LegacyAdaptors Lumo", version the
 *  project's version. Made on the first call, once per process even when several threads ask at once; later calls
 *  return the same object. */
const ModuleInfo &
GetArboModuleInfo();
} // namespace lumo

/** The module's activator (one per process): its Load() calls lumo::RegisterArboCoreObjectFactory(), its
 *  GetModuleInfo() answers lumo::GetArboModuleInfo(). */
extern "C" __attribute__((visibility("default"))) lumo::ModuleActivator *
_us_module_activator_instance_();

#endif
