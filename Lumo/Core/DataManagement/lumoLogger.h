#ifndef lumoLogger_h
#define lumoLogger_h

// The toolkit's logging: information, warning and error lines.
//
//   LUMO_INFO << "ArboCoreObjectFactory c'tor";        // stderr: "[info] ArboCoreObjectFactory c'tor"
//   LUMO_WARN << "odd spacing " << spacing;            // stderr: "[warning] odd spacing ..."
//   LUMO_ERROR << "cannot serialize " << name;         // stderr: "[error] cannot serialize ..."
//
// One message is one line (the stream collects the pieces and hands them over when the statement ends).
// Messages below the level set with Logger::SetLevel are dropped; Logger::SetSink redirects the messages,
// for instance into a test's buffer. Thread-safe.

#include <functional>
#include <ostream>
#include <sstream>
#include <string>

namespace lumo
{
class Logger
{
public:
  enum class Level
  {
    Info = 0,
    Warning = 1,
    Error = 2,
  };

  /** Receives each message that passes the level, without a line end. */
  using Sink = std::function<void(Level, const std::string &)>;

  /** Messages of a lower level are dropped. Default: Info (everything). */
  static void
  SetLevel(Level minimum);
  static Level
  GetLevel();

  /** Replaces the output; an empty sink restores the default (stderr, "[level] message" lines). */
  static void
  SetSink(Sink sink);

  /** Whether a message of that level would be passed on. */
  static bool
  IsEnabled(Level level);

  /** Passes one message on (when its level is enabled). */
  static void
  Write(Level level, const std::string & message);

  /** "info", "warning" or "error". */
  static const char *
  GetLevelName(Level level);

  /** The line the default sink writes: "[" + level name + "] " + message. */
  static std::string
  FormatLine(Level level, const std::string & message);
};

} // namespace lumo

// LogStream needs Logger::Level, the macros need LogStream: it comes after the class.
#include "lumoLogStream.h"

#define LUMO_INFO ::lumo::LogStream(::lumo::Logger::Level::Info)
#define LUMO_WARN ::lumo::LogStream(::lumo::Logger::Level::Warning)
#define LUMO_ERROR ::lumo::LogStream(::lumo::Logger::Level::Error)

#endif
