#ifndef lumoModuleActivator_h
#define lumoModuleActivator_h

#include "lumoModuleInfo.h"

/** The name under which a module exports its activator: an extern "C" function without arguments that returns the
 *  module's ModuleActivator (one object per process, owned by the module). ModuleLoader looks it up after loading
 *  the shared object; a shared object without it is not a module. */
#define LUMO_MODULE_ACTIVATOR_SYMBOL "_us_module_activator_instance_"

namespace lumo
{
/** The entry point of a module: what ModuleLoader calls once the module's shared object is loaded. A plain
 *  interface (it is implemented by a module's own activator, not made through factories). */
class ModuleActivator
{
public:
  ModuleActivator(const ModuleActivator &) = delete;
  ModuleActivator &
  operator=(const ModuleActivator &) = delete;
  virtual ~ModuleActivator() = default;

  /** Registers the module's factories with the toolkit. Called on every load of the module, so it must do its work
   *  once per process and do nothing on later calls. */
  virtual void
  Load() = 0;

  /** The module's record (one per process). */
  virtual const ModuleInfo &
  GetModuleInfo() const = 0;

protected:
  ModuleActivator() = default;
};

/** The type of the exported activator function. */
using ModuleActivatorFunction = ModuleActivator * (*)();
} // namespace lumo

#endif
