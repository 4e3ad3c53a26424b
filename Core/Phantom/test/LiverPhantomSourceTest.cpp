#include "lumoLiverPhantomSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <deque>
#include <set>
#include <sstream>

using namespace lumo;

namespace
{
struct Segment
{
  std::array<double, 3> a;
  std::array<double, 3> b;
  double ra;
  double rb;
};

/** The vessels breadth first, children in order. */
std::vector<ar<Vessel>>
levelOrder(const VesselTreeData & data)
{
  std::vector<ar<Vessel>> vessels;
  std::deque<VesselNode *> queue{ asLinkedVesselTree(data.GetVesselTreeData(0))->getRootNode() };
  while (!queue.empty())
  {
    VesselNode * node = queue.front();
    queue.pop_front();
    vessels.push_back(node->getData());
    queue.insert(queue.end(), node->children().begin(), node->children().end());
  }
  return vessels;
}

std::string
treeText(const VesselTreeData & data)
{
  std::ostringstream os;
  data.GetVesselTreeData(0)->write(os);
  return os.str();
}

std::vector<Segment>
segmentsOf(const VesselTreeData & data)
{
  std::vector<Segment> segments;
  for (const ar<Vessel> & vessel : levelOrder(data))
  {
    for (std::size_t i = 1; i < vessel->numberOfPoints(); ++i)
    {
      const VesselPoint & p = vessel->getPoint(i - 1);
      const VesselPoint & q = vessel->getPoint(i);
      segments.push_back({ { p.x, p.y, p.z }, { q.x, q.y, q.z }, 0.5 * p.diameter, 0.5 * q.diameter });
    }
  }
  return segments;
}

/** Every voxel against every segment near it (bounding spheres only prune), by the documented rule. */
std::vector<std::uint8_t>
bruteForceMask(const Image & image, const std::vector<Segment> & segments)
{
  const auto size = image.GetSize();
  const Vector3D spacing = image.GetSpacing();
  const Point3D origin = image.GetOrigin();
  struct Sphere
  {
    double c[3];
    double r2;
  };
  std::vector<Sphere> spheres;
  for (const Segment & s : segments)
  {
    Sphere sphere;
    double half2 = 0.0;
    for (int k = 0; k < 3; ++k)
    {
      sphere.c[k] = 0.5 * (s.a[k] + s.b[k]);
      half2 += 0.25 * (s.b[k] - s.a[k]) * (s.b[k] - s.a[k]);
    }
    const double reach = std::sqrt(half2) + std::max(s.ra, s.rb) + 1e-6;
    sphere.r2 = reach * reach;
    spheres.push_back(sphere);
  }
  std::vector<std::uint8_t> mask(size[0] * size[1] * size[2], 0);
  std::size_t index = 0;
  for (std::size_t z = 0; z < size[2]; ++z)
  {
    for (std::size_t y = 0; y < size[1]; ++y)
    {
      for (std::size_t x = 0; x < size[0]; ++x, ++index)
      {
        const double p[3] = { origin[0] + static_cast<double>(x) * spacing[0],
                              origin[1] + static_cast<double>(y) * spacing[1],
                              origin[2] + static_cast<double>(z) * spacing[2] };
        for (std::size_t n = 0; n < segments.size() && mask[index] == 0; ++n)
        {
          const Sphere & sphere = spheres[n];
          const double dx = p[0] - sphere.c[0];
          const double dy = p[1] - sphere.c[1];
          const double dz = p[2] - sphere.c[2];
          if (dx * dx + dy * dy + dz * dz > sphere.r2)
          {
            continue;
          }
          const Segment & s = segments[n];
          const double ab[3] = { s.b[0] - s.a[0], s.b[1] - s.a[1], s.b[2] - s.a[2] };
          const double ap[3] = { p[0] - s.a[0], p[1] - s.a[1], p[2] - s.a[2] };
          const double ll = ab[0] * ab[0] + ab[1] * ab[1] + ab[2] * ab[2];
          double t = ll > 0.0 ? (ap[0] * ab[0] + ap[1] * ab[1] + ap[2] * ab[2]) / ll : 0.0;
          t = std::clamp(t, 0.0, 1.0);
          const double d[3] = { ap[0] - ab[0] * t, ap[1] - ab[1] * t, ap[2] - ab[2] * t };
          const double r = s.ra + t * (s.rb - s.ra);
          if (d[0] * d[0] + d[1] * d[1] + d[2] * d[2] <= r * r)
          {
            mask[index] = 1;
          }
        }
      }
    }
  }
  return mask;
}

std::size_t
countOnes(const Image & image)
{
  const auto * v = static_cast<const std::uint8_t *>(image.GetData());
  return static_cast<std::size_t>(std::count(v, v + image.GetNumberOfVoxels(), 1));
}

/** One small phantom shared by the read-only tests (seed 7). */
class LiverPhantom : public ::testing::Test
{
protected:
  static void
  SetUpTestSuite()
  {
    s_Source = LiverPhantomSource::New();
    s_Source->SetSizePreset(LiverPhantomSource::SizePreset::Small);
    s_Source->SetSeed(7);
    s_Source->Update();
  }
  static void
  TearDownTestSuite()
  {
    s_Source = nullptr;
  }
  static LiverPhantomSource::Pointer s_Source;
};
LiverPhantomSource::Pointer LiverPhantom::s_Source;
} // namespace

