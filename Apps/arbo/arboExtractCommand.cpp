#include "arboCommands.h"

#include "arboError.h"
#include "arboFiles.h"
#include "arboMasks.h"

#include "lumoImage.h"
#include "lumoImageAccess.h"
#include "lumoProgressBar.h"
#include "lumoPruneVesselTreeFilter.h"
#include "lumoSkeletonizationBasedImageToVesselTreeFilter.h"
#include "lumoSmoothVesselTreeFilter.h"
#include "lumoVesselRadiusRefinementFilter.h"

#include "ChildMergingTreeCleaner.h"
#include "SpurTreeCleaner.h"
#include "VesselLabels.h"

#include <CLI/CLI.hpp>

#include <itkImage.h>
#include <itkImageRegionConstIterator.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <optional>
#include <ostream>
#include <sstream>
#include <streambuf>

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
  std::optional<long> label;
  bool noResample{ false };
  bool noStub{ false };
};

/** While it lives, what the extraction layer prints to standard output reaches the user as notes on the error
 *  stream, one line each ("arbo: note: ..."), or nowhere when quiet. Lines are passed on as they end, so that a
 *  message printed just before the layer ends the process is not lost. */
class ConsoleNotes : public std::streambuf
{
public:
  ConsoleNotes(std::ostream & err, bool quiet)
    : m_Err(err)
    , m_Quiet(quiet)
    , m_Previous(std::cout.rdbuf(this))
  {}
  ~ConsoleNotes() override
  {
    std::cout.rdbuf(m_Previous);
    if (!m_Line.empty())
    {
      this->PassOn();
    }
  }
  ConsoleNotes(const ConsoleNotes &) = delete;
  ConsoleNotes &
  operator=(const ConsoleNotes &) = delete;

protected:
  int_type
  overflow(int_type c) override
  {
    if (traits_type::eq_int_type(c, traits_type::eof()))
    {
      return traits_type::not_eof(c);
    }
    if (traits_type::to_char_type(c) == '\n')
    {
      this->PassOn();
    }
    else
    {
      m_Line += traits_type::to_char_type(c);
    }
    return c;
  }

private:
  void
  PassOn()
  {
    if (!m_Quiet)
    {
      m_Err << "arbo: note: " << m_Line << "\n";
      m_Err.flush();
    }
    m_Line.clear();
  }

  std::ostream & m_Err;
  bool m_Quiet;
  std::streambuf * m_Previous;
  std::string m_Line;
};

/** Restores the global warning display when the extraction is over, however it ends. */
class QuietWarnings
{
public:
  QuietWarnings()
    : m_Previous(itk::Object::GetGlobalWarningDisplay())
  {
    itk::Object::GlobalWarningDisplayOff();
  }
  ~QuietWarnings() { itk::Object::SetGlobalWarningDisplay(m_Previous); }
  QuietWarnings(const QuietWarnings &) = delete;
  QuietWarnings &
  operator=(const QuietWarnings &) = delete;

private:
  bool m_Previous;
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

std::size_t
countVessels(const ArVesselTree & tree)
{
  return tree.isNull() ? 0 : static_cast<std::size_t>(tree->numberOfNodes());
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
  // The thinning code ends the process on volumes it cannot handle; refuse them here with a message instead.
  if (image->GetDimension() != 3)
  {
    throw Error(options.input, "is a 2-D image; vessel extraction needs a 3-D mask");
  }
  const auto & size = image->GetSize();
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (size[a] > 32767)
    {
      throw Error(options.input,
                  "has " + std::to_string(size[a]) + " voxels along an axis; extraction handles at most 32767");
    }
  }
  if (!options.start.empty() && (start[0] >= size[0] || start[1] >= size[1] || start[2] >= size[2]))
  {
    throw Error("--start",
                "voxel " + options.start + " is outside the image of " + std::to_string(size[0]) + " x " +
                  std::to_string(size[1]) + " x " + std::to_string(size[2]) + " voxels");
  }
  std::size_t vesselVoxels = 0;
  lumo::Image::Pointer mask = binaryMaskOf(image, options.input, options.label, vesselVoxels);
  if (mask.GetPointer() != image && !options.label && !context.quiet)
  {
    context.err << "arbo: note: " << options.input << " holds " << image->GetPixelTypeAsString()
                << " voxels, not unsigned 8-bit; voxels other than 0 are taken as vessel\n";
  }
  if (vesselVoxels == 0)
  {
    throw Error(options.input, "the mask is empty (no voxel other than 0): nothing to extract");
  }
  const unsigned int factor = options.noResample ? 1 : sliceInterpolationFactor(mask);
  if (factor > 1)
  {
    const double thickness = mask->GetSpacing()[2];
    mask = interpolateSlices(mask, factor, vesselVoxels);
    if (!context.quiet)
    {
      context.err << "arbo: note: slices of " << thickness << " mm interpolated to " << mask->GetSpacing()[2] << " mm ("
                  << factor << " per slice, shape-based) before thinning; --no-resample keeps them\n";
    }
    // The start was given in the voxels of the file.
    start[2] *= factor;
    if (mask->GetSize()[2] > 32767)
    {
      throw Error(options.input, "has too many slices to interpolate (at most 32767 after it); use --no-resample");
    }
  }
  progress->Progress();

