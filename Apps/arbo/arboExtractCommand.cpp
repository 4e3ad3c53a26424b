#include "arboCommands.h"

#include "arboError.h"
#include "arboExtraction.h"
#include "arboFiles.h"

#include "lumoImage.h"
#include "lumoProgressBar.h"

#include "VesselLabels.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iomanip>
#include <optional>
#include <ostream>
#include <sstream>

namespace arbo
{
namespace
{
struct ExtractOptions
{
  std::string input;
  std::string output;
  std::string start;
  std::string type{ "portal" };
  unsigned int cleanedIterations{ 0 };
  bool noEndpointSuppression{ false };
  bool keepSpurs{ false };
  double prune{ 0.0 };
  // Two passes take the voxel staircase out of the centre lines and, on the phantoms, bring them nearer the truth.
  unsigned int smooth{ 2 };
  bool rawDiameters{ false };
  bool rawCentreLines{ false };
  std::optional<long> label;
  bool noResample{ false };
  bool joinPieces{ false };
  bool noStub{ false };
};

bool
parseStart(const std::string & text, unsigned int start[3])
{
  std::istringstream in(text);
  char comma1 = 0;
  char comma2 = 0;
  long values[3] = { -1, -1, -1 };
  in >> values[0] >> comma1 >> values[1] >> comma2 >> values[2];
  if (in.fail() || comma1 != ',' || comma2 != ',' || !(in >> std::ws).eof())
  {
    return false;
  }
  for (int a = 0; a < 3; ++a)
  {
    if (values[a] < 0)
    {
      return false;
    }
    start[a] = static_cast<unsigned int>(values[a]);
  }
  return true;
}

void
extract(const ExtractOptions & options, Context & context)
{
  // Options first: nothing is read before they are known to be good.
  std::int32_t type = 0;
  if (!VesselLabels::parseBloodVesselType(options.type, type))
  {
    throw Error("--type",
                "unknown blood vessel type '" + options.type +
                  "' (use portal, hepatic, artery, bile, undefined or 0 to 4)");
  }
  unsigned int start[3] = { 0, 0, 0 };
  if (!options.start.empty() && !parseStart(options.start, start))
  {
    throw Error("--start", "'" + options.start + "' is not a voxel index i,j,k (three whole numbers from 0)");
  }

  lumo::ProgressBar * progress = lumo::ProgressBar::GetInstance();
  progress->SetQuiet(context.quiet);
  progress->AddStepsToDo(4);
  struct ResetProgress
  {
    lumo::ProgressBar * bar;
    ~ResetProgress() { bar->Reset(); }
  } resetProgress{ progress };

  lumo::BaseData::Pointer data = readData(options.input);
  auto * image = dynamic_cast<lumo::Image *>(data.GetPointer());
  if (image == nullptr)
  {
    throw Error(options.input, "holds a " + kindOf(data) + ", not a vessel mask image");
  }
  ExtractionSettings settings;
  settings.type = type;
  settings.label = options.label;
  settings.haveStart = !options.start.empty();
  std::copy(start, start + 3, settings.start);
  settings.startText = options.start;
  settings.cleanedIterations = options.cleanedIterations;
  settings.endpointSuppression = !options.noEndpointSuppression;
  settings.keepSpurs = options.keepSpurs;
  settings.prune = options.prune;
  settings.smooth = options.smooth;
  settings.rawDiameters = options.rawDiameters;
  settings.rawCentreLines = options.rawCentreLines;
  settings.resample = !options.noResample;
  settings.joinPieces = options.joinPieces;
  settings.stub = !options.noStub;
  ExtractionReport report;
  lumo::VesselTreeData::Pointer tree =
    extractVesselTree(image, options.input, settings, report, context.err, context.quiet);

  writeData(tree, options.output);
  progress->Progress();

  if (!context.quiet)
  {
    context.err << "arbo: " << report.vessels << " vessels (" << VesselLabels::bloodVesselTypeName(type)
                << ") from a skeleton of " << report.skeletonVoxels << " voxels; " << report.extracted << " extracted, "
                << report.spurs << " spurs removed, " << report.pruned << " pruned\n";
    if (report.stub.length > 0.0)
    {
      std::ostringstream note;
      note << std::fixed << std::setprecision(1) << "arbo: note: the root vessel was extended by " << report.stub.length
           << " mm towards a thick part of the mask that no vessel covered (radius " << report.stub.radius
           << " mm); --no-stub leaves it out\n";
      context.err << note.str();
    }
    if (report.leftOutParts > 0)
    {
      context.err << "arbo: note: " << report.leftOutParts << " skeleton parts (" << report.leftOutVoxels
                  << " voxels) are not connected to the root and were left out\n";
    }
    context.err << "arbo: wrote " << options.output << "\n";
  }
}
} // namespace

void
addExtractCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<ExtractOptions>();
  CLI::App * command = app.add_subcommand("extract", "Extract a vessel tree from a binary vessel segmentation");
  command->footer(
    "The mask (any image format and voxel type; every voxel other than 0 is vessel, or with --label N the voxels of\n"
    "value N of a label map) is thinned to a skeleton one voxel wide, the skeleton becomes a tree by a breadth-first "
    "walk from the root, spurs that bumpy\n"
    "surfaces leave are removed, and the tree is written in world coordinates (mm) with diameters.\n"
    "The root is the voxel given with --start (moved to the nearest skeleton voxel), or else the skeleton end\n"
    "point farthest from the vessel wall: where the thickest vessel ends, usually where it enters the liver.\n"
    "Skeleton parts not connected to the root are left out and counted in a note.\n"
    "A thick trunk that thinning takes away (the tree then starts at its first branching) is given back: the root\n"
    "vessel is extended towards the thickest part of the mask that no vessel covers, if that part is at least two\n"
    "voxels in radius and in line with the root (--no-stub leaves it out). Terminal vessels, which thinning stops\n"
    "short, are extended along their last 2 mm to a radius before the mask ends. Each point is then moved across\n"
    "its vessel to the centre of the mask's cross-section there (at most 0.75 voxel a round, two rounds, then three\n"
    "smoothing passes), except where the cross-section is much wider than the vessel (branchings, contacts).\n"
    "Slices thicker than twice the in-plane spacing are first interpolated (shape-based: signed distances to the\n"
    "contour of each slice, linear between slices, thresholded at 0) to near-isotropic voxels; the tree stays in\n"
    "the file's world coordinates. Messages of the thinning code are shown as notes on standard error.\n"
    "Examples:\n"
    "  arbo extract portal-mask.nii.gz -o portal.ves --type portal\n"
    "  arbo extract labels.nrrd -o portal.ves --label 2   (label 2 of a label map)\n"
    "  arbo extract hepatic.nrrd -o hepatic.ves --type hepatic --start 255,301,120\n"
    "  arbo extract artery.mha -o artery.ves --type artery --prune 3 --smooth 3\n"
    "  arbo extract noisy.nrrd -o tree.ves --cleaned-iterations 2   (fewer small loops from holes)");
  command->add_option("mask", options->input, "The binary vessel segmentation (3-D image)")->required();
  command->add_option("-o,--output", options->output, "Where to write the tree (.ves or .vtp)")->required();
  command->add_option("--label", options->label, "The vessels' label in a label map (default: every voxel but 0)");
  CLI::Option * noResample =
    command->add_flag("--no-resample",
                      options->noResample,
                      "Thin thick slices as they are (default: interpolate them to near-isotropic voxels first)");
  command
    ->add_flag("--join-pieces",
               options->joinPieces,
               "When interpolating thick slices, move a piece of a slice that overlaps nothing in the next one towards "
               "the nearest piece there: more thin oblique branches stay connected, at some cost in their precision")
    ->excludes(noResample);
  command->add_flag(
    "--no-stub", options->noStub, "Do not extend the root towards a thick part of the mask that no vessel covers");
  command->add_option("--start", options->start, "Voxel index i,j,k of the root (default: thickest end point)");
  command
    ->add_option("--type",
                 options->type,
                 "Blood vessel type of every vessel: portal, hepatic, artery, bile, "
                 "undefined (or 0-4)")
    ->capture_default_str();
  command
    ->add_option("--cleaned-iterations",
                 options->cleanedIterations,
                 "Thinning iterations followed by a cleaning pass that removes small loops and thick spots")
    ->capture_default_str();
  command->add_flag("--no-endpoint-suppression",
                    options->noEndpointSuppression,
                    "Delete voxels with more neighbours first when thinning (longer spurs; default is the reverse)");
  command->add_flag("--keep-spurs",
                    options->keepSpurs,
                    "Keep the short terminal branches that bumps of the vessel wall leave in the skeleton");
  command->add_option("--prune", options->prune, "Drop terminal vessels shorter than this (mm), repeatedly")
    ->check(CLI::NonNegativeNumber);
  command
    ->add_option("--smooth",
                 options->smooth,
                 "Smoothing passes over each centre line and its diameters (0 keeps the voxel staircase)")
    ->capture_default_str();
  command->add_flag("--raw-diameters",
                    options->rawDiameters,
                    "Keep the thinning's diameters (distance to the background less half a voxel) instead of "
                    "measuring each cross-section of the mask");
  command->add_flag("--raw-centre-lines",
                    options->rawCentreLines,
                    "Keep the centre lines on the skeleton's voxels instead of moving each point to the centre of the "
                    "mask's cross-section there");
  command->callback([options, &context] { extract(*options, context); });
}
} // namespace arbo
