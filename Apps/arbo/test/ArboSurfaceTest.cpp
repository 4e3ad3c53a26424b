#include "ArboTestSupport.h"

#include "lumoImage.h"
#include "lumoImageIO.h"

#include <vtkCellData.h>
#include <vtkFeatureEdges.h>
#include <vtkMassProperties.h>
#include <vtkOBJReader.h>
#include <vtkPLYReader.h>
#include <vtkPolyData.h>
#include <vtkSTLReader.h>
#include <vtkSmartPointer.h>
#include <vtkXMLPolyDataReader.h>

#include <cmath>
#include <map>

using namespace arbo_test;

namespace
{
/** Edges used by one triangle only (holes) or by more than two (non-manifold): 0 for a closed mesh. */
vtkIdType
openEdges(vtkPolyData * mesh)
{
  auto edges = vtkSmartPointer<vtkFeatureEdges>::New();
  edges->SetInputData(mesh);
  edges->BoundaryEdgesOn();
  edges->NonManifoldEdgesOn();
  edges->FeatureEdgesOff();
  edges->ManifoldEdgesOff();
  edges->Update();
  return edges->GetOutput()->GetNumberOfLines();
}

double
volumeOf(vtkPolyData * mesh)
{
  auto mass = vtkSmartPointer<vtkMassProperties>::New();
  mass->SetInputData(mesh);
  mass->Update();
  return mass->GetVolume();
}

/** Signed volume of the triangles tagged with the label (divergence theorem, one tetrahedron per triangle). */
double
labelVolume(vtkPolyData * mesh, int label)
{
  auto * tags = mesh->GetCellData()->GetArray("label");
  double volume = 0.0;
  for (vtkIdType cell = 0; cell < mesh->GetNumberOfCells(); ++cell)
  {
    if (static_cast<int>(tags->GetTuple1(cell)) != label)
    {
      continue;
    }
    double a[3], b[3], c[3];
    vtkIdType count = 0;
    const vtkIdType * corners = nullptr;
    mesh->GetCellPoints(cell, count, corners);
    mesh->GetPoint(corners[0], a);
    mesh->GetPoint(corners[1], b);
    mesh->GetPoint(corners[2], c);
    volume +=
      (a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) + a[2] * (b[0] * c[1] - b[1] * c[0])) /
      6.0;
  }
  return volume;
}

template <typename Reader>
vtkSmartPointer<vtkPolyData>
readMesh(const std::string & path)
{
  auto reader = vtkSmartPointer<Reader>::New();
  reader->SetFileName(path.c_str());
  reader->Update();
  return reader->GetOutput();
}

class ArboSurface : public ArboTest
{
protected:
  /** The small phantom's organ (1), portal (2) and hepatic (3) masks as one 16-bit label map, and the voxel
   *  volume of each label in mm3. */
  void
  SetUp() override
  {
    ASSERT_EQ(runArbo({ "phantom", "--out", path("phantom"), "--size", "small", "--seed", "1" }).status, 0);
    lumo::Image::Pointer organ = lumo::ReadImageFile(path("phantom/organ.nrrd"));
    lumo::Image::Pointer portal = lumo::ReadImageFile(path("phantom/portal.nrrd"));
    lumo::Image::Pointer hepatic = lumo::ReadImageFile(path("phantom/hepatic.nrrd"));
    labels = lumo::Image::New();
    labels->Initialize(
      itk::IOComponentEnum::SHORT, organ->GetSize(), organ->GetSpacing(), organ->GetOrigin(), organ->GetDirection());
    auto * out = static_cast<short *>(labels->GetData());
    const auto * o = static_cast<const unsigned char *>(organ->GetData());
    const auto * p = static_cast<const unsigned char *>(portal->GetData());
    const auto * h = static_cast<const unsigned char *>(hepatic->GetData());
    const lumo::Vector3D spacing = organ->GetSpacing();
    const double voxel = spacing[0] * spacing[1] * spacing[2];
    for (std::size_t i = 0; i < labels->GetNumberOfVoxels(); ++i)
    {
      out[i] = p[i] ? 2 : (h[i] ? 3 : (o[i] ? 1 : 0));
      if (out[i] != 0)
      {
        voxelVolume[out[i]] += voxel;
      }
    }
    lumo::WriteImageFile(labels, path("labels.nrrd"));
  }

