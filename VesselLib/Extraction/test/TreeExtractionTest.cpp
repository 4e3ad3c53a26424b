#include "BreadthFirstTreeExtractor.h"
#include "CleaningSelleSkeletonizer.h"
#include "ExtractionTestSupport.h"
#include "SkeletonGraphExtractor.h"
#include "TubeMask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <vector>

namespace
{
/** A hand-made skeleton: voxels set to 1 in a pic, with their distances in a list it owns. */
class Skeleton
{
public:
  Skeleton(std::uint32_t x, std::uint32_t y, std::uint32_t z)
    : m_pic(newMask(x, y, z))
    , m_volume(new VolumeAccessor<unsigned char>(m_pic, 0, true))
  {}
  ~Skeleton()
  {
    for (DistancePoint3D * point : m_points)
      delete point;
  }
  void
  set(unsigned short x, unsigned short y, unsigned short z, float distance = 2.0f)
  {
    m_volume->setVoxel(x, y, z, 1);
    m_points.push_back(new DistancePoint3D(x, y, z, distance, 0.0f, 0.0f));
  }
  /** A straight run of voxels from a to b (inclusive), stepping each coordinate towards b. */
  void
  line(int ax, int ay, int az, int bx, int by, int bz, float distance = 2.0f)
  {
    for (;;)
    {
      set(static_cast<unsigned short>(ax), static_cast<unsigned short>(ay), static_cast<unsigned short>(az), distance);
      if (ax == bx && ay == by && az == bz)
        break;
      ax += (bx > ax) - (bx < ax);
      ay += (by > ay) - (by < ay);
      az += (bz > az) - (bz < az);
    }
  }
  VolumeAccessor<unsigned char> *
  volume()
  {
    return m_volume.get();
  }
  DistancePoint3DList *
  points()
  {
    return &m_points;
  }

private:
  lumoIpPicDescriptor * m_pic;
  std::unique_ptr<VolumeAccessor<unsigned char>> m_volume;
  DistancePoint3DList m_points;
};

struct Flat
{
  int id;
  int parent; // 0 for the root
  std::vector<VesselPoint> points;
};

/** The vessels in breadth-first order with their parent's id. */
std::vector<Flat>
flatten(const ArVesselTree & tree)
{
  std::vector<Flat> result;
  LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr || linked->getRootNode() == nullptr)
    return result;
  std::deque<VesselNode *> queue{ linked->getRootNode() };
  while (!queue.empty())
  {
    VesselNode * node = queue.front();
    queue.pop_front();
    result.push_back({ node->getData()->getVesselId(),
                       node->getParent() != nullptr ? node->getParent()->getData()->getVesselId() : 0,
                       node->getData()->getPoints() });
    for (VesselNode * child : node->children())
      queue.push_back(child);
  }
  return result;
}

/** Every child starts at its parent's end point and the ids are 1, 2, ... in breadth-first order. */
void
expectConnectedAndNumbered(const std::vector<Flat> & vessels)
{
  for (std::size_t i = 0; i < vessels.size(); ++i)
  {
    EXPECT_EQ(vessels[i].id, static_cast<int>(i) + 1);
    if (vessels[i].parent == 0)
      continue;
    const Flat & parent = vessels[static_cast<std::size_t>(vessels[i].parent) - 1];
    ASSERT_FALSE(parent.points.empty());
    ASSERT_FALSE(vessels[i].points.empty());
    EXPECT_EQ(vessels[i].points.front(), parent.points.back()) << "vessel " << vessels[i].id;
  }
}

std::size_t
pointCount(const std::vector<Flat> & vessels)
{
  std::size_t count = 0;
  for (const Flat & v : vessels)
    count += v.points.size();
  return count;
}

/** Thins the mask (taken over) as the extraction filter does and extracts from the start. */
struct Extraction
{
  std::vector<Flat> vessels;
  std::size_t skeletonVoxels;
  std::size_t leftOutParts;
};

Extraction
thinAndExtract(lumoIpPicDescriptor * mask, const Point3D & start)
{
  CleaningSelleSkeletonizer skeletonizer(mask, false, 0, true);
  skeletonizer.skeletonize();
  BreadthFirstTreeExtractor extractor;
  const ArVesselTree tree = extractor.getTree(skeletonizer.getBinaryVolume(), skeletonizer.getResultList(), start);
  Extraction result{ flatten(tree), extractor.getNumberOfSkeletonVoxels(), extractor.getNumberOfLeftOutParts() };
  lumoIpPicFree(skeletonizer.getBinaryPic());
  return result;
}
} // namespace