TEST_F(LiverPhantom, MasksHaveTheSmallVolumesGeometryAndHoldOnlyZeroAndOne)
{
  for (Image * image : { s_Source->GetOrganMask(), s_Source->GetPortalMask(), s_Source->GetHepaticMask() })
  {
    ASSERT_TRUE(image->IsInitialized());
    EXPECT_EQ(image->GetDimension(), 3u);
    EXPECT_EQ(image->GetPixelTypeAsString(), "unsigned_char");
    EXPECT_EQ(image->GetDimension(0), 96u);
    EXPECT_EQ(image->GetDimension(1), 96u);
    EXPECT_EQ(image->GetDimension(2), 64u);
    EXPECT_EQ(image->GetSpacing()[0], 2.5);
    EXPECT_EQ(image->GetSpacing()[1], 2.5);
    EXPECT_EQ(image->GetSpacing()[2], 3.0);
    EXPECT_EQ(image->GetOrigin()[0], -118.75);
    EXPECT_EQ(image->GetOrigin()[1], -118.75);
    EXPECT_EQ(image->GetOrigin()[2], -94.5);
    for (unsigned int r = 0; r < 3; ++r)
    {
      for (unsigned int c = 0; c < 3; ++c)
      {
        EXPECT_EQ(image->GetDirection()[r][c], r == c ? 1.0 : 0.0);
      }
    }
    double minimum = -1;
    double maximum = -1;
    ASSERT_TRUE(image->GetScalarRange(minimum, maximum));
    EXPECT_EQ(minimum, 0.0);
    EXPECT_EQ(maximum, 1.0);
  }
}

TEST_F(LiverPhantom, OrganMaskIsTheImplicitShapeAtEveryVoxelCentre)
{
  const Image & organ = *s_Source->GetOrganMask();
  const auto * v = static_cast<const std::uint8_t *>(organ.GetData());
  std::size_t index = 0;
  std::size_t wrong = 0;
  std::size_t right = 0;
  std::size_t left = 0;
  for (unsigned int z = 0; z < 64; ++z)
  {
    for (unsigned int y = 0; y < 96; ++y)
    {
      for (unsigned int x = 0; x < 96; ++x, ++index)
      {
        const double px = -118.75 + 2.5 * x;
        const bool inside = LiverPhantomSource::EvaluateOrgan(px, -118.75 + 2.5 * y, -94.5 + 3.0 * z) <= 0.0;
        wrong += (v[index] == 1) != inside;
        (px < 0.0 ? right : left) += v[index];
      }
    }
  }
  EXPECT_EQ(wrong, 0u);
  // A liver, not an ellipsoid: the right lobe (x < 0, the patient's right) holds most of the organ.
  EXPECT_GT(right, 2 * left);
  EXPECT_GT(left, 0u);
  // The inferior notch between the lobes is open in front, closed further back.
  EXPECT_GT(LiverPhantomSource::EvaluateOrgan(14, -45, -30), 0.0);
  EXPECT_LT(LiverPhantomSource::EvaluateOrgan(14, 0, -30), 0.0);
}

