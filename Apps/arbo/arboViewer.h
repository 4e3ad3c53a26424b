#ifndef arboViewer_h
#define arboViewer_h

#include "arboCommands.h"
#include "arboScene.h"

#include "lumoBaseRenderer.h"
#include "lumoDeformablePlaneRPG.h"
#include "lumoOperationActor.h"
#include "lumoYetAnotherVesselTreeInteractor.h"

#include <vtkActor.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkSmartPointer.h>
#include <vtkTextActor.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace arbo
{
/** The interactive window of `arbo view`: trees, organ and label surfaces, the selection interactor of each tree,
 *  keys that label the selected vessels, undo, and saving the edited trees beside the originals.
 *
 *  Input arrives through click() and key(), which the window's event loop calls; tests call them directly, with
 *  the same effect as the mouse and the keyboard. Every input redraws the window. Label changes are undoable
 *  like the selection: the viewer registers snapshots of the tree with the undo controller. */
class Viewer : private lumo::OperationActor
{
public:
  struct Options
  {
    std::vector<std::string> files;
    int width{ 1024 };
    int height{ 768 };
    std::string view{ "front" };
    /** Control points of a cutting plane (.mps); empty for none. */
    std::string plane;
    /** A vessel mask whose surface, coloured by the nearest vessel of the one tree, t shows in turn with tubes and
     *  centre lines (shown first); empty for none. Not among `files`. */
    std::string vesselMask;
    /** The vessels' label in the mask (a label map); none: every voxel other than 0. */
    std::optional<long> vesselLabel;
  };

  /** Reads the files and sets the window up (nothing is drawn yet); throws arbo::Error. */
  Viewer(const Options & options, Context & context);
  ~Viewer() override;
  Viewer(const Viewer &) = delete;
  Viewer &
  operator=(const Viewer &) = delete;

  /** Draws the first frame. */
  void
  show();
  /** Connects the window's mouse and keyboard to the viewer (run() does it too). */
  void
  attach();
  /** Runs the window's event loop until the user quits. */
  void
  run();
  vtkRenderWindowInteractor *
  windowInteractor() const
  {
    return m_WindowInteractor;
  }

  /** A left click at a display position (pixels, origin bottom left); with shift it adds to the selection. */
  void
  click(double x, double y, bool shift = false);
  /** A left press at a display position: true when it grabs the handle of a control point of the cutting plane
   *  (then the mouse drags the handle instead of turning the view). */
  bool
  grab(double x, double y);
  /** The grabbed handle follows the mouse, parallel to the screen. */
  void
  drag(double x, double y);
  /** The control point goes where its handle was let go (undoably) and the resection is computed again. */
  void
  release(double x, double y);
  /** The cutting plane; null without one. */
  lumo::DeformablePlane *
  plane() const
  {
    return m_Scene.plane;
  }
  /** The file the plane is saved to: NAME.plane.mps beside the organ (or the first file). */
  std::string
  planeFile() const;

  /** A key by its X key symbol ("r", "F4", "Tab", "question", "Escape"); shift as held. */
  void
  key(const std::string & keySymbol, bool shift = false);

  lumo::BaseRenderer *
  renderer() const
  {
    return m_Renderer;
  }
  const Scene &
  scene() const
  {
    return m_Scene;
  }
  std::string
  statusText() const;
  bool
  helpVisible() const;
  /** The key list of the help overlay. */
  static std::string
  helpText();
  bool
  quitRequested() const
  {
    return m_Quit;
  }
  /** What the trees are drawn as: "tubes", "centre lines" or "vessel surface". */
  std::string
  treeDrawing() const;
  /** Index of the tree that clicks and keys work on. */
  std::size_t
  activeTree() const
  {
    return m_ActiveTree;
  }

private:
  void
  ExecuteOperation(lumo::Operation * operation) override;

  void
  redraw();
  void
  say(const std::string & text);
  lumo::VesselTreeData *
  tree(std::size_t index) const;
  /** Applies a label change to the active vessels of the active tree, undoably. */
  void
  label(const std::string & what, const std::function<void(lumo::VesselTreeData &)> & change);
  void
  setActivationMode(lumo::VesselTreeData::ActivationMode mode, const std::string & name);
  void
  save(bool overwriteOriginal);
  std::size_t
  countActive(std::size_t index) const;
  void
  setUpPlane(const lumo::DeformablePlane::Pointer & plane);
  /** Redraws plane and handles after the plane changed and computes the resection again. */
  void
  planeChanged(const std::string & what);
  void
  updateHandles();
  /** Colours the organ surface by the labels of the resection image. */
  void
  colourOrgan(const lumo::Image * resection);
  void
  placeDefaultPlane();
  bool
  savePlane(const std::string & target);

  Context & m_Context;
  Options m_Options;
  Scene m_Scene;
  lumo::BaseRenderer::Pointer m_Renderer;
  std::vector<lumo::YetAnotherVesselTreeInteractor::Pointer> m_Interactors;
  vtkSmartPointer<vtkRenderWindowInteractor> m_WindowInteractor;
  vtkSmartPointer<vtkTextActor> m_Status;
  vtkSmartPointer<vtkTextActor> m_Help;
  std::size_t m_ActiveTree{ 0 };
  std::vector<bool> m_Edited;
  bool m_ConfirmOverwrite{ false };
  bool m_ConfirmQuit{ false };
  bool m_Quit{ false };
  // The cutting plane's editing: handles, the grabbed and selected control point, the generator that keeps the
  // territory labelling between drags.
  lumo::DeformablePlaneRPG::Pointer m_Generator;
  std::vector<vtkSmartPointer<vtkActor>> m_Handles;
  int m_Grabbed{ -1 };
  int m_Selected{ -1 };
  double m_GrabDepth{ 0 };
  lumo::Point3D m_DragTo;
  itk::ModifiedTimeType m_PlaneTime{ 0 };
  bool m_PlaneEdited{ false };
  std::size_t m_HepaticTree{ 0 };
  bool m_VesselSurface{ false };
};
} // namespace arbo

#endif
