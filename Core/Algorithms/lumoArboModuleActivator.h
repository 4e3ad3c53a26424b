#ifndef lumoArboModuleActivator_h
#define lumoArboModuleActivator_h

#include "lumoModuleActivator.h"

namespace lumo
{
/** The activator of this module, handed to ModuleLoader by _us_module_activator_instance_() (lumoArboModule.h).
 *  Load() registers the module's core object factory (RegisterArboCoreObjectFactory, which does nothing when the
 *  factory is registered already); GetModuleInfo() is GetArboModuleInfo(). A plain ModuleActivator, not an
 *  itk::Object: it is the module's entry point and exists once, inside the module. */
class ArboModuleActivator : public ModuleActivator
{
public:
  ArboModuleActivator() = default;
  ~ArboModuleActivator() override = default;

  void
  Load() override;
  const ModuleInfo &
  GetModuleInfo() const override;
};
} // namespace lumo

#endif
