// The side test of the deformable cutting plane over every organ voxel of the large liver phantom (512 x 512 x 300
// voxels), side by side in one run with one pass that only reads the organ mask (counting its non-zero voxels).
// Three cuts: a flat oblique cut close to sagittal (its columns run along x), a curved one of 6 control points in
// the same orientation, and a curved one close to transverse (columns along z, across the slices). The run also
// checks that every organ voxel was given a side.
//
// Then the resection along the curved cut with the phantom's portal and hepatic trees: the first update (which
// labels every organ voxel by its nearest portal and hepatic centre-line point) against the update after a control
// point was dragged (which keeps that labelling and repeats the side test and the walk along the trees); goal for
// the latter: under 0.3 s.

#include "BenchmarkSummary.h"

#include "lumoDeformablePlane.h"
#include "lumoDeformablePlaneRPG.h"
#include "lumoLiverPhantomSource.h"
#include "lumoSlicedGeometry3D.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>

namespace
{
lumo::Point3D
Offset(const lumo::Point3D & c, double x, double y, double z)
{
  lumo::Point3D p = c;
  p[0] += x;
  p[1] += y;
  p[2] += z;
  return p;
}

struct Scene
{
  lumo::LiverPhantomSource::Pointer phantom;
  lumo::Image::Pointer organ;
  std::uint64_t organVoxels = 0;
  lumo::DeformablePlane::Pointer flat = lumo::DeformablePlane::New();
  lumo::DeformablePlane::Pointer curved = lumo::DeformablePlane::New();
  lumo::DeformablePlane::Pointer transverse = lumo::DeformablePlane::New();
  lumo::DeformablePlane::SideCounts counts[3];

  Scene()
  {
    phantom = lumo::LiverPhantomSource::New();
    phantom->SetSizePreset(lumo::LiverPhantomSource::SizePreset::Large);
    phantom->Update();
    organ = phantom->GetOrganMask();
    const auto * data = static_cast<const unsigned char *>(organ->GetData());
    for (std::size_t i = 0; i < organ->GetNumberOfVoxels(); ++i)
    {
      organVoxels += data[i] != 0;
    }
    // Cuts through the organ's centroid, their fronts pointing away from it.
    for (auto * plane : { flat.GetPointer(), curved.GetPointer(), transverse.GetPointer() })
    {
      plane->SetOrgan(organ);
    }
    lumo::Point3D c;
    c.Fill(0.0);
    c[0] = 10.0;
    flat->SetControlPoints({ c, Offset(c, 12, 0, 60), Offset(c, -8, 60, 0) });
    curved->SetControlPoints({ Offset(c, 0, -50, -40),
                               Offset(c, 8, 50, -40),
                               Offset(c, -6, -50, 40),
                               Offset(c, 14, 50, 40),
                               Offset(c, -10, 0, 0),
                               Offset(c, 4, 20, -15) });
    transverse->SetControlPoints({ Offset(c, -50, -50, 0),
                                   Offset(c, 50, -50, 10),
                                   Offset(c, -50, 50, -8),
                                   Offset(c, 50, 50, 4),
                                   Offset(c, 0, 0, 12),
                                   Offset(c, 20, -15, -6) });
  }
};

Scene &
scene()
{
  static Scene instance;
  return instance;
}

void
BM_ReadOrganMask(benchmark::State & state)
{
  Scene & s = scene();
  const auto * data = static_cast<const unsigned char *>(s.organ->GetData());
  const std::size_t n = s.organ->GetNumberOfVoxels();
  for (auto _ : state)
  {
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < n; ++i)
    {
      count += data[i] != 0;
    }
    benchmark::DoNotOptimize(count);
  }
  state.counters["voxels"] = static_cast<double>(s.organVoxels);
}

void
sideRun(benchmark::State & state, const lumo::DeformablePlane * plane, lumo::DeformablePlane::SideCounts & counts)
{
  Scene & s = scene();
  for (auto _ : state)
  {
    counts = plane->CountSides(s.organ);
    benchmark::DoNotOptimize(counts);
  }
  state.counters["front"] = static_cast<double>(counts.Front);
  state.counters["back"] = static_cast<double>(counts.Back);
}

void
BM_SideTestFlat(benchmark::State & state)
{
  sideRun(state, scene().flat, scene().counts[0]);
}

void
BM_SideTestCurved(benchmark::State & state)
{
  sideRun(state, scene().curved, scene().counts[1]);
}

void
BM_SideTestCurvedTransverse(benchmark::State & state)
{
  sideRun(state, scene().transverse, scene().counts[2]);
}

lumo::DeformablePlaneRPG::Pointer generator;

