#include "arboCommands.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboVesselTreeFile.h"

#include "VesselLabels.h"
#include "VesselTreeStatistics.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <iomanip>
#include <ostream>
#include <sstream>

namespace arbo
{
namespace
{
struct InfoOptions
{
  std::string file;
  bool json{ false };
};

using NameFunction = std::string (*)(std::int32_t);

nlohmann::ordered_json
countsAsJson(const std::map<std::int32_t, std::size_t> & counts, NameFunction name)
{
  nlohmann::ordered_json result = nlohmann::ordered_json::array();
  for (const auto & [value, count] : counts)
  {
    result.push_back({ { "value", value }, { "name", name(value) }, { "vessels", count } });
  }
  return result;
}

void
printCounts(std::ostream & out,
            const char * title,
            const std::map<std::int32_t, std::size_t> & counts,
            NameFunction name)
{
  out << "  " << title << ":\n";
  for (const auto & [value, count] : counts)
  {
    std::ostringstream label;
    label << name(value) << " (" << value << ")";
    out << "    " << std::left << std::setw(34) << label.str() << std::right << std::setw(8) << count << "\n";
  }
}

void
describeVesselTree(const InfoOptions & options, Context & context)
{
  const ArVesselTree tree = readVesselTreeFile(options.file);
  const VesselTreeStatistics statistics(tree);
  if (options.json)
  {
    nlohmann::ordered_json json;
    json["file"] = options.file;
    json["kind"] = "vessel tree";
    json["vessels"] = statistics.numberOfVessels();
    json["points"] = statistics.numberOfPoints();
    json["depth"] = statistics.depth();
    json["bifurcations"] = statistics.numberOfBifurcations();
    json["lengthMillimetres"] = statistics.totalLength();
    json["bloodVesselTypes"] = countsAsJson(statistics.bloodVesselTypeCounts(), &VesselLabels::bloodVesselTypeName);
    json["segments"] = countsAsJson(statistics.segmentCounts(), &VesselLabels::segmentTypeName);
    json["resectionStatus"] = countsAsJson(statistics.resectionStatusCounts(), &VesselLabels::resectionStatusName);
    context.out << json.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << options.file << ": vessel tree\n";
  out << "  vessels:              " << statistics.numberOfVessels() << "\n";
  out << "  points:               " << statistics.numberOfPoints() << "\n";
  out << "  depth:                " << statistics.depth() << "\n";
  out << "  bifurcations:         " << statistics.numberOfBifurcations() << "\n";
  out << "  centre-line length:   " << std::fixed << std::setprecision(1) << statistics.totalLength() << " mm\n";
  out.unsetf(std::ios_base::floatfield);
  printCounts(out, "blood vessel types", statistics.bloodVesselTypeCounts(), &VesselLabels::bloodVesselTypeName);
  printCounts(out, "segments", statistics.segmentCounts(), &VesselLabels::segmentTypeName);
  printCounts(out, "resection status", statistics.resectionStatusCounts(), &VesselLabels::resectionStatusName);
}
} // namespace

void
addInfoCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<InfoOptions>();
  CLI::App * command = app.add_subcommand("info", "Describe a file: a vessel tree (.ves)");
  command->footer("For a vessel tree: numbers of vessels and points, depth, bifurcations, total centre-line length, "
                  "and how many vessels carry each blood vessel type, segment and resection status.\n"
                  "Example: arbo info portal.ves --json");
  command->add_option("file", options->file, "The file to describe")->required();
  command->add_flag("--json", options->json, "Print the description as JSON");
  command->callback([options, &context] {
    const std::string extension = formatExtension(options->file);
    if (extension != ".ves")
    {
      throw Error(options->file, "unsupported file type '" + extension + "' (supported: .ves)");
    }
    describeVesselTree(*options, context);
  });
}
} // namespace arbo
