// Setters mark their object modified only when the value changes: an unchanged value must not make lazy pipelines
// and renderers redo their work.

#include <lumoDataNode.h>
#include <lumoGeometry3D.h>
#include <lumoImage.h>
#include <lumoSurface.h>

#include "LumoTestUtilities.h"

#include <gtest/gtest.h>

#include <vtkMatrix4x4.h>

using namespace lumo;
using lumotest::P;
using lumotest::RotationZ90;
using lumotest::V;

TEST(SetterModifiedTest, Geometry3DTransformSetters)
{
  Geometry3D::Pointer geometry = Geometry3D::New();
  geometry->SetSpacing(V(2, 3, 4));
  geometry->SetOrigin(P(10, -5, 7));
  geometry->SetDirection(RotationZ90());
  double matrix[16];
  geometry->GetIndexToWorldMatrix(matrix);
  const itk::ModifiedTimeType stamp = geometry->GetMTime();

  geometry->SetSpacing(V(2, 3, 4));
  geometry->SetOrigin(P(10, -5, 7));
  geometry->SetDirection(RotationZ90());
  geometry->SetIndexToWorldMatrix(matrix);
  vtkMatrix4x4 * vtkMatrix = vtkMatrix4x4::New();
  geometry->GetIndexToWorldMatrix(vtkMatrix);
  geometry->SetIndexToWorldTransformByVtkMatrix(vtkMatrix);
  vtkMatrix->Delete();
  EXPECT_EQ(geometry->GetMTime(), stamp);
  // The values are untouched as well.
  EXPECT_EQ(geometry->GetSpacing(), V(2, 3, 4));
  EXPECT_EQ(geometry->GetOrigin(), P(10, -5, 7));

  geometry->SetOrigin(P(10, -5, 8));
  const itk::ModifiedTimeType afterOrigin = geometry->GetMTime();
  EXPECT_GT(afterOrigin, stamp);
  geometry->SetSpacing(V(2, 3, 5));
  const itk::ModifiedTimeType afterSpacing = geometry->GetMTime();
  EXPECT_GT(afterSpacing, afterOrigin);
  geometry->SetDirection(Geometry3D::DirectionType::GetIdentity());
  const itk::ModifiedTimeType afterDirection = geometry->GetMTime();
  EXPECT_GT(afterDirection, afterSpacing);
  matrix[3] += 1.0;
  geometry->SetIndexToWorldMatrix(matrix);
  EXPECT_GT(geometry->GetMTime(), afterDirection);
  EXPECT_EQ(geometry->GetOrigin()[0], 11.0);
}

TEST(SetterModifiedTest, ImageGeometrySetters)
{
  Image::Pointer image = Image::New();
  image->Initialize(itk::IOComponentEnum::UCHAR, { { 4, 3, 2 } });
  image->SetSpacing(V(0.5, 0.5, 2));
  image->SetOrigin(P(1, 2, 3));
  image->SetDirection(RotationZ90());
  const itk::ModifiedTimeType stamp = image->GetMTime();

  image->SetSpacing(V(0.5, 0.5, 2));
  image->SetOrigin(P(1, 2, 3));
  image->SetDirection(RotationZ90());
  EXPECT_EQ(image->GetMTime(), stamp);

  image->SetOrigin(P(1, 2, 4));
  EXPECT_GT(image->GetMTime(), stamp);
  EXPECT_EQ(image->GetOrigin(), P(1, 2, 4));
}

TEST(SetterModifiedTest, DataNodeMapperAndDataGeometry)
{
  DataNode::Pointer node = DataNode::New();
  itk::Object::Pointer mapper = itk::Object::New();
  node->SetMapper(DataNode::Standard3D, mapper);
  itk::ModifiedTimeType stamp = node->GetMTime();
  node->SetMapper(DataNode::Standard3D, mapper);
  node->SetMapper(DataNode::Standard2D, nullptr);
  EXPECT_EQ(node->GetMTime(), stamp);
  EXPECT_EQ(node->GetMapper(DataNode::Standard3D), mapper.GetPointer());
  node->SetMapper(DataNode::Standard3D, nullptr);
  EXPECT_GT(node->GetMTime(), stamp);
  EXPECT_EQ(node->GetMapper(DataNode::Standard3D), nullptr);

  Surface::Pointer surface = Surface::New();
  Geometry3D::Pointer geometry = Geometry3D::New();
  ASSERT_TRUE(surface->SetGeometry(geometry, 0));
  stamp = surface->GetMTime();
  EXPECT_TRUE(surface->SetGeometry(geometry, 0));
  surface->SetGeometry(surface->GetTimeSlicedGeometry());
  EXPECT_EQ(surface->GetMTime(), stamp);
  EXPECT_EQ(surface->GetGeometry(0), geometry.GetPointer());
  EXPECT_TRUE(surface->SetGeometry(Geometry3D::New(), 0));
  EXPECT_GT(surface->GetMTime(), stamp);
}