void
BM_PlaneResectionFirstUpdate(benchmark::State & state)
{
  Scene & s = scene();
  for (auto _ : state)
  {
    generator = lumo::DeformablePlaneRPG::New();
    generator->SetOrganSegmentation(s.organ);
    generator->SetVesselTree(s.phantom->GetPortalTree());
    generator->SetHepaticVesselTree(s.phantom->GetHepaticTree());
    generator->SetCuttingPlane(s.curved);
    generator->GenerateSurfacesOff();
    generator->Update();
  }
  state.counters["FLR"] = generator->GetFutureLiverRemnantPercent();
}

void
BM_PlaneResectionAfterDrag(benchmark::State & state)
{
  Scene & s = scene();
  if (!generator)
  {
    state.SkipWithError("needs BM_PlaneResectionFirstUpdate");
    return;
  }
  const lumo::Point3D start = s.curved->GetControlPoints()[4];
  double offset = 0.0;
  for (auto _ : state)
  {
    // As a handle dragged by a few millimetres and released.
    offset = offset > 0 ? -3.0 : 3.0;
    lumo::Point3D moved = start;
    moved[0] += offset;
    s.curved->MoveControlPoint(4, moved, nullptr);
    generator->Update();
  }
  s.curved->MoveControlPoint(4, start, nullptr);
  state.counters["FLR"] = generator->GetFutureLiverRemnantPercent();
  state.counters["labellings"] = generator->GetNumberOfPointTerritoryComputations();
}

/** The spline part alone: the crossings of the transverse cut with every column of the grid. */
void
BM_ColumnCrossingsCurvedTransverse(benchmark::State & state)
{
  Scene & s = scene();
  for (auto _ : state)
  {
    auto crossings = s.transverse->ComputeColumnCrossings(s.organ->GetSlicedGeometry(0));
    benchmark::DoNotOptimize(crossings.Begin.data());
  }
}

BENCHMARK(BM_ReadOrganMask)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();
BENCHMARK(BM_SideTestFlat)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();
BENCHMARK(BM_SideTestCurved)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();
BENCHMARK(BM_SideTestCurvedTransverse)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();
BENCHMARK(BM_ColumnCrossingsCurvedTransverse)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();
BENCHMARK(BM_PlaneResectionFirstUpdate)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();
BENCHMARK(BM_PlaneResectionAfterDrag)->Unit(benchmark::kMillisecond)->Iterations(6)->UseRealTime();
} // namespace

int
main(int argc, char ** argv)
{
  benchmark::Initialize(&argc, argv);
  Scene & s = scene();
  BenchmarkSummary summary;
  benchmark::RunSpecifiedBenchmarks(&summary);
  const double read = summary.value("BM_ReadOrganMask", "real_time");
  std::printf("\nSide test of the deformable plane over the large liver phantom, %llu organ voxels of %zu:\n",
              static_cast<unsigned long long>(s.organVoxels),
              s.organ->GetNumberOfVoxels());
  bool ok = true;
  const char * names[3] = { "BM_SideTestFlat", "BM_SideTestCurved", "BM_SideTestCurvedTransverse" };
  const char * labels[3] = { "flat, 3 points, columns along x  ",
                             "curved, 6 points, columns along x",
                             "curved, 6 points, columns along z" };
  for (int k = 0; k < 3; ++k)
  {
    const double side = summary.value(names[k], "real_time");
    if (read <= 0 || side <= 0)
    {
      continue;
    }
    const lumo::DeformablePlane::SideCounts & counts = s.counts[k];
    const bool complete = counts.Front + counts.Back + counts.OnSurface == s.organVoxels;
    ok = ok && complete;
    std::printf("  %s: %.1f ms, %.2fx one read of the mask (%.1f ms) (goal <= 3: %s); front %llu, back %llu, "
                "on %llu%s\n",
                labels[k],
                side,
                side / read,
                read,
                side / read <= 3.0 ? "met" : "MISSED",
                static_cast<unsigned long long>(counts.Front),
                static_cast<unsigned long long>(counts.Back),
                static_cast<unsigned long long>(counts.OnSurface),
                complete ? "" : " FAILED: the sides do not add up to the organ");
  }
  const double first = summary.value("BM_PlaneResectionFirstUpdate", "real_time");
  const double drag = summary.value("BM_PlaneResectionAfterDrag", "real_time");
  if (first > 0 && drag > 0)
  {
    const double labellings = summary.value("BM_PlaneResectionAfterDrag", "labellings");
    std::printf("\nResection along the curved cut with portal and hepatic trees:\n"
                "  recompute after a drag: %.1f ms (goal < 300: %s), %.3fx the first update (%.1f ms, "
                "with the nearest-point labelling); labellings computed: %.0f\n",
                drag,
                drag < 300.0 ? "met" : "MISSED",
                drag / first,
                first,
                labellings);
    ok = ok && labellings == 2.0;
  }
  benchmark::Shutdown();
  return ok ? 0 : 1;
}
