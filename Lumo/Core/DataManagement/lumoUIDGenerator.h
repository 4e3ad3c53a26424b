#ifndef lumoUIDGenerator_h
#define lumoUIDGenerator_h

#include <string>

namespace lumo
{
/** Makes ids of the form prefix + `length` random characters from [0-9A-Za-z], for instance "UID_a8Zk03Qx".
 *  Every id handed out in this process is different from every other one handed out by any generator (a
 *  process-wide register of issued ids; thread-safe). */
class UIDGenerator
{
public:
  /** A null prefix counts as empty. Throws itk::InvalidArgumentError for a length of 0. */
  explicit UIDGenerator(const char * prefix = "UID_", unsigned int length = 8);

  /** A new id, never handed out before in this process. */
  std::string
  GetUID();

  const std::string &
  GetPrefix() const
  {
    return m_Prefix;
  }
  unsigned int
  GetLength() const
  {
    return m_Length;
  }

private:
  std::string m_Prefix;
  unsigned int m_Length;
};
} // namespace lumo

#endif