TEST_F(LiverPhantom, VesselMasksAreExactlyTheVoxelsWithinTheRadiusOfTheTrueCentreLines)
{
  for (int system = 0; system < 2; ++system)
  {
    const Image & mask = system == 0 ? *s_Source->GetPortalMask() : *s_Source->GetHepaticMask();
    const VesselTreeData & tree = system == 0 ? *s_Source->GetPortalTree() : *s_Source->GetHepaticTree();
    const std::vector<std::uint8_t> expected = bruteForceMask(mask, segmentsOf(tree));
    const auto * v = static_cast<const std::uint8_t *>(mask.GetData());
    std::size_t differences = 0;
    for (std::size_t i = 0; i < expected.size(); ++i)
    {
      differences += v[i] != expected[i];
    }
    EXPECT_EQ(differences, 0u) << "system " << system;
    EXPECT_GT(countOnes(mask), 1000u) << "system " << system;
  }
}

TEST_F(LiverPhantom, TreesAreConnectedBreadthFirstNumberedAndFollowMurraysLaw)
{
  for (VesselTreeData * data : { s_Source->GetPortalTree(), s_Source->GetHepaticTree() })
  {
    const std::vector<ar<Vessel>> vessels = levelOrder(*data);
    ASSERT_GT(vessels.size(), 50u);
    for (std::size_t i = 0; i < vessels.size(); ++i)
    {
      EXPECT_EQ(vessels[i]->getVesselId(), static_cast<std::int32_t>(i + 1));
      EXPECT_GE(vessels[i]->numberOfPoints(), 2u);
      EXPECT_GE(vessels[i]->getPoint(0).diameter, 2.0f * 0.9999f);
    }
    EXPECT_EQ(vessels.front()->getPoint(0).diameter, 14.0f);
    auto * tree = asLinkedVesselTree(data->GetVesselTreeData(0));
    ASSERT_NE(tree, nullptr);
    std::size_t bifurcations = 0;
    for (VesselNode * node = LinkedTreeWalk<ar<Vessel>>::preorder(nullptr, tree->getRootNode()); node != nullptr;
         node = LinkedTreeWalk<ar<Vessel>>::preorder(node, tree->getRootNode()))
    {
      const ar<Vessel> parent = node->getData();
      const VesselPoint & end = parent->getPoint(parent->numberOfPoints() - 1);
      ASSERT_TRUE(node->numberOfChildren() == 0 || node->numberOfChildren() == 2);
      if (node->numberOfChildren() == 0)
      {
        continue;
      }
      ++bifurcations;
      double cubes = 0.0;
      for (VesselNode * childNode : node->children())
      {
        const VesselPoint & start = childNode->getData()->getPoint(0);
        EXPECT_EQ(start.x, end.x);
        EXPECT_EQ(start.y, end.y);
        EXPECT_EQ(start.z, end.z);
        EXPECT_LE(start.diameter, end.diameter);
        cubes += std::pow(0.5 * start.diameter, 3);
      }
      const double parentCube = std::pow(0.5 * end.diameter, 3);
      // Diameters carry six significant digits, as the .ves format stores them.
      EXPECT_NEAR(cubes, parentCube, 5e-5 * parentCube) << "vessel " << parent->getVesselId();
    }
    EXPECT_EQ(bifurcations * 2 + 1, vessels.size());
  }
}

TEST_F(LiverPhantom, LabelsFollowTheVesselSystems)
{
  std::set<std::int32_t> portalSegments;
  for (const ar<Vessel> & vessel : levelOrder(*s_Source->GetPortalTree()))
  {
    EXPECT_EQ(vessel->getProperties().getBloodVesselType(), PortalVein);
    portalSegments.insert(vessel->getProperties().getSegmentType());
  }
  EXPECT_EQ(portalSegments, (std::set<std::int32_t>{ S_I, S_II, S_III, S_IVa, S_IVb, S_V, S_VI, S_VII, S_VIII }));
  std::set<std::int32_t> hepaticTerritories;
  for (const ar<Vessel> & vessel : levelOrder(*s_Source->GetHepaticTree()))
  {
    EXPECT_EQ(vessel->getProperties().getBloodVesselType(), HepaticVein);
    const std::int32_t territory = vessel->getProperties().getSegmentType();
    EXPECT_TRUE(VesselLabels::isHepaticTerritory(territory)) << territory;
    hepaticTerritories.insert(territory);
  }
  for (std::int32_t stem : { HS_RSV, HS_SMM, HS_LSV })
  {
    EXPECT_EQ(hepaticTerritories.count(stem), 1u) << stem;
  }
  EXPECT_GE(hepaticTerritories.size(), 8u);
}

