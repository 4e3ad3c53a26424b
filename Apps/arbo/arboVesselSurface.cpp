#include "arboVesselSurface.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboFiles.h"
#include "arboMasks.h"

#include "lumoLabelImageSurfaceFilter.h"
#include "lumoSurfaceBasedVesselTreeMapper3D.h"

#include <vtkPolyData.h>

namespace arbo
{
std::string
takeVesselMask(std::vector<std::string> & files)
{
  for (auto file = files.begin(); file != files.end(); ++file)
  {
    const std::string ending = formatExtension(*file);
    if (isSceneFile(*file) || ending == ".ves" || ending == ".vtp" || ending == ".mps")
    {
      continue;
    }
    lumo::BaseData::Pointer data = readData(*file);
    if (dynamic_cast<lumo::Image *>(data.GetPointer()) != nullptr)
    {
      const std::string mask = *file;
      files.erase(file);
      return mask;
    }
  }
  throw Error("", "--vessel-surface: no vessel mask among the files (give the mask, an image, and one vessel tree)");
}

lumo::Surface::Pointer
vesselMaskSurface(const std::string & path, const std::optional<long> & label)
{
  lumo::BaseData::Pointer data = readData(path);
  auto * image = dynamic_cast<lumo::Image *>(data.GetPointer());
  if (image == nullptr)
  {
    throw Error(path, "is a " + kindOf(data) + ", not a vessel mask");
  }
  std::size_t voxels = 0;
  lumo::Image::Pointer mask = binaryMaskOf(image, path, label, voxels);
  if (voxels == 0)
  {
    throw Error(path, "is empty (every voxel is 0): no vessel surface to draw");
  }
  if (mask.GetPointer() == image)
  {
    // An 8-bit image comes back as it is, with whatever values it holds: every one but 0 is vessel.
    mask = lumo::Image::New();
    mask->Initialize(
      image->GetPixelType(), image->GetSize(), image->GetSpacing(), image->GetOrigin(), image->GetDirection());
    const auto * in = static_cast<const unsigned char *>(image->GetData());
    auto * out = static_cast<unsigned char *>(mask->GetData());
    for (std::size_t i = 0, n = image->GetNumberOfVoxels(); i < n; ++i)
    {
      out[i] = in[i] != 0 ? 1 : 0;
    }
  }
  auto filter = lumo::LabelImageSurfaceFilter::New();
  filter->SetInput(mask);
  // The mapper gives the labelled triangles normals of its own.
  filter->ComputeNormalsOff();
  filter->Update();
  return filter->GetOutput(0);
}

void
showVesselSurface(Scene & scene, lumo::Surface * surface)
{
  if (scene.trees.size() != 1)
  {
    throw Error("",
                "--vessel-surface colours the mask by the vessels of one tree; " + std::to_string(scene.trees.size()) +
                  (scene.trees.size() == 1 ? " tree was" : " trees were") + " given");
  }
  lumo::DataNode * node = scene.trees.front();
  auto mapper = lumo::SurfaceBasedVesselTreeMapper3D::New();
  mapper->SetDataNode(node);
  mapper->SetInputSurface(surface);
  node->SetMapper(lumo::DataNode::Standard3D, mapper);
  node->SetBoolProperty("Render skeleton", false);
  node->SetBoolProperty("Render vessel surface", true);
  ++scene.surfaces;
}
} // namespace arbo
