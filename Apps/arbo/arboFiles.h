#ifndef arboFiles_h
#define arboFiles_h

#include "lumoBaseData.h"
#include "lumoVesselTreeData.h"

#include <iosfwd>
#include <string>

namespace arbo
{
/** Makes every file type of the toolkit and the module known (once per process). */
void
registerFileTypes();

/** Opens a file of any known type; throws arbo::Error naming the file when it is missing, of an unknown type or
 *  unreadable. Nothing of an unreadable file is returned. */
lumo::BaseData::Pointer
readData(const std::string & path);

/** Opens a file that must hold a vessel tree. Vessel ids that the supply areas could not tell apart (repeated, 0,
 *  or equal in their low 16 bits, as trees from other tools have them) are renumbered 1, 2, ... in pre-order, with
 *  a note to `notes` when it is given; the note goes where the ids matter (supply areas, labelled trees written). */
lumo::VesselTreeData::Pointer
readVesselTree(const std::string & path, std::ostream * notes = nullptr);

/** Writes data in the format of the file name's ending, atomically (temporary file beside it, then renamed):
 *  vessel trees as .ves or .vtp, images in any image format, surfaces as .vtp, .vtk or .stl. Throws arbo::Error
 *  when the ending does not fit the data or writing fails; an earlier file of that name is then left as it was. */
void
writeData(lumo::BaseData * data, const std::string & path);

/** "vessel tree", "image", "surface", "point set" or "data". */
std::string
kindOf(const lumo::BaseData * data);
} // namespace arbo

#endif