TEST_F(LiverPhantom, EveryVesselLiesInsideTheOrgan)
{
  const double margin = s_Source->GetWallMargin();
  for (VesselTreeData * data : { s_Source->GetPortalTree(), s_Source->GetHepaticTree() })
  {
    for (const ar<Vessel> & vessel : levelOrder(*data))
    {
      for (std::size_t i = 1; i < vessel->numberOfPoints(); ++i)
      {
        const VesselPoint & p = vessel->getPoint(i);
        EXPECT_LE(LiverPhantomSource::EvaluateOrgan(p.x, p.y, p.z), -margin + 1e-4) << vessel->getVesselId();
      }
    }
  }
  const auto * organ = static_cast<const std::uint8_t *>(s_Source->GetOrganMask()->GetData());
  for (Image * mask : { s_Source->GetPortalMask(), s_Source->GetHepaticMask() })
  {
    const auto * v = static_cast<const std::uint8_t *>(mask->GetData());
    std::size_t outside = 0;
    for (std::size_t i = 0; i < mask->GetNumberOfVoxels(); ++i)
    {
      outside += v[i] == 1 && organ[i] == 0;
    }
    EXPECT_EQ(outside, 0u);
  }
}

TEST(LiverPhantomSeeds, SameSeedGivesIdenticalOutputsAndAnotherSeedDifferentOnes)
{
  auto run = [](std::uint64_t seed) {
    auto source = LiverPhantomSource::New();
    source->SetSizePreset(LiverPhantomSource::SizePreset::Small);
    source->SetSeed(seed);
    source->Update();
    return source;
  };
  auto first = run(3);
  auto again = run(3);
  auto other = run(4);
  auto sameVoxels = [](Image * a, Image * b) {
    return a->GetNumberOfVoxels() == b->GetNumberOfVoxels() &&
           std::memcmp(a->GetData(), b->GetData(), a->GetNumberOfVoxels()) == 0;
  };
  EXPECT_TRUE(sameVoxels(first->GetOrganMask(), again->GetOrganMask()));
  EXPECT_TRUE(sameVoxels(first->GetPortalMask(), again->GetPortalMask()));
  EXPECT_TRUE(sameVoxels(first->GetHepaticMask(), again->GetHepaticMask()));
  EXPECT_EQ(treeText(*first->GetPortalTree()), treeText(*again->GetPortalTree()));
  EXPECT_EQ(treeText(*first->GetHepaticTree()), treeText(*again->GetHepaticTree()));

  // The organ is fixed anatomy; the vessels are not.
  EXPECT_TRUE(sameVoxels(first->GetOrganMask(), other->GetOrganMask()));
  EXPECT_FALSE(sameVoxels(first->GetPortalMask(), other->GetPortalMask()));
  EXPECT_FALSE(sameVoxels(first->GetHepaticMask(), other->GetHepaticMask()));
  EXPECT_NE(treeText(*first->GetPortalTree()), treeText(*other->GetPortalTree()));
  EXPECT_NE(treeText(*first->GetHepaticTree()), treeText(*other->GetHepaticTree()));
}

TEST(LiverPhantomParameters, PresetsNamesAndRejectedValues)
{
  LiverPhantomSource::SizePreset preset = LiverPhantomSource::SizePreset::Small;
  EXPECT_TRUE(LiverPhantomSource::ParseSizePreset("large", preset));
  EXPECT_EQ(preset, LiverPhantomSource::SizePreset::Large);
  EXPECT_TRUE(LiverPhantomSource::ParseSizePreset("medium", preset));
  EXPECT_EQ(preset, LiverPhantomSource::SizePreset::Medium);
  EXPECT_FALSE(LiverPhantomSource::ParseSizePreset("Large", preset));
  EXPECT_FALSE(LiverPhantomSource::ParseSizePreset("", preset));

  auto source = LiverPhantomSource::New();
  source->SetSizePreset(LiverPhantomSource::SizePreset::Large);
  EXPECT_EQ(source->GetSize()[0], 512u);
  EXPECT_EQ(source->GetSize()[2], 300u);
  EXPECT_EQ(source->GetSpacing()[0], 0.46875);
  EXPECT_EQ(source->GetSpacing()[2], 0.64);

  source->SetSizePreset(LiverPhantomSource::SizePreset::Small);
  source->SetTaperRatio(1.5);
  EXPECT_THROW(source->Update(), itk::ExceptionObject);
  source->SetTaperRatio(0.95);
  auto spacing = source->GetSpacing();
  spacing[1] = 0.0;
  source->SetSpacing(spacing);
  EXPECT_THROW(source->Update(), itk::ExceptionObject);
  // A field of view that misses the vessels' roots.
  source->SetSizePreset(LiverPhantomSource::SizePreset::Small);
  LiverPhantomSource::SizeType tiny;
  tiny.Fill(8);
  source->SetSize(tiny);
  EXPECT_THROW(source->Update(), itk::ExceptionObject);
}

