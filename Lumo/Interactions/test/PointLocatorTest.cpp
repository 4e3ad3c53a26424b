// The point locator against a brute-force search, ties included.

#include <lumoPointLocator.h>

#include <gtest/gtest.h>

#include <vtkNew.h>
#include <vtkPoints.h>

#include <cmath>
#include <random>

using namespace lumo;

namespace
{
Point3D
MakePoint(double x, double y, double z)
{
  Point3D point;
  point[0] = x;
  point[1] = y;
  point[2] = z;
  return point;
}

/** The nearest point by exhaustive search, the lowest id on ties; -1 for none. */
PointLocator::IdType
BruteForce(const std::vector<Point3D> & points, const Point3D & query, double * distance)
{
  PointLocator::IdType best = -1;
  double bestSquared = 0.0;
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    const double squared = points[i].SquaredEuclideanDistanceTo(query);
    if (best < 0 || squared < bestSquared)
    {
      best = static_cast<PointLocator::IdType>(i);
      bestSquared = squared;
    }
  }
  *distance = std::sqrt(bestSquared);
  return best;
}
} // namespace

TEST(PointLocatorTest, EmptySetAnswersMinusOne)
{
  auto locator = PointLocator::New();
  EXPECT_EQ(locator->GetNumberOfPoints(), 0);
  EXPECT_EQ(locator->FindClosestPoint(0.0, 0.0, 0.0), -1);
  double distance = 7.0;
  EXPECT_EQ(locator->FindClosestPointAndDistance(MakePoint(1, 2, 3), &distance), -1);
  EXPECT_EQ(distance, 7.0);
  locator->SetPoints(std::vector<Point3D>{ MakePoint(1, 1, 1) });
  EXPECT_EQ(locator->FindClosestPoint(0.0, 0.0, 0.0), 0);
  locator->SetPoints(static_cast<vtkPoints *>(nullptr));
  EXPECT_EQ(locator->FindClosestPoint(0.0, 0.0, 0.0), -1);
  vtkNew<vtkPoints> none;
  locator->SetPoints(none);
  EXPECT_EQ(locator->FindClosestPoint(0.0, 0.0, 0.0), -1);
}

TEST(PointLocatorTest, MatchesBruteForceOnRandomPoints)
{
  std::mt19937 engine(20240611);
  std::uniform_real_distribution<double> coordinate(-100.0, 100.0);
  std::vector<Point3D> points;
  vtkNew<vtkPoints> vtkSet;
  for (int i = 0; i < 3000; ++i)
  {
    points.push_back(MakePoint(coordinate(engine), coordinate(engine), coordinate(engine)));
    vtkSet->InsertNextPoint(points.back().GetDataPointer());
  }
  auto fromVector = PointLocator::New();
  auto fromVtk = PointLocator::New();
  fromVector->SetPoints(points);
  fromVtk->SetPoints(vtkSet);
  EXPECT_EQ(fromVector->GetNumberOfPoints(), 3000);
  std::uniform_real_distribution<double> wide(-150.0, 150.0);
  for (int q = 0; q < 2000; ++q)
  {
    const Point3D query = MakePoint(wide(engine), wide(engine), wide(engine));
    double expectedDistance = 0.0;
    const PointLocator::IdType expected = BruteForce(points, query, &expectedDistance);
    double distance = -1.0;
    ASSERT_EQ(fromVector->FindClosestPointAndDistance(query, &distance), expected) << q;
    EXPECT_EQ(distance, expectedDistance);
    ASSERT_EQ(fromVtk->FindClosestPoint(query[0], query[1], query[2]), expected) << q;
    ASSERT_EQ(fromVtk->FindClosestPoint(query), expected) << q;
  }
}

TEST(PointLocatorTest, TiesGoToTheLowestId)
{
  // Integer coordinates on a small grid: many points coincide and many queries lie at equal distances.
  std::mt19937 engine(7);
  std::uniform_int_distribution<int> coordinate(0, 4);
  std::vector<Point3D> points;
  for (int i = 0; i < 400; ++i)
  {
    points.push_back(MakePoint(coordinate(engine), coordinate(engine), coordinate(engine)));
  }
  auto locator = PointLocator::New();
  locator->SetPoints(points);
  int ties = 0;
  std::uniform_int_distribution<int> half(-2, 10);
  for (int q = 0; q < 3000; ++q)
  {
    const Point3D query = MakePoint(0.5 * half(engine), 0.5 * half(engine), 0.5 * half(engine));
    double expectedDistance = 0.0;
    const PointLocator::IdType expected = BruteForce(points, query, &expectedDistance);
    int atThatDistance = 0;
    for (const Point3D & point : points)
    {
      atThatDistance += std::sqrt(point.SquaredEuclideanDistanceTo(query)) == expectedDistance ? 1 : 0;
    }
    ties += atThatDistance > 1 ? 1 : 0;
    double distance = -1.0;
    ASSERT_EQ(locator->FindClosestPointAndDistance(query, &distance), expected) << q;
    EXPECT_EQ(distance, expectedDistance);
  }
  EXPECT_GT(ties, 2500); // the test is about ties
  // Two points only, the query halfway.
  locator->SetPoints(std::vector<Point3D>{ MakePoint(2, 0, 0), MakePoint(0, 0, 0), MakePoint(0, 0, 0) });
  EXPECT_EQ(locator->FindClosestPoint(1.0, 0.0, 0.0), 0);
  EXPECT_EQ(locator->FindClosestPoint(0.0, 0.0, 0.0), 1);
}

TEST(PointLocatorTest, NonFiniteInputIsRefused)
{
  auto locator = PointLocator::New();
  locator->SetPoints(std::vector<Point3D>{ MakePoint(0, 0, 0) });
  const auto time = locator->GetMTime();
  try
  {
    locator->SetPoints(std::vector<Point3D>{ MakePoint(0, 0, 0), MakePoint(1, NAN, 0) });
    ADD_FAILURE() << "no exception";
  }
  catch (const itk::ExceptionObject & error)
  {
    EXPECT_EQ(std::string(error.GetDescription()), "PointLocator: point 1 is not finite");
  }
  EXPECT_GT(locator->GetMTime(), time);
  EXPECT_EQ(locator->GetNumberOfPoints(), 0);
  locator->SetPoints(std::vector<Point3D>{ MakePoint(0, 0, 0) });
  EXPECT_EQ(locator->FindClosestPoint(NAN, 0.0, 0.0), -1);
  EXPECT_EQ(locator->FindClosestPoint(0.0, INFINITY, 0.0), -1);
}
