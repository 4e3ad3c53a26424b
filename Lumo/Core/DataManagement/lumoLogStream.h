#ifndef lumoLogStream_h
#define lumoLogStream_h

#include "lumoLogger.h"

#include <ostream>
#include <sstream>
#include <string>

namespace lumo
{
/** Collects one message and writes it when destroyed (at the end of the full statement). */
class LogStream
{
public:
  explicit LogStream(Logger::Level level);
  ~LogStream();
  LogStream(const LogStream &) = delete;
  LogStream &
  operator=(const LogStream &) = delete;

  template <typename T>
  LogStream &
  operator<<(const T & value)
  {
    if (m_Enabled)
    {
      m_Stream << value;
    }
    return *this;
  }

  LogStream &
  operator<<(std::ostream & (*manipulator)(std::ostream &))
  {
    if (m_Enabled)
    {
      manipulator(m_Stream);
    }
    return *this;
  }

private:
  Logger::Level m_Level;
  bool m_Enabled;
  std::ostringstream m_Stream;
};
} // namespace lumo

#endif
