#include "arboVesselTreeFile.h"

#include "arboAtomicFile.h"
#include "arboError.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <locale>

namespace arbo
{
ArVesselTree
readVesselTreeFile(const std::string & path)
{
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec))
  {
    throw Error(path, "is a folder, not a file");
  }
  std::ifstream file(path);
  if (!file)
  {
    throw Error(path, std::string("cannot be opened (") + std::strerror(errno) + ")");
  }
  file.imbue(std::locale::classic());
  ArVesselTree tree(new LinkedVesselTree());
  tree->read(file);
  if (file.fail())
  {
    throw Error(path, "is not a valid vessel tree file (malformed or truncated text)");
  }
  return tree;
}

void
writeVesselTreeFile(const std::string & path, const ArVesselTree & tree)
{
  writeAtomically(path, [&](const std::string & temporary) {
    std::ofstream file(temporary);
    if (!file)
    {
      throw Error(path, std::string("cannot be written (") + std::strerror(errno) + ")");
    }
    file.imbue(std::locale::classic());
    tree->write(file);
    file.close();
    if (file.fail())
    {
      throw Error(path, "cannot be written (write error)");
    }
  });
}
} // namespace arbo
