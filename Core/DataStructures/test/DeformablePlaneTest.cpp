// The deformable cutting plane: its shape, sides and normals, undoable edits, the side test over a voxel grid,
// refused inputs, the .mps form of its control points and the surface for drawing.

#include "LumoTestUtilities.h"

#include <lumoDeformablePlane.h>
#include <lumoDeformablePlaneOperation.h>
#include <lumoPointSetIO.h>
#include <lumoSlicedGeometry3D.h>

#include <gtest/gtest.h>
#include <vtkDataArray.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>

#include <cmath>
#include <fstream>
#include <sstream>

using lumotest::P;
using lumotest::V;

namespace
{
lumo::DeformablePlane::Pointer
MakePlane(const lumo::DeformablePlane::PointsContainer & points)
{
  auto plane = lumo::DeformablePlane::New();
  plane->SetControlPoints(points);
  return plane;
}

/** Six points whose heights over z = 0 follow no plane: a saddle-like sheet. */
lumo::DeformablePlane::PointsContainer
CurvedPoints()
{
  return { P(0, 0, 0), P(20, 0, 4), P(0, 20, -3), P(20, 20, 2), P(10, 10, 5), P(5, 15, -1) };
}

/** The message of the itk::ExceptionObject that f throws, or "" when it throws none. */
template <typename F>
std::string
MessageOf(F && f)
{
  try
  {
    f();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "";
}

/** An unsigned 8-bit image of the given size and spacing with the box [lo, hi] (indices, inclusive) set to 1. */
lumo::Image::Pointer
MakeBoxOrgan(const lumo::Image::SizeType & size,
             const lumo::Vector3D & spacing,
             const unsigned int lo[3],
             const unsigned int hi[3])
{
  auto image = lumo::Image::New();
  lumo::Image::DirectionType direction;
  direction.SetIdentity();
  image->Initialize(itk::IOComponentEnum::UCHAR, size, spacing, P(0, 0, 0), direction);
  auto * data = static_cast<unsigned char *>(image->GetData());
  for (unsigned int z = lo[2]; z <= hi[2]; ++z)
  {
    for (unsigned int y = lo[1]; y <= hi[1]; ++y)
    {
      for (unsigned int x = lo[0]; x <= hi[0]; ++x)
      {
        data[(static_cast<std::size_t>(z) * size[1] + y) * size[0] + x] = 1;
      }
    }
  }
  return image;
}

std::size_t
CountLabel(const lumo::Image * image, unsigned char label)
{
  const auto * data = static_cast<const unsigned char *>(image->GetData());
  std::size_t count = 0;
  for (std::size_t i = 0; i < image->GetNumberOfVoxels(); ++i)
  {
    count += data[i] == label;
  }
  return count;
}
} // namespace

TEST(DeformablePlaneShape, ThreePointsGiveExactlyTheirPlane)
{
  auto plane = MakePlane({ P(0, 0, 5), P(10, 0, 5), P(0, 10, 5) });
  EXPECT_TRUE(plane->IsFlat());
  EXPECT_EQ(3u, plane->GetNumberOfControlPoints());
  // No organ: the front normal points towards +z.
  EXPECT_NEAR(1.0, plane->GetPlaneNormal()[2], 1e-12);
  EXPECT_NEAR(2.0, plane->GetSignedHeight(P(3, 3, 7)), 1e-12);
  EXPECT_NEAR(-3.0, plane->GetSignedHeight(P(-40, 70, 2)), 1e-12);
  EXPECT_EQ(1, plane->GetSide(P(3, 3, 7)));
  EXPECT_EQ(-1, plane->GetSide(P(100, -50, 4.99)));
  EXPECT_EQ(0, plane->GetSide(P(1, 1, 5)));
  // The tolerance widens the band that counts as on the surface.
  plane->SetTolerance(0.5);
  EXPECT_EQ(0, plane->GetSide(P(100, -50, 4.6)));
  EXPECT_EQ(1, plane->GetSide(P(100, -50, 5.6)));

  // A tilted plane z = x: normal (-1, 0, 1) / sqrt(2) towards +z.
  auto tilted = MakePlane({ P(0, 0, 0), P(1, 0, 1), P(0, 1, 0) });
  EXPECT_NEAR(1.0 / std::sqrt(2.0), tilted->GetSignedHeight(P(0, 0, 1)), 1e-12);
  EXPECT_NEAR(-2.0 * std::sqrt(2.0), tilted->GetSignedHeight(P(4, 7, 0)), 1e-12);
  // An organ on the +z side turns the front away from it.
  tilted->SetOrganCentroid(P(0, 0, 5));
  EXPECT_NEAR(-1.0 / std::sqrt(2.0), tilted->GetSignedHeight(P(0, 0, 1)), 1e-12);
  EXPECT_EQ(-1, tilted->GetSide(P(0, 0, 1)));
  tilted->RemoveOrganCentroid();
  EXPECT_EQ(1, tilted->GetSide(P(0, 0, 1)));

  // Many points on one plane: still exactly that plane.
  auto four = MakePlane({ P(0, 0, 1), P(9, 0, 1), P(0, 9, 1), P(9, 9, 1), P(3, 4, 1) });
  EXPECT_TRUE(four->IsFlat());
  EXPECT_NEAR(0.0, four->GetSignedHeight(P(50, -20, 1)), 1e-12);
}

TEST(DeformablePlaneShape, CurvedSurfacePassesThroughEveryControlPoint)
{
  auto plane = MakePlane(CurvedPoints());
  EXPECT_FALSE(plane->IsFlat());
  for (const lumo::Point3D & p : CurvedPoints())
  {
    EXPECT_NEAR(0.0, plane->GetSignedHeight(p), 1e-9);
    EXPECT_EQ(0, plane->GetSide(p));
    EXPECT_NEAR(0.0, (plane->ProjectOntoSurface(p) - p).GetNorm(), 1e-9);
  }
  // Off the points the surface bends: the midpoint of two points of different height is not on it.
  EXPECT_GT(std::abs(plane->GetSignedHeight(P(10, 0, 2))), 1e-3);

  // Smoothing relaxes the interpolation, more with a larger value; 0 restores it exactly.
  double previous = 0.0;
  for (double smoothing : { 10.0, 1000.0 })
  {
    plane->SetSmoothing(smoothing);
    double largest = 0.0;
    for (const lumo::Point3D & p : CurvedPoints())
    {
      largest = std::max(largest, std::abs(plane->GetSignedHeight(p)));
    }
    EXPECT_GT(largest, previous + 1e-3) << smoothing;
    previous = largest;
  }
  // Setting the same value again leaves the plane unmodified.
  const itk::ModifiedTimeType modified = plane->GetMTime();
  plane->SetSmoothing(1000.0);
  plane->SetTolerance(plane->GetTolerance());
  EXPECT_EQ(modified, plane->GetMTime());
  plane->SetSmoothing(-5.0);
  EXPECT_EQ(0.0, plane->GetSmoothing());
  EXPECT_NEAR(0.0, plane->GetSignedHeight(CurvedPoints()[4]), 1e-9);
}

TEST(DeformablePlaneShape, FrontAndBackNormalsAreOppositeAndNormalToTheSurface)
{
  auto flat = MakePlane({ P(0, 0, 0), P(1, 0, 1), P(0, 1, 0) });
  const lumo::Vector3D n = flat->GetFrontNormal(P(7, -3, 2));
  EXPECT_NEAR(-1.0 / std::sqrt(2.0), n[0], 1e-12);
  EXPECT_NEAR(1.0 / std::sqrt(2.0), n[2], 1e-12);

  auto plane = MakePlane(CurvedPoints());
  const lumo::Vector3D U = plane->GetPlaneAxisU(), W = plane->GetPlaneAxisV(), N = plane->GetPlaneNormal();
  for (const lumo::Point3D & query : { P(3, 4, 0), P(12, 7, 1), P(18, 18, -2), P(10, 10, 5) })
  {
    const lumo::Point3D s = plane->ProjectOntoSurface(query);
    const lumo::Vector3D front = plane->GetFrontNormal(s);
    const lumo::Vector3D back = plane->GetBackNormal(s);
    EXPECT_NEAR(1.0, front.GetNorm(), 1e-12);
    EXPECT_NEAR(0.0, (front + back).GetNorm(), 1e-15);
    EXPECT_GT(front * N, 0.0);
    // Tangents of the surface by central differences are perpendicular to the normal.
    const double e = 1e-4;
    for (const lumo::Vector3D & direction : { U, W })
    {
      const lumo::Vector3D tangent =
        plane->ProjectOntoSurface(s + direction * e) - plane->ProjectOntoSurface(s - direction * e);
      EXPECT_NEAR(0.0, (tangent / tangent.GetNorm()) * front, 1e-7);
    }
    // A step along the front normal goes to the front side, along the back normal to the back.
    EXPECT_EQ(1, plane->GetSide(s + front * 0.01));
    EXPECT_EQ(-1, plane->GetSide(s + back * 0.01));
  }
}

TEST(DeformablePlaneEdits, MoveAddAndRemoveAreUndoableAndRedoable)
{
  lumo::UndoController undo;
  auto plane = MakePlane(CurvedPoints());
  const auto original = plane->GetControlPoints();
  const lumo::Point3D probe = P(10, 10, 0);
  const double before = plane->GetSignedHeight(probe);

  plane->MoveControlPoint(4, P(10, 10, -6), &undo);
  EXPECT_EQ(P(10, 10, -6), plane->GetControlPoints()[4]);
  const double moved = plane->GetSignedHeight(probe);
  EXPECT_GT(std::abs(moved - before), 1.0);
  EXPECT_NEAR(0.0, plane->GetSignedHeight(P(10, 10, -6)), 1e-9);
  ASSERT_EQ(1u, undo.GetUndoCount());
  EXPECT_EQ("Move control point", undo.GetUndoDescriptions()[0]);

  ASSERT_TRUE(undo.Undo());
  EXPECT_EQ(original, plane->GetControlPoints());
  EXPECT_EQ(before, plane->GetSignedHeight(probe));
  ASSERT_TRUE(undo.Redo());
  EXPECT_EQ(P(10, 10, -6), plane->GetControlPoints()[4]);
  EXPECT_EQ(moved, plane->GetSignedHeight(probe));

  const unsigned int added = plane->AddControlPoint(P(15, 5, 8), &undo);
  EXPECT_EQ(6u, added);
  EXPECT_NEAR(0.0, plane->GetSignedHeight(P(15, 5, 8)), 1e-9);
  plane->RemoveControlPoint(0, &undo);
  EXPECT_EQ(6u, plane->GetNumberOfControlPoints());
  EXPECT_EQ(P(20, 0, 4), plane->GetControlPoints()[0]);
  ASSERT_TRUE(undo.Undo()); // the removal: point 0 back in its place
  EXPECT_EQ(P(0, 0, 0), plane->GetControlPoints()[0]);
  ASSERT_TRUE(undo.Undo()); // the addition
  ASSERT_TRUE(undo.Undo()); // the move
  EXPECT_EQ(original, plane->GetControlPoints());
  EXPECT_FALSE(undo.CanUndo());

  // Without a controller nothing is recorded; operations of another kind are ignored.
  plane->MoveControlPoint(0, P(0, 0, 1), nullptr);
  EXPECT_EQ(0u, undo.GetUndoCount());
  lumo::Operation other(705);
  plane->ExecuteOperation(&other);
  EXPECT_EQ(P(0, 0, 1), plane->GetControlPoints()[0]);
}

TEST(DeformablePlaneEdits, RefusedEditsLeaveThePlaneAndTheHistoryUnchanged)
{
  lumo::UndoController undo;
  auto plane = MakePlane({ P(0, 0, 0), P(10, 0, 0), P(0, 10, 0) });
  const auto points = plane->GetControlPoints();
  EXPECT_EQ("A deformable plane needs at least 3 control points, got 2",
            MessageOf([&] { plane->RemoveControlPoint(1, &undo); }));
  EXPECT_EQ("The control points of a deformable plane lie on one line",
            MessageOf([&] { plane->MoveControlPoint(2, P(20, 0, 0), &undo); }));
  EXPECT_EQ("No control point 3 in a deformable plane",
            MessageOf([&] { plane->MoveControlPoint(3, P(1, 1, 1), &undo); }));
  EXPECT_EQ(points, plane->GetControlPoints());
  EXPECT_EQ(0u, undo.GetUndoCount());

  // Removing the only point off the line of the others.
  plane->AddControlPoint(P(20, 0, 0), &undo);
  EXPECT_EQ("The control points of a deformable plane lie on one line",
            MessageOf([&] { plane->RemoveControlPoint(2, &undo); }));
  EXPECT_EQ(4u, plane->GetNumberOfControlPoints());
  EXPECT_EQ(1u, undo.GetUndoCount());

  auto fresh = lumo::DeformablePlane::New();
  EXPECT_EQ("A deformable plane needs at least 3 control points, got 2", MessageOf([&] {
              fresh->SetControlPoints({ P(0, 0, 0), P(1, 1, 1) });
            }));
  EXPECT_EQ("The control points of a deformable plane lie on one line", MessageOf([&] {
              fresh->SetControlPoints({ P(0, 0, 0), P(1, 1, 1), P(2, 2, 2), P(-4, -4, -4) });
            }));
  EXPECT_EQ("The control points of a deformable plane lie on one line", MessageOf([&] {
              fresh->SetControlPoints({ P(3, 3, 3), P(3, 3, 3), P(3, 3, 3) });
            }));
  EXPECT_TRUE(fresh->IsEmpty());
}

TEST(DeformablePlaneSides, PlaneBetweenTwoHalvesOfABoxOrganGivesExactCounts)
{
  // Box organ of 16 x 8 x 6 voxels (indices 2..17, 1..8, 1..6) on a 20 x 10 x 8 grid, spacing 1 x 2 x 3 mm.
  const unsigned int lo[3] = { 2, 1, 1 }, hi[3] = { 17, 8, 6 };
  auto organ = MakeBoxOrgan({ { 20, 10, 8 } }, V(1, 2, 3), lo, hi);

  struct Case
  {
    const char * name;
    lumo::DeformablePlane::PointsContainer points;
    std::size_t front, back, on;
  };
  // Planes across each axis (so that each column direction is used), between voxel layers and through one.
  const Case cases[] = {
    { "x = 9.5", { P(9.5, 0, 0), P(9.5, 1, 0), P(9.5, 0, 1) }, 384, 384, 0 },
    { "x = 9", { P(9, 0, 0), P(9, 1, 0), P(9, 0, 1) }, 384, 336, 48 },
    { "y = 9 mm", { P(0, 9, 0), P(1, 9, 0), P(0, 9, 1) }, 384, 384, 0 },
    { "z = 6 mm", { P(0, 0, 6), P(1, 0, 6), P(0, 1, 6) }, 512, 128, 128 },
    { "z = 10.5 mm", { P(0, 0, 10.5), P(1, 0, 10.5), P(0, 1, 10.5) }, 384, 384, 0 },
  };
  for (const Case & c : cases)
  {
    auto plane = MakePlane(c.points);
    lumo::Image::Pointer sides = plane->ComputeSideImage(organ, organ);
    EXPECT_EQ(c.front, CountLabel(sides, lumo::DeformablePlane::FrontLabel)) << c.name;
    EXPECT_EQ(c.back, CountLabel(sides, lumo::DeformablePlane::BackLabel)) << c.name;
    EXPECT_EQ(c.on, CountLabel(sides, lumo::DeformablePlane::OnSurfaceLabel)) << c.name;
    EXPECT_EQ(1600u - 768u, CountLabel(sides, lumo::DeformablePlane::OutsideLabel)) << c.name;
    const lumo::DeformablePlane::SideCounts counts = plane->CountSides(organ);
    EXPECT_EQ(c.front, counts.Front) << c.name;
    EXPECT_EQ(c.back, counts.Back) << c.name;
    EXPECT_EQ(c.on, counts.OnSurface) << c.name;
  }

  // The organ decides the front: with the box's centroid on the +x side the front turns to -x.
  auto plane = MakePlane({ P(5.5, 0, 0), P(5.5, 1, 0), P(5.5, 0, 1) });
  EXPECT_EQ(4u * 48u, plane->CountSides(organ).Back);
  plane->SetOrgan(organ);
  EXPECT_NEAR(-1.0, plane->GetPlaneNormal()[0], 1e-12);
  EXPECT_EQ(4u * 48u, plane->CountSides(organ).Front);
  EXPECT_EQ(12u * 48u, plane->CountSides(organ).Back);
}

TEST(DeformablePlaneSides, ColumnSideTestAgreesWithThePointTestOnEveryVoxel)
{
  // A rotated, anisotropic grid and a curved surface tilted against every axis.
  auto grid = lumo::Image::New();
  grid->Initialize(
    itk::IOComponentEnum::UCHAR, { { 23, 19, 17 } }, V(1.1, 0.9, 1.7), P(-3, 2, -8), lumotest::RotationZ90());
  lumo::DeformablePlane::PointsContainer points;
  for (const lumo::Point3D & p : CurvedPoints())
  {
    points.push_back(P(p[0] - 14, p[1] - 2, 0.6 * p[0] - 0.4 * p[1] + p[2]));
  }
  for (double tolerance : { 1e-6, 0.8 })
  {
    auto plane = MakePlane(points);
    plane->SetTolerance(tolerance);
    lumo::Image::Pointer sides = plane->ComputeSideImage(grid);
    const auto * labels = static_cast<const unsigned char *>(sides->GetData());
    std::size_t mismatches = 0, front = 0, back = 0, on = 0;
    std::size_t i = 0;
    for (unsigned int z = 0; z < 17; ++z)
    {
      for (unsigned int y = 0; y < 19; ++y)
      {
        for (unsigned int x = 0; x < 23; ++x, ++i)
        {
          lumo::Point3D world;
          grid->GetGeometry(0)->IndexToWorld(P(x, y, z), world);
          const int side = plane->GetSide(world);
          const unsigned char expected =
            side > 0 ? lumo::DeformablePlane::FrontLabel
                     : (side < 0 ? lumo::DeformablePlane::BackLabel : lumo::DeformablePlane::OnSurfaceLabel);
          mismatches += labels[i] != expected;
          front += side > 0;
          back += side < 0;
          on += side == 0;
        }
      }
    }
    EXPECT_EQ(0u, mismatches) << tolerance;
    // Both sides are well populated, and the wide band catches voxels.
    EXPECT_GT(front, 1000u);
    EXPECT_GT(back, 500u);
    if (tolerance > 0.1)
    {
      EXPECT_GT(on, 100u);
    }
  }
}

TEST(DeformablePlaneSides, BadGridsAndMasksAreRefused)
{
  auto plane = MakePlane({ P(0, 0, 0), P(1, 0, 0), P(0, 1, 0) });
  const unsigned int lo[3] = { 0, 0, 0 }, hi[3] = { 1, 1, 1 };
  auto grid = MakeBoxOrgan({ { 4, 4, 4 } }, V(1, 1, 1), lo, hi);
  auto other = MakeBoxOrgan({ { 4, 4, 5 } }, V(1, 1, 1), lo, hi);
  const std::string wrongMask = "DeformablePlane: the mask must be an unsigned 8-bit image of the grid's size";
  EXPECT_EQ(wrongMask, MessageOf([&] { plane->ComputeSideImage(grid, other); }));
  auto shorts = lumo::Image::New();
  shorts->Initialize(itk::IOComponentEnum::SHORT, { { 4, 4, 4 } });
  EXPECT_EQ(wrongMask, MessageOf([&] { plane->ComputeSideImage(grid, shorts); }));
  EXPECT_EQ(wrongMask, MessageOf([&] { plane->CountSides(shorts); }));
  EXPECT_EQ("DeformablePlane: no voxel grid given", MessageOf([&] { plane->ComputeSideImage(nullptr); }));
  EXPECT_EQ("DeformablePlane: no mask given", MessageOf([&] { plane->CountSides(nullptr); }));
  auto empty = lumo::DeformablePlane::New();
  EXPECT_EQ("A deformable plane needs at least 3 control points, got 0", MessageOf([&] { empty->CountSides(grid); }));
  EXPECT_EQ("A deformable plane needs at least 3 control points, got 0",
            MessageOf([&] { empty->CreateSurface(grid->GetGeometry(0)->GetWorldBounds()); }));
}

TEST(DeformablePlaneFiles, ControlPointsRoundTripThroughMps)
{
  lumotest::TemporaryDirectory directory;
  auto plane = MakePlane(CurvedPoints());
  const std::string file = directory.File("cut.plane.mps");
  lumo::WritePointSetFile(plane->GetControlPointsAsPointSet(), file);
  auto read = lumo::DeformablePlane::New();
  read->SetControlPoints(lumo::ReadPointSetFile(file));
  EXPECT_EQ(plane->GetControlPoints(), read->GetControlPoints());
  EXPECT_EQ(plane->GetSignedHeight(P(4, 9, 1)), read->GetSignedHeight(P(4, 9, 1)));

  // A file with too few points or points on one line is refused with the plane's messages.
  const std::string two = directory.File("two.mps");
  {
    std::ofstream out(two);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<LumoPointSet version=\"1\">\n  <TimeStep index=\"0\">\n"
        << "    <Point id=\"0\" x=\"1\" y=\"2\" z=\"3\"/>\n    <Point id=\"5\" x=\"4\" y=\"5\" z=\"6\"/>\n"
        << "  </TimeStep>\n</LumoPointSet>\n";
  }
  EXPECT_EQ("A deformable plane needs at least 3 control points, got 2",
            MessageOf([&] { read->SetControlPoints(lumo::ReadPointSetFile(two)); }));
  auto line = lumo::PointSet::New();
  line->InsertPoint(0, P(0, 0, 0));
  line->InsertPoint(1, P(0, 0, 1));
  line->InsertPoint(7, P(0, 0, 2));
  EXPECT_EQ("The control points of a deformable plane lie on one line",
            MessageOf([&] { read->SetControlPoints(line); }));
  EXPECT_EQ(plane->GetControlPoints(), read->GetControlPoints());
}

TEST(DeformablePlaneData, SurfaceForDrawingCloneAndPrint)
{
  auto plane = MakePlane({ P(0, 0, 5), P(10, 0, 5), P(0, 10, 5) });
  lumo::Geometry3D::BoundsArrayType box;
  const double values[6] = { -2, 12, 1, 9, 0, 10 };
  std::copy(values, values + 6, box.begin());
  lumo::Surface::Pointer surface = plane->CreateSurface(box, 16);
  vtkPolyData * polyData = surface->GetVtkPolyData();
  ASSERT_NE(nullptr, polyData);
  ASSERT_GT(polyData->GetNumberOfPoints(), 0);
  double bounds[6];
  polyData->GetBounds(bounds);
  EXPECT_NEAR(-2, bounds[0], 1e-6);
  EXPECT_NEAR(12, bounds[1], 1e-6);
  EXPECT_NEAR(1, bounds[2], 1e-6);
  EXPECT_NEAR(9, bounds[3], 1e-6);
  EXPECT_NEAR(5, bounds[4], 1e-9);
  EXPECT_NEAR(5, bounds[5], 1e-9);
  vtkDataArray * normals = polyData->GetPointData()->GetNormals();
  ASSERT_NE(nullptr, normals);
  ASSERT_EQ(polyData->GetNumberOfPoints(), normals->GetNumberOfTuples());
  EXPECT_NEAR(1.0, normals->GetTuple3(0)[2], 1e-6);
  EXPECT_GT(polyData->GetNumberOfPolys(), 0);

  // A box the surface misses gives an empty surface.
  const double above[6] = { 0, 10, 0, 10, 6, 9 };
  std::copy(above, above + 6, box.begin());
  EXPECT_TRUE(plane->CreateSurface(box)->IsEmpty());

  // The curved surface's drawing stays inside its box and on the surface at the grid nodes.
  auto curved = MakePlane(CurvedPoints());
  const double around[6] = { -5, 25, -5, 25, -20, 20 };
  std::copy(around, around + 6, box.begin());
  lumo::Surface::Pointer drawn = curved->CreateSurface(box, 32);
  vtkPolyData * sheet = drawn->GetVtkPolyData();
  std::size_t onSurface = 0;
  for (vtkIdType i = 0; i < sheet->GetNumberOfPoints(); ++i)
  {
    const double * p = sheet->GetPoint(i);
    EXPECT_TRUE(p[0] >= -5 - 1e-6 && p[0] <= 25 + 1e-6 && p[1] >= -5 - 1e-6 && p[1] <= 25 + 1e-6)
      << p[0] << " " << p[1] << " " << p[2];
    onSurface += std::abs(curved->GetSignedHeight(P(p[0], p[1], p[2]))) < 1e-4;
  }
  // Grid nodes lie on the surface; only the points made by the clip lie on triangle edges.
  EXPECT_GT(2 * onSurface, static_cast<std::size_t>(sheet->GetNumberOfPoints()));

  // A clone is a deep copy.
  auto clone = curved->Clone();
  EXPECT_EQ(curved->GetControlPoints(), clone->GetControlPoints());
  EXPECT_EQ(curved->GetSignedHeight(P(3, 3, 3)), clone->GetSignedHeight(P(3, 3, 3)));
  clone->MoveControlPoint(0, P(0, 0, 9), nullptr);
  EXPECT_EQ(P(0, 0, 0), curved->GetControlPoints()[0]);

  std::ostringstream text;
  curved->Print(text);
  EXPECT_NE(std::string::npos, text.str().find("Control points: 6"));
  EXPECT_NE(std::string::npos, text.str().find("Curved (thin-plate spline)"));
  EXPECT_STREQ("DeformablePlane", curved->GetNameOfClass());
}
