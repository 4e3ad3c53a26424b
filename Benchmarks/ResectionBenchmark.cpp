// Risk analysis of the large liver phantom's tumour, side by side in one run with the supply areas of the same
// organ and portal tree: what `arbo resect --tumour` computes for one margin and for three (0, 5 and 10 mm, one
// generator that keeps its distance map and territories), against what `arbo supply` computes (the calculator with
// all portal veins, as the generator classifies, and the label statistics). File reading and writing are left out
// of all three. Every run uses two work units.

#include "BenchmarkSummary.h"

#include "lumoLabelStatistics.h"
#include "lumoLiverPhantomSource.h"
#include "lumoSafetyMarginRPG.h"
#include "lumoVascularSupplyAreasCalculator.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace
{
constexpr unsigned int workUnits = 2;

struct Scene
{
  lumo::LiverPhantomSource::Pointer phantom;
  lumo::Image::Pointer organ;
  lumo::Image::Pointer tumour;
  lumo::VesselTreeData::Pointer tree;
  std::size_t organVoxels{ 0 };
  std::size_t tumourVoxels{ 0 };
  double flr[3]{ 0.0, 0.0, 0.0 };

  Scene()
  {
    phantom = lumo::LiverPhantomSource::New();
    phantom->SetSizePreset(lumo::LiverPhantomSource::SizePreset::Large);
    phantom->SetSeed(1);
    phantom->Update();
    organ = phantom->GetOrganMask();
    tumour = phantom->GetTumourMask();
    tree = phantom->GetPortalTree();
    const auto * o = static_cast<const unsigned char *>(organ->GetData());
    const auto * t = static_cast<const unsigned char *>(tumour->GetData());
    for (std::size_t i = 0; i < organ->GetNumberOfVoxels(); ++i)
    {
      organVoxels += o[i] != 0;
      tumourVoxels += t[i] != 0;
    }
  }
};

Scene &
scene()
{
  static Scene instance;
  return instance;
}

void
BM_Supply(benchmark::State & state)
{
  Scene & s = scene();
  for (auto _ : state)
  {
    auto calculator = lumo::VascularSupplyAreasCalculator::New();
    calculator->SetOrganSegmentation(s.organ);
    calculator->SetVesselTree(s.tree);
    calculator->SetCalculationMode(lumo::VascularSupplyAreasCalculator::PortalSegments);
    calculator->SetNumberOfWorkUnits(workUnits);
    calculator->Update();
    auto statistics = lumo::LabelStatistics::New();
    statistics->SetLabelImage(calculator->GetOutput());
    statistics->SetMask(s.organ);
    statistics->Compute();
    benchmark::DoNotOptimize(statistics->GetEntries().size());
  }
}

/** The resect command's work for the margins: one generator, one update per margin, each image but the last copied
 *  before the next update (as the command keeps them until all are written). */
void
resect(benchmark::State & state, const std::vector<double> & margins)
{
  Scene & s = scene();
  for (auto _ : state)
  {
    auto generator = lumo::SafetyMarginRPG::New();
    generator->SetOrganSegmentation(s.organ);
    generator->SetTumourMask(s.tumour);
    generator->SetVesselTree(s.tree);
    generator->SetGenerateSurfaces(false);
    generator->SetDistanceMapReach(*std::max_element(margins.begin(), margins.end()));
    generator->SetNumberOfWorkUnits(workUnits);
    std::vector<unsigned char> kept;
    for (std::size_t m = 0; m < margins.size(); ++m)
    {
      generator->SetMarginWidth(margins[m]);
      generator->Update();
      if (m + 1 < margins.size())
      {
        const lumo::Image * image = generator->GetResectionImage();
        kept.resize(image->GetBufferSizeInBytes());
        std::memcpy(kept.data(), image->GetData(), kept.size());
      }
      if (margins.size() == 3)
      {
        s.flr[m] = generator->GetFutureLiverRemnantPercent();
      }
    }
    benchmark::DoNotOptimize(kept.data());
  }
}

void
BM_ResectOneMargin(benchmark::State & state)
{
  resect(state, { 10.0 });
}

void
BM_ResectThreeMargins(benchmark::State & state)
{
  resect(state, { 0.0, 5.0, 10.0 });
}

BENCHMARK(BM_Supply)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_ResectOneMargin)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_ResectThreeMargins)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
} // namespace

int
main(int argc, char ** argv)
{
  benchmark::Initialize(&argc, argv);
  Scene & s = scene();
  BenchmarkSummary summary;
  benchmark::RunSpecifiedBenchmarks(&summary);
  const double supply = summary.value("BM_Supply", "real_time");
  const double one = summary.value("BM_ResectOneMargin", "real_time");
  const double three = summary.value("BM_ResectThreeMargins", "real_time");
  const auto size = s.organ->GetSize();
  std::printf("\nRisk analysis of the large phantom (%u x %u x %u voxels, %zu organ, %zu tumour), %u work units:\n",
              static_cast<unsigned int>(size[0]),
              static_cast<unsigned int>(size[1]),
              static_cast<unsigned int>(size[2]),
              s.organVoxels,
              s.tumourVoxels,
              workUnits);
  if (s.flr[0] > 0.0)
  {
    std::printf("  FLR at 0, 5, 10 mm: %.2f %%, %.2f %%, %.2f %%\n", s.flr[0], s.flr[1], s.flr[2]);
  }
  bool met = true;
  if (supply > 0 && one > 0)
  {
    const bool ok = one / supply <= 1.5;
    met = met && ok;
    std::printf("  one margin:    %.1f ms, %.2fx the supply areas (%.1f ms) (goal <= 1.5: %s)\n",
                one,
                one / supply,
                supply,
                ok ? "met" : "MISSED");
  }
  if (one > 0 && three > 0)
  {
    const bool ok = three / one <= 1.3;
    met = met && ok;
    std::printf(
      "  three margins: %.1f ms, %.2fx one margin (goal <= 1.3: %s)\n", three, three / one, ok ? "met" : "MISSED");
  }
  benchmark::Shutdown();
  return 0;
}
