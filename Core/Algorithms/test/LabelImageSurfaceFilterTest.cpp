// Surfaces of the labels of a label image: closed, volume-keeping, in world coordinates, in label order.

#include "lumoImageAccess.h"
#include "lumoLabelImageSurfaceFilter.h"
#include "lumoSurfaceIO.h"

#include "LumoTestUtilities.h"

#include <gtest/gtest.h>

#include <vtkDataArray.h>
#include <vtkFeatureEdges.h>
#include <vtkMassProperties.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <string>

using namespace lumo;
using lumotest::P;
using lumotest::V;

namespace
{
using Box = std::array<unsigned int, 6>; // x0, x1, y0, y1, z0, z1, inclusive

/** A zeroed image of the pixel type T with the given geometry. */
template <typename T>
Image::Pointer
MakeImage(const Image::SizeType & size,
          const Vector3D & spacing = V(1, 1, 1),
          const Point3D & origin = P(0, 0, 0),
          const Image::DirectionType & direction = Image::DirectionType::GetIdentity())
{
  Image::Pointer image = Image::New();
  image->Initialize(PixelComponentOf<T>(), size, spacing, origin, direction);
  return image;
}

template <typename T>
void
Paint(Image * image, const Box & box, T label)
{
  T * voxels = static_cast<T *>(image->GetData());
  const Image::SizeType size = image->GetSize();
  for (unsigned int z = box[4]; z <= box[5]; ++z)
  {
    for (unsigned int y = box[2]; y <= box[3]; ++y)
    {
      for (unsigned int x = box[0]; x <= box[1]; ++x)
      {
        voxels[(static_cast<std::size_t>(z) * size[1] + y) * size[0] + x] = label;
      }
    }
  }
}

double
EnclosedVolume(vtkPolyData * surface)
{
  vtkSmartPointer<vtkMassProperties> mass = vtkSmartPointer<vtkMassProperties>::New();
  mass->SetInputData(surface);
  mass->Update();
  return mass->GetVolume();
}

/** Edges used by one triangle only, or by more than two: none on a closed manifold surface. */
vtkIdType
OpenOrNonManifoldEdges(vtkPolyData * surface)
{
  vtkSmartPointer<vtkFeatureEdges> edges = vtkSmartPointer<vtkFeatureEdges>::New();
  edges->SetInputData(surface);
  edges->BoundaryEdgesOn();
  edges->NonManifoldEdgesOn();
  edges->FeatureEdgesOff();
  edges->ManifoldEdgesOff();
  edges->Update();
  return edges->GetOutput()->GetNumberOfCells();
}

/** Share of the points whose normal points away from the centre (1 for a convex surface with outward normals). */
double
OutwardNormalShare(vtkPolyData * surface, const double centre[3])
{
  vtkDataArray * normals = surface->GetPointData()->GetNormals();
  if (!normals)
  {
    return 0.0;
  }
  vtkIdType outward = 0;
  for (vtkIdType id = 0; id < surface->GetNumberOfPoints(); ++id)
  {
    double p[3];
    surface->GetPoint(id, p);
    const double * n = normals->GetTuple3(id);
    if ((p[0] - centre[0]) * n[0] + (p[1] - centre[1]) * n[1] + (p[2] - centre[2]) * n[2] > 0.0)
    {
      ++outward;
    }
  }
  return static_cast<double>(outward) / static_cast<double>(surface->GetNumberOfPoints());
}

std::string
UpdateError(LabelImageSurfaceFilter * filter)
{
  try
  {
    filter->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "";
}
} // namespace

TEST(LabelImageSurfaceFilterTest, BoxGivesClosedSurfaceKeepingTheVoxelVolume)
{
  // 20 x 16 x 12 voxels of 1 mm; one face touches the image's border, which must not leave the surface open.
  Image::Pointer image = MakeImage<unsigned char>({ { 30, 24, 20 } });
  Paint<unsigned char>(image, { { 5, 24, 4, 19, 0, 11 } }, 1);
  LabelImageSurfaceFilter::Pointer filter = LabelImageSurfaceFilter::New();
  filter->SetInput(image);
  filter->Update();
  ASSERT_EQ(filter->GetNumberOfIndexedOutputs(), 1u);
  EXPECT_EQ(filter->GetOutputLabels(), LabelImageSurfaceFilter::LabelVector{ 1 });
  vtkPolyData * surface = filter->GetOutput(0)->GetVtkPolyData();
  ASSERT_NE(surface, nullptr);
  EXPECT_GT(surface->GetNumberOfPolys(), 1000);
  EXPECT_EQ(OpenOrNonManifoldEdges(surface), 0);
  const double voxels = 20.0 * 16.0 * 12.0;
  EXPECT_NEAR(EnclosedVolume(surface), voxels, 0.03 * voxels);
  const double centre[3] = { 14.5, 11.5, 5.5 };
  EXPECT_GT(OutwardNormalShare(surface, centre), 0.99);

  // Without smoothing the contour runs through the faces of the voxels: only the box's edges and corners are cut.
  filter->SetSmoothingIterations(0);
  filter->ComputeNormalsOff();
  filter->Update();
  surface = filter->GetOutput(0)->GetVtkPolyData();
  EXPECT_EQ(surface->GetPointData()->GetNormals(), nullptr);
  EXPECT_EQ(OpenOrNonManifoldEdges(surface), 0);
  double bounds[6];
  surface->GetBounds(bounds);
  EXPECT_DOUBLE_EQ(bounds[0], 4.5);
  EXPECT_DOUBLE_EQ(bounds[1], 24.5);
  EXPECT_DOUBLE_EQ(bounds[2], 3.5);
  EXPECT_DOUBLE_EQ(bounds[3], 19.5);
  EXPECT_DOUBLE_EQ(bounds[4], -0.5);
  EXPECT_DOUBLE_EQ(bounds[5], 11.5);
  EXPECT_LT(EnclosedVolume(surface), voxels);
  EXPECT_GT(EnclosedVolume(surface), 0.97 * voxels);
}

TEST(LabelImageSurfaceFilterTest, SurfacesLieInWorldCoordinates)
{
  // Anisotropic voxels, an origin and a rotation by 90 degrees about z (index x runs along world y).
  const Vector3D spacing = V(0.5, 0.8, 2.0);
  const Point3D origin = P(-40.0, 12.0, 100.0);
  for (const bool rotated : { false, true })
  {
    Image::Pointer image = MakeImage<short>(
      { { 40, 30, 16 } }, spacing, origin, rotated ? lumotest::RotationZ90() : Image::DirectionType::GetIdentity());
    Paint<short>(image, { { 10, 29, 5, 24, 3, 12 } }, 2);
    LabelImageSurfaceFilter::Pointer filter = LabelImageSurfaceFilter::New();
    filter->SetInput(image);
    filter->SetSmoothingIterations(0);
    filter->Update();
    vtkPolyData * surface = filter->GetOutput(0)->GetVtkPolyData();
    double bounds[6];
    surface->GetBounds(bounds);
    // Voxel faces: index 9.5 .. 29.5 along i, 4.5 .. 24.5 along j, 2.5 .. 12.5 along k.
    const double i0 = 9.5 * 0.5, i1 = 29.5 * 0.5, j0 = 4.5 * 0.8, j1 = 24.5 * 0.8;
    const double expected[6] = { rotated ? -40.0 - j1 : -40.0 + i0,
                                 rotated ? -40.0 - j0 : -40.0 + i1,
                                 rotated ? 12.0 + i0 : 12.0 + j0,
                                 rotated ? 12.0 + i1 : 12.0 + j1,
                                 100.0 + 2.5 * 2.0,
                                 100.0 + 12.5 * 2.0 };
    for (int b = 0; b < 6; ++b)
    {
      EXPECT_NEAR(bounds[b], expected[b], 1e-4) << "bound " << b << (rotated ? " rotated" : "");
    }
    const double voxels = 20.0 * 20.0 * 10.0 * 0.5 * 0.8 * 2.0;
    EXPECT_NEAR(EnclosedVolume(surface), voxels, 0.03 * voxels);
    const double centre[3] = { (expected[0] + expected[1]) / 2, (expected[2] + expected[3]) / 2, 110.5 };
    filter->SetSmoothingIterations(20);
    filter->Update();
    surface = filter->GetOutput(0)->GetVtkPolyData();
    EXPECT_NEAR(EnclosedVolume(surface), voxels, 0.03 * voxels);
    EXPECT_GT(OutwardNormalShare(surface, centre), 0.99);
  }
}

TEST(LabelImageSurfaceFilterTest, MirroringDirectionKeepsNormalsOutward)
{
  Image::DirectionType mirror = Image::DirectionType::GetIdentity();
  mirror[0][0] = -1.0;
  Image::Pointer image = MakeImage<unsigned char>({ { 20, 20, 20 } }, V(1, 1, 1), P(0, 0, 0), mirror);
  Paint<unsigned char>(image, { { 4, 15, 4, 15, 4, 15 } }, 9);
  LabelImageSurfaceFilter::Pointer filter = LabelImageSurfaceFilter::New();
  filter->SetInput(image);
  filter->Update();
  vtkPolyData * surface = filter->GetOutput(0)->GetVtkPolyData();
  double bounds[6];
  surface->GetBounds(bounds);
  EXPECT_LT(bounds[1], 0.0);
  const double centre[3] = { -9.5, 9.5, 9.5 };
  EXPECT_GT(OutwardNormalShare(surface, centre), 0.99);
  // A positive volume from vtkMassProperties needs triangles facing out, too.
  EXPECT_NEAR(EnclosedVolume(surface), 1728.0, 0.03 * 1728.0);
}

TEST(LabelImageSurfaceFilterTest, LabelsInOrder)
{
  // Three boxes of a 64-bit label image, one label far beyond 8 bits; label 3 is the largest box.
  Image::Pointer image = MakeImage<long>({ { 40, 20, 20 } });
  Paint<long>(image, { { 2, 9, 2, 9, 2, 9 } }, 70000);
  Paint<long>(image, { { 12, 25, 2, 15, 2, 15 } }, 3);
  Paint<long>(image, { { 28, 33, 2, 7, 2, 7 } }, 5);
  LabelImageSurfaceFilter::Pointer filter = LabelImageSurfaceFilter::New();
  filter->SetInput(image);
  filter->SetSmoothingIterations(0);
  filter->Update();
  ASSERT_EQ(filter->GetOutputLabels(), (LabelImageSurfaceFilter::LabelVector{ 3, 5, 70000 }));
  ASSERT_EQ(filter->GetNumberOfIndexedOutputs(), 3u);
  const double lowX[3] = { 11.5, 27.5, 1.5 };
  for (unsigned int index = 0; index < 3; ++index)
  {
    double bounds[6];
    filter->GetOutput(index)->GetVtkPolyData()->GetBounds(bounds);
    EXPECT_DOUBLE_EQ(bounds[0], lowX[index]) << "output " << index;
  }

  // Chosen labels come out in the order given; fewer labels leave fewer outputs.
  filter->SetLabels({ 70000, 3 });
  filter->Update();
  ASSERT_EQ(filter->GetOutputLabels(), (LabelImageSurfaceFilter::LabelVector{ 70000, 3 }));
  ASSERT_EQ(filter->GetNumberOfIndexedOutputs(), 2u);
  double bounds[6];
  filter->GetOutput(0)->GetVtkPolyData()->GetBounds(bounds);
  EXPECT_DOUBLE_EQ(bounds[0], 1.5);
  filter->GetOutput(1)->GetVtkPolyData()->GetBounds(bounds);
  EXPECT_DOUBLE_EQ(bounds[0], 11.5);
  EXPECT_NEAR(EnclosedVolume(filter->GetOutput(1)->GetVtkPolyData()), 14.0 * 14.0 * 14.0, 0.03 * 14 * 14 * 14);
}

TEST(LabelImageSurfaceFilterTest, BadInputsAreRefusedWithMessages)
{
  Image::Pointer image = MakeImage<unsigned char>({ { 10, 10, 10 } });
  Paint<unsigned char>(image, { { 2, 5, 2, 5, 2, 5 } }, 2);
  Paint<unsigned char>(image, { { 6, 8, 6, 8, 6, 8 } }, 3);
  LabelImageSurfaceFilter::Pointer filter = LabelImageSurfaceFilter::New();
  filter->SetInput(image);
  filter->Update();
  ASSERT_EQ(filter->GetNumberOfIndexedOutputs(), 2u);
  vtkPolyData * before = filter->GetOutput(1)->GetVtkPolyData();

  filter->SetLabels({ 2, 4, 3 });
  EXPECT_EQ(UpdateError(filter), "LabelImageSurfaceFilter: label 4 is not in the image");
  // The surfaces of the last good run are kept.
  ASSERT_EQ(filter->GetNumberOfIndexedOutputs(), 2u);
  EXPECT_EQ(filter->GetOutput(1)->GetVtkPolyData(), before);
  EXPECT_EQ(filter->GetOutputLabels(), (LabelImageSurfaceFilter::LabelVector{ 2, 3 }));

  // A label the pixel type cannot hold is absent too.
  filter->SetLabels({ 258 });
  EXPECT_EQ(UpdateError(filter), "LabelImageSurfaceFilter: label 258 is not in the image");
  filter->SetLabels({ 3, 0 });
  EXPECT_EQ(UpdateError(filter), "LabelImageSurfaceFilter: label 0 is the background");

  LabelImageSurfaceFilter::Pointer floating = LabelImageSurfaceFilter::New();
  floating->SetInput(MakeImage<float>({ { 4, 4, 4 } }));
  EXPECT_EQ(UpdateError(floating),
            "LabelImageSurfaceFilter: the label image has pixel type float; an integer type is needed");
  LabelImageSurfaceFilter::Pointer uninitialised = LabelImageSurfaceFilter::New();
  uninitialised->SetInput(Image::New());
  EXPECT_EQ(UpdateError(uninitialised), "LabelImageSurfaceFilter: no label image");

  // An image without labels gives no surface at all.
  LabelImageSurfaceFilter::Pointer empty = LabelImageSurfaceFilter::New();
  empty->SetInput(MakeImage<unsigned char>({ { 4, 4, 4 } }));
  empty->Update();
  EXPECT_EQ(empty->GetNumberOfIndexedOutputs(), 0u);
  EXPECT_TRUE(empty->GetOutputLabels().empty());
}

TEST(LabelImageSurfaceFilterTest, SurfacesAreWrittenByTheFileEnding)
{
  Image::Pointer image = MakeImage<unsigned char>({ { 12, 12, 12 } }, V(1.5, 1.5, 1.5), P(3, 4, 5));
  Paint<unsigned char>(image, { { 3, 8, 3, 8, 3, 8 } }, 1);
  LabelImageSurfaceFilter::Pointer filter = LabelImageSurfaceFilter::New();
  filter->SetInput(image);
  filter->Update();
  Surface * surface = filter->GetOutput(0);
  const vtkIdType triangles = surface->GetVtkPolyData()->GetNumberOfPolys();
  const double volume = EnclosedVolume(surface->GetVtkPolyData());
  lumotest::TemporaryDirectory directory;
  for (const char * name : { "label.vtp", "label.stl", "label.obj", "LABEL.OBJ" })
  {
    const std::string file = directory.File(name);
    ASSERT_TRUE(CanWriteSurfaceFile(file)) << name;
    WriteSurfaceFile(surface, file);
    Surface::Pointer back = ReadSurfaceFile(file);
    vtkPolyData * read = back->GetVtkPolyData();
    EXPECT_EQ(read->GetNumberOfPolys(), triangles) << name;
    EXPECT_NEAR(EnclosedVolume(read), volume, 1e-3 * volume) << name;
  }
  const std::string unknown = directory.File("label.ply");
  EXPECT_FALSE(CanWriteSurfaceFile(unknown));
  EXPECT_THROW(WriteSurfaceFile(surface, unknown), itk::ExceptionObject);
  EXPECT_FALSE(std::filesystem::exists(unknown));
}
