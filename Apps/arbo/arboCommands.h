#ifndef arboCommands_h
#define arboCommands_h

#include <functional>
#include <iosfwd>

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
} // namespace arbo

#endif
