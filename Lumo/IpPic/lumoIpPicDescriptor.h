#ifndef lumoIpPicDescriptor_h
#define lumoIpPicDescriptor_h

// The Pic image descriptor: a plain n-dimensional voxel buffer with its element type and named tags.
// This is the toolkit's small procedural image library; the algorithms of the legacy vessel library work on it.
// Functions are free functions with the lumoIpPic prefix. Descriptors are made with lumoIpPicNew() and released with
// lumoIpPicFree(), which frees the voxel buffer too.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** Element kind codes. */
enum lumoIpPicType : std::int32_t
{
  lumoIpPicUnknown = 0,
  lumoIpPicBool = 1,
  lumoIpPicASCII = 2,
  lumoIpPicInt = 3,   // signed integer (bpe 8, 16, 32, 64)
  lumoIpPicUInt = 4,  // unsigned integer (bpe 8, 16, 32, 64)
  lumoIpPicFloat = 5, // floating point (bpe 32, 64)
};

/** Largest number of dimensions a descriptor can have. */
constexpr std::uint32_t lumoIpPicMaxDim = 8;

/** A named value attached to a descriptor (spacing, origin, free text...). */
struct lumoIpPicTag
{
  std::string name; // at most 32 characters
  lumoIpPicType type{ lumoIpPicUnknown };
  std::uint32_t bpe{ 0 };           // bits per element of the value
  std::vector<unsigned char> value; // raw little-endian elements
};

/** Tag names used for the geometry: three 64-bit floats each (x, y, z), spacing in mm, origin in world mm. */
constexpr const char * lumoIpPicTagSpacing = "SPACING";
constexpr const char * lumoIpPicTagOrigin = "ORIGIN";
/** Orientation of the axes: nine 64-bit floats, a 3x3 matrix in row-major order whose column j is the world
 *  direction of axis j (the convention of itk::ImageBase::GetDirection). Absent means identity. */
constexpr const char * lumoIpPicTagDirection = "DIRECTION";

/** Longest tag name, in characters. */
constexpr std::size_t lumoIpPicMaxTagName = 32;

struct lumoIpPicDescriptor
{
  void * data{ nullptr };                 // voxel buffer, x fastest; owned, freed by lumoIpPicFree
  lumoIpPicType type{ lumoIpPicUnknown }; // element kind
  std::uint32_t bpe{ 0 };                 // bits per element
  std::uint32_t dim{ 0 };                 // number of dimensions, 0..lumoIpPicMaxDim
  std::uint32_t n[lumoIpPicMaxDim]{};     // size along each dimension
  std::vector<lumoIpPicTag> tags;         // named values, in insertion order
};

/** A new descriptor with no data, type unknown and no dimensions. */
lumoIpPicDescriptor *
lumoIpPicNew();

/** Frees the descriptor together with its voxel buffer. Null is allowed. */
void
lumoIpPicFree(lumoIpPicDescriptor * pic);

/** Frees only the voxel buffer (data becomes null). */
void
lumoIpPicFreeData(lumoIpPicDescriptor * pic);

/** Number of elements (product of the sizes); 0 when dim is 0. Saturates at SIZE_MAX on overflow. */
std::size_t
lumoIpPicElements(const lumoIpPicDescriptor * pic);

/** Bytes of the voxel buffer (elements times bpe / 8); 0 when the header is not valid or the size overflows. */
std::size_t
lumoIpPicSize(const lumoIpPicDescriptor * pic);

/** Whether type and bpe form a supported element kind: bool and ASCII with 8 bits, signed and unsigned integers with
 *  8, 16, 32 or 64 bits, floating point with 32 or 64 bits. */
bool
lumoIpPicKindIsSupported(lumoIpPicType type, std::uint32_t bpe);

/** Whether type and bpe form a supported element kind and the sizes are all > 0 with dim in 1..lumoIpPicMaxDim. */
bool
lumoIpPicHeaderIsValid(const lumoIpPicDescriptor * pic);

/** Allocates a zeroed voxel buffer for the header (replacing an earlier one). False, with data left null, when the
 *  header is not valid, the size overflows or the memory cannot be had. */
bool
lumoIpPicAllocateData(lumoIpPicDescriptor * pic);

/** Convenience: a new descriptor of the given kind and sizes with a zeroed buffer; null on failure. */
lumoIpPicDescriptor *
lumoIpPicNewVolume(lumoIpPicType type, std::uint32_t bpe, std::uint32_t dim, const std::uint32_t * sizes);

/** Copies type, bpe, dim, sizes and tags (not the data) into dst, or into a new descriptor when dst is null. */
lumoIpPicDescriptor *
lumoIpPicCopyHeader(const lumoIpPicDescriptor * src, lumoIpPicDescriptor * dst);

/** Deep copy with data and tags; null for a null source or when memory cannot be had. */
lumoIpPicDescriptor *
lumoIpPicClone(const lumoIpPicDescriptor * pic);

/** Adds a tag, replacing one of the same name. False when the name is empty or longer than 32 characters. */
bool
lumoIpPicAddTag(lumoIpPicDescriptor * pic, const lumoIpPicTag & tag);

/** The tag of that name, or null. */
const lumoIpPicTag *
lumoIpPicQueryTag(const lumoIpPicDescriptor * pic, const std::string & name);

/** Removes the tag of that name; false if absent. */
bool
lumoIpPicDeleteTag(lumoIpPicDescriptor * pic, const std::string & name);

/** Stores three doubles (x, y, z) under the name, as a tag of type float with bpe 64. */
bool
lumoIpPicSetVectorTag(lumoIpPicDescriptor * pic, const std::string & name, const double values[3]);

/** Reads three doubles stored by lumoIpPicSetVectorTag; false (values untouched) when absent or malformed. */
bool
lumoIpPicGetVectorTag(const lumoIpPicDescriptor * pic, const std::string & name, double values[3]);

/** A new descriptor of the target kind with every element converted (values cast as by static_cast, with float to
 *  integer conversions clamped to the target range and NaN becoming 0; a bool target holds 1 for every value other
 *  than 0 and NaN). Tags are copied. Null when either kind is not supported or memory cannot be had. */
lumoIpPicDescriptor *
lumoIpPicConvert(const lumoIpPicDescriptor * pic, lumoIpPicType type, std::uint32_t bpe);

/** Smallest and largest element value; NaN elements are skipped. False for an empty or invalid descriptor and for
 *  one whose elements are all NaN. */
bool
lumoIpPicExtrema(const lumoIpPicDescriptor * pic, double * minimum, double * maximum);

#endif
