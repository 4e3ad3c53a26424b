// Geometries: bounds, index-to-world transforms, sliced and time-sliced geometries; base data and pipelines.

#include <lumoBaseProcess.h>
#include <lumoImage.h>
#include <lumoSurface.h>
#include <lumoTimeSlicedGeometry.h>

#include "LumoTestUtilities.h"

#include <gtest/gtest.h>

#include <vtkLinearTransform.h>
#include <vtkMatrix4x4.h>
#include <vtkSmartPointer.h>

#include <cmath>

using namespace lumo;
using lumotest::P;
using lumotest::RotationZ90;
using lumotest::V;

TEST(GeometryTest, NewGeometryIsIdentityWithUnitBounds)
{
  Geometry3D::Pointer geometry = Geometry3D::New();
  const auto & bounds = geometry->GetBounds();
  for (unsigned int i = 0; i < 6; ++i)
  {
    EXPECT_EQ(bounds[i], i % 2 == 0 ? 0.0 : 1.0);
  }
  EXPECT_EQ(geometry->GetSpacing(), V(1, 1, 1));
  EXPECT_EQ(geometry->GetOrigin(), P(0, 0, 0));
  EXPECT_FALSE(geometry->GetImageGeometry());
  EXPECT_NE(geometry->GetVtkTransform(), nullptr);
}

TEST(GeometryTest, SetBoundsOrdersEachAxis)
{
  Geometry3D::Pointer geometry = Geometry3D::New();
  const double bounds[6] = { 10, 0, -1, 1, 5, 5 };
  geometry->SetFloatBounds(bounds);
  EXPECT_EQ(geometry->GetBounds()[0], 0.0);
  EXPECT_EQ(geometry->GetBounds()[1], 10.0);
  EXPECT_EQ(geometry->GetExtent(0), 10.0);
  EXPECT_EQ(geometry->GetExtent(2), 0.0);
}

TEST(GeometryTest, SpacingOriginDirectionMakeTheMatrix)
{
  Geometry3D::Pointer geometry = Geometry3D::New();
  geometry->SetSpacing(V(2, 3, 4));
  geometry->SetOrigin(P(100, -50, 7));
  geometry->SetDirection(RotationZ90());

  double m[16];
  geometry->GetIndexToWorldMatrix(m);
  // column 0 = direction column 0 (0,1,0) * 2; column 1 = (-1,0,0) * 3; column 2 = (0,0,1) * 4
  EXPECT_DOUBLE_EQ(m[0], 0.0);
  EXPECT_DOUBLE_EQ(m[4], 2.0);
  EXPECT_DOUBLE_EQ(m[1], -3.0);
  EXPECT_DOUBLE_EQ(m[10], 4.0);
  EXPECT_DOUBLE_EQ(m[3], 100.0);
  EXPECT_DOUBLE_EQ(m[7], -50.0);
  EXPECT_DOUBLE_EQ(m[11], 7.0);
  EXPECT_DOUBLE_EQ(m[15], 1.0);

  Point3D world;
  geometry->IndexToWorld(P(1, 1, 1), world);
  EXPECT_DOUBLE_EQ(world[0], 97.0);
  EXPECT_DOUBLE_EQ(world[1], -48.0);
  EXPECT_DOUBLE_EQ(world[2], 11.0);
  Point3D index;
  geometry->WorldToIndex(world, index);
  EXPECT_NEAR(index[0], 1.0, 1e-12);
  EXPECT_NEAR(index[1], 1.0, 1e-12);
  EXPECT_NEAR(index[2], 1.0, 1e-12);

  // The VTK transform is the same map.
  double out[3];
  const double in[3] = { 1, 1, 1 };
  geometry->GetVtkTransform()->TransformPoint(in, out);
  EXPECT_DOUBLE_EQ(out[0], 97.0);
  EXPECT_DOUBLE_EQ(out[1], -48.0);

  // Vectors ignore the origin.
  Vector3D vector;
  geometry->IndexToWorld(V(1, 0, 0), vector);
  EXPECT_DOUBLE_EQ(vector[0], 0.0);
  EXPECT_DOUBLE_EQ(vector[1], 2.0);

  // Changing the spacing keeps direction and origin.
  geometry->SetSpacing(V(1, 1, 1));
  EXPECT_EQ(geometry->GetOrigin(), P(100, -50, 7));
  const auto direction = geometry->GetDirection();
  EXPECT_DOUBLE_EQ(direction[1][0], 1.0);
  EXPECT_DOUBLE_EQ(direction[0][1], -1.0);

  EXPECT_THROW(geometry->SetSpacing(V(1, 0, 1)), itk::InvalidArgumentError);
}

