#ifndef arboError_h
#define arboError_h

#include <stdexcept>
#include <string>

namespace arbo
{
/** Bad input or failed work on a file: reported as "arbo: <file>: <what>" with exit status 1. */
class Error : public std::runtime_error
{
public:
  Error(std::string file, const std::string & what)
    : std::runtime_error(what)
    , m_File(std::move(file))
  {}
  const std::string &
  file() const
  {
    return m_File;
  }

private:
  std::string m_File;
};
} // namespace arbo

#endif
