#include "arboFiles.h"

#include "VesselIdRenumbering.h"

#include "arboAtomicFile.h"
#include "arboError.h"

#include "lumoDataNodeFactory.h"
#include "lumoImageIO.h"
#include "lumoPointSet.h"
#include "lumoSurfaceIO.h"
#include "lumoVesselTreeFileIOFactory.h"
#include "lumoVesselTreeFileWriter.h"
#include "lumoVesselTreePolyDataWriter.h"

#include <itkImageFileReader.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <vector>

namespace arbo
{
namespace
{
const char * const readableTypes =
  ".ves, .nrrd, .nhdr, .nii, .nii.gz, .mhd, .mha, .pic, .pic.gz, .vtp, .vtk, .stl, .obj, .mps";

/** One line from an ITK exception: without the "ITK ERROR: Class(address): " (or "itk::ERROR: ...") prefix, and
 *  for the multi-line reports of some image libraries, the first line with the last one (the cause) behind it. */
std::string
plainDescription(const itk::ExceptionObject & e)
{
  std::string text = e.GetDescription();
  for (const char * prefix : { "ITK ERROR: ", "itk::ERROR: " })
  {
    const auto marker = text.find("): ");
    if (text.rfind(prefix, 0) == 0 && marker != std::string::npos)
    {
      text = text.substr(marker + 3);
    }
  }
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
  {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r'))
    {
      line.pop_back();
    }
    if (!line.empty())
    {
      lines.push_back(line);
    }
  }
  if (lines.empty())
  {
    return "unknown error";
  }
  if (lines.size() == 1)
  {
    return lines.front();
  }
  std::string cause = lines.back();
  const auto tag = cause.find("] ");
  if (cause.rfind("[", 0) == 0 && tag != std::string::npos)
  {
    cause = cause.substr(tag + 2);
  }
  return lines.front() + " " + cause;
}

void
requireReadableFile(const std::string & path)
{
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec))
  {
    throw Error(path, "is a folder, not a file");
  }
  std::ifstream probe(path);
  if (!probe)
  {
    throw Error(path, std::string("cannot be opened (") + std::strerror(errno) + ")");
  }
}
} // namespace

void
registerFileTypes()
{
  static std::once_flag once;
  std::call_once(once, [] { lumo::VesselTreeFileIOFactory::RegisterOneFactory(); });
}

std::string
kindOf(const lumo::BaseData * data)
{
  if (dynamic_cast<const lumo::VesselTreeData *>(data) != nullptr)
  {
    return "vessel tree";
  }
  if (dynamic_cast<const lumo::Image *>(data) != nullptr)
  {
    return "image";
  }
  if (dynamic_cast<const lumo::Surface *>(data) != nullptr)
  {
    return "surface";
  }
  if (dynamic_cast<const lumo::PointSet *>(data) != nullptr)
  {
    return "point set";
  }
  return "data";
}

lumo::BaseData::Pointer
readData(const std::string & path)
{
  registerFileTypes();
  requireReadableFile(path);
  if (!lumo::DataNodeFactory::CanReadFile(path))
  {
    throw Error(path, "unsupported file type '" + formatExtension(path) + "' (readable: " + readableTypes + ")");
  }
  auto factory = lumo::DataNodeFactory::New();
  factory->SetFileName(path);
  try
  {
    factory->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    if (formatExtension(path) == ".ves")
    {
      throw Error(path, "is not a valid vessel tree file (malformed or truncated text)");
    }
    // The toolkit's image messages name the file, which the error names already.
    std::string description = plainDescription(e);
    const std::string named = "Could not read image '" + path + "': ";
    if (description.rfind(named, 0) == 0)
    {
      description.erase(0, named.size());
    }
    throw Error(path, description);
  }
  lumo::DataNode * node = factory->GetOutput();
  if (node == nullptr || node->GetData() == nullptr)
  {
    throw Error(path, "holds no data");
  }
  return node->GetData();
}

lumo::VesselTreeData::Pointer
readVesselTree(const std::string & path, std::ostream * notes)
{
  lumo::BaseData::Pointer data = readData(path);
  auto * tree = dynamic_cast<lumo::VesselTreeData *>(data.GetPointer());
  if (tree == nullptr)
  {
    throw Error(path, "holds " + kindOf(data) + ", not a vessel tree");
  }
  const ArVesselTree legacy = tree->GetVesselTreeData(0);
  const VesselIdRenumbering::Report ids = VesselIdRenumbering::inspect(legacy);
  if (ids.needsRenumbering())
  {
    VesselIdRenumbering::renumberInPreorder(legacy);
    tree->TopologyModified();
    if (notes != nullptr)
    {
      *notes << "arbo: " << path << ": note: vessel ids renumbered 1.." << ids.vessels << " in pre-order ("
             << ids.duplicates << " repeated, " << ids.collisions << " clashing in the 16 bits of the supply areas)";
      if (ids.vessels > 65535)
      {
        *notes << "; more than 65535 vessels cannot all be told apart in supply areas";
      }
      *notes << "\n";
    }
  }
  return tree;
}

void
writeData(lumo::BaseData * data, const std::string & path)
{
  registerFileTypes();
  const std::string extension = formatExtension(path);
  std::function<void(const std::string &)> write;
  if (auto * tree = dynamic_cast<lumo::VesselTreeData *>(data))
  {
    if (extension == ".ves")
    {
      write = [tree](const std::string & file) {
        auto writer = lumo::VesselTreeFileWriter::New();
        writer->SetInputVesselTree(tree);
        writer->SetFileName(file.c_str());
        writer->Update();
      };
    }
    else if (extension == ".vtp")
    {
      write = [tree](const std::string & file) {
        auto writer = lumo::VesselTreePolyDataWriter::New();
        writer->SetInputData(tree);
        writer->SetFileName(file.c_str());
        writer->Update();
      };
    }
  }
  else if (auto * image = dynamic_cast<lumo::Image *>(data))
  {
    if (lumo::CanWriteImageFile(path))
    {
      write = [image](const std::string & file) { lumo::WriteImageFile(image, file, true); };
    }
  }
  else if (auto * surface = dynamic_cast<lumo::Surface *>(data))
  {
    if (lumo::CanWriteSurfaceFile(path))
    {
      write = [surface](const std::string & file) { lumo::WriteSurfaceFile(surface, file); };
    }
  }
  if (!write)
  {
    const std::string kind = kindOf(data);
    std::string supported = "none";
    if (kind == "vessel tree")
    {
      supported = ".ves, .vtp";
    }
    else if (kind == "image")
    {
      supported = ".nrrd, .nii, .nii.gz, .mhd, .mha, .pic, .pic.gz";
    }
    else if (kind == "surface")
    {
      supported = ".vtp, .vtk, .stl, .obj";
    }
    throw Error(path,
                "cannot write " + std::string(kind == "image" ? "an " : "a ") + kind + " as '" + extension +
                  "' (supported: " + supported + ")");
  }
  writeAtomically(path, [&](const std::string & temporary) {
    try
    {
      write(temporary);
    }
    catch (const itk::ExceptionObject & e)
    {
      throw Error(path, "cannot be written (" + plainDescription(e) + ")");
    }
  });
}
} // namespace arbo