  lumo::Image::Pointer labels;
  std::map<int, double> voxelVolume;
};
} // namespace

TEST_F(ArboSurface, OneClosedMeshPerLabelKeepingTheVoxelVolume)
{
  const ArboRun run = runArbo({ "surface", path("labels.nrrd"), "-o", path("mesh.stl") });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(files(), (std::vector<std::string>{ "labels.nrrd", "mesh-1.stl", "mesh-2.stl", "mesh-3.stl", "phantom" }));
  for (int label = 1; label <= 3; ++label)
  {
    vtkSmartPointer<vtkPolyData> mesh = readMesh<vtkSTLReader>(path("mesh-" + std::to_string(label) + ".stl"));
    ASSERT_GT(mesh->GetNumberOfPolys(), 1000) << label;
    EXPECT_EQ(openEdges(mesh), 0) << label;
    EXPECT_NEAR(volumeOf(mesh), voxelVolume[label], 0.01 * voxelVolume[label]) << label;
  }
  // World coordinates: the organ's mesh lies where its voxels lie, within half a voxel of the image's box.
  vtkSmartPointer<vtkPolyData> organ = readMesh<vtkSTLReader>(path("mesh-1.stl"));
  double bounds[6];
  organ->GetBounds(bounds);
  const lumo::Point3D origin = labels->GetOrigin();
  const lumo::Vector3D spacing = labels->GetSpacing();
  for (int axis = 0; axis < 3; ++axis)
  {
    EXPECT_GE(bounds[2 * axis], origin[axis] - 0.5 * spacing[axis]);
    EXPECT_LE(bounds[2 * axis + 1], origin[axis] + (labels->GetSize()[axis] - 0.5) * spacing[axis]);
  }
  EXPECT_NE(run.err.find("label 2: "), std::string::npos);
}