namespace
{
/** Distance from a point to the centre lines of the root vessel and its children. */
double
distanceToTrunk(const VesselTreeData & data, const std::array<double, 3> & p)
{
  const VesselNode * root = asLinkedVesselTree(data.GetVesselTreeData(0))->getRootNode();
  std::vector<const VesselNode *> nodes{ root };
  nodes.insert(nodes.end(), root->children().begin(), root->children().end());
  double best = 1e300;
  for (const VesselNode * node : nodes)
  {
    const ar<Vessel> & vessel = node->getData();
    for (std::size_t i = 1; i < vessel->numberOfPoints(); ++i)
    {
      const VesselPoint & a = vessel->getPoint(i - 1);
      const VesselPoint & b = vessel->getPoint(i);
      const double ab[3] = { b.x - a.x, b.y - a.y, b.z - a.z };
      const double ap[3] = { p[0] - a.x, p[1] - a.y, p[2] - a.z };
      const double ll = ab[0] * ab[0] + ab[1] * ab[1] + ab[2] * ab[2];
      const double t = ll > 0.0 ? std::clamp((ap[0] * ab[0] + ap[1] * ab[1] + ap[2] * ab[2]) / ll, 0.0, 1.0) : 0.0;
      const double d[3] = { ap[0] - t * ab[0], ap[1] - t * ab[1], ap[2] - t * ab[2] };
      best = std::min(best, std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]));
    }
  }
  return best;
}

/** Number of 26-connected groups of ones. */
std::size_t
countComponents(const Image & image)
{
  const auto size = image.GetSize();
  const auto * v = static_cast<const std::uint8_t *>(image.GetData());
  std::vector<bool> seen(image.GetNumberOfVoxels(), false);
  std::size_t components = 0;
  for (std::size_t start = 0; start < seen.size(); ++start)
  {
    if (v[start] != 1 || seen[start])
    {
      continue;
    }
    ++components;
    std::deque<std::size_t> queue{ start };
    seen[start] = true;
    while (!queue.empty())
    {
      const std::size_t index = queue.front();
      queue.pop_front();
      const long x = static_cast<long>(index % size[0]);
      const long y = static_cast<long>((index / size[0]) % size[1]);
      const long z = static_cast<long>(index / (size[0] * size[1]));
      for (long dz = -1; dz <= 1; ++dz)
        for (long dy = -1; dy <= 1; ++dy)
          for (long dx = -1; dx <= 1; ++dx)
          {
            const long nx = x + dx, ny = y + dy, nz = z + dz;
            if (nx < 0 || ny < 0 || nz < 0 || nx >= static_cast<long>(size[0]) || ny >= static_cast<long>(size[1]) ||
                nz >= static_cast<long>(size[2]))
            {
              continue;
            }
            const std::size_t n = (static_cast<std::size_t>(nz) * size[1] + ny) * size[0] + nx;
            if (v[n] == 1 && !seen[n])
            {
              seen[n] = true;
              queue.push_back(n);
            }
          }
    }
  }
  return components;
}
} // namespace

