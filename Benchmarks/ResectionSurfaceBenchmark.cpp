// Surfaces of a resection image of the large liver phantom (512 x 512 x 300 voxels): the organ split by the distance
// to the phantom's tumour into 3 (within 10 mm, and the tumour), 4 (10 to 25 mm) and 2 (the rest), as a risk
// analysis labels it. Side by side in one run: making the three surfaces with LabelImageSurfaceFilter, and one plain
// read of the same label image from an uncompressed NRRD file, the cost of merely loading what the surfaces are made
// from. Both on two threads (VTK's and ITK's pools limited to 2).

#include "BenchmarkSummary.h"

#include "lumoImageAccess.h"
#include "lumoImageIO.h"
#include "lumoLabelImageSurfaceFilter.h"
#include "lumoLiverPhantomSource.h"

#include <benchmark/benchmark.h>
#include <itkMultiThreaderBase.h>
#include <itkSignedMaurerDistanceMapImageFilter.h>
#include <vtkPolyData.h>
#include <vtkSMPTools.h>

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <filesystem>
#include <string>

namespace
{
constexpr int threads = 2;

/** CPU seconds of every thread of the process so far: unlike wall time, not stretched by other work on the machine. */
double
processCpuSeconds()
{
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

struct Scene
{
  lumo::Image::Pointer labels;
  std::string file;
  std::size_t voxels[5] = { 0, 0, 0, 0, 0 };
  vtkIdType triangles = 0;

  Scene()
  {
    auto phantom = lumo::LiverPhantomSource::New();
    phantom->SetSizePreset(lumo::LiverPhantomSource::SizePreset::Large);
    phantom->SetSeed(1);
    phantom->Update();
    lumo::Image * organ = phantom->GetOrganMask();
    auto tumour = lumo::ImageToItkImage<unsigned char>(phantom->GetTumourMask());
    using DistanceFilter = itk::SignedMaurerDistanceMapImageFilter<itk::Image<unsigned char, 3>, itk::Image<float, 3>>;
    auto distance = DistanceFilter::New();
    distance->SetInput(tumour);
    distance->SetUseImageSpacing(true);
    distance->SetSquaredDistance(false);
    distance->SetInsideIsPositive(false);
    distance->SetBackgroundValue(0);
    distance->Update();
    const float * d = distance->GetOutput()->GetBufferPointer();

    labels = lumo::Image::New();
    labels->Initialize(
      itk::IOComponentEnum::UCHAR, organ->GetSize(), organ->GetSpacing(), organ->GetOrigin(), organ->GetDirection());
    const auto * o = static_cast<const unsigned char *>(organ->GetData());
    auto * l = static_cast<unsigned char *>(labels->GetData());
    for (std::size_t i = 0; i < labels->GetNumberOfVoxels(); ++i)
    {
      l[i] = o[i] == 0 ? 0 : (d[i] <= 10.0f ? 3 : (d[i] <= 25.0f ? 4 : 2));
      ++voxels[l[i]];
    }
    file = (std::filesystem::temp_directory_path() / "lumo-resection-surface-benchmark.nrrd").string();
    lumo::WriteImageFile(labels, file, false);
  }
  ~Scene()
  {
    std::error_code error;
    std::filesystem::remove(file, error);
  }
};

Scene &
scene()
{
  static Scene instance;
  return instance;
}

void
BM_PlainReadOfTheLabelImage(benchmark::State & state)
{
  for (auto _ : state)
  {
    lumo::Image::Pointer image = lumo::ReadImageFile(scene().file);
    benchmark::DoNotOptimize(image->GetData());
  }
}

void
BM_SurfacesOfThreeLabels(benchmark::State & state)
{
  const double cpuBefore = processCpuSeconds();
  for (auto _ : state)
  {
    auto filter = lumo::LabelImageSurfaceFilter::New();
    filter->SetInput(scene().labels);
    filter->Update();
    vtkIdType triangles = 0;
    for (unsigned int i = 0; i < filter->GetNumberOfIndexedOutputs(); ++i)
    {
      triangles += filter->GetOutput(i)->GetVtkPolyData()->GetNumberOfPolys();
    }
    scene().triangles = triangles;
    state.counters["surfaces"] = static_cast<double>(filter->GetNumberOfIndexedOutputs());
  }
  state.counters["process_cpu_ms"] =
    1000.0 * (processCpuSeconds() - cpuBefore) / static_cast<double>(state.iterations());
}

BENCHMARK(BM_PlainReadOfTheLabelImage)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_SurfacesOfThreeLabels)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
} // namespace

int
main(int argc, char ** argv)
{
  benchmark::Initialize(&argc, argv);
  vtkSMPTools::Initialize(threads);
  itk::MultiThreaderBase::SetGlobalDefaultNumberOfThreads(threads);
  Scene & s = scene();
  BenchmarkSummary summary;
  benchmark::RunSpecifiedBenchmarks(&summary);
  const double read = summary.value("BM_PlainReadOfTheLabelImage", "real_time");
  const double surfaces = summary.value("BM_SurfacesOfThreeLabels", "real_time");
  // Other work on the machine stretches wall times; the load says how much the two threads had to share.
  double load[1] = { 0.0 };
  const bool loadKnown = getloadavg(load, 1) == 1;
  std::printf("\nResection image of the large phantom, 512 x 512 x 300 voxels: %zu remnant (2), %zu resected (3), %zu "
              "at risk (4), on %d threads (%s):\n",
              s.voxels[2],
              s.voxels[3],
              s.voxels[4],
              threads,
              vtkSMPTools::GetBackend());
  bool ok = true;
  if (surfaces > 0)
  {
    std::printf("  surfaces of the 3 labels: %.1f ms, %lld triangles (goal < 1000 ms: %s)\n",
                surfaces,
                static_cast<long long>(s.triangles),
                surfaces < 1000.0 ? "met" : "MISSED");
    const double cpu = summary.value("BM_SurfacesOfThreeLabels", "process_cpu_ms");
    std::printf("  CPU time of all threads: %.1f ms, %.1f ms per thread of %d\n", cpu, cpu / threads, threads);
    ok = summary.value("BM_SurfacesOfThreeLabels", "surfaces") == 3.0;
  }
  if (loadKnown)
  {
    std::printf("  load average of the machine during the run: %.2f\n", load[0]);
  }
  if (surfaces > 0 && read > 0)
  {
    std::printf("  plain read of the label image: %.1f ms; surfaces / read = %.2f\n", read, surfaces / read);
  }
  benchmark::Shutdown();
  return ok ? 0 : 1;
}
