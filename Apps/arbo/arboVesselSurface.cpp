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
  auto filter = lumo::LabelImageSurfaceFilter::New();
  filter->SetInput(mask);
  // The mapper gives the labelled triangles normals of its own.
  filter->ComputeNormalsOff();
  filter->Update();
  // A mask other than 0/1 (an 8-bit label map without --label) has several values: one surface of all of them.
  lumo::Surface::Pointer surface = filter->GetOutput(0);
  if (filter->GetNumberOfIndexedOutputs() > 1)
  {
    throw Error(path, "has several labels; choose the vessels' one with --label");
  }
  return surface;
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
