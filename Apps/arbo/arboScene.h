#ifndef arboScene_h
#define arboScene_h

#include "lumoBaseRenderer.h"
#include "lumoDataNode.h"
#include "lumoDataStorage.h"
#include "lumoDeformablePlane.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoImage.h"
#include "lumoVesselTreeData.h"

#include <iosfwd>
#include <sstream>
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
  /** For each tree, the index of the scene file it came from in `sceneFiles`, or -1 for a tree file. */
  std::vector<int> treeScenes;
  /** The scene files among the files and their nodes as loaded (what saving writes back). */
  std::vector<std::string> sceneFiles;
  std::vector<lumo::DataStorage::Pointer> sceneStorages;
  /** Number of image nodes (organ, label and resection surfaces). */
  unsigned int surfaces{ 0 };
  /** Number of images drawn as resections. */
  unsigned int resections{ 0 };
  /** The first mask with a single label (the organ), its file and its surface node; null without one. */
  lumo::Image::Pointer organ;
  std::string organFile;
  lumo::DataNode::Pointer organNode;
  /** The cutting plane (null without one), the node that draws it and the box it is clipped to. */
  lumo::DeformablePlane::Pointer plane;
  lumo::DataNode::Pointer planeNode;
  lumo::Geometry3D::BoundsArrayType planeBox;
};

/** Whether the file is a scene (".rs" or ".RS"), drawn with its nodes' saved colours, opacities and visibility. */
bool
isSceneFile(const std::string & path);

/** Sends what the scene IO prints to standard output into a string while it lives (the command's own output stays
 *  clean, and the messages can go to the error stream). */
class CapturedMessages
{
public:
  CapturedMessages();
  ~CapturedMessages();
  CapturedMessages(const CapturedMessages &) = delete;
  CapturedMessages &
  operator=(const CapturedMessages &) = delete;
  std::string
  text() const
  {
    return m_Buffer.str();
  }

private:
  std::ostringstream m_Buffer;
  std::streambuf * m_Previous;
};

/** Loads a scene file into a new storage; throws arbo::Error (one line) when it is refused or a node cannot be
 *  placed. The loader's messages are returned in `messages`. */
lumo::DataStorage::Pointer
loadSceneFile(const std::string & path, std::string & messages);

/** A node for a scene with the defaults a user expects: trees get the module's (tube mapper, vessel colour table);
 *  a mask with a single non-zero value (an organ) is translucent in the organ colour. */
lumo::DataNode::Pointer
sceneNode(const std::string & name, lumo::BaseData * data);

/** The name a file's node takes in a scene: the file name up to its first dot ("truth-portal.ves" ->
 *  "truth-portal"). */
std::string
nodeNameOf(const std::string & file);

/** The scene a command adds its results to: the nodes of an existing scene file (throws arbo::Error when it cannot
 *  be loaded), or an empty storage when there is no such file yet. Throws arbo::Error as well when the path is no
 *  scene file name (".rs" or ".RS") or its folder does not exist, so that a command can refuse before it writes
 *  anything. */
lumo::DataStorage::Pointer
openSceneForUpdate(const std::string & path);

/** A command's result as a node of a scene: its name and data, properties set on the node beyond sceneNode's
 *  defaults, and the names of its sources (nodes of the scene or earlier results; empty: the command's inputs). */
struct SceneResult
{
  std::string name;
  lumo::BaseData::Pointer data;
  std::vector<std::pair<std::string, lumo::BaseProperty::Pointer>> properties;
  std::vector<std::string> sources;
};

/** Adds a command's results to the scene and saves it (atomically) as `path`: every input (a named file's data) is
 *  found by name in the scene or added; each result, in order, replaces any node of its name and has its sources
 *  (by default the inputs). Throws arbo::Error when the scene cannot be saved. */
void
addResultsToScene(lumo::DataStorage * scene,
                  const std::string & path,
                  const std::vector<std::pair<std::string, lumo::BaseData::Pointer>> & inputs,
                  const std::vector<SceneResult> & results);

/** What marks an image node as a resection: its label descriptor ("ResectionProposalDescriptor") and the
 *  resection colours as its "LookupTable" (labels 2 remnant, 3 resected, 4 at risk in the colours of
 *  planningColourTable, 0 transparent). */
std::vector<std::pair<std::string, lumo::BaseProperty::Pointer>>
resectionProperties(lumo::BaseProperty * descriptor);

/** The vessel colour table of arbo's pictures and windows: the toolkit's default colours, but for the resection
 *  statuses, whose default colours are random; a planner reads remnant green, resected red, at risk orange. */
lumo::VesselTreeLookupTable::Pointer
planningColourTable();

/** Reads every file; throws arbo::Error naming the first file that cannot be shown. A scene file (.rs) adds its
 *  nodes: hidden ones ("visible" false) are left out, trees keep their colour tables, an organ takes its saved
 *  "color" and "opacity", and the saved "opacity" of a label or resection image scales that of its surfaces. With
 * resections, every image whose labels are among 2, 3 and 4 is drawn as a resection, and there must be one. */
Scene
buildScene(const std::vector<std::string> & files, bool renderSkeleton, bool resections = false);

/** Reads the control points of a cutting plane (.mps); throws arbo::Error naming the file when it is no point set
 *  or its points make no plane (fewer than 3, all on one line). */
lumo::DeformablePlane::Pointer
readPlane(const std::string & path);

/** Draws the plane with the scene: translucent, unpickable, clipped to the organ's bounds (without an organ, to the
 *  bounds of everything shown). Call again after the plane changed to redraw it. */
void
showPlane(Scene & scene, lumo::DeformablePlane * plane);

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
