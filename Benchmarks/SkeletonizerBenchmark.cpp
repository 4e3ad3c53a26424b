// Thinning speed of the Selle skeletonizer on a synthetic vessel tree (three trees of branching round tubes, radius
// 11 down to about 1.5 voxels) in volumes up to the clinical 512 x 512 x 300. The mask is built once per size; each
// iteration thins a fresh copy, and only the thinning is timed.

#include "CleaningSelleSkeletonizer.h"
#include "SelleSkeletonizer.h"
#include "lumoIpPicDescriptor.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <tuple>

namespace
{
struct Tube
{
  double from[3];
  double to[3];
  double radius;
};

void
drawTube(lumoIpPicDescriptor * pic, const Tube & tube)
{
  const int size[3] = { static_cast<int>(pic->n[0]), static_cast<int>(pic->n[1]), static_cast<int>(pic->n[2]) };
  int low[3];
  int high[3];
  for (int a = 0; a < 3; ++a)
  {
    low[a] = std::max(0, static_cast<int>(std::floor(std::min(tube.from[a], tube.to[a]) - tube.radius)));
    high[a] = std::min(size[a] - 1, static_cast<int>(std::ceil(std::max(tube.from[a], tube.to[a]) + tube.radius)));
  }
  const double d[3] = { tube.to[0] - tube.from[0], tube.to[1] - tube.from[1], tube.to[2] - tube.from[2] };
  const double length2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  auto * data = static_cast<unsigned char *>(pic->data);
  for (int z = low[2]; z <= high[2]; ++z)
    for (int y = low[1]; y <= high[1]; ++y)
      for (int x = low[0]; x <= high[0]; ++x)
      {
        const double p[3] = { x - tube.from[0], y - tube.from[1], z - tube.from[2] };
        double t = length2 > 0 ? (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / length2 : 0.0;
        t = std::min(1.0, std::max(0.0, t));
        const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
        if (q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= tube.radius * tube.radius)
          data[(static_cast<std::size_t>(z) * size[1] + y) * size[0] + x] = 1;
      }
}

// A branching tree; every branch splits in two with 0.8 of its radius, down to about 1.5 voxels.
void
growTree(lumoIpPicDescriptor * pic,
         std::mt19937 & random,
         const double from[3],
         const double direction[3],
         double radius,
         double scale)
{
  if (radius < 1.4)
    return;
  const double length = scale * (10.0 + 8.0 * radius) * (0.8 + 0.4 * (random() % 1000) / 1000.0);
  Tube tube{ { from[0], from[1], from[2] }, {}, radius };
  for (int a = 0; a < 3; ++a)
    tube.to[a] = from[a] + direction[a] * length;
  drawTube(pic, tube);
  for (int child = 0; child < 2; ++child)
  {
    double next[3];
    double norm = 0.0;
    for (int a = 0; a < 3; ++a)
    {
      next[a] = direction[a] + 0.9 * ((random() % 2001) / 1000.0 - 1.0);
      norm += next[a] * next[a];
    }
    norm = std::sqrt(norm);
    for (double & n : next)
      n /= norm;
    growTree(pic, random, tube.to, next, radius * 0.8, scale);
  }
}

lumoIpPicDescriptor *
vesselMask(std::uint32_t sizeX, std::uint32_t sizeY, std::uint32_t sizeZ)
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes);
  std::mt19937 random(4711u);
  const double scale = sizeX / 512.0;
  // Three trees from different sides, like the portal vein, the hepatic veins and the arteries of a liver.
  const double roots[3][3] = { { 0.5, 0.5, 0.1 }, { 0.2, 0.8, 0.9 }, { 0.85, 0.3, 0.5 } };
  const double directions[3][3] = { { 0.0, 0.0, 1.0 }, { 0.6, -0.6, -0.53 }, { -1.0, 0.0, 0.0 } };
  const double radii[3] = { 11.0, 9.0, 6.0 };
  for (int tree = 0; tree < 3; ++tree)
  {
    const double root[3] = { roots[tree][0] * sizeX, roots[tree][1] * sizeY, roots[tree][2] * sizeZ };
    growTree(pic, random, root, directions[tree], radii[tree] * scale, scale);
  }
  return pic;
}

const lumoIpPicDescriptor *
cachedMask(std::uint32_t sizeX, std::uint32_t sizeY, std::uint32_t sizeZ)
{
  static std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>, lumoIpPicDescriptor *> masks;
  lumoIpPicDescriptor *& mask = masks[std::make_tuple(sizeX, sizeY, sizeZ)];
  if (mask == nullptr)
    mask = vesselMask(sizeX, sizeY, sizeZ);
  return mask;
}

std::size_t
foreground(const lumoIpPicDescriptor * pic)
{
  const auto * data = static_cast<const unsigned char *>(pic->data);
  return static_cast<std::size_t>(
    std::count_if(data, data + lumoIpPicElements(pic), [](unsigned char v) { return v != 0; }));
}

void
thin(benchmark::State & state, bool cleaning)
{
  const auto sizeX = static_cast<std::uint32_t>(state.range(0));
  const auto sizeY = static_cast<std::uint32_t>(state.range(1));
  const auto sizeZ = static_cast<std::uint32_t>(state.range(2));
  const lumoIpPicDescriptor * mask = cachedMask(sizeX, sizeY, sizeZ);
  std::size_t skeleton = 0;
  for (auto _ : state)
  {
    state.PauseTiming();
    lumoIpPicDescriptor * copy = lumoIpPicClone(mask);
    state.ResumeTiming();
    std::unique_ptr<SelleSkeletonizer> skeletonizer(cleaning ? new CleaningSelleSkeletonizer(copy, false, 2, true)
                                                             : new SelleSkeletonizer(copy, false, false));
    skeletonizer->skeletonize();
    state.PauseTiming();
    skeleton = foreground(skeletonizer->getBinaryPic());
    lumoIpPicFree(skeletonizer->getBinaryPic());
    lumoIpPicFree(skeletonizer->getDistancePic());
    skeletonizer.reset();
    state.ResumeTiming();
  }
  state.counters["mask voxels"] = static_cast<double>(foreground(mask));
  state.counters["skeleton voxels"] = static_cast<double>(skeleton);
}

void
BM_SelleSkeletonizer(benchmark::State & state)
{
  thin(state, false);
}

void
BM_CleaningSelleSkeletonizer(benchmark::State & state)
{
  thin(state, true);
}
} // namespace

BENCHMARK(BM_SelleSkeletonizer)->Args({ 256, 256, 150 })->Args({ 512, 512, 300 })->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CleaningSelleSkeletonizer)->Args({ 512, 512, 300 })->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
