#ifndef arboMasks_h
#define arboMasks_h

#include "lumoImage.h"

#include "ArVesselTree.h"

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
 */
lumo::Image::Pointer
interpolateSlices(const lumo::Image * mask, unsigned int factor, std::size_t & voxels);
/** What addMissingStub did: the stub's length (0 when none was added) and the radius of the mask where it points. */
struct StubResult
{
  double length{ 0.0 };
  double radius{ 0.0 };
};

/** Gives back a trunk that thinning took away. A thick vessel that ends in a branching can thin into the
 *  branching's cluster, so that the tree starts at the branching and nothing covers the trunk. The mask voxels
 *  that no vessel covers (farther from every centre line than its radius and a voxel) are grouped into 26-connected
 *  parts; at the thickest of them (the voxel farthest from the background) the radius is measured. When it is at
 *  least two voxels and the straight line from the root's first point through it stays inside the mask, the root
 *  vessel is extended backwards along that line to a radius before the mask ends there: the root is where the trunk
 *  begins. Otherwise the tree is left as it is. The tree is in world coordinates (mm), the mask an unsigned 8-bit
 *  0/1 image. */
StubResult
addMissingStub(const ArVesselTree & tree, const lumo::Image * mask);
} // namespace arbo

#endif
