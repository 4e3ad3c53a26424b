// The portal vein mask of the large liver phantom (512 x 512 x 300 voxels) drawn as its surface coloured by vessel.
// Side by side in one run: the plain surface of the mask (LabelImageSurfaceFilter: flying edges and windowed-sinc
// smoothing), and the colouring of that surface by SurfaceBasedVesselTreeMapper3D with the phantom's true portal
// tree (centre lines, triangulation, nearest-vessel labelling of every triangle, the unshared labelled surface and
// its normals). Both on two threads (VTK's and ITK's pools limited to 2).

#include "BenchmarkSummary.h"

#include "lumoDataNode.h"
#include "lumoLabelImageSurfaceFilter.h"
#include "lumoLiverPhantomSource.h"
#include "lumoSurfaceBasedVesselTreeMapper3D.h"

#include <benchmark/benchmark.h>
#include <itkMultiThreaderBase.h>
#include <vtkPolyData.h>
#include <vtkSMPTools.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>

namespace
{
constexpr int threads = 2;

struct Scene
{
  lumo::LiverPhantomSource::Pointer phantom = lumo::LiverPhantomSource::New();
  lumo::Surface::Pointer surface;
  lumo::DataNode::Pointer node = lumo::DataNode::New();
  vtkIdType triangles = 0;
  vtkIdType skeletonPoints = 0;
  std::size_t vessels = 0;

  Scene()
  {
    phantom->SetSizePreset(lumo::LiverPhantomSource::SizePreset::Large);
    phantom->SetSeed(1);
    phantom->Update();
    auto filter = lumo::LabelImageSurfaceFilter::New();
    filter->SetInput(phantom->GetPortalMask());
    filter->ComputeNormalsOff();
    filter->Update();
    surface = filter->GetOutput(0);
    triangles = surface->GetVtkPolyData()->GetNumberOfPolys();
    node->SetData(phantom->GetPortalTree());
  }
};

Scene &
scene()
{
  static Scene instance;
  return instance;
}

void
BM_PlainSurfaceOfTheMask(benchmark::State & state)
{
  for (auto _ : state)
  {
    auto filter = lumo::LabelImageSurfaceFilter::New();
    filter->SetInput(scene().phantom->GetPortalMask());
    filter->ComputeNormalsOff();
    filter->Update();
    benchmark::DoNotOptimize(filter->GetOutput(0)->GetVtkPolyData()->GetNumberOfPolys());
  }
}

void
BM_ColouringBySurfaceMapper(benchmark::State & state)
{
  // The mapper's progress lines are not part of the table.
  std::ostringstream progress;
  std::streambuf * previous = std::cout.rdbuf(progress.rdbuf());
  vtkIdType labelled = 0;
  for (auto _ : state)
  {
    auto mapper = lumo::SurfaceBasedVesselTreeMapper3D::New();
    mapper->SetDataNode(scene().node);
    mapper->SetInputSurface(scene().surface);
    mapper->GenerateSkeleton();
    if (mapper->PreprocessSurface())
    {
      mapper->BuildSkeletonSurface();
    }
    labelled = mapper->GetLabelledSurface() ? mapper->GetLabelledSurface()->GetNumberOfPolys() : 0;
    scene().skeletonPoints = mapper->GetSkeleton()->GetNumberOfPoints();
  }
  std::cout.rdbuf(previous);
  state.counters["labelled_triangles"] = static_cast<double>(labelled);
}

BENCHMARK(BM_PlainSurfaceOfTheMask)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(BM_ColouringBySurfaceMapper)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
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
  const double plain = summary.value("BM_PlainSurfaceOfTheMask", "real_time");
  const double colouring = summary.value("BM_ColouringBySurfaceMapper", "real_time");
  const double labelled = summary.value("BM_ColouringBySurfaceMapper", "labelled_triangles");
  double load[1] = { 0.0 };
  const bool loadKnown = getloadavg(load, 1) == 1;
  std::printf("\nPortal mask of the large phantom, 512 x 512 x 300 voxels: %lld triangles, tree of %lld centre-line "
              "points, on %d threads (%s):\n",
              static_cast<long long>(s.triangles),
              static_cast<long long>(s.skeletonPoints),
              threads,
              vtkSMPTools::GetBackend());
  bool ok = labelled == static_cast<double>(s.triangles);
  if (colouring > 0)
  {
    std::printf("  colouring by vessel: %.1f ms for %.0f triangles (goal < 1000 ms: %s)\n",
                colouring,
                labelled,
                colouring < 1000.0 ? "met" : "MISSED");
  }
  if (plain > 0)
  {
    std::printf("  plain surface extraction of the mask: %.1f ms", plain);
    if (colouring > 0)
    {
      std::printf("; colouring / extraction = %.2f", colouring / plain);
    }
    std::printf("\n");
  }
  if (loadKnown)
  {
    std::printf("  load average of the machine during the run: %.2f\n", load[0]);
  }
  benchmark::Shutdown();
  return ok ? 0 : 1;
}
