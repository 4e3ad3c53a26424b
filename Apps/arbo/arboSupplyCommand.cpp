#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"
#include "arboMasks.h"
#include "arboScene.h"
#include "arboSupplyAreas.h"

#include "lumoImage.h"
#include "lumoLabelStatistics.h"
#include "lumoProgressBar.h"
#include "lumoVascularSupplyAreasCalculator.h"

#include "VesselLabels.h"

#include <CLI/CLI.hpp>
#include <itkCommand.h>
#include <itkEventObject.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iomanip>
#include <map>
#include <optional>
#include <ostream>
#include <vector>
#include <sstream>

namespace arbo
{
namespace
{
using Json = nlohmann::ordered_json;

struct SupplyOptions
{
  std::string organ;
  std::string tree;
  std::vector<std::string> with;
  std::string output;
  std::string scene;
  std::string mode{ "portal-defined-segments" };
  unsigned int threads{ 0 };
  bool json{ false };
  std::optional<long> organLabel;
};

/** Drives the process-wide progress bar from the calculator's progress events (in hundredths). */
class ProgressForward : public itk::Command
{
public:
  using Self = ProgressForward;
  using Pointer = itk::SmartPointer<Self>;
  itkNewMacro(Self);

  void
  Execute(itk::Object * caller, const itk::EventObject & event) override
  {
    Execute(const_cast<const itk::Object *>(caller), event);
  }
  void
  Execute(const itk::Object * caller, const itk::EventObject & event) override
  {
    auto * process = dynamic_cast<const itk::ProcessObject *>(caller);
    if (process == nullptr || !itk::ProgressEvent().CheckEvent(&event))
    {
      return;
    }
    const auto percent = static_cast<unsigned int>(std::clamp(process->GetProgress(), 0.0f, 1.0f) * 100.0f);
    if (percent > m_Reported)
    {
      lumo::ProgressBar::GetInstance()->Progress(percent - m_Reported);
      m_Reported = percent;
    }
  }
  void
  Finish()
  {
    if (m_Reported < 100)
    {
      lumo::ProgressBar::GetInstance()->Progress(100 - m_Reported);
      m_Reported = 100;
    }
  }

private:
  unsigned int m_Reported{ 0 };
};

std::string
fixed(double value, int decimals)
{
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

void
supply(const SupplyOptions & options, Context & context)
{
  const auto mode = std::find_if(supplyModes().begin(), supplyModes().end(), [&](const auto & entry) {
                      return entry.first == options.mode;
                    })->second;

  lumo::BaseData::Pointer organData = readData(options.organ);
  auto * organImage = dynamic_cast<lumo::Image *>(organData.GetPointer());
  if (organImage == nullptr)
  {
    throw Error(options.organ, "holds a " + kindOf(organData) + ", not an organ segmentation image");
  }
  if (organImage->GetDimension() != 3)
  {
    throw Error(options.organ, "is a 2-D image; supply areas need a 3-D organ segmentation");
  }
  // The scene is opened first: a scene that cannot be loaded costs no calculation and writes nothing.
  lumo::DataStorage::Pointer plan = options.scene.empty() ? nullptr : openSceneForUpdate(options.scene);
  // The calculator takes 8-bit organ masks only: other voxel types and label maps are converted here.
  std::size_t organVoxels = 0;
  const lumo::Image::Pointer organ = binaryMaskOf(organImage, options.organ, options.organLabel, organVoxels);
  lumo::VesselTreeData::Pointer tree = readVesselTree(options.tree, context.quiet ? nullptr : &context.err);
  std::vector<std::pair<std::string, lumo::BaseData::Pointer>> inputs{
    { nodeNameOf(options.organ), organData }, { nodeNameOf(options.tree), tree.GetPointer() }
  };
  if (!options.with.empty())
  {
    // Several vascular systems at once: one tree holding them all.
    std::vector<ArVesselTree> trees{ tree->GetVesselTreeData(0) };
    for (const std::string & file : options.with)
    {
      lumo::VesselTreeData::Pointer further = readVesselTree(file, context.quiet ? nullptr : &context.err);
      trees.push_back(further->GetVesselTreeData(0));
      inputs.emplace_back(nodeNameOf(file), further.GetPointer());
    }
    tree = lumo::VesselTreeData::New();
    tree->initialize(joinVesselTrees(trees));
  }

  auto progress = ProgressForward::New();
  lumo::ProgressBar * bar = lumo::ProgressBar::GetInstance();
  const bool quietBefore = bar->GetQuiet();
  bar->SetQuiet(quietBefore || context.quiet || options.json);
  bar->AddStepsToDo(100);
  lumo::Image::Pointer areas;
  try
  {
    areas = computeSupplyAreas(organ, tree, mode, options.threads, options.organ, options.tree, options.mode, progress);
    progress->Finish();
    bar->SetQuiet(quietBefore);
  }
  catch (const Error &)
  {
    bar->Reset();
    bar->SetQuiet(quietBefore);
    throw;
  }
  writeData(areas, options.output);
  if (plan)
  {
    addResultsToScene(plan, options.scene, inputs, { { nodeNameOf(options.output), areas, {}, {} } });
    if (!context.quiet)
    {
      context.err << "arbo: added " << nodeNameOf(options.output) << " to " << options.scene << "\n";
    }
  }

  auto statistics = lumo::LabelStatistics::New();
  statistics->SetLabelImage(areas);
  statistics->SetMask(organ);
  statistics->Compute();

  if (options.json)
  {
    Json labels = Json::array();
    for (const auto & entry : statistics->GetEntries())
    {
      labels.push_back({ { "label", entry.label },
                         { "name", supplyLabelName(mode, entry.label) },
                         { "voxels", entry.voxels },
                         { "millilitres", entry.millilitres },
                         { "percent", entry.percent } });
    }
    Json result{ { "organ", options.organ },
                 { "tree", options.tree },
                 { "output", options.output },
                 { "mode", options.mode },
                 { "organ_voxels", statistics->GetTotalVoxels() },
                 { "organ_millilitres", statistics->GetTotalMillilitres() },
                 { "labels", labels } };
    context.out << result.dump(2) << "\n";
    return;
  }
  std::ostream & out = context.out;
  out << "Supply areas of " << options.organ << " by " << options.tree;
  for (const std::string & file : options.with)
  {
    out << " and " << file;
  }
  out << " (" << options.mode << ")\n";
  out << std::right << std::setw(7) << "label"
      << "  " << std::left << std::setw(28) << "name" << std::right << std::setw(12) << "voxels" << std::setw(12)
      << "ml" << std::setw(9) << "%"
      << "\n";
  for (const auto & entry : statistics->GetEntries())
  {
    out << std::right << std::setw(7) << entry.label << "  " << std::left << std::setw(28)
        << supplyLabelName(mode, entry.label) << std::right << std::setw(12) << entry.voxels << std::setw(12)
        << fixed(entry.millilitres, 2) << std::setw(9) << fixed(entry.percent, 2) << "\n";
  }
  out << std::right << std::setw(7) << ""
      << "  " << std::left << std::setw(28) << "organ" << std::right << std::setw(12) << statistics->GetTotalVoxels()
      << std::setw(12) << fixed(statistics->GetTotalMillilitres(), 2) << std::setw(9) << fixed(100.0, 2) << "\n";
  if (!context.quiet)
  {
    context.err << "arbo: wrote " << options.output << "\n";
  }
}
} // namespace

void
addSupplyCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<SupplyOptions>();
  CLI::App * command = app.add_subcommand(
    "supply", "Label each organ voxel by the vessel that supplies it; volumes per segment, type or resection status");
  std::vector<std::string> names;
  for (const auto & entry : supplyModes())
  {
    names.push_back(entry.first);
  }
  command->footer(
    "Each organ voxel (any value but 0) goes to the vessel with the nearest centre-line point; the mode decides which\n"
    "vessels take part and what the labels of the output mean:\n"
    "  portal-defined-segments (default)  portal veins with a segment; labels: segments (S_I=2 .. S_VIII=10)\n"
    "  portal-segments                    all portal veins; labels: segments, S_Undefined=1 included\n"
    "  hepatic-defined-segments           hepatic veins with a territory; labels: HS_LSV=12 .. HS_RLS=27\n"
    "  hepatic-segments                   all hepatic veins; labels: territories\n"
    "  all-vessels-segments               every vessel; labels: segments and territories\n"
    "  all-vessels-types                  every vessel; labels: type + 1 (1 undefined, 2 hepatic, 3 portal, 4 "
    "artery, 5 bile duct)\n"
    "  portal-resection-status            all portal veins; labels: 1 undefined, 2 keep, 3 resect, 4 at risk\n"
    "  portal-defined-resection-status    portal veins whose status is set; labels as above\n"
    "  hepatic-resection-status           all hepatic veins; labels as above\n"
    "  hepatic-defined-resection-status   hepatic veins whose status is set; labels as above\n"
    "The organ is a 3-D image of any voxel type (with --organ-label N, the voxels of value N of a label map); the\n"
    "tree in the same world coordinates. The label image is written with the organ's geometry in the format of\n"
    "the output's ending; the table lists voxels, millilitres and the share of the organ per label.\n"
    "Examples: arbo supply liver.nrrd portal.ves -o segments.nrrd\n"
    "          arbo supply liver.nrrd plan.ves -o resection.nii.gz --mode portal-resection-status --json\n"
    "          arbo supply liver.nrrd veins.ves -o territories.nrrd --mode hepatic-defined-segments --threads 2\n"
    "          arbo supply liver.nrrd portal.ves --with hepatic.ves -o systems.nrrd --mode all-vessels-types\n"
    "          arbo supply liver.nrrd portal.ves -o segments.nrrd --scene plan.rs");
  command->add_option("organ", options->organ, "Organ segmentation (3-D image, 0 = outside) or label map")->required();
  command->add_option("tree", options->tree, "Vessel tree (.ves) in the organ's world coordinates")->required();
  command->add_option("-o,--output", options->output, "Where to write the label image (.nrrd, .nii.gz, .mha, ...)")
    ->required();
  command->add_option(
    "--with", options->with, "A further vessel tree of the same organ (repeatable): all trees supply");
  command->add_option("--mode", options->mode, "Which vessels supply and what the labels mean")
    ->check(CLI::IsMember(names))
    ->capture_default_str();
  command->add_option("--threads", options->threads, "Threads for the voxel loop (default: all cores)")
    ->check(CLI::Range(1u, 1024u));
  command->add_option(
    "--organ-label", options->organLabel, "The organ's label in a label map (default: every voxel but 0)");
  command->add_option("--scene",
                      options->scene,
                      "Add the label image to this scene (.rs, created when missing), with the organ and trees as its "
                      "sources");
  command->add_flag("--json", options->json, "Print the table as JSON (for scripts)");
  command->callback([options, &context] { supply(*options, context); });
}
} // namespace arbo