TEST(SkeletonGraphExtractorTest, BranchingVoxelsFormOneClusterAndChainsBecomeEdges)
{
  // A plus sign in the plane z = 2: four arms of three voxels around the centre (7, 7, 2).
  Skeleton skeleton(15, 15, 5);
  skeleton.line(4, 7, 2, 10, 7, 2);
  skeleton.line(7, 4, 2, 7, 10, 2);
  SkeletonGraphExtractor extractor;
  std::unique_ptr<SkeletonGraph> graph(extractor.extractGraph(*skeleton.volume(), Point3D(4, 7, 2)));
  ASSERT_EQ(graph->numberOfVoxels(), 13u);
  // The centre and its four face neighbours have three or more neighbours: one cluster of five.
  std::size_t clusters = 0;
  std::size_t ends = 0;
  for (const SkeletonGraph::Node & node : graph->getNodes())
  {
    if (node.kind == SkeletonGraph::NodeKind::Branching)
    {
      ++clusters;
      EXPECT_EQ(node.voxels.size(), 5u);
      EXPECT_FLOAT_EQ(node.x, 7.0f);
      EXPECT_FLOAT_EQ(node.y, 7.0f);
      EXPECT_EQ(graph->voxelX(node.representative), 7);
      EXPECT_EQ(graph->voxelY(node.representative), 7);
      EXPECT_EQ(node.edges.size(), 4u);
    }
    ends += node.kind == SkeletonGraph::NodeKind::EndPoint ? 1 : 0;
  }
  EXPECT_EQ(clusters, 1u);
  EXPECT_EQ(ends, 4u);
  ASSERT_EQ(graph->getEdges().size(), 4u);
  for (const SkeletonGraph::Edge & edge : graph->getEdges())
    EXPECT_EQ(edge.voxels.size(), 1u);
  EXPECT_EQ(graph->getNodes()[graph->getStartNode()].kind, SkeletonGraph::NodeKind::EndPoint);
  EXPECT_FALSE(extractor.getStartWasSnapped());
}

TEST(SkeletonGraphExtractorTest, StartOffTheSkeletonIsMovedToTheNearestVoxelAndCutsItsChain)
{
  Skeleton skeleton(20, 5, 5);
  skeleton.line(2, 2, 2, 17, 2, 2);
  SkeletonGraphExtractor extractor;
  std::unique_ptr<SkeletonGraph> graph(extractor.extractGraph(*skeleton.volume(), Point3D(9, 0, 4)));
  EXPECT_TRUE(extractor.getStartWasSnapped());
  EXPECT_EQ(extractor.getStartX(), 9);
  EXPECT_EQ(extractor.getStartY(), 2);
  EXPECT_EQ(extractor.getStartZ(), 2);
  const SkeletonGraph::Node & start = graph->getNodes()[graph->getStartNode()];
  EXPECT_EQ(start.kind, SkeletonGraph::NodeKind::Start);
  ASSERT_EQ(start.edges.size(), 2u);
  EXPECT_EQ(graph->getEdges()[start.edges[0]].voxels.size() + graph->getEdges()[start.edges[1]].voxels.size(), 13u);
}

TEST(BreadthFirstTreeExtractorTest, StraightTubeGivesOneVesselWithItsDiameter)
{
  lumoIpPicDescriptor * mask = newMask(40, 15, 15);
  drawTube(static_cast<unsigned char *>(mask->data), mask->n, TubeSegment{ { 5, 7, 7 }, { 34, 7, 7 }, 3.0 });
  const Extraction result = thinAndExtract(mask, Point3D(0, 7, 7));
  ASSERT_EQ(result.vessels.size(), 1u);
  const std::vector<VesselPoint> & points = result.vessels[0].points;
  // From the end nearest to the start to the other end, along the axis.
  EXPECT_LT(points.front().x, points.back().x);
  EXPECT_LE(points.front().x, 6.0f);
  EXPECT_GE(points.back().x, 33.0f);
  EXPECT_EQ(points.size(), result.skeletonVoxels);
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    EXPECT_NEAR(points[i].y, 7.0f, 1.0f);
    EXPECT_NEAR(points[i].z, 7.0f, 1.0f);
    if (points[i].x >= 10 && points[i].x <= 29)
    {
      EXPECT_NEAR(points[i].diameter, 6.0f, 1.0f) << "at x = " << points[i].x;
    }
  }
  EXPECT_EQ(result.leftOutParts, 0u);
}

