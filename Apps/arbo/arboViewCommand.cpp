#include "arboCommands.h"

#include "arboDisplay.h"
#include "arboError.h"
#include "arboScene.h"
#include "arboVesselSurface.h"
#include "arboViewer.h"

#include "lumoDisplay.h"

#include <CLI/CLI.hpp>

#include <optional>

namespace arbo
{
namespace
{
struct ViewOptions
{
  std::vector<std::string> files;
  std::string size{ "1024x768" };
  std::string view{ "front" };
  std::string plane;
  bool vesselSurface{ false };
  std::optional<long> label;
};

void
runView(const ViewOptions & options, Context & context)
{
  Viewer::Options viewerOptions;
  viewerOptions.files = options.files;
  if (options.label && !options.vesselSurface)
  {
    throw Error("",
                "--label " + std::to_string(*options.label) + ": the label of the vessel mask needs --vessel-surface");
  }
  if (options.vesselSurface)
  {
    viewerOptions.vesselMask = takeVesselMask(viewerOptions.files);
    viewerOptions.vesselLabel = options.label;
  }
  viewerOptions.view = options.view;
  viewerOptions.plane = options.plane;
  parseSize(options.size, viewerOptions.width, viewerOptions.height);
  std::string why;
  if (!lumo::IsDisplayAvailable(&why))
  {
    throw Error("", why + "; arbo view needs a screen (arbo render draws pictures without one)");
  }
  Viewer viewer(viewerOptions, context);
  viewer.run();
}
} // namespace

void
addViewCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<ViewOptions>();
  CLI::App * command = app.add_subcommand("view", "Look at vessel trees in a window, select vessels and label them");
  command->footer("Click a vessel to select it, shift+click to add one; keys set type, segment and resection\n"
                  "status of the selected vessels. Press ? in the window for all keys:\n\n" +
                  Viewer::helpText() +
                  "\n\nEdited trees are saved beside the originals as NAME.edited.ves; the originals are only\n"
                  "overwritten after pressing S twice. A scene (.rs) is written back, atomically, after pressing\n"
                  "S twice, with its trees as edited (the selection cleared).\n\n"
                  "With a cutting plane (--plane, or o in the window) its control points are handles to drag; on\n"
                  "release the resection is computed again (the organ is the mask, the first tree the portal\n"
                  "tree, a second one the hepatic tree) and the status line shows the remnant, resected and\n"
                  "at-risk volumes and the FLR. s saves the plane as ORGAN.plane.mps and the trees with their\n"
                  "resection statuses as NAME.edited.ves.\n\n"
                  "Examples:\n"
                  "  arbo view portal.ves hepatic.ves organ.nrrd\n"
                  "  arbo view organ.nrrd portal.ves --plane cut.mps\n"
                  "  arbo view plan.rs\n"
                  "  arbo view portal.nrrd portal.ves --vessel-surface");
  command->add_option("files", options->files, "Vessel trees (.ves), masks, label images and scenes (.rs)")
    ->required()
    ->check(CLI::ExistingFile);
  command->add_option("--size", options->size, "Window size in pixels, WIDTHxHEIGHT")
    ->capture_default_str()
    ->check(sizeValidator());
  command->add_option("--view", options->view, "Direction of view at the start")
    ->capture_default_str()
    ->check(CLI::IsMember(viewNames()));
  command->add_option("--plane", options->plane, "Control points of a cutting plane to edit (.mps)")
    ->check(CLI::ExistingFile);
  command->add_flag("--vessel-surface",
                    options->vesselSurface,
                    "The first image is a vessel mask: show its surface coloured by the nearest vessel (t: tubes, "
                    "centre lines, surface)");
  command->add_option("--label", options->label, "With --vessel-surface: the vessels' label in a label map");
  command->callback([options, &context]() { runView(*options, context); });
}
} // namespace arbo
