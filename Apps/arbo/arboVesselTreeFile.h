#ifndef arboVesselTreeFile_h
#define arboVesselTreeFile_h

#include "ArVesselTree.h"

#include <string>

namespace arbo
{
/** Reads a .ves file; throws arbo::Error naming the file when it cannot be opened or is malformed. Nothing of a
 *  malformed file is returned. */
ArVesselTree
readVesselTreeFile(const std::string & path);

/** Writes a .ves file atomically; throws arbo::Error on failure, leaving any earlier file untouched. */
void
writeVesselTreeFile(const std::string & path, const ArVesselTree & tree);
} // namespace arbo

#endif
