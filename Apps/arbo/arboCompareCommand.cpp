#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"
#include "arboTreeAnalysis.h"

#include "lumoImage.h"

#include "VesselTreeComparison.h"
#include "VesselTreeStatistics.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>
#include <iomanip>
#include <map>
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

/** Two label images of one grid: the share of the true labelled voxels that carry the same label in the test, and
 *  per label the voxel counts and the Dice overlap. */
void
compareLabelImages(const lumo::Image & truth,
                   const lumo::Image & test,
                   const CompareOptions & options,
                   Context & context)
{
  if (truth.GetSize() != test.GetSize())
  {
    throw Error(options.test, "has another size than " + options.truth + ": label images compare voxel by voxel");
  }
  struct Counts
  {
    std::size_t truth{ 0 };
    std::size_t test{ 0 };
    std::size_t both{ 0 };
  };
  std::map<long long, Counts> labels;
  std::size_t labelled = 0;
  std::size_t agreeing = 0;
  const unsigned int nx = truth.GetDimension(0);
  const unsigned int ny = truth.GetDimension(1);
  const unsigned int nz = truth.GetDimension(2);
  for (unsigned int z = 0; z < nz; ++z)
  {
    for (unsigned int y = 0; y < ny; ++y)
    {
      for (unsigned int x = 0; x < nx; ++x)
      {
        const auto a = static_cast<long long>(truth.GetPixelValueAsDouble(x, y, z));
        const auto b = static_cast<long long>(test.GetPixelValueAsDouble(x, y, z));
        if (a != 0)
        {
          ++labelled;
          ++labels[a].truth;
          agreeing += a == b ? 1 : 0;
          labels[a].both += a == b ? 1 : 0;
        }
        if (b != 0)
        {
          ++labels[b].test;
        }
      }
    }
  }
  if (labelled == 0)
  {
    throw Error(options.truth, "has no labelled voxel to compare");
  }
  const double agreement = 100.0 * static_cast<double>(agreeing) / static_cast<double>(labelled);
  auto dice = [](const Counts & c) {
    return c.truth + c.test == 0 ? 0.0 : 2.0 * static_cast<double>(c.both) / static_cast<double>(c.truth + c.test);
  };
  if (options.json)
  {
    nlohmann::ordered_json json;
    json["truth"] = options.truth;
    json["test"] = options.test;
    json["labelledVoxels"] = labelled;
    json["agreeingVoxels"] = agreeing;
    json["agreementPercent"] = agreement;
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const auto & [label, c] : labels)
    {
      rows.push_back({ { "label", label }, { "truthVoxels", c.truth }, { "testVoxels", c.test }, { "dice", dice(c) } });
    }
    json["labels"] = rows;
    context.out << json.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << options.test << " against " << options.truth << " (label images)\n";
  out << "  same label:   " << std::fixed << std::setprecision(1) << agreement << " % of " << labelled
      << " labelled voxels\n";
  out << "  label    true voxels    test voxels     Dice\n";
  for (const auto & [label, c] : labels)
  {
    out << "  " << std::setw(5) << label << std::setw(15) << c.truth << std::setw(15) << c.test << std::setw(9)
        << std::setprecision(3) << dice(c) << "\n";
  }
  out.unsetf(std::ios_base::floatfield);
}

void
runCompare(const CompareOptions & options, Context & context)
{
  {
    lumo::BaseData::Pointer first = readData(options.truth);
    if (auto * trueImage = dynamic_cast<lumo::Image *>(first.GetPointer()))
    {
      lumo::BaseData::Pointer second = readData(options.test);
      auto * testImage = dynamic_cast<lumo::Image *>(second.GetPointer());
      if (testImage == nullptr)
      {
        throw Error(options.test, "holds " + kindOf(second) + ", not an image like " + options.truth);
      }
      compareLabelImages(*trueImage, *testImage, options, context);
      return;
    }
  }
  const lumo::VesselTreeData::Pointer truth = readVesselTree(options.truth);
  const lumo::VesselTreeData::Pointer test = readVesselTree(options.test);
  report(compareVesselTrees(truth->GetVesselTreeData(0),
                            test->GetVesselTreeData(0),
                            options.truth,
                            options.test,
                            options.voxelSize,
                            options.minimumRadiusVoxels),
         options,
         context);
}
} // namespace

void
addCompareCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<CompareOptions>();
  CLI::App * command =
    app.add_subcommand("compare", "Measure the accuracy of a vessel tree, or of a label image, against a true one");
  command->footer("Centre-line distance both ways (mean and 95th percentile), branch recall and precision, radius "
                  "error at matched points, and the numbers of vessels and bifurcations of both trees; "
                  "docs/accuracy.md defines each measure.\n"
                  "Two label images (supply areas, for instance) of one grid are compared voxel by voxel: the share "
                  "of the true labelled voxels that carry the same label, and per label the Dice overlap.\n"
                  "Examples: arbo compare truth-portal.ves portal.ves --voxel-size 0.9375\n"
                  "          arbo compare truth-portal.ves portal.ves --min-radius-voxels 1.5 --json\n"
                  "          arbo compare true-segments.nrrd segments.nrrd");
  command->add_option("truth", options->truth, "The true tree (.ves) or label image")->required();
  command->add_option("test", options->test, "The tree or label image to measure")->required();
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
