#ifndef arboScene_h
#define arboScene_h

#include "lumoBaseRenderer.h"
#include "lumoDataNode.h"
#include "lumoDataStorage.h"
#include "lumoVesselTreeData.h"

#include <string>
#include <vector>

namespace arbo
{
/** What `arbo render` and `arbo view` show: the files of the command line as nodes of one data storage.
 *
 *  Vessel trees get the module's tube mapper and colour table. Images become surfaces: a mask with a single
 *  non-zero value (an organ) a translucent, unpickable surface; an image with several labels (supply areas) one
 *  surface per label, coloured like the liver segments of the vessel colours. */
struct Scene
{
  lumo::DataStorage::Pointer storage;
  /** The tree nodes with the file each came from, in command-line order. */
  std::vector<lumo::DataNode::Pointer> trees;
  std::vector<std::string> treeFiles;
  /** Number of image nodes (organ and label surfaces). */
  unsigned int surfaces{ 0 };
};

/** Reads every file; throws arbo::Error naming the first file that cannot be shown. */
Scene
buildScene(const std::vector<std::string> & files, bool renderSkeleton);

/** Size, background and depth peeling of the window that shows a scene (the same for pictures and the viewer). */
void
setUpWindow(lumo::BaseRenderer & renderer, int width, int height);

/** Points the renderer's camera at everything from one side: "front" (from anterior), "back", "left", "right",
 *  "top" (from superior), "bottom" or "iso" (anterior, right, superior). Throws arbo::Error for other names. */
void
setView(lumo::BaseRenderer & renderer, const std::string & view);

/** The names accepted by setView. */
const std::vector<std::string> &
viewNames();
} // namespace arbo

#endif