TEST(BreadthFirstTreeExtractorTest, YShapedTubeGivesARootAndTwoChildrenMeetingAtItsEnd)
{
  lumoIpPicDescriptor * mask = newMask(60, 40, 21);
  drawY(static_cast<unsigned char *>(mask->data), mask->n);
  const Extraction result = thinAndExtract(mask, Point3D(0, 20, 10));
  ASSERT_EQ(result.vessels.size(), 3u);
  expectConnectedAndNumbered(result.vessels);
  EXPECT_EQ(result.vessels[1].parent, 1);
  EXPECT_EQ(result.vessels[2].parent, 1);
  EXPECT_NEAR(result.vessels[0].points.back().x, 30.0f, 3.0f);
  EXPECT_NEAR(result.vessels[0].points.back().y, 20.0f, 1.5f);
  // One branch ends up, one down.
  const float ends[2] = { result.vessels[1].points.back().y, result.vessels[2].points.back().y };
  EXPECT_NEAR(std::min(ends[0], ends[1]), 8.0f, 3.0f);
  EXPECT_NEAR(std::max(ends[0], ends[1]), 32.0f, 3.0f);
}

TEST(BreadthFirstTreeExtractorTest, FixedYMaskGivesThisSkeletonAndTree)
{
  // Pinned: a faster skeletonizer or extractor must give exactly this.
  lumoIpPicDescriptor * mask = newMask(60, 40, 21);
  drawY(static_cast<unsigned char *>(mask->data), mask->n);
  const Extraction result = thinAndExtract(mask, Point3D(0, 20, 10));
  EXPECT_EQ(result.skeletonVoxels, 69u);
  ASSERT_EQ(result.vessels.size(), 3u);
  std::vector<std::size_t> sizes;
  std::vector<float> diameters;
  for (const Flat & v : result.vessels)
  {
    sizes.push_back(v.points.size());
    for (const VesselPoint & p : v.points)
      diameters.push_back(p.diameter);
  }
  EXPECT_EQ(sizes, (std::vector<std::size_t>{ 29, 21, 21 }));
  EXPECT_EQ(pointCount(result.vessels), 71u); // the branching's centre ends the root and starts both branches
  double sum = 0;
  for (float d : diameters)
    sum += d;
  EXPECT_DOUBLE_EQ(sum, 365.06121730804443);
  EXPECT_EQ(result.vessels[0].points.front(), (VesselPoint{ 4, 20, 10, 0x1.54c584p+2f }));
  EXPECT_EQ(result.vessels[2].points.back(), (VesselPoint{ 52, 32, 10, 0x1.54c584p+2f }));
}

TEST(BreadthFirstTreeExtractorTest, LoopIsBrokenIntoATreeWithoutLosingCentreLine)
{
  // A ring (an octagon between x, y = 4 and 12) with a tail on each side at y = 8; start at the left tail's end.
  Skeleton skeleton(18, 18, 3);
  skeleton.line(5, 4, 1, 11, 4, 1);
  skeleton.line(12, 5, 1, 12, 11, 1);
  skeleton.line(11, 12, 1, 5, 12, 1);
  skeleton.line(4, 11, 1, 4, 5, 1);
  skeleton.line(1, 8, 1, 3, 8, 1);
  skeleton.line(13, 8, 1, 15, 8, 1);
  BreadthFirstTreeExtractor extractor;
  const ArVesselTree tree = extractor.getTree(skeleton.volume(), skeleton.points(), Point3D(1, 8, 1));
  const std::vector<Flat> vessels = flatten(tree);
  // Left tail; the upper half of the ring to the right branching; the lower half, which would close the loop
  // and so stops one voxel short of it; the right tail from the end of the upper half.
  ASSERT_EQ(vessels.size(), 4u);
  expectConnectedAndNumbered(vessels);
  EXPECT_EQ(vessels[1].parent, 1);
  EXPECT_EQ(vessels[2].parent, 1);
  EXPECT_EQ(vessels[3].parent, 2);
  const std::vector<std::size_t> sizes = {
    vessels[0].points.size(), vessels[1].points.size(), vessels[2].points.size(), vessels[3].points.size()
  };
  EXPECT_EQ(sizes, (std::vector<std::size_t>{ 3, 13, 12, 3 }));
  EXPECT_EQ(vessels[0].points.back(), (VesselPoint{ 3.75f, 8, 1, 3.0f }));
  EXPECT_EQ(vessels[2].points.back().x, 12.0f);
  EXPECT_EQ(vessels[2].points.back().y, 10.0f);
  EXPECT_EQ(extractor.getNumberOfLeftOutParts(), 0u);
  EXPECT_EQ(extractor.getNumberOfSkeletonVoxels(), 34u);
}

