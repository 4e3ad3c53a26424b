#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace arbo
{
namespace
{
struct ConvertOptions
{
  std::string input;
  std::string output;
};
} // namespace

void
addConvertCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<ConvertOptions>();
  CLI::App * command =
    app.add_subcommand("convert", "Read a file and write it again, in the format of the output name");
  command->footer("Vessel trees: .ves (canonical text) or .vtp (centre lines as VTK poly data with the arrays "
                  "radius and vesselIds, and per line vesselId, bloodVesselType, segment, resectionStatus).\n"
                  "Images: between .nrrd, .nii, .nii.gz, .mhd, .mha, .pic and .pic.gz, keeping voxels, spacing, origin "
                  "and direction.\n"
                  "The output is written to a temporary file beside it and renamed into place only when complete: "
                  "an unreadable input never creates or damages the output.\n"
                  "Examples: arbo convert old.ves canonical.ves\n"
                  "          arbo convert portal.ves portal.vtp\n"
                  "          arbo convert liver.nii.gz liver.nrrd");
  command->add_option("input", options->input, "The file to read")->required();
  command->add_option("output", options->output, "The file to write; its ending chooses the format")->required();
  command->callback([options, &context] {
    lumo::BaseData::Pointer data = readData(options->input);
    writeData(data, options->output);
    if (!context.quiet)
    {
      context.err << "arbo: wrote " << options->output << "\n";
    }
  });
}
} // namespace arbo
