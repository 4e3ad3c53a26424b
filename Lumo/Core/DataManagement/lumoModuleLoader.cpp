#include "lumoModuleLoader.h"

#include "lumoModuleActivator.h"

#include <itkMacro.h>

#include <dlfcn.h>

#include <exception>

namespace lumo
{
namespace
{
[[noreturn]] void
ThrowLoadError(const std::string & description)
{
  throw itk::ExceptionObject(__FILE__, __LINE__, description, ITK_LOCATION);
}

std::string
LastLinkerError()
{
  const char * text = dlerror();
  return text ? text : "unknown error";
}
} // namespace

ModuleLoader::ModuleLoader() = default;

// The handles are not closed: see the class comment.
ModuleLoader::~ModuleLoader() = default;

ModuleInfo
ModuleLoader::Load(const std::string & path)
{
  if (path.empty())
  {
    ThrowLoadError("ModuleLoader: no module path given");
  }
  // dlerror's text belongs to the calling thread, but the list of modules does not.
  std::lock_guard<std::mutex> lock(m_Mutex);
  dlerror();
  void * handle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (handle == nullptr)
  {
    ThrowLoadError("ModuleLoader: cannot load '" + path + "': " + LastLinkerError());
  }
  for (const auto & module : m_Modules)
  {
    if (module.Handle == handle)
    {
      // dlopen counted a second reference; one per module is enough.
      dlclose(handle);
      return module.Info;
    }
  }

  void * symbol = dlsym(handle, LUMO_MODULE_ACTIVATOR_SYMBOL);
  if (symbol == nullptr)
  {
    dlclose(handle);
    ThrowLoadError("ModuleLoader: '" + path + "' is not a module: it has no symbol " LUMO_MODULE_ACTIVATOR_SYMBOL);
  }
  // POSIX guarantees that a data pointer from dlsym converts to a function pointer.
  const auto activatorFunction = reinterpret_cast<ModuleActivatorFunction>(symbol);
  ModuleActivator * activator = activatorFunction();
  if (activator == nullptr)
  {
    dlclose(handle);
    ThrowLoadError("ModuleLoader: the activator of '" + path + "' returned no module");
  }
  try
  {
    activator->Load();
  }
  catch (const itk::ExceptionObject & e)
  {
    ThrowLoadError("ModuleLoader: loading the module '" + path + "' failed: " + e.GetDescription());
  }
  catch (const std::exception & e)
  {
    ThrowLoadError("ModuleLoader: loading the module '" + path + "' failed: " + e.what());
  }
  // After a failed Load() the handle stays open: part of the module may be registered already.
  m_Modules.push_back({ handle, activator->GetModuleInfo() });
  this->Modified();
  return m_Modules.back().Info;
}

std::vector<ModuleInfo>
ModuleLoader::GetLoadedModules() const
{
  std::lock_guard<std::mutex> lock(m_Mutex);
  std::vector<ModuleInfo> records;
  for (const auto & module : m_Modules)
  {
    records.push_back(module.Info);
  }
  return records;
}

void
ModuleLoader::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Modules: " << this->GetLoadedModules().size() << '\n';
  for (const auto & info : this->GetLoadedModules())
  {
    os << indent.GetNextIndent() << info.GetName() << ' ' << info.GetVersion() << " (" << info.GetLocation() << ")\n";
  }
}
} // namespace lumo
