#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"
#include "arboPhantomDegradation.h"

#include "lumoLiverPhantomSource.h"
#include "lumoTemporaryFileGuard.h"

#include "VesselTreeStatistics.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <ostream>
#include <random>

namespace arbo
{
namespace
{
namespace fs = std::filesystem;

struct PhantomOptions
{
  std::string out;
  std::string size{ "small" };
  std::uint64_t seed{ 1 };
  double slice{ 0.0 };
  Degradation degradation;
};

/** Makes the output folder when it is missing; refuses a path that is something else. */
void
prepareFolder(const fs::path & folder)
{
  std::error_code ec;
  const fs::file_status status = fs::status(folder, ec);
  if (fs::exists(status))
  {
    if (!fs::is_directory(status))
    {
      throw Error(folder.string(), "exists and is not a folder");
    }
    return;
  }
  fs::create_directories(folder, ec);
  if (ec)
  {
    throw Error(folder.string(), "cannot be created (" + ec.message() + ")");
  }
}

std::size_t
countVoxels(const lumo::Image & image)
{
  const auto * v = static_cast<const std::uint8_t *>(image.GetData());
  return static_cast<std::size_t>(std::count(v, v + image.GetNumberOfVoxels(), 1));
}

void
runPhantom(const PhantomOptions & options, Context & context)
{
  lumo::LiverPhantomSource::SizePreset preset{};
  lumo::LiverPhantomSource::ParseSizePreset(options.size, preset);
  const fs::path folder(options.out);
  prepareFolder(folder);

  auto source = lumo::LiverPhantomSource::New();
  source->SetSizePreset(preset);
  source->SetSeed(options.seed);
  if (options.slice > 0.0)
  {
    // Thick slices over the same field of view: the masks are sampled at the slices' centres.
    auto spacing = source->GetSpacing();
    auto size = source->GetSize();
    const double fieldOfView = spacing[2] * static_cast<double>(size[2]);
    size[2] = std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(fieldOfView / options.slice)));
    spacing[2] = options.slice;
    source->SetSize(size);
    source->SetSpacing(spacing);
  }
  source->Update();
  const Degradation & degradation = options.degradation;
  if (degradation.noise > 0.0 || degradation.holes > 0 || degradation.fragments > 0 || degradation.touching > 0)
  {
    degradePhantom(source->GetOrganMask(),
                   source->GetPortalMask(),
                   source->GetHepaticMask(),
                   source->GetPortalTree()->GetVesselTreeData(0),
                   source->GetHepaticTree()->GetVesselTreeData(0),
                   degradation,
                   options.seed);
  }

  const std::vector<std::pair<std::string, lumo::BaseData *>> outputs = {
    { "organ.nrrd", source->GetOrganMask() },          { "portal.nrrd", source->GetPortalMask() },
    { "hepatic.nrrd", source->GetHepaticMask() },      { "truth-portal.ves", source->GetPortalTree() },
    { "truth-hepatic.ves", source->GetHepaticTree() }, { "tumour.nrrd", source->GetTumourMask() },
  };
  for (const auto & [name, data] : outputs)
  {
    std::error_code ec;
    if (fs::is_directory(folder / name, ec))
    {
      throw Error((folder / name).string(), "is a folder; the phantom's file cannot replace it");
    }
  }
  // Everything goes to a staging folder first, so that a failure leaves no phantom half-written beside earlier
  // files; the finished files are then moved in.
  std::random_device random;
  const fs::path staging = folder / (".phantom-" + std::to_string(random()));
  std::error_code ec;
  fs::create_directory(staging, ec);
  if (ec)
  {
    throw Error(folder.string(), "cannot be written (" + ec.message() + ")");
  }
  // An interrupt removes the finished files and the staging folder as well as the file being written.
  lumo::TemporaryFileGuard::InstallSignalHandlers();
  const lumo::TemporaryFileGuard stagingGuard(staging.string(), true);
  std::vector<std::unique_ptr<lumo::TemporaryFileGuard>> stagedGuards;
  try
  {
    for (const auto & [name, data] : outputs)
    {
      try
      {
        stagedGuards.push_back(std::make_unique<lumo::TemporaryFileGuard>((staging / name).string()));
        writeData(data, (staging / name).string());
      }
      catch (const Error & e)
      {
        throw Error((folder / name).string(), e.what());
      }
    }
    // All or none of the files: an interrupt waits until they are in place.
    const lumo::TemporaryFileGuard::DeferInterrupts deferred;
    for (const auto & [name, data] : outputs)
    {
      fs::rename(staging / name, folder / name, ec);
      if (ec)
      {
        throw Error((folder / name).string(), "cannot be written (" + ec.message() + ")");
      }
    }
  }
  catch (...)
  {
    fs::remove_all(staging, ec);
    throw;
  }
  fs::remove_all(staging, ec);

