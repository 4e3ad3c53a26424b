#ifndef lumoModuleInfo_h
#define lumoModuleInfo_h

#include <string>
#include <vector>

namespace lumo
{
/** What a module tells the toolkit about itself: its name ("LumoArbo"), its location (the path of the shared object
 *  that holds it, as the dynamic linker found it), the names of the modules it depends on (one string, names
 *  separated by single spaces) and its version ("0.1.0").
 *
 *  A plain value: modules keep one record each (see ModuleActivator) and ModuleLoader hands out copies. */
class ModuleInfo
{
public:
  ModuleInfo() = default;
  ModuleInfo(std::string name, std::string location, std::string dependencies, std::string version);

  const std::string &
  GetName() const
  {
    return m_Name;
  }
  const std::string &
  GetLocation() const
  {
    return m_Location;
  }
  const std::string &
  GetDependencies() const
  {
    return m_Dependencies;
  }
  const std::string &
  GetVersion() const
  {
    return m_Version;
  }

  /** The dependency string split at spaces, empty names dropped: "Lumo  VesselLib" -> {"Lumo", "VesselLib"}. */
  std::vector<std::string>
  GetDependencyList() const;

  /** The path of the shared object (or executable) that contains the address, "" when the dynamic linker knows
   *  none. A module passes the address of one of its own objects to fill its location. */
  static std::string
  GetLocationOfAddress(const void * address);

private:
  std::string m_Name;
  std::string m_Location;
  std::string m_Dependencies;
  std::string m_Version;
};
} // namespace lumo

#endif
