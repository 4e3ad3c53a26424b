#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"

#include "VesselTreeComparison.h"
#include "VesselTreeStatistics.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace arbo
{
namespace
{
using Json = nlohmann::ordered_json;

struct CompareOptions
{
  std::string truth;
  std::string test;
  bool json{ false };
  double voxelSize{ 1.0 };
  double minimumRadiusVoxels{ 0.0 };
};

/** JSON has no not-a-number: values that cannot be computed are null. */
Json
value(double v)
{
  return std::isnan(v) ? Json(nullptr) : Json(v);
}

std::string
fixed(double v, int digits, const char * unit = "")
{
  if (std::isnan(v))
  {
    return "n/a";
  }
  std::ostringstream os;
  os << std::fixed << std::setprecision(digits) << v << unit;
  return os.str();
}

std::string
percent(double v)
{
  return std::isnan(v) ? std::string("n/a") : fixed(100.0 * v, 1, " %");
}

void
report(const VesselTreeComparison::Result & r, const CompareOptions & options, Context & context)
{
  if (options.json)
  {
    Json json;
    json["truth"] = options.truth;
    json["test"] = options.test;
    json["voxelSizeMillimetres"] = options.voxelSize;
    json["minimumRadiusVoxels"] = options.minimumRadiusVoxels;
    json["truthToTest"] = { { "meanMillimetres", value(r.truthToTestMean) },
                            { "p95Millimetres", value(r.truthToTestP95) } };
    json["testToTruth"] = { { "meanMillimetres", value(r.testToTruthMean) },
                            { "p95Millimetres", value(r.testToTruthP95) } };
    json["recall"] = value(r.recall);
    json["trueVesselsConsidered"] = r.trueVesselsConsidered;
    json["trueVesselsFound"] = r.trueVesselsFound;
    json["precision"] = value(r.precision);
    json["testVesselsCorrect"] = r.testVesselsCorrect;
    json["radiusError"] = { { "medianMillimetres", value(r.radiusErrorMedian) },
                            { "medianRelative", value(r.radiusErrorRelative) },
                            { "matchedSamples", r.matchedSamples } };
    json["truthTree"] = { { "vessels", r.trueVessels }, { "bifurcations", r.trueBifurcations } };
    json["testTree"] = { { "vessels", r.testVessels }, { "bifurcations", r.testBifurcations } };
    context.out << json.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << options.test << " against " << options.truth << " (voxel size " << options.voxelSize << " mm";
  if (options.minimumRadiusVoxels > 0.0)
  {
    out << ", truth-side figures over true vessels of radius >= " << options.minimumRadiusVoxels << " voxels";
  }
  out << ")\n";
  out << "                               mean        95th percentile\n";
  out << "  truth to test distance:  " << std::setw(10) << fixed(r.truthToTestMean, 3, " mm") << "    " << std::setw(10)
      << fixed(r.truthToTestP95, 3, " mm") << "\n";
  out << "  test to truth distance:  " << std::setw(10) << fixed(r.testToTruthMean, 3, " mm") << "    " << std::setw(10)
      << fixed(r.testToTruthP95, 3, " mm") << "\n";
  out << "  recall:                  " << std::setw(10) << percent(r.recall) << "    (" << r.trueVesselsFound << " of "
      << r.trueVesselsConsidered << " true vessels found)\n";
  out << "  precision:               " << std::setw(10) << percent(r.precision) << "    (" << r.testVesselsCorrect
      << " of " << r.testVessels << " test vessels correct)\n";
  out << "  radius error (median):   " << std::setw(10) << fixed(r.radiusErrorMedian, 3, " mm") << "    "
      << percent(r.radiusErrorRelative) << " of the true radius\n";
  out << "                               truth       test\n";
  out << "  vessels:                 " << std::setw(10) << r.trueVessels << "  " << std::setw(10) << r.testVessels
      << "\n";
  out << "  bifurcations:            " << std::setw(10) << r.trueBifurcations << "  " << std::setw(10)
      << r.testBifurcations << "\n";
}

void
runCompare(const CompareOptions & options, Context & context)
{
  const lumo::VesselTreeData::Pointer truth = readVesselTree(options.truth);
  const lumo::VesselTreeData::Pointer test = readVesselTree(options.test);
  VesselTreeComparison comparison;
  comparison.setVoxelSize(options.voxelSize);
  comparison.setMinimumRadiusVoxels(options.minimumRadiusVoxels);
  const ArVesselTree trueTree = truth->GetVesselTreeData(0);
  const ArVesselTree testTree = test->GetVesselTreeData(0);
  for (const auto & [tree, file] : { std::make_pair(trueTree, options.truth), std::make_pair(testTree, options.test) })
  {
    const VesselTreeStatistics statistics(tree);
    if (tree.isNull() || statistics.numberOfPoints() == 0)
    {
      throw Error(file, "holds no centre-line points to compare");
    }
  }
  report(comparison.compare(trueTree, testTree), options, context);
}
} // namespace

void
addCompareCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<CompareOptions>();
  CLI::App * command = app.add_subcommand("compare", "Measure the accuracy of a vessel tree against a true one");
  command->footer("Centre-line distance both ways (mean and 95th percentile), branch recall and precision, radius "
                  "error at matched points, and the numbers of vessels and bifurcations of both trees; "
                  "docs/accuracy.md defines each measure.\n"
                  "Examples: arbo compare truth-portal.ves portal.ves --voxel-size 0.9375\n"
                  "          arbo compare truth-portal.ves portal.ves --min-radius-voxels 1.5 --json");
  command->add_option("truth", options->truth, "The true tree (.ves)")->required();
  command->add_option("test", options->test, "The tree to measure (.ves)")->required();
  command->add_flag("--json", options->json, "Print the measures as JSON");
  command->add_option("--voxel-size", options->voxelSize, "Least matching distance in mm (default 1)")
    ->check(CLI::PositiveNumber);
  command
    ->add_option("--min-radius-voxels",
                 options->minimumRadiusVoxels,
                 "Recall over true vessels of mean radius at least this many voxels (default: all)")
    ->check(CLI::NonNegativeNumber);
  command->callback([options, &context] { runCompare(*options, context); });
}
} // namespace arbo
