#include "arboCommands.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboVesselTreeFile.h"

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

void
requireExtension(const std::string & path, const char * role)
{
  const std::string extension = formatExtension(path);
  if (extension != ".ves")
  {
    throw Error(path, std::string("unsupported ") + role + " type '" + extension + "' (supported: .ves)");
  }
}
} // namespace

void
addConvertCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<ConvertOptions>();
  CLI::App * command =
    app.add_subcommand("convert", "Read a file and write it again, in the format of the output name");
  command->footer("The output is written to a temporary file beside it and renamed into place only when complete: "
                  "an unreadable input never creates or damages the output.\n"
                  "Example: arbo convert old.ves canonical.ves");
  command->add_option("input", options->input, "The file to read")->required();
  command->add_option("output", options->output, "The file to write; its ending chooses the format")->required();
  command->callback([options, &context] {
    requireExtension(options->input, "input");
    requireExtension(options->output, "output");
    const ArVesselTree tree = readVesselTreeFile(options->input);
    writeVesselTreeFile(options->output, tree);
    if (!context.quiet)
    {
      context.err << "arbo: wrote " << options->output << "\n";
    }
  });
}
} // namespace arbo
