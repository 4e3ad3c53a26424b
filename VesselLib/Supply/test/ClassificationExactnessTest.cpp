// The block-wise search against a brute-force scan over all samples with the selection rule (nearest wins, equal
// squared distances go to the lowest sample index), for every organ voxel, on one and on two work units.

#include "SupplyTestSupport.h"

#include "SuppliedTissueClassifier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <thread>

using namespace supply_test;

namespace
{
struct Reference
{
  std::uint16_t id;
  float distance;
};

Reference
bruteForce(const std::vector<VesselElement> & samples, const float p[3])
{
  double best = std::numeric_limits<double>::max();
  std::size_t bestIndex = 0;
  for (std::size_t i = 0; i < samples.size(); ++i)
  {
    const double dx = static_cast<double>(p[0]) - static_cast<double>(samples[i].x);
    const double dy = static_cast<double>(p[1]) - static_cast<double>(samples[i].y);
    const double dz = static_cast<double>(p[2]) - static_cast<double>(samples[i].z);
    const double d = dx * dx + dy * dy + dz * dz;
    if (d < best)
    {
      best = d;
      bestIndex = i;
    }
  }
  return { samples[bestIndex].vesselId, static_cast<float>(std::sqrt(best)) };
}

/** One vessel per sample (ids 1, 2, ...), all children of the root, so that every sample's id is its own. */
ArVesselTree
treeOf(const std::vector<VesselElement> & samples)
{
  std::vector<VesselRecipe> children;
  for (std::size_t i = 1; i < samples.size(); ++i)
  {
    const VesselElement & s = samples[i];
    children.push_back({ s.vesselId, PortalVein, S_V, 1, { { s.x, s.y, s.z, 1 } } });
  }
  const VesselElement & r = samples[0];
  return makeStar({ r.vesselId, PortalVein, S_V, 1, { { r.x, r.y, r.z, 1 } } }, children);
}

void
runOnThreads(unsigned int units, const std::function<void(unsigned int)> & work)
{
  std::vector<std::thread> threads;
  for (unsigned int u = 1; u < units; ++u)
  {
    threads.emplace_back(work, u);
  }
  work(0);
  for (std::thread & t : threads)
  {
    t.join();
  }
}

/** Classifies the organ with the samples and compares every voxel with the brute-force scan. */
void
expectExact(lumoIpPicDescriptor * organ,
            const float voxelSize[3],
            const float origin[3],
            const std::vector<VesselElement> & samples)
{
  std::size_t organVoxels = 0;
  for (unsigned int units : { 1u, 2u })
  {
    SCOPED_TRACE("work units: " + std::to_string(units));
    auto * accessor = new ThreeDPicAccessor<unsigned char>(organ, false, 0);
    accessor->setVoxelSize(voxelSize[0], voxelSize[1], voxelSize[2]);
    accessor->setOrigin(origin[0], origin[1], origin[2]);
    SuppliedTissueClassifier classifier(accessor, treeOf(samples));
    classifier.setWorkRunner(runOnThreads, units);
    classifier.cumputeSuppliedTissue();
    lumoIpPicDescriptor * ids = classifier.getVesselIDVolume()->getPic();
    lumoIpPicDescriptor * distances = classifier.getDistanceVolume()->getPic();
    std::size_t mismatches = 0;
    organVoxels = 0;
    for (std::uint32_t z = 0; z < organ->n[2]; ++z)
    {
      for (std::uint32_t y = 0; y < organ->n[1]; ++y)
      {
        for (std::uint32_t x = 0; x < organ->n[0]; ++x)
        {
          if (voxel<unsigned char>(organ, x, y, z) == 0)
          {
            mismatches += voxel<std::uint16_t>(ids, x, y, z) != 0;
            continue;
          }
          ++organVoxels;
          const float p[3] = { static_cast<float>(x) * voxelSize[0] + origin[0],
                               static_cast<float>(y) * voxelSize[1] + origin[1],
                               static_cast<float>(z) * voxelSize[2] + origin[2] };
          const Reference expected = bruteForce(samples, p);
          const bool same =
            voxel<std::uint16_t>(ids, x, y, z) == expected.id && voxel<float>(distances, x, y, z) == expected.distance;
          if (!same && ++mismatches <= 5)
          {
            ADD_FAILURE() << "voxel (" << x << ", " << y << ", " << z << "): id " << voxel<std::uint16_t>(ids, x, y, z)
                          << " distance " << voxel<float>(distances, x, y, z) << ", brute force id " << expected.id
                          << " distance " << expected.distance;
          }
        }
      }
    }
    EXPECT_EQ(mismatches, 0u);
  }
  EXPECT_GT(organVoxels, 0u);
}
} // namespace

