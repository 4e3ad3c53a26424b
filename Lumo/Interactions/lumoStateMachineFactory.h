#ifndef lumoStateMachineFactory_h
#define lumoStateMachineFactory_h

#include "lumoEventMapper.h"
#include "lumoState.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo
{
/** Loads interaction pattern files (XML, docs/interaction.md): the event table, which goes into the factory's
 *  EventMapper, and state machine types, each a set of states with one start state, looked up by the type's name.
 *
 *  A file is checked completely before anything of it is registered: a malformed file throws itk::ExceptionObject
 *  with the description "Malformed interaction pattern file '<file>', line <n>: <what>" (or "Could not read
 *  interaction pattern file '<file>': <why>" when it cannot be read) and leaves the factory as it was. Event
 *  definitions may repeat identically across files; a type name can be loaded only once. Types are never
 *  unloaded, so states stay valid as long as the factory lives: state machines use GetInstance(), which lives
 *  for the process and has the shipped patterns (LumoInteraction.xml, embedded in the library) loaded.
 *  Further factories can be made for checking files. Not thread-safe (one user-interface thread). */
class StateMachineFactory
{
public:
  StateMachineFactory() = default;
  StateMachineFactory(const StateMachineFactory &) = delete;
  StateMachineFactory &
  operator=(const StateMachineFactory &) = delete;

  /** The application's factory, with the shipped patterns loaded on first use. */
  static StateMachineFactory *
  GetInstance();

  /** The text of the shipped pattern file, LumoInteraction.xml (embedded at build time). */
  static const char *
  GetShippedPatterns();
  /** The name the shipped patterns are loaded under (what error messages would name). */
  static const char *
  GetShippedPatternsName();

  /** Loads a pattern file; at most MaximumFileSize bytes. Throws as described above. */
  void
  LoadFile(const std::string & fileName);
  /** Loads pattern text; `sourceName` stands for the file name in messages. Throws as described above. */
  void
  LoadString(const std::string & text, const std::string & sourceName);

  static constexpr std::size_t MaximumFileSize = 1 << 20;

  /** Whether a state machine type of that name is loaded. */
  bool
  HasType(const std::string & typeName) const;
  /** The names of the loaded types, sorted. */
  std::vector<std::string>
  GetTypeNames() const;
  /** The start state of the type; null for an unknown type. */
  const State *
  GetStartState(const std::string & typeName) const;
  /** The named state of the type; null when there is none. */
  const State *
  GetState(const std::string & typeName, const std::string & stateName) const;
  /** The states of the type in the order of the file; empty for an unknown type. */
  std::vector<const State *>
  GetStates(const std::string & typeName) const;

  /** The event table of every file loaded. */
  const EventMapper &
  GetEventMapper() const
  {
    return m_EventMapper;
  }

  /** One loaded type: its states (owned, in file order) and the start state. */
  struct StateMachineType
  {
    std::vector<std::unique_ptr<State>> states;
    const State * startState{ nullptr };
  };

private:
  std::map<std::string, StateMachineType> m_Types;
  EventMapper m_EventMapper;
};
} // namespace lumo

#endif