TEST_F(ArboSurface, VtpHoldsEveryLabelTaggedAndDecimationKeepsItClosedAndItsVolume)
{
  ASSERT_EQ(runArbo({ "surface", path("labels.nrrd"), "-o", path("full.vtp"), "-q" }).status, 0);
  const ArboRun run = runArbo({ "surface", path("labels.nrrd"), "-o", path("mesh.vtp"), "--decimate", "0.6" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(files(), (std::vector<std::string>{ "full.vtp", "labels.nrrd", "mesh.vtp", "phantom" }));
  vtkSmartPointer<vtkPolyData> full = readMesh<vtkXMLPolyDataReader>(path("full.vtp"));
  vtkSmartPointer<vtkPolyData> mesh = readMesh<vtkXMLPolyDataReader>(path("mesh.vtp"));
  ASSERT_NE(mesh->GetCellData()->GetArray("label"), nullptr);
  // Topology is kept, so thin vessels give up fewer triangles than asked for.
  EXPECT_LT(mesh->GetNumberOfPolys(), 0.5 * full->GetNumberOfPolys());
  EXPECT_EQ(openEdges(full), 0);
  EXPECT_EQ(openEdges(mesh), 0);
  for (int label = 1; label <= 3; ++label)
  {
    EXPECT_NEAR(labelVolume(mesh, label), voxelVolume[label], 0.01 * voxelVolume[label]) << label;
    EXPECT_NEAR(labelVolume(full, label), voxelVolume[label], 0.01 * voxelVolume[label]) << label;
  }
  double range[2];
  mesh->GetCellData()->GetArray("label")->GetRange(range);
  EXPECT_EQ(range[0], 1.0);
  EXPECT_EQ(range[1], 3.0);
}

TEST_F(ArboSurface, OneLabelGoesToTheFileAsNamedInObjAndPly)
{
  ASSERT_EQ(runArbo({ "surface", path("labels.nrrd"), "-o", path("portal.obj"), "--label", "2" }).status, 0);
  ASSERT_EQ(
    runArbo({ "surface", path("labels.nrrd"), "-o", path("organ.ply"), "--label", "1", "--smooth", "0" }).status, 0);
  EXPECT_EQ(files(), (std::vector<std::string>{ "labels.nrrd", "organ.ply", "phantom", "portal.obj" }));
  vtkSmartPointer<vtkPolyData> portal = readMesh<vtkOBJReader>(path("portal.obj"));
  vtkSmartPointer<vtkPolyData> organ = readMesh<vtkPLYReader>(path("organ.ply"));
  EXPECT_NEAR(volumeOf(portal), voxelVolume[2], 0.01 * voxelVolume[2]);
  EXPECT_NEAR(volumeOf(organ), voxelVolume[1], 0.01 * voxelVolume[1]);
  EXPECT_EQ(openEdges(organ), 0);
}

TEST_F(ArboSurface, BadInputsAreOneLineAndWriteNothing)
{
  writeFile(path("mesh-1.stl"), "earlier");
  const auto before = files();
  auto fails = [&](std::vector<std::string> arguments, const std::string & message) {
    const ArboRun run = runArbo(arguments);
    EXPECT_EQ(run.status, 1) << message;
    EXPECT_EQ(run.err, "arbo: " + message + "\n");
    EXPECT_EQ(files(), before) << message;
    EXPECT_EQ(readFile(path("mesh-1.stl")), "earlier") << message;
  };
  const std::string labelsFile = path("labels.nrrd");
  fails({ "surface", labelsFile, "-o", path("mesh.off") },
        path("mesh.off") +
          ": meshes are written as .vtp, .stl, .obj or .ply: give a file name with one of these endings");
  fails({ "surface", path("none.nrrd"), "-o", path("mesh.stl") },
        path("none.nrrd") + ": cannot be opened (No such file or directory)");
  fails({ "surface", path("phantom/truth-portal.ves"), "-o", path("mesh.stl") },
        path("phantom/truth-portal.ves") +
          ": is a vessel tree, not an image; meshes are made of label images and masks");
  fails({ "surface", labelsFile, "-o", path("mesh.stl"), "--label", "2", "--label", "7" },
        labelsFile + ": label 7 is not in the image");
  fails({ "surface", labelsFile, "-o", path("mesh.stl"), "--label", "0" },
        "--label 0: label 0 is the background, it has no surface");
  fails({ "surface", labelsFile, "-o", path("mesh.stl"), "--decimate", "0.99" },
        "--decimate 0.99: the fraction of triangles to remove is 0 to 0.95");
  fails({ "surface", labelsFile, "-o", path("mesh.stl"), "--smooth", "-1" },
        "--smooth -1: the smoothing iterations are 0 to 1000");
  fails({ "surface", labelsFile, "-o", path("nowhere/mesh.stl") },
        path("nowhere/mesh-1.stl") + ": the folder " + path("nowhere") + " does not exist");

  // A target that cannot be replaced (a folder of that name) after others were written: none is replaced.
  std::filesystem::create_directory(path("mesh-3.stl"));
  const auto withFolder = files();
  const ArboRun run = runArbo({ "surface", labelsFile, "-o", path("mesh.stl") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("mesh-3.stl") + ": is a folder, not a file\n");
  EXPECT_EQ(files(), withFolder);
  EXPECT_EQ(readFile(path("mesh-1.stl")), "earlier");
}

TEST_F(ArboSurface, EmptyAndFractionalImagesAreRefused)
{
  auto image = lumo::Image::New();
  image->Initialize(
    itk::IOComponentEnum::FLOAT, labels->GetSize(), labels->GetSpacing(), labels->GetOrigin(), labels->GetDirection());
  auto * voxels = static_cast<float *>(image->GetData());
  std::fill(voxels, voxels + image->GetNumberOfVoxels(), 0.0f);
  lumo::WriteImageFile(image, path("empty.nrrd"));
  voxels[1000] = 2.5f;
  lumo::WriteImageFile(image, path("fraction.nrrd"));
  voxels[1000] = 2.0f;
  lumo::WriteImageFile(image, path("whole.nrrd"));
  const auto before = files();
  ArboRun run = runArbo({ "surface", path("empty.nrrd"), "-o", path("mesh.stl") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "arbo: " + path("empty.nrrd") + ": is empty (every voxel is 0): no surface to make\n");
  run = runArbo({ "surface", path("fraction.nrrd"), "-o", path("mesh.stl") });
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err,
            "arbo: " + path("fraction.nrrd") +
              ": holds values that are not labels (whole numbers); meshes are made of label images and masks\n");
  EXPECT_EQ(files(), before);
  // Whole numbers in a float image are labels: one voxel gives one small closed mesh.
  run = runArbo({ "surface", path("whole.nrrd"), "-o", path("mesh.stl"), "-q" });
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(openEdges(readMesh<vtkSTLReader>(path("mesh.stl"))), 0);
}
