// Skeletonization plus tree extraction of a large synthetic vessel mask (512 x 512 x 300: three trees of branching
// round tubes, radius 11 down to about 1.5 voxels), side by side in one run with scikit-image's skeletonize_3d on
// the same mask (Debian's python3-skimage through /usr/bin/python3, fed a raw copy of the mask; only its call is
// timed, inside Python). Peak memory of our road is measured in a fresh process (this program re-run with
// --measure-memory), which builds the mask and extracts once, and reports its maximum resident set size.

#include "BenchmarkSummary.h"

#include "BreadthFirstTreeExtractor.h"
#include "CleaningSelleSkeletonizer.h"
#include "lumoIpPicDescriptor.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>

namespace
{
constexpr std::uint32_t sizeX = 512;
constexpr std::uint32_t sizeY = 512;
constexpr std::uint32_t sizeZ = 300;

void
drawTube(unsigned char * data, const double from[3], const double to[3], double radius)
{
  const long size[3] = { sizeX, sizeY, sizeZ };
  long low[3];
  long high[3];
  for (int a = 0; a < 3; ++a)
  {
    low[a] = std::max(0L, static_cast<long>(std::floor(std::min(from[a], to[a]) - radius)));
    high[a] = std::min(size[a] - 1, static_cast<long>(std::ceil(std::max(from[a], to[a]) + radius)));
  }
  const double d[3] = { to[0] - from[0], to[1] - from[1], to[2] - from[2] };
  const double length2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  for (long z = low[2]; z <= high[2]; ++z)
    for (long y = low[1]; y <= high[1]; ++y)
      for (long x = low[0]; x <= high[0]; ++x)
      {
        const double p[3] = { x - from[0], y - from[1], z - from[2] };
        double t = length2 > 0 ? (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / length2 : 0.0;
        t = std::min(1.0, std::max(0.0, t));
        const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
        if (q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= radius * radius)
          data[(static_cast<std::size_t>(z) * sizeY + static_cast<std::size_t>(y)) * sizeX +
               static_cast<std::size_t>(x)] = 1;
      }
}

// Every branch splits in two with 0.8 of its radius, down to about 1.5 voxels.
void
growTree(unsigned char * data, std::mt19937 & random, const double from[3], const double direction[3], double radius)
{
  if (radius < 1.4)
    return;
  const double length = (10.0 + 8.0 * radius) * (0.8 + 0.4 * (random() % 1000) / 1000.0);
  double to[3];
  for (int a = 0; a < 3; ++a)
    to[a] = from[a] + direction[a] * length;
  drawTube(data, from, to, radius);
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
    growTree(data, random, to, next, radius * 0.8);
  }
}

lumoIpPicDescriptor *
vesselMask()
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes);
  auto * data = static_cast<unsigned char *>(pic->data);
  std::mt19937 random(4711u);
  const double roots[3][3] = { { 0.5, 0.5, 0.1 }, { 0.2, 0.8, 0.9 }, { 0.85, 0.3, 0.5 } };
  const double directions[3][3] = { { 0.0, 0.0, 1.0 }, { 0.6, -0.6, -0.53 }, { -1.0, 0.0, 0.0 } };
  const double radii[3] = { 11.0, 9.0, 6.0 };
  for (int tree = 0; tree < 3; ++tree)
  {
    const double root[3] = { roots[tree][0] * sizeX, roots[tree][1] * sizeY, roots[tree][2] * sizeZ };
    growTree(data, random, root, directions[tree], radii[tree]);
  }
  return pic;
}

const lumoIpPicDescriptor *
cachedMask()
{
  static lumoIpPicDescriptor * mask = vesselMask();
  return mask;
}

struct Result
{
  std::size_t skeletonVoxels;
  int vessels;
};

/** The extraction road: thin a copy (taken over), then extract from the thickest end point. */
Result
skeletonizeAndExtract(lumoIpPicDescriptor * copy)
{
  CleaningSelleSkeletonizer skeletonizer(copy, false, 0, true);
  skeletonizer.skeletonize();
  BreadthFirstTreeExtractor extractor;
  extractor.setStartAtThickestEndPoint(true);
  const ArVesselTree tree =
    extractor.getTree(skeletonizer.getBinaryVolume(), skeletonizer.getResultList(), Point3D(0, 0, 0));
  const Result result{ extractor.getNumberOfSkeletonVoxels(), tree->numberOfNodes() };
  lumoIpPicFree(skeletonizer.getBinaryPic());
  return result;
}

void
BM_SkeletonizeAndExtract(benchmark::State & state)
{
  const lumoIpPicDescriptor * mask = cachedMask();
  Result result{};
  for (auto _ : state)
  {
    state.PauseTiming();
    lumoIpPicDescriptor * copy = lumoIpPicClone(mask);
    state.ResumeTiming();
    result = skeletonizeAndExtract(copy);
  }
  state.counters["skeleton voxels"] = static_cast<double>(result.skeletonVoxels);
  state.counters["vessels"] = result.vessels;
}

