// Surfaces and point sets: data objects and their files.

#include "LumoTestUtilities.h"

#include <lumoPointSetIO.h>
#include <lumoSurfaceIO.h>

#include <gtest/gtest.h>

#include <vtkCellArray.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>

#include <fstream>

using namespace lumo;

namespace
{
/** A tetrahedron: 4 points, 4 triangles. */
vtkSmartPointer<vtkPolyData>
Tetrahedron()
{
  vtkSmartPointer<vtkPoints> points = vtkSmartPointer<vtkPoints>::New();
  points->SetDataTypeToFloat();
  points->InsertNextPoint(0.0, 0.0, 0.0);
  points->InsertNextPoint(10.5, 0.0, 0.0);
  points->InsertNextPoint(0.0, 20.25, 0.0);
  points->InsertNextPoint(0.0, 0.0, -5.0);
  vtkSmartPointer<vtkCellArray> triangles = vtkSmartPointer<vtkCellArray>::New();
  const vtkIdType cells[4][3] = { { 0, 2, 1 }, { 0, 1, 3 }, { 0, 3, 2 }, { 1, 2, 3 } };
  for (const auto & cell : cells)
  {
    triangles->InsertNextCell(3, cell);
  }
  vtkSmartPointer<vtkPolyData> polyData = vtkSmartPointer<vtkPolyData>::New();
  polyData->SetPoints(points);
  polyData->SetPolys(triangles);
  return polyData;
}

/** Every point of a occurs in b (coordinates equal). */
bool
SamePointSet(vtkPolyData * a, vtkPolyData * b)
{
  if (a->GetNumberOfPoints() != b->GetNumberOfPoints())
  {
    return false;
  }
  for (vtkIdType i = 0; i < a->GetNumberOfPoints(); ++i)
  {
    double p[3];
    a->GetPoint(i, p);
    bool found = false;
    for (vtkIdType j = 0; j < b->GetNumberOfPoints() && !found; ++j)
    {
      double q[3];
      b->GetPoint(j, q);
      found = p[0] == q[0] && p[1] == q[1] && p[2] == q[2];
    }
    if (!found)
    {
      return false;
    }
  }
  return true;
}

Point3D
P(double x, double y, double z)
{
  Point3D p;
  p[0] = x;
  p[1] = y;
  p[2] = z;
  return p;
}
} // namespace

TEST(SurfaceTest, PolyDataPerTimeStepAndBounds)
{
  Surface::Pointer surface = Surface::New();
  EXPECT_TRUE(surface->IsEmpty());
  surface->SetVtkPolyData(Tetrahedron(), 2);
  EXPECT_EQ(surface->GetTimeSteps(), 3u);
  EXPECT_TRUE(surface->IsEmptyTimeStep(0));
  EXPECT_FALSE(surface->IsEmptyTimeStep(2));
  EXPECT_FALSE(surface->IsEmpty());
  const auto & bounds = surface->GetGeometry(2)->GetBounds();
  EXPECT_DOUBLE_EQ(bounds[1], 10.5);
  EXPECT_DOUBLE_EQ(bounds[3], 20.25);
  EXPECT_DOUBLE_EQ(bounds[4], -5.0);
  surface->UpdateOutputInformation();
  EXPECT_DOUBLE_EQ(surface->GetTimeSlicedGeometry()->GetBounds()[3], 20.25);
  surface->Clear();
  EXPECT_EQ(surface->GetTimeSteps(), 1u);
  EXPECT_EQ(surface->GetVtkPolyData(), nullptr);
}

TEST(SurfaceIOTest, RoundTripVtpVtkStl)
{
  lumotest::TemporaryDirectory directory;
  Surface::Pointer surface = Surface::New();
  surface->SetVtkPolyData(Tetrahedron());
  for (const std::string name : { "tetra.vtp", "tetra.vtk", "tetra.stl", "TETRA.STL" })
  {
    const std::string file = directory.File(name);
    WriteSurfaceFile(surface, file);
    Surface::Pointer back = ReadSurfaceFile(file);
    ASSERT_NE(back->GetVtkPolyData(), nullptr) << name;
    EXPECT_EQ(back->GetVtkPolyData()->GetNumberOfPolys(), 4) << name;
    EXPECT_TRUE(SamePointSet(surface->GetVtkPolyData(), back->GetVtkPolyData())) << name;
    EXPECT_DOUBLE_EQ(back->GetGeometry()->GetBounds()[3], 20.25) << name;
  }
}

