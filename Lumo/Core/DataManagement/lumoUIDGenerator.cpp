// Unique ids.

#include "lumoUIDGenerator.h"

#include <itkMacro.h>

#include <chrono>
#include <mutex>
#include <random>
#include <unistd.h>
#include <unordered_set>

namespace lumo
{
namespace
{
std::mutex &
UIDMutex()
{
  static std::mutex mutex;
  return mutex;
}

std::unordered_set<std::string> &
IssuedUIDs()
{
  static std::unordered_set<std::string> issued;
  return issued;
}

std::mt19937_64 &
UIDEngine()
{
  static std::mt19937_64 engine = [] {
    std::random_device device;
    std::seed_seq seed{ static_cast<std::uint64_t>(device()),
                        static_cast<std::uint64_t>(device()),
                        static_cast<std::uint64_t>(
                          std::chrono::high_resolution_clock::now().time_since_epoch().count()),
                        static_cast<std::uint64_t>(::getpid()) };
    return std::mt19937_64(seed);
  }();
  return engine;
}
} // namespace

UIDGenerator::UIDGenerator(const char * prefix, unsigned int length)
  : m_Prefix(prefix ? prefix : "")
  , m_Length(length)
{
  if (length == 0)
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "UIDGenerator: the length of the random part must be > 0",
                                    "lumo::UIDGenerator::UIDGenerator");
  }
}

std::string
UIDGenerator::GetUID()
{
  static const char alphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  std::lock_guard<std::mutex> lock(UIDMutex());
  std::uniform_int_distribution<int> pick(0, static_cast<int>(sizeof(alphabet)) - 2);
  for (;;)
  {
    std::string uid = m_Prefix;
    uid.reserve(m_Prefix.size() + m_Length);
    for (unsigned int i = 0; i < m_Length; ++i)
    {
      uid += alphabet[pick(UIDEngine())];
    }
    if (IssuedUIDs().insert(uid).second)
    {
      return uid;
    }
  }
}
} // namespace lumo