TEST(BreadthFirstTreeExtractorTest, PartsNotConnectedToTheStartAreLeftOutAndCounted)
{
  Skeleton skeleton(30, 10, 10);
  skeleton.line(1, 2, 2, 20, 2, 2); // the start's part
  skeleton.line(1, 7, 7, 5, 7, 7);  // five voxels apart
  skeleton.set(25, 5, 5);           // one voxel alone
  BreadthFirstTreeExtractor extractor;
  const ArVesselTree tree = extractor.getTree(skeleton.volume(), skeleton.points(), Point3D(1, 2, 2));
  const std::vector<Flat> vessels = flatten(tree);
  ASSERT_EQ(vessels.size(), 1u);
  EXPECT_EQ(vessels[0].points.size(), 20u);
  EXPECT_EQ(extractor.getNumberOfLeftOutParts(), 2u);
  EXPECT_EQ(extractor.getNumberOfLeftOutVoxels(), 6u);
  EXPECT_EQ(extractor.getNumberOfSkeletonVoxels(), 26u);
}

TEST(BreadthFirstTreeExtractorTest, IdsFollowTheBreadthFirstWalkAndChildrenStartAtTheirParentsEnd)
{
  // Root along x to a branching at (10, 10); two branches, each branching again.
  Skeleton skeleton(40, 21, 3);
  skeleton.line(1, 10, 1, 10, 10, 1);
  skeleton.line(11, 11, 1, 18, 18, 1); // upper branch to (18, 18)
  skeleton.line(11, 9, 1, 18, 2, 1);   // lower branch to (18, 2)
  skeleton.line(19, 18, 1, 30, 18, 1); // upper continues right ...
  skeleton.line(19, 19, 1, 20, 20, 1); // ... and up
  skeleton.line(19, 2, 1, 30, 2, 1);   // lower continues right ...
  skeleton.line(19, 1, 1, 20, 0, 1);   // ... and down
  BreadthFirstTreeExtractor extractor;
  const ArVesselTree tree = extractor.getTree(skeleton.volume(), skeleton.points(), Point3D(1, 10, 1));
  const std::vector<Flat> vessels = flatten(tree);
  ASSERT_EQ(vessels.size(), 7u);
  expectConnectedAndNumbered(vessels);
  const std::vector<int> parents = { vessels[0].parent, vessels[1].parent, vessels[2].parent, vessels[3].parent,
                                     vessels[4].parent, vessels[5].parent, vessels[6].parent };
  EXPECT_EQ(parents, (std::vector<int>{ 0, 1, 1, 2, 2, 3, 3 }));
  EXPECT_EQ(extractor.getNumberOfLeftOutParts(), 0u);
}

TEST(BreadthFirstTreeExtractorTest, StartInsideAChainOrAloneGivesARootOfOnePoint)
{
  Skeleton skeleton(20, 5, 5);
  skeleton.line(2, 2, 2, 17, 2, 2, 3.0f);
  BreadthFirstTreeExtractor extractor;
  std::vector<Flat> vessels = flatten(extractor.getTree(skeleton.volume(), skeleton.points(), Point3D(9, 2, 2)));
  ASSERT_EQ(vessels.size(), 3u);
  expectConnectedAndNumbered(vessels);
  EXPECT_EQ(vessels[0].points, (std::vector<VesselPoint>{ { 9, 2, 2, 5.0f } }));
  EXPECT_EQ(vessels[1].points.size() + vessels[2].points.size(), 17u); // 16 voxels, the start in both

  Skeleton single(3, 3, 3);
  single.set(1, 1, 1, 1.0f);
  vessels = flatten(extractor.getTree(single.volume(), single.points(), Point3D(0, 0, 0)));
  ASSERT_EQ(vessels.size(), 1u);
  EXPECT_EQ(vessels[0].points, (std::vector<VesselPoint>{ { 1, 1, 1, 1.0f } }));

  Skeleton empty(3, 3, 3);
  const ArVesselTree none = extractor.getTree(empty.volume(), empty.points(), Point3D(0, 0, 0));
  ASSERT_FALSE(none.isNull());
  EXPECT_FALSE(none->hasRoot());
}