TEST(SurfaceIOTest, Errors)
{
  lumotest::TemporaryDirectory directory;
  const std::string missing = directory.File("missing.vtp");
  try
  {
    ReadSurfaceFile(missing);
    FAIL() << "no exception";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()), "Could not read surface '" + missing + "': the file does not exist");
  }
  const std::string broken = directory.File("broken.vtp");
  std::ofstream(broken) << "<VTKFile type=\"PolyData\"><broken";
  EXPECT_THROW(ReadSurfaceFile(broken), itk::ExceptionObject);
  Surface::Pointer empty = Surface::New();
  EXPECT_THROW(WriteSurfaceFile(empty, directory.File("empty.vtp")), itk::ExceptionObject);
  EXPECT_TRUE(CanReadSurfaceFile("a.OBJ"));
  EXPECT_TRUE(CanWriteSurfaceFile("a.obj"));
}

TEST(PointSetTest, PointsPerTimeStep)
{
  PointSet::Pointer pointSet = PointSet::New();
  EXPECT_TRUE(pointSet->IsEmpty());
  EXPECT_EQ(pointSet->AddPoint(P(1, 2, 3)), 0u);
  EXPECT_EQ(pointSet->AddPoint(P(-1, 5, 0)), 1u);
  pointSet->InsertPoint(10, P(4, 4, 4));
  EXPECT_EQ(pointSet->AddPoint(P(0, 0, 0)), 11u);
  pointSet->InsertPoint(3, P(7, 8, 9), 1);
  EXPECT_EQ(pointSet->GetTimeSteps(), 2u);
  EXPECT_EQ(pointSet->GetSize(0), 4u);
  EXPECT_EQ(pointSet->GetSize(1), 1u);
  EXPECT_EQ(pointSet->GetSize(7), 0u);
  EXPECT_TRUE(pointSet->IndexExists(10));
  EXPECT_EQ(pointSet->GetPoint(3, 1), P(7, 8, 9));
  EXPECT_THROW(pointSet->GetPoint(3, 0), itk::InvalidArgumentError);
  EXPECT_TRUE(pointSet->RemovePoint(10));
  EXPECT_FALSE(pointSet->RemovePoint(10));
  const auto & bounds = pointSet->GetGeometry(0)->GetBounds();
  EXPECT_EQ(bounds[0], -1.0);
  EXPECT_EQ(bounds[3], 5.0);
}

TEST(PointSetIOTest, MpsRoundTrip)
{
  lumotest::TemporaryDirectory directory;
  PointSet::Pointer pointSet = PointSet::New();
  pointSet->InsertPoint(0, P(0.1, -2.5, 1e-7));
  pointSet->InsertPoint(7, P(1.0 / 3.0, 12345.678901234567, -0.0));
  pointSet->InsertPoint(2, P(4, 5, 6), 2); // step 1 stays empty
  const std::string file = directory.File("landmarks.mps");
  WritePointSetFile(pointSet, file);
  PointSet::Pointer back = ReadPointSetFile(file);
  ASSERT_EQ(back->GetTimeSteps(), 3u);
  for (TimeStepType t = 0; t < 3; ++t)
  {
    EXPECT_EQ(back->GetPoints(t), pointSet->GetPoints(t)) << "time step " << t;
  }
}

class MalformedMpsTest : public ::testing::Test
{
protected:
  /** Reads the text as a .mps file and answers the exception's description ("" when none). */
  std::string
  ReadError(const std::string & text)
  {
    const std::string file = directory.File("case.mps");
    std::ofstream(file) << text;
    try
    {
      ReadPointSetFile(file);
    }
    catch (const itk::ExceptionObject & e)
    {
      return e.GetDescription();
    }
    return "";
  }
  std::string
  Prefix(int line)
  {
    return "Malformed point set file '" + directory.File("case.mps") + "', line " + std::to_string(line) + ": ";
  }

  lumotest::TemporaryDirectory directory;
};

