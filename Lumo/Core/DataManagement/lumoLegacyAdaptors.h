#ifndef lumoLegacyAdaptors_h
#define lumoLegacyAdaptors_h

// Conversions between lumo::Image and the Pic descriptor of the legacy algorithms. Both copy the voxels
// unchanged (x fastest, then y, then z). The Pic has no direction: it is lost on the way to the Pic and the
// identity on the way back.

#include "lumoImage.h"

#include <lumoIpPicDescriptor.h>

namespace lumo
{
/** A new descriptor (free it with lumoIpPicFree) with a copy of the voxels: dim 3 with n = size for a 3-D image,
 *  dim 2 with n = size x, size y for a 2-D one; type and bpe from the pixel type (unsigned integers
 *  lumoIpPicUInt, signed integers lumoIpPicInt, float and double lumoIpPicFloat; bpe 8, 16, 32 or 64); spacing
 *  and origin as vector tags lumoIpPicTagSpacing and lumoIpPicTagOrigin. Null for a null or uninitialised image
 *  or when memory cannot be had. */
lumoIpPicDescriptor *
CastToIpPicDescriptor(const Image * image);

/** A new image with a copy of the voxels of a descriptor of dim 1, 2 or 3 (a 1-D Pic becomes an x row, a 2-D Pic
 *  a 2-D image), pixel type from type and bpe, spacing and origin from the tags when present and well formed
 *  (else 1 and 0), identity direction. Null for a null descriptor, an invalid header, a missing buffer, dim above
 *  3 or an element kind without image pixel type (bool, ASCII). */
Image::Pointer
CastToImageDescriptor(const lumoIpPicDescriptor * pic);
} // namespace lumo

#endif
