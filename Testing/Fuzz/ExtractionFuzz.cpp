// libFuzzer entry for the tree extraction on small masks. The first bytes choose the size (1 to 24 voxels an axis),
// the voxel spacing (0.25 to 5 mm an axis) and the options; the rest are the voxels, one bit each (missing bits are
// background). An empty mask is skipped, as the filter asks its callers to do. A non-empty mask is either refused with
// a one-line exception or gives a tree whose points lie inside the mask's extent with a finite, non-negative
// diameter; the process must never end. The diameters measured again and the points centred on their cross-sections,
// as arbo does next, the points stay within the centring's longest moves of that extent.

#include "FuzzSupport.h"

#include "ArVesselTree.h"
#include "lumoSkeletonizationBasedImageToVesselTreeFilter.h"
#include "lumoVesselCentreLineRefinementFilter.h"
#include "lumoVesselRadiusRefinementFilter.h"

#include <algorithm>
#include <cmath>

namespace
{
struct Mask
{
  lumo::Image::Pointer image;
  double spacing[3];
  unsigned int size[3];
  std::size_t voxels{ 0 };
  bool thickestEnd{ false };
  bool suppression{ true };
  unsigned int cleaned{ 0 };
};

Mask
makeMask(const std::uint8_t * data, std::size_t size)
{
  Mask mask;
  auto byte = [&](std::size_t i) -> unsigned int { return i < size ? data[i] : 0u; };
  lumo::Image::SizeType dimensions;
  for (unsigned int a = 0; a < 3; ++a)
  {
    mask.size[a] = 1 + byte(a) % 24;
    dimensions[a] = mask.size[a];
    mask.spacing[a] = 0.25 + 4.75 * byte(3 + a) / 255.0;
  }
  const unsigned int options = byte(6);
  mask.thickestEnd = (options & 1u) != 0;
  mask.suppression = (options & 2u) == 0;
  mask.cleaned = (options >> 2) & 3u;

  mask.image = lumo::Image::New();
  mask.image->Initialize(itk::IOComponentEnum::UCHAR, dimensions, 3);
  mask.image->GetGeometry()->SetSpacing(mask.spacing);
  auto * voxels = static_cast<unsigned char *>(mask.image->GetData());
  const std::size_t count = std::size_t{ mask.size[0] } * mask.size[1] * mask.size[2];
  for (std::size_t v = 0; v < count; ++v)
  {
    const std::size_t bit = 7 * 8 + v;
    voxels[v] = (byte(bit / 8) >> (bit % 8)) & 1u;
    mask.voxels += voxels[v];
  }
  return mask;
}

lumo::VesselTreeData::Pointer
extract(const Mask & mask)
{
  auto filter = lumo::SkeletonizationBasedImageToVesselTreeFilter::New();
  filter->SetInput(0, mask.image);
  lumo::SkeletonizationBasedImageToVesselTreeFilter::SpacingType spacing;
  for (unsigned int a = 0; a < 3; ++a)
  {
    spacing[a] = static_cast<float>(mask.spacing[a]);
  }
  filter->SetSpacing(spacing);
  filter->SetStartAtThickestEndPoint(mask.thickestEnd);
  filter->SetEndpointSuppression(mask.suppression);
  filter->SetNumberOfCleanedIterations(mask.cleaned);
  filter->Update();
  return filter->GetOutput(0);
}

/** The tree of the mask, or null when the filter refused it (with a one-line message, as the process exits of the
 *  legacy classes are turned into). */
lumo::VesselTreeData::Pointer
extractOrRefuse(const Mask & mask)
{
  try
  {
    return extract(mask);
  }
  catch (const itk::ExceptionObject & e)
  {
    const std::string description = e.GetDescription();
    lumofuzz::require(!description.empty() && description.find('\n') == std::string::npos);
  }
  return nullptr;
}

/** Every point of the tree finite and within `slack` mm of the voxel centres' extent, every diameter finite and not
 *  negative. */
void
requirePointsWithin(const lumo::VesselTreeData * output, const Mask & mask, double slack)
{
  const LinkedVesselTree * tree = asLinkedVesselTree(output->GetVesselTreeData(0));
  lumofuzz::require(tree != nullptr && tree->getRootNode() != nullptr);
  std::vector<const VesselNode *> pending{ tree->getRootNode() };
  while (!pending.empty())
  {
    const VesselNode * node = pending.back();
    pending.pop_back();
    for (const VesselPoint & point : node->getData()->getPoints())
    {
      const double at[3] = { point.x, point.y, point.z };
      for (unsigned int a = 0; a < 3; ++a)
      {
        // Voxel centres run from 0 to (size - 1) * spacing; smoothing stays between them.
        const double last = (mask.size[a] - 1) * mask.spacing[a];
        lumofuzz::require(std::isfinite(at[a]) && at[a] >= -slack - 1e-3 && at[a] <= last + slack + 1e-3);
      }
      lumofuzz::require(std::isfinite(point.diameter) && point.diameter >= 0);
    }
    for (const VesselNode * child : node->children())
    {
      pending.push_back(child);
    }
  }
}
} // namespace

bool
lumoFuzzAccepts(const std::uint8_t * data, std::size_t size)
{
  const Mask mask = makeMask(data, size);
  if (mask.voxels == 0)
  {
    return false;
  }
  const lumo::VesselTreeData::Pointer output = extractOrRefuse(mask);
  return output.IsNotNull() && output->GetVesselTreeData(0).get() != nullptr;
}

extern "C" int
LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size)
{
  itk::Object::GlobalWarningDisplayOff();
  const Mask mask = makeMask(data, size);
  if (mask.voxels == 0)
  {
    return 0;
  }
  const lumo::VesselTreeData::Pointer output = extractOrRefuse(mask);
  if (output.IsNull())
  {
    return 0;
  }
  requirePointsWithin(output, mask, 0.0);

  // What arbo does next: the diameters measured again, each point moved onto its cross-section's centroid. A point
  // moves at most 0.75 voxel of the largest spacing a round, two rounds; smoothing stays between the points.
  auto radii = lumo::VesselRadiusRefinementFilter::New();
  radii->SetInput(output);
  radii->SetMask(mask.image);
  auto centring = lumo::VesselCentreLineRefinementFilter::New();
  centring->SetInput(radii->GetOutput());
  centring->SetMask(mask.image);
  centring->Update();
  const double largest = std::max({ mask.spacing[0], mask.spacing[1], mask.spacing[2] });
  requirePointsWithin(centring->GetOutput(), mask, 2.0 * centring->GetMaximumShift() * largest);
  return 0;
}