const char * const skimageScript = R"(
import sys, time
import numpy
from skimage.morphology import skeletonize_3d
nx, ny, nz = int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
mask = numpy.fromfile(sys.argv[1], dtype=numpy.uint8).reshape((nz, ny, nx))
start = time.perf_counter()
skeleton = skeletonize_3d(mask)
elapsed = time.perf_counter() - start
print(elapsed, int(numpy.count_nonzero(skeleton)))
)";

void
BM_SkimageSkeletonize3d(benchmark::State & state)
{
  const lumoIpPicDescriptor * mask = cachedMask();
  char rawName[] = "/tmp/extraction-benchmark-XXXXXX";
  const int fd = mkstemp(rawName);
  if (fd < 0)
  {
    state.SkipWithError("cannot make a scratch file");
    return;
  }
  close(fd);
  {
    std::ofstream raw(rawName, std::ios::binary);
    raw.write(static_cast<const char *>(mask->data), static_cast<std::streamsize>(lumoIpPicElements(mask)));
  }
  const std::string scriptName = std::string(rawName) + ".py";
  {
    std::ofstream script(scriptName);
    script << skimageScript;
  }
  const std::string command = "/usr/bin/python3 " + scriptName + " " + rawName + " " + std::to_string(sizeX) + " " +
                              std::to_string(sizeY) + " " + std::to_string(sizeZ);
  double skeleton = 0;
  for (auto _ : state)
  {
    FILE * pipe = popen(command.c_str(), "r");
    double seconds = -1.0;
    long voxels = 0;
    if (pipe == nullptr || std::fscanf(pipe, "%lf %ld", &seconds, &voxels) != 2 || pclose(pipe) != 0 || seconds < 0)
    {
      state.SkipWithError("python3 with skimage failed (is python3-skimage installed?)");
      break;
    }
    state.SetIterationTime(seconds);
    skeleton = static_cast<double>(voxels);
  }
  std::remove(rawName);
  std::remove(scriptName.c_str());
  state.counters["skeleton voxels"] = skeleton;
}

/** In the child run: build the mask, extract once, print the peak resident set in bytes. */
int
measureMemory()
{
  lumoIpPicDescriptor * mask = vesselMask();
  const Result result = skeletonizeAndExtract(lumoIpPicClone(mask));
  lumoIpPicFree(mask);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%ld %zu %d\n", usage.ru_maxrss * 1024L, result.skeletonVoxels, result.vessels);
  return 0;
}

double
peakBytesOfAFreshRun()
{
  const std::string command = "/proc/" + std::to_string(getpid()) + "/exe --measure-memory";
  FILE * pipe = popen(command.c_str(), "r");
  long bytes = 0;
  std::size_t skeleton = 0;
  int vessels = 0;
  if (pipe == nullptr || std::fscanf(pipe, "%ld %zu %d", &bytes, &skeleton, &vessels) != 3)
  {
    if (pipe != nullptr)
      pclose(pipe);
    return -1.0;
  }
  pclose(pipe);
  return static_cast<double>(bytes);
}
} // namespace

BENCHMARK(BM_SkeletonizeAndExtract)->Unit(benchmark::kSecond)->Iterations(2);
BENCHMARK(BM_SkimageSkeletonize3d)->Unit(benchmark::kSecond)->Iterations(1)->UseManualTime();

int
main(int argc, char ** argv)
{
  if (argc == 2 && std::strcmp(argv[1], "--measure-memory") == 0)
    return measureMemory();
  benchmark::Initialize(&argc, argv);
  BenchmarkSummary summary;
  benchmark::RunSpecifiedBenchmarks(&summary);
  const double voxels = static_cast<double>(sizeX) * sizeY * sizeZ;
  const double ours = summary.value("BM_SkeletonizeAndExtract", "real_time");
  const double skimage = summary.value("BM_SkimageSkeletonize3d", "real_time");
  std::printf("\nVessel mask of %u x %u x %u voxels:\n", sizeX, sizeY, sizeZ);
  if (ours > 0 && skimage > 0)
  {
    const double ratio = skimage / ours;
    std::printf("  skeletonization + extraction: %.2f s; skimage skeletonize_3d alone: %.2f s; %.2fx faster "
                "(goal >= 3: %s)\n",
                ours,
                skimage,
                ratio,
                ratio >= 3.0 ? "met" : "MISSED");
  }
  else
  {
    std::printf("  ratio to skimage: not measured (a run failed or was filtered out)\n");
  }
  const double peak = peakBytesOfAFreshRun();
  if (peak > 0)
  {
    std::printf("  peak memory of a fresh run (mask, its copy for thinning, skeletonizer, tree): %.0f MB, %.2f bytes "
                "per voxel (goal < 4: %s)\n",
                peak * 1e-6,
                peak / voxels,
                peak / voxels < 4.0 ? "met" : "MISSED");
  }
  else
  {
    std::printf("  peak memory: not measured (the child run failed)\n");
  }
  benchmark::Shutdown();
  return 0;
}
