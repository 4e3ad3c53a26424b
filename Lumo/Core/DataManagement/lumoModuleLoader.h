#ifndef lumoModuleLoader_h
#define lumoModuleLoader_h

#include "lumoModuleInfo.h"

#include <itkObject.h>
#include <itkObjectFactory.h>

#include <mutex>
#include <string>
#include <vector>

namespace lumo
{
/** Loads modules: shared objects that export a ModuleActivator under LUMO_MODULE_ACTIVATOR_SYMBOL.
 *
 *  Load(path) opens the file with dlopen(path, RTLD_NOW | RTLD_GLOBAL) (every symbol resolved at once, so a module
 *  with a missing dependency fails here and not later in the middle of some call; its symbols are visible to
 *  modules loaded after it), looks up the activator, calls its Load() and returns the module's record. A path
 *  without a '/' is searched like any library (LD_LIBRARY_PATH, the system's directories).
 *
 *  The same shared object loaded again (by the same or another path: the dynamic linker compares the files) gives
 *  the record it gave the first time, without calling the activator again. Modules stay loaded until the process
 *  ends: the toolkit keeps objects made by their code (factories, writers, properties), which must not lose their
 *  code.
 *
 *  Errors are itk::ExceptionObject with these descriptions. A file that is no module is closed again; a module whose
 *  activator threw stays loaded (part of it may be registered already) but is not listed, and loading it again calls
 *  its activator again:
 *    "ModuleLoader: no module path given"
 *    "ModuleLoader: cannot load '<path>': <the dynamic linker's message>"
 *    "ModuleLoader: '<path>' is not a module: it has no symbol _us_module_activator_instance_"
 *    "ModuleLoader: the activator of '<path>' returned no module"
 *    "ModuleLoader: loading the module '<path>' failed: <what the activator threw>"
 *  Thread-safe. */
class ModuleLoader : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ModuleLoader);

  using Self = ModuleLoader;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(ModuleLoader, itk::Object);

  /** Loads the module (see above) and returns its record. */
  ModuleInfo
  Load(const std::string & path);

  /** The records of the modules loaded by this loader, in loading order. */
  std::vector<ModuleInfo>
  GetLoadedModules() const;

protected:
  ModuleLoader();
  ~ModuleLoader() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  struct LoadedModule
  {
    void * Handle;
    ModuleInfo Info;
  };

  mutable std::mutex m_Mutex;
  std::vector<LoadedModule> m_Modules{};
};
} // namespace lumo

#endif