  if (context.quiet)
  {
    return;
  }
  const lumo::Image & organ = *source->GetOrganMask();
  const auto spacing = source->GetSpacing();
  std::ostream & out = context.out;
  out << "liver phantom, seed " << options.seed << ", " << options.size << ": " << organ.GetDimension(0) << " x "
      << organ.GetDimension(1) << " x " << organ.GetDimension(2) << " voxels of " << spacing[0] << " x " << spacing[1]
      << " x " << spacing[2] << " mm, in " << folder.string() << "\n";
  out << "  organ.nrrd          organ mask, " << countVoxels(organ) << " voxels\n";
  out << "  portal.nrrd         portal vein mask, " << countVoxels(*source->GetPortalMask()) << " voxels\n";
  out << "  hepatic.nrrd        hepatic vein mask, " << countVoxels(*source->GetHepaticMask()) << " voxels\n";
  const VesselTreeStatistics portal(source->GetPortalTree()->GetVesselTreeData(0));
  const VesselTreeStatistics hepatic(source->GetHepaticTree()->GetVesselTreeData(0));
  out << "  truth-portal.ves    true portal tree, " << portal.numberOfVessels() << " vessels, "
      << portal.numberOfBifurcations() << " bifurcations\n";
  out << "  truth-hepatic.ves   true hepatic tree, " << hepatic.numberOfVessels() << " vessels, "
      << hepatic.numberOfBifurcations() << " bifurcations\n";
  const unsigned int lesions = source->GetNumberOfTumours();
  out << "  tumour.nrrd         tumour mask, " << countVoxels(*source->GetTumourMask()) << " voxels, " << lesions
      << (lesions == 1 ? " lesion\n" : " lesions\n");
}
} // namespace

void
addPhantomCommand(CLI::App & app, Context & context)
{
  auto options = std::make_shared<PhantomOptions>();
  CLI::App * command =
    app.add_subcommand("phantom", "Generate a synthetic liver with its vessel masks and true vessel trees");
  command->footer("Writes organ.nrrd, portal.nrrd and hepatic.nrrd (unsigned 8-bit masks), truth-portal.ves and "
                  "truth-hepatic.ves (the true centre lines in world coordinates) and tumour.nrrd (one to three "
                  "lesions inside the organ, away from the vessel trunks) into the folder, which is made "
                  "when missing. The same seed gives the same files; the sizes share one anatomy:\n"
                  "  small   96 x 96 x 64 voxels of 2.5 x 2.5 x 3 mm\n"
                  "  medium  256 x 256 x 160 voxels of 0.9375 x 0.9375 x 1.2 mm\n"
                  "  large   512 x 512 x 300 voxels of 0.46875 x 0.46875 x 0.64 mm\n"
                  "Like a segmentation of real images (the true trees stay as they are): --slice MM samples the masks\n"
                  "in slices of MM mm over the same field of view; --noise P flips P % of the boundary voxels of\n"
                  "each mask; --holes N cuts N small cavities into each vessel mask, --fragments N adds N small\n"
                  "disconnected pieces to each, --touching N brings portal and hepatic branches into contact at the\n"
                  "N closest places. All default to 0 (the clean phantom); the same seed gives the same damage.\n"
                  "Example: arbo phantom --out phantom --size medium --seed 3\n"
                  "         arbo phantom --out degraded --size medium --slice 5 --noise 5 --holes 20");
  command->add_option("--out", options->out, "Folder for the six files")->required();
  command->add_option("--size", options->size, "small, medium or large (default small)")
    ->check(CLI::IsMember({ "small", "medium", "large" }));
  command->add_option("--seed", options->seed, "Seed of the random branching (default 1)")
    ->check(CLI::NonNegativeNumber);
  command->add_option("--slice", options->slice, "Slice thickness in mm (default: the size's)")
    ->check(CLI::Range(0.1, 192.0));
  command->add_option("--noise", options->degradation.noise, "Percent of boundary voxels flipped (default 0)")
    ->check(CLI::Range(0.0, 100.0));
  command->add_option("--holes", options->degradation.holes, "Small cavities per vessel mask (default 0)");
  command->add_option("--fragments", options->degradation.fragments, "Disconnected pieces per vessel mask (default 0)");
  command->add_option(
    "--touching", options->degradation.touching, "Contacts of portal and hepatic branches (default 0)");
  command->callback([options, &context] { runPhantom(*options, context); });
}
} // namespace arbo