TEST(GeometryTest, MatrixSetsSpacingAndOrigin)
{
  vtkSmartPointer<vtkMatrix4x4> matrix = vtkSmartPointer<vtkMatrix4x4>::New();
  matrix->SetElement(0, 0, 0.5);
  matrix->SetElement(1, 1, 0.5);
  matrix->SetElement(2, 2, 2.5);
  matrix->SetElement(0, 3, -10);
  Geometry3D::Pointer geometry = Geometry3D::New();
  geometry->SetIndexToWorldTransformByVtkMatrix(matrix);
  EXPECT_EQ(geometry->GetSpacing(), V(0.5, 0.5, 2.5));
  EXPECT_EQ(geometry->GetOrigin(), P(-10, 0, 0));
  EXPECT_DOUBLE_EQ(geometry->GetExtentInMM(2), 2.5);
}

TEST(GeometryTest, WorldBoundsCenterAndInside)
{
  Geometry3D::Pointer geometry = Geometry3D::New();
  const double bounds[6] = { 0, 10, 0, 20, 0, 30 };
  geometry->SetFloatBounds(bounds);
  geometry->SetSpacing(V(2, 1, 1));
  geometry->SetOrigin(P(5, 0, 0));
  const auto world = geometry->GetWorldBounds();
  EXPECT_DOUBLE_EQ(world[0], 5.0);
  EXPECT_DOUBLE_EQ(world[1], 25.0);
  EXPECT_DOUBLE_EQ(world[3], 20.0);
  EXPECT_EQ(geometry->GetCenter(), P(15, 10, 15));
  EXPECT_EQ(geometry->GetCornerPoint(7), P(25, 20, 30));
  EXPECT_TRUE(geometry->IsInside(P(25, 20, 30)));
  EXPECT_FALSE(geometry->IsInside(P(4.9, 0, 0)));
}

TEST(GeometryTest, CloneIsADeepCopyOfTheSameClass)
{
  SlicedGeometry3D::Pointer sliced = SlicedGeometry3D::New();
  sliced->InitializeImage({ { 4, 5, 6 } }, V(1, 2, 3), P(1, 1, 1), RotationZ90());
  SlicedGeometry3D::Pointer clone = sliced->Clone();
  ASSERT_TRUE(clone);
  EXPECT_NE(clone.GetPointer(), sliced.GetPointer());
  EXPECT_EQ(clone->GetSize(), sliced->GetSize());
  EXPECT_EQ(clone->GetSpacing(), V(1, 2, 3));
  EXPECT_TRUE(clone->GetImageGeometry());
  clone->SetOrigin(P(0, 0, 0));
  EXPECT_EQ(sliced->GetOrigin(), P(1, 1, 1));
  Geometry3D::Pointer asBase = sliced.GetPointer();
  EXPECT_STREQ(asBase->Clone()->GetNameOfClass(), "SlicedGeometry3D");
}

TEST(GeometryTest, ImageGeometryBoundsEncloseTheVoxels)
{
  SlicedGeometry3D::Pointer sliced = SlicedGeometry3D::New();
  sliced->InitializeImage({ { 4, 5, 6 } });
  EXPECT_EQ(sliced->GetBounds()[0], -0.5);
  EXPECT_EQ(sliced->GetBounds()[1], 3.5);
  EXPECT_EQ(sliced->GetBounds()[5], 5.5);
  EXPECT_EQ(sliced->GetSlices(), 6u);
}

TEST(GeometryTest, TimeSlicedGeometry)
{
  Geometry3D::Pointer first = Geometry3D::New();
  TimeSlicedGeometry::Pointer timeSliced = TimeSlicedGeometry::New();
  timeSliced->InitializeEvenlyTimed(first, 3);
  EXPECT_EQ(timeSliced->GetTimeSteps(), 3u);
  EXPECT_EQ(timeSliced->GetGeometry3D(0), first.GetPointer());
  EXPECT_NE(timeSliced->GetGeometry3D(1), first.GetPointer());
  EXPECT_EQ(timeSliced->GetGeometry3D(3), nullptr);
  EXPECT_FALSE(timeSliced->IsValidTime(3));

  timeSliced->GetGeometry3D(2)->SetOrigin(P(100, 0, 0));
  timeSliced->UpdateBounds();
  // union of [0,1]^3 and [100,101] x [0,1] x [0,1]
  EXPECT_DOUBLE_EQ(timeSliced->GetBounds()[0], 0.0);
  EXPECT_DOUBLE_EQ(timeSliced->GetBounds()[1], 101.0);

  timeSliced->Expand(5);
  EXPECT_EQ(timeSliced->GetTimeSteps(), 5u);
  EXPECT_EQ(timeSliced->GetGeometry3D(4)->GetOrigin(), P(100, 0, 0)); // clone of the last step
  EXPECT_FALSE(timeSliced->SetGeometry3D(Geometry3D::New(), 5));
  EXPECT_TRUE(timeSliced->SetGeometry3D(Geometry3D::New(), 4));
}

