#include "lumoModuleInfo.h"

#include <dlfcn.h>

#include <sstream>
#include <utility>

namespace lumo
{
ModuleInfo::ModuleInfo(std::string name, std::string location, std::string dependencies, std::string version)
  : m_Name(std::move(name))
  , m_Location(std::move(location))
  , m_Dependencies(std::move(dependencies))
  , m_Version(std::move(version))
{}

std::vector<std::string>
ModuleInfo::GetDependencyList() const
{
  std::vector<std::string> names;
  std::istringstream stream(m_Dependencies);
  std::string name;
  while (stream >> name)
  {
    names.push_back(name);
  }
  return names;
}

std::string
ModuleInfo::GetLocationOfAddress(const void * address)
{
  Dl_info info{};
  if (address == nullptr || dladdr(address, &info) == 0 || info.dli_fname == nullptr)
  {
    return "";
  }
  return info.dli_fname;
}
} // namespace lumo
