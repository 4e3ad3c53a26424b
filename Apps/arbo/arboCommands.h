#ifndef arboCommands_h
#define arboCommands_h

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace arbo
{
/** What every command gets: its output streams and the global options. */
struct Context
{
  std::ostream & out;
  std::ostream & err;
  bool quiet{ false };
  /** The command line as given (the program name first); the display commands re-run it under Xvfb. */
  std::vector<std::string> arguments;
  /** Exit status of a command that ran a child process (0 otherwise). */
  int status{ 0 };
};

/** Each command registers its subcommand, options and action with the application. */
void
addInfoCommand(CLI::App & app, Context & context);
void
addConvertCommand(CLI::App & app, Context & context);
void
addLabelCommand(CLI::App & app, Context & context);
void
addSupplyCommand(CLI::App & app, Context & context);
void
addPhantomCommand(CLI::App & app, Context & context);
void
addCompareCommand(CLI::App & app, Context & context);
void
addExtractCommand(CLI::App & app, Context & context);
void
addRenderCommand(CLI::App & app, Context & context);
void
addViewCommand(CLI::App & app, Context & context);
void
addResectCommand(CLI::App & app, Context & context);
void
addSceneCommand(CLI::App & app, Context & context);
void
addSurfaceCommand(CLI::App & app, Context & context);
} // namespace arbo

#endif
