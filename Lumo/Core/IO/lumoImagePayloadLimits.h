#ifndef lumoImagePayloadLimits_h
#define lumoImagePayloadLimits_h

// Bounds on what an image file can make a reader allocate, checked from the header alone.
//
// A header states sizes; the pixel buffer is allocated from them before a single data byte is read. A damaged or
// hostile header (a few bytes promising 20 GB) would then take the machine's memory for nothing. These functions
// compare what the header promises with what the file's data can decode to and with what the process can take.

#include <itkImageIOBase.h>

#include <cstdint>
#include <string>

namespace lumo
{
/** Bytes of the pixel buffer that the header read by `io` (ReadImageInformation done) describes: the product of
 *  the sizes, the components and the component size, saturated at UINT64_MAX. */
std::uint64_t
GetImagePixelBytes(const itk::ImageIOBase * io);

/** Most bytes that the data of the image file can decode to, from the sizes of the file and of the data files its
 *  header names (detached NRRD data, MetaImage ElementDataFile, the .img of a NIfTI pair): a raw payload holds at
 *  most its file's bytes, a gzip or zlib one at most 1032 times them (deflate's best ratio), bzip2 at most
 *  45,899,236 times, ASCII text one value per two characters. Formats without a header of their own (PNG, TIFF,
 *  JPEG, ...) are bounded by 4096 times the file size, above the best ratio of their codecs (LZW, deflate, JPEG).
 *  Data files that do not exist hold 0 bytes. Reads only headers and file sizes. */
std::uint64_t
GetImagePayloadCapacity(const std::string & fileName, const itk::ImageIOBase * io);

/** Most bytes the process can allocate: physical memory, lowered by RLIMIT_AS and RLIMIT_DATA when they are set. */
std::uint64_t
GetProcessMemoryLimit();

/** Throws itk::ImageFileReaderException when the header promises more pixel bytes than the data can hold or the
 *  process can take, with one of the messages
 *    "Could not read image '<file>': the header promises <x> x <y> x <z> voxels of <n> bytes (<b> bytes), more
 *     than its data can hold (at most <c> bytes)"
 *    "... (<b> bytes), more than this process can allocate (at most <m> bytes)"
 *  (one line each). Called by ReadImageFile between reading the header and allocating. */
void
CheckImagePayload(const std::string & fileName, const itk::ImageIOBase * io);
} // namespace lumo

#endif