TEST(ClassificationExactness, MediumOrganWithScatteredSamples)
{
  // An ellipsoid of about 50,000 voxels with anisotropic spacing and 1500 samples in clusters along random
  // segments, some of them repeated at the same position by another vessel.
  const std::uint32_t n[3] = { 64, 56, 40 };
  lumoIpPicDescriptor * organ = newOrgan(n[0], n[1], n[2]);
  for (std::uint32_t z = 0; z < n[2]; ++z)
  {
    for (std::uint32_t y = 0; y < n[1]; ++y)
    {
      for (std::uint32_t x = 0; x < n[0]; ++x)
      {
        const double a = (x - 31.5) / 31.0;
        const double b = (y - 27.5) / 27.0;
        const double c = (z - 19.5) / 19.0;
        if (a * a + b * b + c * c <= 1.0)
        {
          voxel<unsigned char>(organ, x, y, z) = 1 + (x % 3);
        }
      }
    }
  }
  const float voxelSize[3] = { 0.7f, 0.8f, 1.5f };
  const float origin[3] = { -20.25f, 3.5f, 100.0f };
  std::mt19937 random(5);
  std::uniform_real_distribution<float> px(-20.0f, 25.0f);
  std::uniform_real_distribution<float> py(3.0f, 48.0f);
  std::uniform_real_distribution<float> pz(95.0f, 165.0f);
  std::uniform_real_distribution<float> step(-1.0f, 1.0f);
  std::vector<VesselElement> samples;
  std::uint16_t id = 1;
  while (samples.size() < 1500)
  {
    float x = px(random), y = py(random), z = pz(random);
    for (int i = 0; i < 30; ++i, ++id)
    {
      samples.push_back({ x, y, z, 1, id });
      if (i % 7 == 3)
      {
        samples.push_back({ x, y, z, 1, static_cast<std::uint16_t>(id + 20000) });
      }
      x += step(random);
      y += step(random);
      z += step(random);
    }
  }
  expectExact(organ, voxelSize, origin, samples);
  lumoIpPicFree(organ);
}

TEST(ClassificationExactness, SamplesOnVoxelCentresWithManyTies)
{
  // A lattice of samples every 4 voxels (and a few every 3 along one line): most voxels are equally far from two,
  // four or eight samples, so the tie rule decides.
  const std::uint32_t n[3] = { 33, 30, 27 };
  lumoIpPicDescriptor * organ = newOrgan(n[0], n[1], n[2]);
  std::fill_n(static_cast<unsigned char *>(organ->data), lumoIpPicElements(organ), 1);
  voxel<unsigned char>(organ, 5, 5, 5) = 0;
  const float voxelSize[3] = { 1.0f, 1.0f, 1.0f };
  const float origin[3] = { 0.0f, 0.0f, 0.0f };
  std::vector<VesselElement> samples;
  std::uint16_t id = 1;
  // Listed from the far corner backwards, so that the lowest index is not the first the search meets.
  for (int z = 24; z >= 0; z -= 4)
  {
    for (int y = 28; y >= 0; y -= 4)
    {
      for (int x = 32; x >= 0; x -= 4)
      {
        samples.push_back({ static_cast<float>(x), static_cast<float>(y), static_cast<float>(z), 1, id++ });
      }
    }
  }
  for (int x = 0; x < 33; x += 3)
  {
    samples.push_back({ static_cast<float>(x), 13.0f, 13.0f, 1, id++ });
  }
  expectExact(organ, voxelSize, origin, samples);
  lumoIpPicFree(organ);
}