  auto filter = lumo::SkeletonizationBasedImageToVesselTreeFilter::New();
  filter->SetInput(mask);
  const lumo::Vector3D spacing = mask->GetSpacing();
  lumo::SkeletonizationBasedImageToVesselTreeFilter::SpacingType floatSpacing;
  for (unsigned int a = 0; a < 3; ++a)
  {
    floatSpacing[a] = static_cast<float>(spacing[a]);
  }
  filter->SetSpacing(floatSpacing);
  filter->SetEndpointSuppression(!options.noEndpointSuppression);
  filter->SetNumberOfCleanedIterations(options.cleanedIterations);
  filter->SetDefaultBloodVesselType(static_cast<lumo::VesselTreeData::BloodVesselType>(type));
  std::size_t extracted = 0;
  std::size_t spurs = 0;
  // The tree from the start voxel (from the thickest end point without one), spurs removed.
  auto extractFrom = [&](const unsigned int * at) {
    filter->SetStartAtThickestEndPoint(at == nullptr);
    if (at != nullptr)
    {
      lumo::SkeletonizationBasedImageToVesselTreeFilter::StartpointType point;
      for (unsigned int a = 0; a < 3; ++a)
      {
        point[a] = at[a];
      }
      filter->SetStartpoint(point);
    }
    {
      // Left-out parts are reported below as a note, not as a toolkit warning.
      QuietWarnings quiet;
      ConsoleNotes notes(context.err, context.quiet);
      filter->Modified();
      try
      {
        filter->Update();
      }
      catch (const itk::ExceptionObject & e)
      {
        throw Error(options.input, e.GetDescription());
      }
    }
    lumo::VesselTreeData::Pointer result = filter->GetOutput(0);
    result->DisconnectPipeline();
    extracted = countVessels(result->GetVesselTreeData(0));
    spurs = 0;
    if (!options.keepSpurs)
    {
      // Removing spurs can leave a branching with one branch, which merging undoes, which can make new spurs.
      SpurTreeCleaner spurCleaner;
      ChildMergingTreeCleaner merger;
      for (int round = 0; round < 20; ++round)
      {
        const std::size_t removed = spurCleaner.clean(result->GetVesselTreeData(0));
        spurs += removed;
        merger.clean(result->GetVesselTreeData(0));
        if (removed == 0)
        {
          break;
        }
      }
      result->TopologyModified();
    }
    return result;
  };
  lumo::VesselTreeData::Pointer tree = extractFrom(options.start.empty() ? nullptr : start);
  progress->Progress();

  // A thick trunk that thinned away: extract again from where it is, so that the root is there, and give the
  // root vessel the trunk back.
  StubResult stub;
  const std::optional<UncoveredPart> trunk =
    options.noStub ? std::nullopt : thickestUncoveredPart(tree->GetVesselTreeData(0), mask);
  if (trunk)
  {
    if (options.start.empty())
    {
      itk::ContinuousIndex<double, 3> index;
      lumo::ImageToItkImage<unsigned char>(mask)->TransformPhysicalPointToContinuousIndex(trunk->centre, index);
      const unsigned int at[3] = { static_cast<unsigned int>(std::lround(index[0])),
                                   static_cast<unsigned int>(std::lround(index[1])),
                                   static_cast<unsigned int>(std::lround(index[2])) };
      tree = extractFrom(at);
    }
    stub = extendRootTowards(tree->GetVesselTreeData(0), mask, *trunk);
    if (stub.length > 0.0)
    {
      tree->AttributesModified();
    }
  }
  std::size_t pruned = 0;
  if (options.prune > 0.0)
  {
    auto prune = lumo::PruneVesselTreeFilter::New();
    prune->SetInput(tree);
    prune->SetMinimumLength(options.prune);
    prune->Update();
    pruned = prune->GetNumberOfDroppedVessels();
    tree = prune->GetOutput();
    tree->DisconnectPipeline();
  }
  if (options.smooth > 0)
  {
    auto smooth = lumo::SmoothVesselTreeFilter::New();
    smooth->SetInput(tree);
    smooth->SetNumberOfIterations(options.smooth);
    smooth->Update();
    tree = smooth->GetOutput();
    tree->DisconnectPipeline();
  }
  if (!options.rawDiameters)
  {
    auto refine = lumo::VesselRadiusRefinementFilter::New();
    refine->SetInput(tree);
    refine->SetMask(mask);
    refine->Update();
    tree = refine->GetOutput();
    tree->DisconnectPipeline();
  }
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->GetVesselTreeData(0)->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      if (!vessel.isNull())
      {
        vessel->getProperties().setBloodVesselType(type);
      }
    }
    tree->AttributesModified();
  }
  progress->Progress();

  writeData(tree, options.output);
  progress->Progress();

  if (!context.quiet)
  {
    const ar<Vessel> root = tree->GetVesselTreeData(0)->getRoot();
    context.err << "arbo: " << countVessels(tree->GetVesselTreeData(0)) << " vessels ("
                << VesselLabels::bloodVesselTypeName(type) << ") from a skeleton of "
                << filter->GetNumberOfSkeletonVoxels() << " voxels; " << extracted << " extracted, " << spurs
                << " spurs removed, " << pruned << " pruned\n";
    if (stub.length > 0.0)
    {
      std::ostringstream note;
      note << std::fixed << std::setprecision(1) << "arbo: note: the root vessel was extended by " << stub.length
           << " mm towards a thick part of the mask that no vessel covered (radius " << stub.radius
           << " mm); --no-stub leaves it out\n";
      context.err << note.str();
    }
    if (filter->GetNumberOfLeftOutParts() > 0)
    {
      context.err << "arbo: note: " << filter->GetNumberOfLeftOutParts() << " skeleton parts ("
                  << filter->GetNumberOfLeftOutVoxels() << " voxels) are not connected to the root and were left out\n";
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
    "voxels in radius and in line with the root (--no-stub leaves it out).\n"
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
  command->add_flag("--no-resample",
                    options->noResample,
                    "Thin thick slices as they are (default: interpolate them to near-isotropic voxels first)");
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
  command->callback([options, &context] { extract(*options, context); });
}
} // namespace arbo
