// libFuzzer entry for interaction pattern files. A file is checked whole before anything of it is registered: a
// refused one names itself and a line and leaves the factory as it was; an accepted one gives every type a start
// state among its states, and loading it a second time is refused (a type name loads once) without changing the
// factory.

#include "FuzzSupport.h"

#include "lumoStateMachineFactory.h"

#include <itkMacro.h>

namespace
{
const std::string SourceName = "fuzz.xml";

/** Loads the text into the factory; the exception's description, or "" when it was accepted. */
std::string
load(lumo::StateMachineFactory & factory, const std::string & text)
{
  try
  {
    factory.LoadString(text, SourceName);
    return "";
  }
  catch (const itk::ExceptionObject & e)
  {
    const std::string description = e.GetDescription();
    lumofuzz::require(!description.empty());
    return description;
  }
}

bool
refusalNamesTheFile(const std::string & description)
{
  return lumofuzz::startsWith(description, "Malformed interaction pattern file '" + SourceName + "', line ") ||
         lumofuzz::startsWith(description, "Could not read interaction pattern file '" + SourceName + "': ");
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  lumo::StateMachineFactory factory;
  return load(factory, std::string(reinterpret_cast<const char *>(data), size)).empty();
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  const std::string text(reinterpret_cast<const char *>(data), size);
  lumo::StateMachineFactory factory;
  const std::string refusal = load(factory, text);
  if (!refusal.empty())
  {
    lumofuzz::require(refusalNamesTheFile(refusal));
    lumofuzz::require(factory.GetTypeNames().empty());
    return 0;
  }

  const std::vector<std::string> types = factory.GetTypeNames();
  for (const std::string & type : types)
  {
    const lumo::State * start = factory.GetStartState(type);
    lumofuzz::require(start != nullptr);
    const std::vector<const lumo::State *> states = factory.GetStates(type);
    lumofuzz::require(!states.empty());
    bool startIsAState = false;
    for (const lumo::State * state : states)
    {
      startIsAState = startIsAState || state == start;
    }
    lumofuzz::require(startIsAState);
  }
  if (!types.empty())
  {
    const std::string second = load(factory, text);
    lumofuzz::require(refusalNamesTheFile(second));
    lumofuzz::require(factory.GetTypeNames() == types);
  }
  return 0;
}
