// One log message.

#include "lumoLogStream.h"

#include "lumoLogger.h"

namespace lumo
{
LogStream::LogStream(Logger::Level level)
  : m_Level(level)
  , m_Enabled(Logger::IsEnabled(level))
{}

LogStream::~LogStream()
{
  if (m_Enabled)
  {
    Logger::Write(m_Level, m_Stream.str());
  }
}
} // namespace lumo
