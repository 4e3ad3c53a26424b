#include "arboExtraction.h"

#include "arboError.h"

#include "lumoImageAccess.h"
#include "lumoProgressBar.h"
#include "lumoPruneVesselTreeFilter.h"
#include "lumoSkeletonizationBasedImageToVesselTreeFilter.h"
#include "lumoSmoothVesselTreeFilter.h"
#include "lumoVesselCentreLineRefinementFilter.h"
#include "lumoVesselRadiusRefinementFilter.h"

#include "ChildMergingTreeCleaner.h"
#include "SpurTreeCleaner.h"

#include <cmath>
#include <iostream>
#include <memory>
#include <ostream>
#include <streambuf>

namespace arbo
{
namespace
{
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

std::size_t
countVessels(const ArVesselTree & tree)
{
  return tree.isNull() ? 0 : static_cast<std::size_t>(tree->numberOfNodes());
}

} // namespace

lumo::VesselTreeData::Pointer
extractVesselTree(lumo::Image * image,
                  const std::string & name,
                  const ExtractionSettings & settings,
                  ExtractionReport & report,
                  std::ostream & notes,
                  bool quiet)
{
  report = ExtractionReport();
  lumo::ProgressBar * progress = lumo::ProgressBar::GetInstance();
  // The thinning code ends the process on volumes it cannot handle; refuse them here with a message instead.
  if (image->GetDimension() != 3)
  {
    throw Error(name, "is a 2-D image; vessel extraction needs a 3-D mask");
  }
  const auto & size = image->GetSize();
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (size[a] > 32767)
    {
      throw Error(name, "has " + std::to_string(size[a]) + " voxels along an axis; extraction handles at most 32767");
    }
  }
  unsigned int start[3] = { settings.start[0], settings.start[1], settings.start[2] };
  if (settings.haveStart && (start[0] >= size[0] || start[1] >= size[1] || start[2] >= size[2]))
  {
    throw Error("--start",
                "voxel " + settings.startText + " is outside the image of " + std::to_string(size[0]) + " x " +
                  std::to_string(size[1]) + " x " + std::to_string(size[2]) + " voxels");
  }
  std::size_t vesselVoxels = 0;
  lumo::Image::Pointer mask = binaryMaskOf(image, name, settings.label, vesselVoxels);
  if (mask.GetPointer() != image && !settings.label && !quiet)
  {
    notes << "arbo: note: " << name << " holds " << image->GetPixelTypeAsString()
          << " voxels, not unsigned 8-bit; voxels other than 0 are taken as vessel\n";
  }
  if (vesselVoxels == 0)
  {
    throw Error(name, "the mask is empty (no voxel other than 0): nothing to extract");
  }
  const unsigned int factor = settings.resample ? sliceInterpolationFactor(mask) : 1;
  if (factor > 1)
  {
    const double thickness = mask->GetSpacing()[2];
    mask = interpolateSlices(mask, factor, vesselVoxels, settings.joinPieces);
    if (!quiet)
    {
      notes << "arbo: note: slices of " << thickness << " mm interpolated to " << mask->GetSpacing()[2] << " mm ("
            << factor << " per slice, shape-based) before thinning; --no-resample keeps them\n";
    }
    // The start was given in the voxels of the unresampled mask.
    start[2] *= factor;
    if (mask->GetSize()[2] > 32767)
    {
      throw Error(name, "has too many slices to interpolate (at most 32767 after it); use --no-resample");
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
  filter->SetEndpointSuppression(settings.endpointSuppression);
  filter->SetNumberOfCleanedIterations(settings.cleanedIterations);
  filter->SetDefaultBloodVesselType(static_cast<lumo::VesselTreeData::BloodVesselType>(settings.type));
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
      // Left-out parts are reported as a note, not as a toolkit warning.
      QuietWarnings quietWarnings;
      ConsoleNotes console(notes, quiet);
      filter->Modified();
      try
      {
        filter->Update();
      }
      catch (const itk::ExceptionObject & e)
      {
        throw Error(name, e.GetDescription());
      }
    }
    lumo::VesselTreeData::Pointer result = filter->GetOutput(0);
    result->DisconnectPipeline();
    report.extracted = countVessels(result->GetVesselTreeData(0));
    report.spurs = 0;
    if (!settings.keepSpurs)
    {
      // Removing spurs can leave a branching with one branch, which merging undoes, which can make new spurs.
      SpurTreeCleaner spurCleaner;
      ChildMergingTreeCleaner merger;
      for (int round = 0; round < 20; ++round)
      {
        const std::size_t removed = spurCleaner.clean(result->GetVesselTreeData(0));
        report.spurs += removed;
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
  lumo::VesselTreeData::Pointer tree = extractFrom(settings.haveStart ? start : nullptr);
  progress->Progress();

  // A thick trunk that thinned away: extract again from where it is, so that the root is there, and give the
  // root vessel the trunk back.
  const std::optional<UncoveredPart> trunk =
    settings.stub ? thickestUncoveredPart(tree->GetVesselTreeData(0), mask) : std::nullopt;
  if (trunk)
  {
    if (!settings.haveStart)
    {
      itk::ContinuousIndex<double, 3> index;
      lumo::ImageToItkImage<unsigned char>(mask)->TransformPhysicalPointToContinuousIndex(trunk->centre, index);
      const unsigned int at[3] = { static_cast<unsigned int>(std::lround(index[0])),
                                   static_cast<unsigned int>(std::lround(index[1])),
                                   static_cast<unsigned int>(std::lround(index[2])) };
      tree = extractFrom(at);
    }
    report.stub = extendRootTowards(tree->GetVesselTreeData(0), mask, *trunk);
    if (report.stub.length > 0.0)
    {
      tree->AttributesModified();
    }
  }
  if (settings.prune > 0.0)
  {
    auto prune = lumo::PruneVesselTreeFilter::New();
    prune->SetInput(tree);
    prune->SetMinimumLength(settings.prune);
    prune->Update();
    report.pruned = prune->GetNumberOfDroppedVessels();
    tree = prune->GetOutput();
    tree->DisconnectPipeline();
  }
  if (settings.smooth > 0)
  {
    auto smooth = lumo::SmoothVesselTreeFilter::New();
    smooth->SetInput(tree);
    smooth->SetNumberOfIterations(settings.smooth);
    smooth->Update();
    tree = smooth->GetOutput();
    tree->DisconnectPipeline();
  }
  if (extendTerminalVessels(tree->GetVesselTreeData(0), mask) > 0)
  {
    tree->AttributesModified();
  }
  if (!settings.rawDiameters)
  {
    auto refine = lumo::VesselRadiusRefinementFilter::New();
    refine->SetInput(tree);
    refine->SetMask(mask);
    refine->Update();
    tree = refine->GetOutput();
    tree->DisconnectPipeline();
  }
  if (!settings.rawCentreLines)
  {
    auto centre = lumo::VesselCentreLineRefinementFilter::New();
    centre->SetInput(tree);
    centre->SetMask(mask);
    centre->Update();
    tree = centre->GetOutput();
    tree->DisconnectPipeline();
  }
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->GetVesselTreeData(0)->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      if (!vessel.isNull())
      {
        vessel->getProperties().setBloodVesselType(settings.type);
      }
    }
    tree->AttributesModified();
  }
  progress->Progress();
  report.vessels = countVessels(tree->GetVesselTreeData(0));
  report.skeletonVoxels = filter->GetNumberOfSkeletonVoxels();
  report.leftOutParts = filter->GetNumberOfLeftOutParts();
  report.leftOutVoxels = filter->GetNumberOfLeftOutVoxels();
  return tree;
}
} // namespace arbo