TEST(LiverPhantomTumours, LesionsLieInsideTheOrganAwayFromTheTrunks)
{
  std::set<unsigned int> counts;
  for (std::uint64_t seed = 1; seed <= 8; ++seed)
  {
    auto source = LiverPhantomSource::New();
    source->SetSizePreset(LiverPhantomSource::SizePreset::Small);
    source->SetSeed(seed);
    source->Update();
    const Image & tumour = *source->GetTumourMask();
    ASSERT_TRUE(tumour.IsInitialized());
    EXPECT_EQ(tumour.GetPixelTypeAsString(), "unsigned_char");
    EXPECT_EQ(tumour.GetSize(), source->GetOrganMask()->GetSize());
    EXPECT_EQ(tumour.GetOrigin(), source->GetOrganMask()->GetOrigin());
    EXPECT_EQ(tumour.GetSpacing(), source->GetOrganMask()->GetSpacing());
    const unsigned int lesions = source->GetNumberOfTumours();
    EXPECT_GE(lesions, 1u) << "seed " << seed;
    EXPECT_LE(lesions, 3u) << "seed " << seed;
    counts.insert(lesions);
    // Lesions are apart from each other: one connected piece each.
    EXPECT_EQ(countComponents(tumour), lesions) << "seed " << seed;

    const auto * t = static_cast<const std::uint8_t *>(tumour.GetData());
    const auto * o = static_cast<const std::uint8_t *>(source->GetOrganMask()->GetData());
    const auto size = tumour.GetSize();
    std::size_t voxels = 0;
    std::size_t outside = 0;
    std::size_t nearTrunk = 0;
    std::size_t index = 0;
    for (std::size_t z = 0; z < size[2]; ++z)
    {
      for (std::size_t y = 0; y < size[1]; ++y)
      {
        for (std::size_t x = 0; x < size[0]; ++x, ++index)
        {
          EXPECT_LE(t[index], 1);
          if (t[index] != 1)
          {
            continue;
          }
          ++voxels;
          outside += o[index] != 1;
          const std::array<double, 3> p{ -118.75 + 2.5 * x, -118.75 + 2.5 * y, -94.5 + 3.0 * z };
          // A 10 mm margin plus the rounding of a centre-line point to its voxel (half a diagonal) stays clear.
          const double clearance = 10.0 + 0.5 * std::sqrt(2.5 * 2.5 * 2 + 3.0 * 3.0);
          nearTrunk += distanceToTrunk(*source->GetPortalTree(), p) <= clearance ||
                       distanceToTrunk(*source->GetHepaticTree(), p) <= clearance;
        }
      }
    }
    // Lesions of 9 to 16 mm: 2900 to 17000 mm3 each, 18.75 mm3 a voxel.
    EXPECT_GE(voxels, 150u * lesions) << "seed " << seed;
    EXPECT_LE(voxels, 1400u * lesions) << "seed " << seed;
    EXPECT_EQ(outside, 0u) << "seed " << seed;
    EXPECT_EQ(nearTrunk, 0u) << "seed " << seed;
  }
  // The seeds show more than one count of lesions.
  EXPECT_GT(counts.size(), 1u);
}

TEST(LiverPhantomTumours, SameSeedSameTumoursAtEverySize)
{
  auto run = [](std::uint64_t seed, LiverPhantomSource::SizePreset preset) {
    auto source = LiverPhantomSource::New();
    source->SetSizePreset(preset);
    source->SetSeed(seed);
    source->Update();
    return source;
  };
  auto first = run(5, LiverPhantomSource::SizePreset::Small);
  auto again = run(5, LiverPhantomSource::SizePreset::Small);
  auto other = run(6, LiverPhantomSource::SizePreset::Small);
  const std::size_t n = first->GetTumourMask()->GetNumberOfVoxels();
  EXPECT_EQ(std::memcmp(first->GetTumourMask()->GetData(), again->GetTumourMask()->GetData(), n), 0);
  EXPECT_NE(std::memcmp(first->GetTumourMask()->GetData(), other->GetTumourMask()->GetData(), n), 0);
  EXPECT_EQ(first->GetNumberOfTumours(), again->GetNumberOfTumours());

  // The lesions are fixed in millimetres: the medium volume's tumour volume matches the small one's.
  auto medium = run(5, LiverPhantomSource::SizePreset::Medium);
  EXPECT_EQ(medium->GetNumberOfTumours(), first->GetNumberOfTumours());
  const double smallVolume = countOnes(*first->GetTumourMask()) * 2.5 * 2.5 * 3.0;
  const double mediumVolume = countOnes(*medium->GetTumourMask()) * 0.9375 * 0.9375 * 1.2;
  EXPECT_NEAR(mediumVolume, smallVolume, 0.1 * smallVolume);
}
