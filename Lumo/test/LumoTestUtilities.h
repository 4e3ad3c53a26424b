#ifndef LumoTestUtilities_h
#define LumoTestUtilities_h

#include <chrono>
#include <filesystem>
#include <random>
#include <string>

namespace lumotest
{
/** A fresh directory under the system's temporary directory, removed with its content on destruction. */
class TemporaryDirectory
{
public:
  TemporaryDirectory()
  {
    std::random_device device;
    std::mt19937_64 engine(device() ^
                           static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
    for (;;)
    {
      m_Path = std::filesystem::temp_directory_path() / ("lumo-test-" + std::to_string(engine()));
      if (std::filesystem::create_directory(m_Path))
      {
        break;
      }
    }
  }
  ~TemporaryDirectory()
  {
    std::error_code error;
    std::filesystem::remove_all(m_Path, error);
  }
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &
  operator=(const TemporaryDirectory &) = delete;

  const std::filesystem::path &
  Path() const
  {
    return m_Path;
  }
  /** The path of a file in the directory, as a string. */
  std::string
  File(const std::string & name) const
  {
    return (m_Path / name).string();
  }

private:
  std::filesystem::path m_Path;
};
} // namespace lumotest

#endif
