#include "arboAtomicFile.h"

#include "arboError.h"

#include "lumoTemporaryFileGuard.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <vector>
#include <unistd.h>

namespace arbo
{
namespace
{
std::string
temporaryPathBeside(const std::string & target)
{
  static std::atomic<unsigned> counter{ 0 };
  const std::filesystem::path path(target);
  const std::string name =
    ".arbo-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-" + path.filename().string();
  return (path.parent_path() / name).string();
}

/** Header formats whose voxels go to a second file that the header names: the pair must be written under the
 *  final names, or the header would name a temporary file. */
bool
hasDetachedData(const std::string & target)
{
  const std::string ending = formatExtension(target);
  return ending == ".mhd" || ending == ".nhdr" || ending == ".hdr";
}

/** Writes a header and its data file into a staging folder beside the target under their final names, then moves
 *  the data file(s) and last the header into place, so that the header never names a file that is not there. */
void
writeWithDetachedData(const std::string & target, const std::function<void(const std::string &)> & writer)
{
  const std::filesystem::path destination(target);
  const std::filesystem::path staging(temporaryPathBeside(target));
  std::error_code ec;
  if (!std::filesystem::create_directory(staging, ec))
  {
    throw Error(target, "cannot be written (" + ec.message() + ")");
  }
  // The data file's name is the writer's choice; list the names the header formats use, so that an interrupt
  // removes whatever was written before the folder itself.
  const std::filesystem::path stem = destination.stem();
  std::vector<std::unique_ptr<lumo::TemporaryFileGuard>> guards;
  guards.push_back(std::make_unique<lumo::TemporaryFileGuard>(staging.string(), true));
  guards.push_back(std::make_unique<lumo::TemporaryFileGuard>((staging / destination.filename()).string()));
  for (const char * data : { ".raw", ".zraw", ".raw.gz", ".img", ".img.gz" })
  {
    guards.push_back(std::make_unique<lumo::TemporaryFileGuard>((staging / (stem.string() + data)).string()));
  }
  try
  {
    writer((staging / destination.filename()).string());
    const lumo::TemporaryFileGuard::DeferInterrupts defer;
    for (const auto & entry : std::filesystem::directory_iterator(staging))
    {
      if (entry.path().filename() != destination.filename())
      {
        std::filesystem::rename(entry.path(), destination.parent_path() / entry.path().filename());
      }
    }
    std::filesystem::rename(staging / destination.filename(), destination);
  }
  catch (const std::filesystem::filesystem_error & error)
  {
    std::filesystem::remove_all(staging, ec);
    throw Error(target, std::string("cannot be written (") + error.code().message() + ")");
  }
  catch (...)
  {
    std::filesystem::remove_all(staging, ec);
    throw;
  }
  std::filesystem::remove_all(staging, ec);
}
} // namespace

void
writeAtomically(const std::string & target, const std::function<void(const std::string & temporaryPath)> & writer)
{
  const std::filesystem::path parent = std::filesystem::path(target).parent_path();
  std::error_code ec;
  if (!parent.empty() && !std::filesystem::is_directory(parent, ec))
  {
    throw Error(target, "the folder " + parent.string() + " does not exist");
  }
  if (std::filesystem::is_directory(target, ec))
  {
    throw Error(target, "is a folder, not a file");
  }
  if (hasDetachedData(target))
  {
    lumo::TemporaryFileGuard::InstallSignalHandlers();
    writeWithDetachedData(target, writer);
    return;
  }
  const std::string temporary = temporaryPathBeside(target);
  // An interrupt while writing removes the temporary file; the target is untouched until the rename.
  lumo::TemporaryFileGuard::InstallSignalHandlers();
  const lumo::TemporaryFileGuard guard(temporary);
  try
  {
    writer(temporary);
  }
  catch (...)
  {
    std::filesystem::remove(temporary, ec);
    throw;
  }
  if (std::rename(temporary.c_str(), target.c_str()) != 0)
  {
    const std::string reason = std::strerror(errno);
    std::filesystem::remove(temporary, ec);
    throw Error(target, "cannot be written (" + reason + ")");
  }
}

std::string
formatExtension(const std::string & path)
{
  std::string name = std::filesystem::path(path).filename().string();
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  for (const char * compressed : { ".nii.gz", ".pic.gz", ".seq.gz" })
  {
    const std::string ending(compressed);
    if (name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0)
    {
      return ending;
    }
  }
  const auto dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot);
}
} // namespace arbo