TEST(BaseDataTest, GeometryPerTimeStep)
{
  Surface::Pointer surface = Surface::New();
  EXPECT_EQ(surface->GetTimeSteps(), 1u);
  Geometry3D::Pointer geometry = Geometry3D::New();
  surface->Expand(2);
  surface->SetGeometry(geometry);
  EXPECT_EQ(surface->GetTimeSteps(), 2u);
  EXPECT_EQ(surface->GetGeometry(0), geometry.GetPointer());
  EXPECT_NE(surface->GetGeometry(1), geometry.GetPointer());
  EXPECT_EQ(surface->GetGeometry(2), nullptr);

  const auto before = surface->GetMTime();
  geometry->SetOrigin(P(1, 2, 3));
  EXPECT_GT(surface->GetMTime(), before); // the geometry's change shows in the data

  // Images convert a plain geometry into a sliced one.
  Image::Pointer image = Image::New();
  image->SetGeometry(Geometry3D::New());
  EXPECT_NE(image->GetSlicedGeometry(), nullptr);
}

namespace
{
/** A source that counts its runs (for the lazy pipeline). */
class CountingSource : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(CountingSource);

  using Self = CountingSource;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(CountingSource, BaseProcess);
  using Superclass::MakeOutput;
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType) override
  {
    return Surface::New().GetPointer();
  }
  int runs{ 0 };

protected:
  CountingSource()
  {
    this->SetNumberOfRequiredOutputs(1);
    this->SetNthOutput(0, this->MakeOutput(0));
  }
  void
  GenerateData() override
  {
    ++runs;
  }
};
} // namespace

TEST(BaseProcessTest, PipelineIsLazy)
{
  CountingSource::Pointer source = CountingSource::New();
  source->Update();
  EXPECT_EQ(source->runs, 1);
  source->Update();
  EXPECT_EQ(source->runs, 1); // nothing changed
  source->GetOutputData(0)->Update();
  EXPECT_EQ(source->runs, 1);
  source->Modified();
  source->GetOutputData(0)->Update();
  EXPECT_EQ(source->runs, 2);

  source->ResizeOutputs(3);
  EXPECT_EQ(source->GetNumberOfIndexedOutputs(), 3u);
  EXPECT_STREQ(source->GetOutputData(2)->GetNameOfClass(), "Surface");
}

namespace
{
/** A geometry whose bounds follow a content box, as the vessel tree geometry follows its tree. */
class ContentGeometry : public Geometry3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ContentGeometry);

  using Self = ContentGeometry;
  using Superclass = Geometry3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(ContentGeometry, Geometry3D);

protected:
  ContentGeometry() = default;
  ~ContentGeometry() override = default;

public:
  double extent{ 1.0 };
  int updates{ 0 };
  void
  UpdateBounds() override
  {
    ++updates;
    BoundsArrayType bounds;
    bounds.Fill(0.0);
    bounds[1] = extent;
    this->SetBounds(bounds);
  }
};
} // namespace

TEST(GeometryTest, BoundsUpdateHookRunsOnUpdateOutputInformation)
{
  Surface::Pointer data = Surface::New();
  ContentGeometry::Pointer geometry = ContentGeometry::New();
  data->SetGeometry(geometry);
  geometry->extent = 42.0;
  data->UpdateOutputInformation();
  EXPECT_GE(geometry->updates, 1);
  EXPECT_EQ(data->GetGeometry()->GetBounds()[1], 42.0);
  EXPECT_EQ(data->GetTimeSlicedGeometry()->GetBounds()[1], 42.0);
  geometry->extent = 7.0;
  EXPECT_EQ(data->GetUpdatedGeometry()->GetBounds()[1], 7.0);
}
