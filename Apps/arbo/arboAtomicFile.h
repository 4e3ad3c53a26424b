#ifndef arboAtomicFile_h
#define arboAtomicFile_h

#include <functional>
#include <string>

namespace arbo
{
/** Writes a file so that the target is either left as it was or replaced whole: the content goes to a temporary
 *  file beside the target (same folder, same file name ending, so that writers that choose the format by the
 *  ending still do), which is renamed over the target only when writing succeeded. The writer gets the temporary
 *  path and throws on failure; the temporary file is removed whatever happens, also when SIGINT, SIGTERM or SIGHUP
 *  ends the process while it is written (the signal then still ends the process). A header with a separate data
 *  file (.mhd, .nhdr, .hdr) is written with its data file into a staging folder beside the target under their final
 *  names, and the data file is moved into place before the header. */
void
writeAtomically(const std::string & target, const std::function<void(const std::string & temporaryPath)> & writer);

/** The lower-case file name ending that selects a format: ".ves", ".nii.gz", ".pic.gz", ".nrrd"... */
std::string
formatExtension(const std::string & path);
} // namespace arbo

#endif