TEST(BreadthFirstTreeExtractorTest, DiametersFollowTheSkeletalPointsOrTheDistanceVolume)
{
  Skeleton skeleton(10, 5, 5);
  skeleton.line(2, 2, 2, 6, 2, 2, 3.0f);
  skeleton.volume()->setVoxelSize(2.0f, 1.5f, 4.0f); // minimum 1.5
  BreadthFirstTreeExtractor extractor;
  std::vector<Flat> vessels = flatten(extractor.getTree(skeleton.volume(), skeleton.points(), Point3D(2, 2, 2)));
  ASSERT_EQ(vessels.size(), 1u);
  ASSERT_EQ(vessels[0].points.size(), 5u);
  // Points are voxel indices times the voxel sizes.
  EXPECT_EQ(vessels[0].points[1], (VesselPoint{ 6.0f, 3.0f, 8.0f, 2.0f * (3.0f - 0.75f) }));
  for (const VesselPoint & p : vessels[0].points)
    EXPECT_FLOAT_EQ(p.diameter, 2.0f * (3.0f - 0.75f));

  // A float distance volume wins, with half the x voxel size.
  lumoIpPicDescriptor * distances = lumoIpPicNewVolume(lumoIpPicFloat, 32, 3, skeleton.volume()->getPic()->n);
  VolumeAccessor<float> distanceVolume(distances, 0.0f, true);
  for (unsigned short x = 2; x <= 6; ++x)
    distanceVolume.setVoxel(x, 2, 2, static_cast<float>(x));
  extractor.setDistanceVolume(&distanceVolume);
  vessels = flatten(extractor.getTree(skeleton.volume(), nullptr, Point3D(2, 2, 2)));
  ASSERT_EQ(vessels.size(), 1u);
  for (const VesselPoint & p : vessels[0].points)
    EXPECT_FLOAT_EQ(p.diameter, 2.0f * (p.x / 2.0f - 1.0f));
}

TEST(BreadthFirstTreeExtractorDeathTest, MissingDistancesEndTheProcess)
{
  Skeleton skeleton(10, 5, 5);
  skeleton.line(2, 2, 2, 6, 2, 2);
  DistancePoint3DList incomplete(skeleton.points()->begin(), skeleton.points()->begin() + 3);
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      BreadthFirstTreeExtractor extractor;
      extractor.getTree(skeleton.volume(), &incomplete, Point3D(2, 2, 2));
    },
    ::testing::ExitedWithCode(1),
    exactly("BreadthFirstTreeExtractor::getDiameter(): fehlender Distanzwert"));
  EXPECT_EXIT(
    {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      BreadthFirstTreeExtractor extractor;
      extractor.getTree(skeleton.volume(), nullptr, Point3D(2, 2, 2));
    },
    ::testing::ExitedWithCode(1),
    exactly("BreadthFirstTreeExtractor::getDiameter(): fehlende Distanzen!"));
}

TEST(BreadthFirstTreeExtractorTest, ThickestEndPointBecomesTheRootWhenAsked)
{
  Skeleton skeleton(30, 5, 5);
  for (unsigned short x = 2; x <= 25; ++x)
    skeleton.set(x, 2, 2, x == 25 ? 4.0f : 2.0f);
  BreadthFirstTreeExtractor extractor;
  extractor.setStartAtThickestEndPoint(true);
  const std::vector<Flat> vessels = flatten(extractor.getTree(skeleton.volume(), skeleton.points(), Point3D(2, 2, 2)));
  ASSERT_EQ(vessels.size(), 1u);
  EXPECT_EQ(vessels[0].points.front().x, 25.0f);
  EXPECT_EQ(vessels[0].points.back().x, 2.0f);
}

TEST(BreadthFirstTreeExtractorTest, EqualEndsTieToTheLowerVoxelIndexAndEndsBeatThickerInnerPoints)
{
  // Both ends equally thick, a thicker voxel inside; the points listed from the far end first, so that list order
  // cannot decide.
  Skeleton skeleton(30, 5, 5);
  for (unsigned short x = 25; x >= 2; --x)
    skeleton.set(x, 2, 2, x == 2 || x == 25 ? 4.0f : (x == 13 ? 6.0f : 2.0f));
  for (bool reversed : { false, true })
  {
    DistancePoint3DList points(skeleton.points()->begin(), skeleton.points()->end());
    if (reversed)
      std::reverse(points.begin(), points.end());
    BreadthFirstTreeExtractor extractor;
    extractor.setStartAtThickestEndPoint(true);
    const std::vector<Flat> vessels = flatten(extractor.getTree(skeleton.volume(), &points, Point3D(13, 2, 2)));
    ASSERT_EQ(vessels.size(), 1u);
    EXPECT_EQ(vessels[0].points.front().x, 2.0f) << (reversed ? "reversed" : "in order");
    EXPECT_EQ(vessels[0].points.back().x, 25.0f);
  }
}
