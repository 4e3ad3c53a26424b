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
 *  surface per label, coloured like the liver segments of the vessel colours. A resection image (labels among 2
 *  remnant, 3 to be resected, 4 at risk, with a `<stem>.proposal.xml` beside it or any such image when resections
 *  are asked for) becomes one surface per label in the resection-status colours of the vessel colour table: the
 *  remnant translucent, the resected and at-risk parts solid (see-through a little when trees are shown). */
struct Scene
{
  lumo::DataStorage::Pointer storage;
  /** The tree nodes with the file each came from, in command-line order. */
  std::vector<lumo::DataNode::Pointer> trees;
  std::vector<std::string> treeFiles;
  /** Number of image nodes (organ, label and resection surfaces). */
  unsigned int surfaces{ 0 };
  /** Number of images drawn as resections. */
  unsigned int resections{ 0 };
};

/** Reads every file; throws arbo::Error naming the first file that cannot be shown. With resections, every image whose
 *  labels are among 2, 3 and 4 is drawn as a resection, and there must be one. */
Scene
buildScene(const std::vector<std::string> & files, bool renderSkeleton, bool resections = false);

/** The descriptor file that marks an image as a resection: the image's name with its format ending replaced by
 *  ".proposal.xml" ("cut.nii.gz" -> "cut.proposal.xml"). */
std::string
proposalFileOf(const std::string & imagePath);

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