TEST_F(MalformedMpsTest, EveryAttributeIsChecked)
{
  const std::string head = "<?xml version=\"1.0\"?>\n<LumoPointSet version=\"1\">\n<TimeStep index=\"0\">\n";
  const std::string tail = "</TimeStep>\n</LumoPointSet>\n";
  EXPECT_EQ(ReadError(head + "<Point id=\"0\" x=\"1\" y=\"2\" z=\"3\"/>\n" + tail), "");
  EXPECT_EQ(ReadError(head + "<Point id=\"0\" x=\"1\" y=\"2\"/>\n" + tail),
            Prefix(4) + "<Point> without attribute \"z\"");
  EXPECT_EQ(ReadError(head + "<Point id=\"0\" x=\"1,5\" y=\"2\" z=\"3\"/>\n" + tail),
            Prefix(4) + "attribute \"x\" of <Point> is \"1,5\", not a finite number");
  EXPECT_EQ(ReadError(head + "<Point id=\"0\" x=\"nan\" y=\"2\" z=\"3\"/>\n" + tail),
            Prefix(4) + "attribute \"x\" of <Point> is \"nan\", not a finite number");
  EXPECT_EQ(ReadError(head + "<Point id=\"-1\" x=\"1\" y=\"2\" z=\"3\"/>\n" + tail),
            Prefix(4) + "attribute \"id\" of <Point> is \"-1\", not an integer from 0 to 4294967295");
  EXPECT_EQ(ReadError(head + "<Point id=\"0\" x=\"1\" y=\"2\" z=\"3\" w=\"4\"/>\n" + tail),
            Prefix(4) + "unexpected attribute \"w\" on <Point>");
  EXPECT_EQ(
    ReadError(head + "<Point id=\"1\" x=\"1\" y=\"2\" z=\"3\"/>\n<Point id=\"1\" x=\"1\" y=\"2\" z=\"3\"/>\n" + tail),
    Prefix(5) + "point id 1 appears twice in time step 0");
  EXPECT_EQ(ReadError(head + "<Pt id=\"0\"/>\n" + tail),
            Prefix(4) + "unexpected element <Pt> in <TimeStep>, expected <Point>");
  EXPECT_EQ(ReadError("<?xml version=\"1.0\"?>\n<LumoPointSet version=\"2\"/>\n"),
            Prefix(2) + "unsupported version \"2\", expected \"1\"");
  EXPECT_EQ(ReadError("<?xml version=\"1.0\"?>\n<LumoPointSet/>\n"),
            Prefix(2) + "<LumoPointSet> without attribute \"version\"");
  EXPECT_EQ(ReadError("<?xml version=\"1.0\"?>\n<point_set_file/>\n"),
            Prefix(2) + "the root element is <point_set_file>, expected <LumoPointSet>");
  EXPECT_EQ(
    ReadError("<?xml version=\"1.0\"?>\n<LumoPointSet version=\"1\">\n<TimeStep index=\"x\"/>\n</LumoPointSet>"),
    Prefix(3) + "attribute \"index\" of <TimeStep> is \"x\", not an integer from 0 to 99999");
  EXPECT_EQ(ReadError("<?xml version=\"1.0\"?>\n<LumoPointSet version=\"1\">\n<TimeStep index=\"0\"/>\n"
                      "<TimeStep index=\"0\"/>\n</LumoPointSet>"),
            Prefix(4) + "time step 0 appears twice");
  EXPECT_EQ(ReadError("<?xml version=\"1.0\"?>\n<LumoPointSet version=\"1\">\n<TimeStep index=\"0\"/>\n"
                      "<TimeStep index=\"99999\"/>\n</LumoPointSet>"),
            Prefix(4) +
              "time step 99999 lies too far beyond the 2 time steps of the file (at most 1024 empty steps between)");
  EXPECT_EQ(ReadError("<?xml version=\"1.0\"?>\n<LumoPointSet version=\"1\">text</LumoPointSet>"),
            Prefix(2) + "unexpected text in <LumoPointSet>");

  const std::string broken = ReadError("<LumoPointSet version=\"1\">");
  EXPECT_EQ(broken.rfind("Could not read point set '" + directory.File("case.mps") + "': not well-formed XML (", 0), 0u)
    << broken;
}
