// Skeletonization plus tree extraction of the large liver phantom's portal vein mask (512 x 512 x 300), side by
// side in one run with scikit-image's skeletonize_3d on the same mask (Debian's python3-skimage through
// /usr/bin/python3, fed a raw copy of the mask; only its call is timed, inside Python). Peak memory of our road is
// measured in a fresh process (this program re-run with --measure-memory on the raw copy), which reads the mask
// and extracts once, and reports its maximum resident set size.

#include "BenchmarkSummary.h"

#include "BreadthFirstTreeExtractor.h"
#include "CleaningSelleSkeletonizer.h"
#include "lumoIpPicDescriptor.h"
#include "lumoLiverPhantomSource.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

namespace
{
constexpr std::uint32_t sizeX = 512;
constexpr std::uint32_t sizeY = 512;
constexpr std::uint32_t sizeZ = 300;

/** The large phantom's portal mask as a Pic volume. */
lumoIpPicDescriptor *
vesselMask()
{
  auto phantom = lumo::LiverPhantomSource::New();
  phantom->SetSizePreset(lumo::LiverPhantomSource::SizePreset::Large);
  phantom->SetSeed(1);
  phantom->Update();
  const lumo::Image * portal = phantom->GetPortalMask();
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes);
  if (portal->GetNumberOfVoxels() != lumoIpPicElements(pic))
  {
    std::fprintf(stderr, "the phantom's size is not %u x %u x %u\n", sizeX, sizeY, sizeZ);
    std::exit(1);
  }
  std::memcpy(pic->data, portal->GetData(), lumoIpPicElements(pic));
  return pic;
}

const lumoIpPicDescriptor *
cachedMask()
{
  static lumoIpPicDescriptor * mask = vesselMask();
  return mask;
}

/** A raw copy of the mask in a scratch file, for scikit-image and for the memory run; removed by main. */
const std::string &
rawMaskFile()
{
  static const std::string name = [] {
    char rawName[] = "/tmp/extraction-benchmark-XXXXXX";
    const int fd = mkstemp(rawName);
    if (fd >= 0)
    {
      close(fd);
      const lumoIpPicDescriptor * mask = cachedMask();
      std::ofstream raw(rawName, std::ios::binary);
      raw.write(static_cast<const char *>(mask->data), static_cast<std::streamsize>(lumoIpPicElements(mask)));
    }
    return std::string(fd >= 0 ? rawName : "");
  }();
  return name;
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
  const std::string & rawName = rawMaskFile();
  if (rawName.empty())
  {
    state.SkipWithError("cannot make a scratch file");
    return;
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
  std::remove(scriptName.c_str());
  state.counters["skeleton voxels"] = skeleton;
}

/** In the child run: read the mask, extract once, print the peak resident set in bytes. */
int
measureMemory(const char * rawFile)
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  lumoIpPicDescriptor * mask = lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes);
  std::ifstream raw(rawFile, std::ios::binary);
  raw.read(static_cast<char *>(mask->data), static_cast<std::streamsize>(lumoIpPicElements(mask)));
  if (!raw)
  {
    return 1;
  }
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
  const std::string command = "/proc/" + std::to_string(getpid()) + "/exe --measure-memory " + rawMaskFile();
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
  if (argc == 3 && std::strcmp(argv[1], "--measure-memory") == 0)
  {
    return measureMemory(argv[2]);
  }
  benchmark::Initialize(&argc, argv);
  BenchmarkSummary summary;
  benchmark::RunSpecifiedBenchmarks(&summary);
  const double voxels = static_cast<double>(sizeX) * sizeY * sizeZ;
  const double ours = summary.value("BM_SkeletonizeAndExtract", "real_time");
  const double skimage = summary.value("BM_SkimageSkeletonize3d", "real_time");
  std::printf("\nPortal vein mask of the large liver phantom, %u x %u x %u voxels:\n", sizeX, sizeY, sizeZ);
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
  std::remove(rawMaskFile().c_str());
  benchmark::Shutdown();
  return 0;
}
