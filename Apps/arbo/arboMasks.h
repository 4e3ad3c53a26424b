#ifndef arboMasks_h
#define arboMasks_h

#include "lumoImage.h"

#include "ArVesselTree.h"

#include <itkPoint.h>

#include <cstddef>
#include <optional>
#include <string>

namespace arbo
{
/** A segmentation as the library takes it: an unsigned 8-bit 0/1 image with the same geometry. With a label,
 *  the voxels equal to it count; without one, every voxel other than 0. Any integer or floating voxel type is
 *  accepted; an unsigned 8-bit image without a label is returned as it is. `voxels` receives the number of
 *  voxels that count. Throws arbo::Error naming `file` when the label does not occur (the message lists the labels
 *  that do). */
lumo::Image::Pointer
binaryMaskOf(lumo::Image * image, const std::string & file, const std::optional<long> & label, std::size_t & voxels);

/** How many slices a thick-sliced mask is cut into for near-isotropic voxels: the slice spacing over the smaller
 *  in-plane spacing, rounded; 1 (nothing to do) unless the slice spacing exceeds twice the in-plane spacing. */
unsigned int
sliceInterpolationFactor(const lumo::Image * mask);

/** Shape-based interpolation of a binary unsigned 8-bit mask along its third axis: each slice gets a signed
 *  in-plane distance to its contour (negative inside, in mm, outside capped at the slice spacing), the distances
 *  are interpolated linearly between neighbouring slices and thresholded at 0. The result has (slices - 1) * factor + 1
 * slices, the original ones unchanged at every factor-th place, and the same origin and direction with the slice
 * spacing divided by factor, so world coordinates stay as they were. `voxels` receives the new number of mask voxels.
 * With `joinPieces`, a piece of a slice (8-connected) that overlaps nothing in the next slice is moved, between the
 * two, towards the nearest piece there (at most a slice spacing away, edge to edge): thin oblique vessels, cut into
 * pieces that do not overlap from slice to slice, then stay connected.
 */
lumo::Image::Pointer
interpolateSlices(const lumo::Image * mask, unsigned int factor, std::size_t & voxels, bool joinPieces = false);
/** A thick part of a vessel mask that no vessel of a tree covers: its thickest voxel (world coordinates, mm) and
 *  the radius of the mask there (its distance to the background and half a voxel, mm). */
struct UncoveredPart
{
  itk::Point<double, 3> centre;
  double radius{ 0.0 };
};

/** What extendRootTowards did: the stub's length (0 when none was added) and the radius of the part it points to. */
struct StubResult
{
  double length{ 0.0 };
  double radius{ 0.0 };
};

/** The thickest part of the mask that the tree leaves uncovered, if its radius is at least one and a half voxels
 *  and three quarters of the tree's largest radius. A thick
 *  vessel that ends in a branching can thin into the branching's cluster, so that the tree lacks the vessel (and,
 *  started at the thickest end point, starts elsewhere). Covered are the mask voxels within a vessel's radius and a
 *  voxel of its centre line; the uncovered ones are grouped into 26-connected parts, and in the three largest the
 *  distance to the background is measured. The tree is in world coordinates (mm), the mask an unsigned 8-bit 0/1
 *  image. */
std::optional<UncoveredPart>
thickestUncoveredPart(const ArVesselTree & tree, const lumo::Image * mask);

/** Extends the root vessel backwards from its first point along the straight line through the part's centre, to a
 *  radius before the mask ends on that line, when the line stays inside the mask up to the centre; otherwise the
 *  tree is left as it is. The tree should start near the part (extracted from the voxel nearest to its centre). */
StubResult
extendRootTowards(const ArVesselTree & tree, const lumo::Image * mask, const UncoveredPart & part);

/** Thinning ends a terminal vessel's centre line well inside the vessel's end, so that the organ around the end
 *  goes to a neighbour. Each terminal vessel (no children; the root only when it is the whole tree) is extended
 *  along the direction of its last 2 mm (at least its diameter) up to its end radius before the mask ends on
 *  that line, where the centre of a rounded end lies; by at most four end radii and 5 mm, whichever is more. The
 *  new points, about a voxel apart, keep the end's diameter. Answers how many vessels were extended. */
std::size_t
extendTerminalVessels(const ArVesselTree & tree, const lumo::Image * mask);
} // namespace arbo

#endif
