#ifndef lumoIpPicFile_h
#define lumoIpPicFile_h

// Reading and writing Pic descriptors as .pic files (and .pic.gz, the same bytes in a gzip stream).
// The layout is described in docs/pic-format.md. Files are treated as untrusted: every count in the header is checked
// against fixed limits and against the bytes that are present before anything is allocated, and every failure is
// reported as null/false together with a one-line text. Functions that take a path prefix that text with "<path>: ".

#include "lumoIpPicDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** The eight bytes every Pic file starts with: 0x89 "LPIC" CR LF 0x1A. The high first byte and the line ends catch
 *  transfers that strip the eighth bit or rewrite line ends. */
constexpr unsigned char lumoIpPicFileMagic[8] = { 0x89, 'L', 'P', 'I', 'C', 0x0D, 0x0A, 0x1A };

/** The format version this code writes and the only one it reads. */
constexpr std::uint16_t lumoIpPicFileVersion = 1;

/** Most tags one file may carry. */
constexpr std::uint32_t lumoIpPicFileMaxTags = 256;

/** Most bytes the tag block of one file may take (names, tag headers and values together): 1 MiB. */
constexpr std::uint32_t lumoIpPicFileMaxTagBytes = 1u << 20;

/** Most bytes the voxel block of one file may take: 16 GiB. */
constexpr std::uint64_t lumoIpPicFileMaxDataBytes = std::uint64_t{ 1 } << 34;

/** Compression level of .pic.gz files unless told otherwise (zlib's 1 = fastest .. 9 = smallest). */
constexpr int lumoIpPicFileDefaultCompressionLevel = 6;

/** Reads a .pic or .pic.gz file (gzip is recognised by its own magic bytes, whatever the file name says) into a new
 *  descriptor with its voxels and tags. Null on failure, with the reason in *error when error is not null. */
lumoIpPicDescriptor *
lumoIpPicGet(const std::string & path, std::string * error = nullptr);

/** Like lumoIpPicGet but reads only the header and the tags: data stays null. The voxel block is still checked to
 *  fit in the file (exactly for .pic; for .pic.gz against the most that the compressed size can hold). */
lumoIpPicDescriptor *
lumoIpPicGetHeader(const std::string & path, std::string * error = nullptr);

/** Reads the voxels of a file into a caller's buffer of exactly `bytes` bytes, which must equal lumoIpPicSize of the
 *  file's header. When header is not null it receives the header and tags that were read (its data is left alone).
 *  Used by readers that own their buffer, such as lumo::PicImageIO. */
bool
lumoIpPicGetData(const std::string & path,
                 void * buffer,
                 std::size_t bytes,
                 lumoIpPicDescriptor * header = nullptr,
                 std::string * error = nullptr);

/** lumoIpPicGet on bytes held in memory (plain or gzip-compressed). */
lumoIpPicDescriptor *
lumoIpPicGetFromMemory(const void * bytes, std::size_t size, std::string * error = nullptr);

/** Writes the descriptor, with a gzip stream when the path ends in ".gz" (any case). The file is written beside the
 *  target under a temporary name, flushed to disk and then renamed over the target, so the target is either left as
 *  it was or replaced whole. Fails (nothing written) for an invalid header, missing data, a tag that the format cannot
 *  hold, or a voxel block above lumoIpPicFileMaxDataBytes. compressionLevel (1..9) applies to gzip only. */
bool
lumoIpPicPut(const std::string & path,
             const lumoIpPicDescriptor * pic,
             std::string * error = nullptr,
             int compressionLevel = lumoIpPicFileDefaultCompressionLevel);

/** The uncompressed file bytes of the descriptor, appended to *out. Same checks as lumoIpPicPut. */
bool
lumoIpPicPutToMemory(const lumoIpPicDescriptor * pic, std::vector<unsigned char> * out, std::string * error = nullptr);

/** Whether the file starts with the Pic magic bytes, looking through a gzip stream. Never fails loudly. */
bool
lumoIpPicFileHasMagic(const std::string & path);

#endif
