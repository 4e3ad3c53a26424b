#ifndef LumoTestUtilities_h
#define LumoTestUtilities_h

#include <lumoGeometry3D.h>

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
/** Points, vectors and a direction matrix in one line each. */
inline lumo::Point3D
P(double x, double y, double z)
{
  lumo::Point3D p;
  p[0] = x;
  p[1] = y;
  p[2] = z;
  return p;
}

inline lumo::Vector3D
V(double x, double y, double z)
{
  lumo::Vector3D v;
  v[0] = x;
  v[1] = y;
  v[2] = z;
  return v;
}

/** Rotation by 90 degrees about z: x -> y, y -> -x. */
inline lumo::Geometry3D::DirectionType
RotationZ90()
{
  lumo::Geometry3D::DirectionType d;
  d.Fill(0.0);
  d[0][1] = -1.0;
  d[1][0] = 1.0;
  d[2][2] = 1.0;
  return d;
}
} // namespace lumotest

#endif
