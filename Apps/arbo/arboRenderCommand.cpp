#include "arboCommands.h"

#include "arboAtomicFile.h"
#include "arboDisplay.h"
#include "arboError.h"
#include "arboScene.h"
#include "arboVesselSurface.h"

#include "lumoBaseRenderer.h"
#include "lumoVesselTreeOperation.h"

#include <CLI/CLI.hpp>
#include <vtkPNGWriter.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkWindowToImageFilter.h>

#include <optional>
#include <ostream>

namespace arbo
{
namespace
{
struct RenderOptions
{
  std::vector<std::string> files;
  std::string output;
  std::string size{ "1024x768" };
  std::string view{ "front" };
  bool skeleton{ false };
  bool resection{ false };
  std::int32_t select{ -1 };
  std::string selectMode{ "single" };
  std::string plane;
  bool vesselSurface{ false };
  std::optional<long> label;
};

lumo::VesselTreeData::ActivationMode
activationMode(const std::string & mode)
{
  if (mode == "path")
  {
    return lumo::VesselTreeData::PathToRootActivation;
  }
  if (mode == "subtree")
  {
    return lumo::VesselTreeData::SubtreeActivation;
  }
  return lumo::VesselTreeData::SingleActivation;
}

/** Selects the vessel in the first tree that has it; its active colour then shows the selection. */
void
selectVessel(const Scene & scene, std::int32_t id, const std::string & mode)
{
  for (const auto & node : scene.trees)
  {
    auto * tree = static_cast<lumo::VesselTreeData *>(node->GetData());
    if (tree->GetVesselById(id, 0).isNull())
    {
      continue;
    }
    tree->SetActivationMode(activationMode(mode), 0);
    lumo::VesselTreeOperation select(lumo::VesselTreeOperation::Select, id);
    tree->ExecuteOperation(&select);
    return;
  }
  throw Error(scene.treeFiles.empty() ? std::string() : scene.treeFiles.front(),
              "--select " + std::to_string(id) + ": no vessel of that id in " +
                (scene.trees.size() == 1 ? "the tree" : "any of the trees"));
}

int
runRender(const RenderOptions & options, Context & context)
{
  if (formatExtension(options.output) != ".png")
  {
    throw Error(options.output, "the picture is written as PNG: give a file name ending in .png");
  }
  if (options.select >= 0 && options.files.empty())
  {
    throw Error("", "--select needs a vessel tree");
  }
  if (options.label && !options.vesselSurface)
  {
    throw Error("",
                "--label " + std::to_string(*options.label) + ": the label of the vessel mask needs --vessel-surface");
  }
  if (options.vesselSurface && options.skeleton)
  {
    throw Error("", "--vessel-surface and --skeleton exclude each other (the surface or the centre lines)");
  }
  int width = 0, height = 0;
  parseSize(options.size, width, height);

  // Read everything before anything is drawn, so that a bad file costs no display.
  std::vector<std::string> files = options.files;
  lumo::Surface::Pointer vesselSurface;
  if (options.vesselSurface)
  {
    const std::string mask = takeVesselMask(files);
    vesselSurface = vesselMaskSurface(mask, options.label);
  }
  Scene scene = buildScene(files, options.skeleton, options.resection);
  if (vesselSurface)
  {
    showVesselSurface(scene, vesselSurface);
  }
  if (options.select >= 0)
  {
    if (scene.trees.empty())
    {
      throw Error("", "--select needs a vessel tree among the files");
    }
    selectVessel(scene, options.select, options.selectMode);
  }
  if (!options.plane.empty())
  {
    showPlane(scene, readPlane(options.plane));
  }

  int status = 0;
  if (needsVirtualDisplay(context, status))
  {
    return status;
  }

  auto renderer = lumo::BaseRenderer::New();
  renderer->SetDataStorage(scene.storage);
  vtkRenderWindow * window = renderer->GetRenderWindow();
  window->OffScreenRenderingOn();
  setUpWindow(*renderer, width, height);
  {
    // The surface mapper reports its progress on standard output; a picture command prints nothing there.
    CapturedMessages progress;
    setView(*renderer, options.view);
    renderer->Render();
  }

  auto grab = vtkSmartPointer<vtkWindowToImageFilter>::New();
  grab->SetInput(window);
  grab->ReadFrontBufferOff();
  grab->Update();
  writeAtomically(options.output, [&](const std::string & temporary) {
    auto writer = vtkSmartPointer<vtkPNGWriter>::New();
    writer->SetInputConnection(grab->GetOutputPort());
    writer->SetFileName(temporary.c_str());
    writer->Write();
    if (writer->GetErrorCode() != 0)
    {
      throw Error(options.output, "cannot be written");
    }
  });
  if (!context.quiet)
  {
    context.err << "arbo: wrote " << options.output << " (" << width << "x" << height << ", " << scene.trees.size()
                << (scene.trees.size() == 1 ? " tree, " : " trees, ") << scene.surfaces
                << (scene.surfaces == 1 ? " surface" : " surfaces") << ")\n";
  }
  return 0;
}
} // namespace

void
addRenderCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<RenderOptions>();
  CLI::App * command = app.add_subcommand("render", "Draw vessel trees, organ masks and label images into a PNG");
  command->footer(
    "Trees are drawn as tubes coloured by resection status, else segment, else vessel type (the vessel colours of\n"
    "the module); a mask with one label (an organ) as a translucent surface; an image with several labels (supply\n"
    "areas) as one surface per label in the segment colours. Selected vessels take the active colour.\n"
    "A resection image (labels 2 remnant, 3 resected, 4 at risk, with NAME.proposal.xml beside it, or any such\n"
    "image with --resection) is drawn in the resection-status colours: the remnant translucent, the rest solid.\n"
    "A scene (.rs) adds its nodes as saved: hidden nodes are left out, trees keep their colour tables, an organ its\n"
    "colour and opacity; the opacity of a label or resection image scales that of its surfaces.\n"
    "Without an X display the command runs itself under \"xvfb-run -a\" (package xvfb).\n\n"
    "Examples:\n"
    "  arbo render portal.ves hepatic.ves organ.nrrd -o tree.png --view iso\n"
    "  arbo render segments.nrrd portal.ves -o segments.png --size 1600x1200\n"
    "  arbo render portal.ves -o path.png --select 12 --select-mode path\n"
    "  arbo render resection.nrrd portal.ves -o resection.png --resection\n"
    "  arbo render organ.nrrd portal.ves -o cut.png --plane cut.mps\n"
    "  arbo render plan.rs -o plan.png --view iso\n"
    "  arbo render portal.nrrd portal.ves -o surface.png --vessel-surface\n"
    "  arbo render labels.nii.gz portal.ves -o surface.png --vessel-surface --label 2\n\n"
    "With --vessel-surface the first image among the files is the vessel mask: its surface (halfway between vessel\n"
    "and background voxels, smoothed) is drawn instead of the tubes, each triangle in the colour of the vessel\n"
    "nearest to it; there must be exactly one tree.");
  command->add_option("files", options->files, "Vessel trees (.ves), masks, label images and scenes (.rs)")
    ->required()
    ->check(CLI::ExistingFile);
  command->add_option("-o,--output", options->output, "The PNG to write")->required();
  command->add_option("--size", options->size, "Picture size in pixels, WIDTHxHEIGHT (16 to 8192 each)")
    ->capture_default_str()
    ->check(sizeValidator());
  command->add_option("--view", options->view, "Direction of view")
    ->capture_default_str()
    ->check(CLI::IsMember(viewNames()));
  command->add_flag("--skeleton", options->skeleton, "Draw the centre lines instead of tubes");
  command
    ->add_option("--plane",
                 options->plane,
                 "Draw the cutting plane of these control points (.mps), translucent, clipped to the organ")
    ->check(CLI::ExistingFile);
  command->add_flag("--vessel-surface",
                    options->vesselSurface,
                    "Draw the vessel mask's surface coloured by the nearest vessel instead of tubes");
  command->add_option("--label", options->label, "With --vessel-surface: the vessels' label in a label map");
  command->add_flag("--resection",
                    options->resection,
                    "Draw images whose labels are among 2, 3 and 4 as resections (remnant, resected, at risk)");
  CLI::Option * select =
    command->add_option("--select", options->select, "Select the vessel of this id (drawn in the active colour)")
      ->check(CLI::NonNegativeNumber);
  command
    ->add_option("--select-mode",
                 options->selectMode,
                 "What --select selects: the vessel, its path to the "
                 "root, or its subtree")
    ->capture_default_str()
    ->check(CLI::IsMember({ "single", "path", "subtree" }))
    ->needs(select);
  command->callback([options, &context]() { context.status = runRender(*options, context); });
}
} // namespace arbo
