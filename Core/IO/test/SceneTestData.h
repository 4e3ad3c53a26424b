// Small data objects and file helpers for the scene tests.
#ifndef SceneTestData_h
#define SceneTestData_h

#include "lumoDataStorage.h"
#include "lumoImage.h"
#include "lumoImageAccess.h"
#include "lumoPointSet.h"
#include "lumoSurface.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeFileReader.h"

#include <itkImage.h>
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace scenetest
{
inline lumo::Image::Pointer
MakeImage()
{
  using ItkImage = itk::Image<unsigned char, 3>;
  ItkImage::Pointer image = ItkImage::New();
  ItkImage::SizeType size{ { 4, 3, 2 } };
  image->SetRegions(size);
  const double spacing[3] = { 0.5, 0.75, 2.0 };
  image->SetSpacing(spacing);
  const double origin[3] = { 1.0, -2.0, 3.0 };
  image->SetOrigin(origin);
  image->Allocate();
  unsigned char value = 0;
  for (unsigned char * p = image->GetBufferPointer(); p != image->GetBufferPointer() + 24; ++p)
  {
    *p = value++;
  }
  return lumo::ImportItkImage(image.GetPointer());
}

inline lumo::Surface::Pointer
MakeSurface()
{
  vtkNew<vtkPoints> points;
  points->InsertNextPoint(0, 0, 0);
  points->InsertNextPoint(1, 0, 0);
  points->InsertNextPoint(0, 1, 0);
  points->InsertNextPoint(0, 0, 1);
  vtkNew<vtkCellArray> polys;
  const vtkIdType triangles[4][3] = { { 0, 1, 2 }, { 0, 1, 3 }, { 0, 2, 3 }, { 1, 2, 3 } };
  for (const auto & triangle : triangles)
  {
    polys->InsertNextCell(3, triangle);
  }
  vtkNew<vtkPolyData> polyData;
  polyData->SetPoints(points);
  polyData->SetPolys(polys);
  lumo::Surface::Pointer surface = lumo::Surface::New();
  surface->SetVtkPolyData(polyData);
  return surface;
}

inline lumo::PointSet::Pointer
MakePointSet()
{
  lumo::PointSet::Pointer pointSet = lumo::PointSet::New();
  lumo::Point3D p;
  p[0] = 1.5;
  p[1] = -2.25;
  p[2] = 10.0;
  pointSet->InsertPoint(0, p);
  p[0] = 4.0;
  pointSet->InsertPoint(7, p);
  return pointSet;
}

inline lumo::VesselTreeData::Pointer
MakeTree()
{
  lumo::VesselTreeFileReader::Pointer reader = lumo::VesselTreeFileReader::New();
  reader->SetFileName((std::string(LUMO_TEST_DATA_DIR) + "/sample-portal.ves").c_str());
  reader->Update();
  lumo::VesselTreeData::Pointer tree = reader->GetOutput();
  tree->DisconnectPipeline();
  return tree;
}

inline lumo::DataNode::Pointer
MakeNode(lumo::BaseData * data, const std::string & name = "")
{
  lumo::DataNode::Pointer node = lumo::DataNode::New();
  node->SetData(data);
  if (!name.empty())
  {
    node->SetName(name);
  }
  return node;
}

inline std::string
ReadText(const std::filesystem::path & path)
{
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void
WriteText(const std::filesystem::path & path, const std::string & text)
{
  std::ofstream out(path, std::ios::binary);
  out << text;
}

/** Every entry of a directory tree with its bytes (for "nothing changed" checks). */
inline std::map<std::string, std::string>
Snapshot(const std::filesystem::path & directory)
{
  std::map<std::string, std::string> files;
  for (const auto & entry : std::filesystem::recursive_directory_iterator(directory))
  {
    const std::string relative = std::filesystem::relative(entry.path(), directory).string();
    files[relative] = entry.is_regular_file() ? ReadText(entry.path()) : std::string("<dir>");
  }
  return files;
}

/** The names of a directory's entries. */
inline std::set<std::string>
Entries(const std::filesystem::path & directory)
{
  std::set<std::string> names;
  for (const auto & entry : std::filesystem::directory_iterator(directory))
  {
    names.insert(entry.path().filename().string());
  }
  return names;
}
} // namespace scenetest

#endif
