#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"
#include "arboTreeAnalysis.h"

#include "lumoVesselTreeOperation.h"

#include "VesselLabels.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace arbo
{
namespace
{
struct LabelOptions
{
  std::string input;
  std::string output;
  std::int32_t vessel{ 0 };
  bool vesselGiven{ false };
  std::string select{ "single" };
  std::string type;
  std::string segment;
  std::string status;
  bool hide{ false };
  bool show{ false };
  std::string from;
  bool noSplit{ false };
};

/** Every vessel takes the labels of the nearest vessel of a reference tree. */
void
transferLabels(const LabelOptions & options, Context & context)
{
  lumo::VesselTreeData::Pointer reference = readVesselTree(options.from, context.quiet ? nullptr : &context.err);
  lumo::VesselTreeData::Pointer data = readVesselTree(options.input, context.quiet ? nullptr : &context.err);
  // A vessel that runs along two differently labelled reference vessels is split first and takes both.
  std::size_t split = 0;
  const std::size_t labelled = transferLabelsFrom(
    reference->GetVesselTreeData(0), data->GetVesselTreeData(0), options.from, !options.noSplit, &split);
  if (split > 0)
  {
    data->TopologyModified();
  }
  data->DeactivateAll(0);
  writeData(data, options.output);
  if (!context.quiet)
  {
    context.err << "arbo: " << labelled << " vessels took the type, segment and resection status of their nearest "
                << "vessel in " << options.from << "\n";
    if (split > 0)
    {
      context.err << "arbo: note: " << split << " vessels were split off where the labels of the nearest vessels in "
                  << options.from << " change along them; --no-split keeps every vessel whole\n";
    }
    context.err << "arbo: wrote " << options.output << "\n";
  }
}

lumo::VesselTreeData::ActivationMode
selectionMode(const std::string & select)
{
  if (select == "path")
  {
    return lumo::VesselTreeData::PathToRootActivation;
  }
  if (select == "subtree")
  {
    return lumo::VesselTreeData::SubtreeActivation;
  }
  return lumo::VesselTreeData::SingleActivation;
}

std::size_t
countActive(const lumo::VesselTreeData & data)
{
  std::size_t count = 0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(data.GetVesselTreeData(0)->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (!vessel.isNull() && vessel->getProperties().isActive())
    {
      ++count;
    }
  }
  return count;
}

void
label(const LabelOptions & options, Context & context)
{
  if (!options.from.empty())
  {
    transferLabels(options, context);
    return;
  }
  if (!options.vesselGiven)
  {
    throw CLI::RequiredError("--vessel");
  }
  // Check every label before anything is read or written.
  std::int32_t value = 0;
  std::string what;
  if (!options.type.empty())
  {
    if (!VesselLabels::parseBloodVesselType(options.type, value))
    {
      throw Error("--type",
                  "unknown blood vessel type '" + options.type +
                    "' (use portal, hepatic, artery, bile, undefined or 0 to 4)");
    }
    what = "blood vessel type " + VesselLabels::bloodVesselTypeName(value);
  }
  else if (!options.segment.empty())
  {
    if (!VesselLabels::parseSegmentType(options.segment, value))
    {
      throw Error("--segment",
                  "unknown segment '" + options.segment +
                    "' (use S_I .. S_VIII, S_IVa, S_IVb, S_All, "
                    "HS_LSV .. HS_RLS, undefined or 1 to 27)");
    }
    what = "segment " + VesselLabels::segmentTypeName(value);
  }
  else if (!options.status.empty())
  {
    if (!VesselLabels::parseResectionStatus(options.status, value))
    {
      throw Error("--status",
                  "unknown resection status '" + options.status + "' (use resect, keep, risk, undefined or 1 to 4)");
    }
    what = "resection status " + VesselLabels::resectionStatusName(value);
  }
  else
  {
    what = options.hide ? "hidden" : "shown";
  }

  lumo::VesselTreeData::Pointer data = readVesselTree(options.input, context.quiet ? nullptr : &context.err);
  if (data->GetVesselById(options.vessel, 0).isNull())
  {
    throw Error(options.input, "has no vessel with id " + std::to_string(options.vessel));
  }
  data->SetActivationMode(selectionMode(options.select), 0);
  lumo::VesselTreeOperation select(lumo::VesselTreeOperation::Select, options.vessel);
  data->ExecuteOperation(&select);
  const std::size_t selected = countActive(*data);

  if (!options.type.empty())
  {
    data->SetBloodVesselTypeForActive(value, 0);
  }
  else if (!options.segment.empty())
  {
    data->SetSegmentTypeForActive(value, 0);
  }
  else if (!options.status.empty())
  {
    data->SetResectionStatusForActive(value, 0);
  }
  else
  {
    data->SetVisibilityForActive(options.show, 0);
  }
  // Vessels that refused the label are still active; the selection is not part of the result.
  const std::size_t refused = countActive(*data);
  data->DeactivateAll(0);
  writeData(data, options.output);

  if (!context.quiet)
  {
    context.err << "arbo: " << (selected - refused) << " of " << selected << " selected vessels (" << options.select
                << " of vessel " << options.vessel << ") now " << (options.hide || options.show ? "" : "carry ")
                << what;
    if (refused > 0)
    {
      context.err << "; " << refused << " kept their segment, which must fit the vessel type";
    }
    context.err << "\narbo: wrote " << options.output << "\n";
  }
}
} // namespace

void
addLabelCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<LabelOptions>();
  CLI::App * command = app.add_subcommand("label", "Set a label on a vessel, its path to the root or its subtree");
  command->footer(
    "Exactly one of --type, --segment, --status, --hide, --show (with --vessel), or --from (without it).\n"
    "Types: portal, hepatic, artery, bile, undefined (or 0-4). Segments: S_I .. S_VIII, S_IVa, S_IVb, S_All, "
    "the hepatic territories HS_LSV .. HS_RLS, undefined (or 1-27). Status: resect, keep, risk, undefined (or 1-4).\n"
    "A segment is taken only by vessels it fits: portal segments by portal veins, hepatic territories by hepatic "
    "veins. Changing the type resets a segment that no longer fits.\n"
    "With --from, a vessel along two differently labelled reference vessels (a branching the tree lacks) is first\n"
    "split where their labels change, so that it takes both; --no-split keeps every vessel whole.\n"
    "Examples: arbo label portal.ves -o planned.ves --vessel 6 --select subtree --status resect\n"
    "          arbo label portal.ves -o fixed.ves --vessel 12 --segment S_VII\n"
    "          arbo label extracted.ves -o labelled.ves --from reference.ves");
  command->add_option("tree", options->input, "The vessel tree to label (.ves)")->required();
  command->add_option("-o,--output", options->output, "Where to write the labelled tree (.ves or .vtp)")->required();
  CLI::Option * vessel = command->add_option("--vessel", options->vessel, "Id of the picked vessel");
  command
    ->add_option("--select", options->select, "Which vessels: the picked one, its path to the root, or its subtree")
    ->check(CLI::IsMember({ "single", "path", "subtree" }))
    ->capture_default_str();
  CLI::Option_group * actions = command->add_option_group("label", "What to set on the selected vessels");
  actions->add_option("--type", options->type, "Blood vessel type");
  actions->add_option("--segment", options->segment, "Liver segment or hepatic territory");
  actions->add_option("--status", options->status, "Resection status");
  actions->add_flag("--hide", options->hide, "Hide the vessels");
  actions->add_flag("--show", options->show, "Show the vessels");
  CLI::Option * from =
    actions->add_option("--from", options->from, "Take every vessel's labels from the nearest vessel of this tree");
  actions->require_option(1);
  from->excludes(vessel);
  command
    ->add_flag("--no-split",
               options->noSplit,
               "With --from: keep each vessel whole (one label each) instead of splitting it where the labels of the "
               "nearest reference vessels change")
    ->needs(from);
  command->callback([options, vessel, &context] {
    options->vesselGiven = vessel->count() > 0;
    label(*options, context);
  });
}
} // namespace arbo
