#ifndef lumoFileNames_h
#define lumoFileNames_h

// Small helpers for file names, used by the readers and writers of the toolkit.

#include <algorithm>
#include <cctype>
#include <string>

namespace lumo
{
/** Whether name ends with suffix, ignoring ASCII case. */
inline bool
EndsWithNoCase(const std::string & name, const std::string & suffix)
{
  if (suffix.size() > name.size())
  {
    return false;
  }
  return std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  });
}

/** The file name without its directory ("a/b/c.nii.gz" -> "c.nii.gz"). */
inline std::string
GetFileNameWithoutDirectory(const std::string & path)
{
  const std::string::size_type slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

/** The directory of a path without the trailing separator ("a/b/c.vtp" -> "a/b", "c.vtp" -> ""). */
inline std::string
GetDirectoryOfPath(const std::string & path)
{
  const std::string::size_type slash = path.find_last_of("/\\");
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

/** The extension of the file name, lower case, with its dot; the double extensions .nii.gz, .pic.gz, .seq.gz and
 *  .gipl.gz count as one ("a/B.NII.GZ" -> ".nii.gz", "c.vtp" -> ".vtp", "noext" -> ""). */
inline std::string
GetFileExtension(const std::string & path)
{
  const std::string name = GetFileNameWithoutDirectory(path);
  for (const char * twofold : { ".nii.gz", ".pic.gz", ".seq.gz", ".gipl.gz" })
  {
    if (EndsWithNoCase(name, twofold) && name.size() > std::string(twofold).size())
    {
      return twofold;
    }
  }
  const std::string::size_type dot = name.find_last_of('.');
  if (dot == std::string::npos || dot == 0)
  {
    return std::string();
  }
  std::string extension = name.substr(dot);
  std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) {
    return static_cast<char>(std::tolower(c));
  });
  return extension;
}

/** The file name without directory and extension ("a/b/liver.nii.gz" -> "liver"). */
inline std::string
GetFileNameWithoutExtension(const std::string & path)
{
  const std::string name = GetFileNameWithoutDirectory(path);
  const std::string extension = GetFileExtension(name);
  return name.substr(0, name.size() - extension.size());
}
} // namespace lumo

#endif
