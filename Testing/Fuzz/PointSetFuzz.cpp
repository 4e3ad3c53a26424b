// libFuzzer entry for the point set file (.mps). A refused file says which file and why; an accepted point set,
// written and read again, has the same points and writes the same bytes.

#include "FuzzSupport.h"

#include "lumoPointSetIO.h"

#include <itkMacro.h>

#include <fstream>
#include <iterator>

namespace
{
lumo::PointSet::Pointer
readPoints(const std::string & path, std::string * refusal)
{
  try
  {
    return lumo::ReadPointSetFile(path);
  }
  catch (const itk::ExceptionObject & e)
  {
    *refusal = e.GetDescription();
  }
  return nullptr;
}

std::string
contents(const std::filesystem::path & path)
{
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool
samePoints(const lumo::PointSet & a, const lumo::PointSet & b)
{
  if (a.GetTimeSteps() != b.GetTimeSteps())
  {
    return false;
  }
  for (unsigned int t = 0; t < a.GetTimeSteps(); ++t)
  {
    if (a.GetPoints(t) != b.GetPoints(t))
    {
      return false;
    }
  }
  return true;
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  static const lumofuzz::ScratchFile scratch("mps-replay");
  scratch.Write(data, size);
  std::string refusal;
  return readPoints(scratch.Path(), &refusal).IsNotNull();
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  static const lumofuzz::ScratchFile scratch("mps-fuzz");
  static const lumofuzz::ScratchFolder folder;
  scratch.Write(data, size);
  std::string refusal;
  const lumo::PointSet::Pointer points = readPoints(scratch.Path(), &refusal);
  if (points.IsNull())
  {
    lumofuzz::require(lumofuzz::startsWith(refusal, "Could not read point set '" + scratch.Path() + "': ") ||
                      lumofuzz::startsWith(refusal, "Malformed point set file '" + scratch.Path() + "', line "));
    return 0;
  }

  const std::filesystem::path first = folder.Path() / "first.mps";
  const std::filesystem::path second = folder.Path() / "second.mps";
  lumo::WritePointSetFile(points, first.string());
  std::string ignored;
  const lumo::PointSet::Pointer reread = readPoints(first.string(), &ignored);
  lumofuzz::require(reread.IsNotNull() && samePoints(*points, *reread));
  lumo::WritePointSetFile(reread, second.string());
  lumofuzz::require(contents(first) == contents(second));
  return 0;
}
