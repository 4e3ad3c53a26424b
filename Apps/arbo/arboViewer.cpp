#include "arboViewer.h"
#include "arboVesselSurface.h"

#include "arboAtomicFile.h"
#include "arboError.h"
#include "arboFiles.h"

#include "lumoCalyxSceneIO.h"
#include "lumoGlobalInteraction.h"
#include "lumoLookupTable.h"
#include "lumoLookupTableProperty.h"
#include "lumoPointSetIO.h"
#include "lumoSurface.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoDisplayPositionEvent.h"
#include "lumoInteractionConst.h"
#include "lumoOperation.h"
#include "lumoOperationEvent.h"
#include "lumoRenderingManager.h"
#include "lumoStatusBar.h"
#include "lumoUndoController.h"
#include "lumoVesselTreeOperation.h"

#include "ArVesselTree.h"
#include "VesselLabels.h"

#include <vtkCallbackCommand.h>
#include <vtkDataArray.h>
#include <vtkLookupTable.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkShortArray.h>
#include <vtkSphereSource.h>
#include <vtkInteractorStyleTrackballCamera.h>
#include <vtkObjectFactory.h>
#include <vtkRenderWindow.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkRenderer.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <cmath>
#include <filesystem>
#include <iomanip>
#include <map>
#include <sstream>

namespace arbo
{
namespace
{
/** A whole tree to put back: label changes are undone and redone by swapping snapshots. */
class TreeSnapshot : public lumo::Operation
{
public:
  static constexpr lumo::OperationType Type = 9001;
  TreeSnapshot(std::size_t treeIndex, ArVesselTree tree)
    : lumo::Operation(Type)
    , m_TreeIndex(treeIndex)
    , m_Tree(std::move(tree))
  {}
  std::size_t m_TreeIndex;
  ArVesselTree m_Tree;
};

/** Trackball camera on drags; a click without motion goes to the viewer, and so do keys. VTK's own keys (quit,
 *  wireframe, stereo...) are switched off: the viewer's keys label vessels. */
class ViewerStyle : public vtkInteractorStyleTrackballCamera
{
public:
  static ViewerStyle *
  New();
  vtkTypeMacro(ViewerStyle, vtkInteractorStyleTrackballCamera);

  Viewer * viewer{ nullptr };

  void
  OnLeftButtonDown() override
  {
    m_Down[0] = this->Interactor->GetEventPosition()[0];
    m_Down[1] = this->Interactor->GetEventPosition()[1];
    m_Dragging = viewer && viewer->grab(m_Down[0], m_Down[1]);
    if (!m_Dragging)
    {
      Superclass::OnLeftButtonDown();
    }
  }
  void
  OnMouseMove() override
  {
    if (m_Dragging)
    {
      viewer->drag(this->Interactor->GetEventPosition()[0], this->Interactor->GetEventPosition()[1]);
      return;
    }
    Superclass::OnMouseMove();
  }
  void
  OnLeftButtonUp() override
  {
    if (m_Dragging)
    {
      m_Dragging = false;
      viewer->release(this->Interactor->GetEventPosition()[0], this->Interactor->GetEventPosition()[1]);
      return;
    }
    Superclass::OnLeftButtonUp();
    const int * at = this->Interactor->GetEventPosition();
    if (viewer && std::abs(at[0] - m_Down[0]) <= 3 && std::abs(at[1] - m_Down[1]) <= 3)
    {
      viewer->click(at[0], at[1], this->Interactor->GetShiftKey() != 0);
    }
  }
  void
  OnChar() override
  {}
  void
  OnKeyPress() override
  {
    if (viewer && this->Interactor->GetKeySym())
    {
      viewer->key(this->Interactor->GetKeySym(), this->Interactor->GetShiftKey() != 0);
    }
  }

private:
  int m_Down[2]{ 0, 0 };
  bool m_Dragging{ false };
};
vtkStandardNewMacro(ViewerStyle);

const std::map<std::string, int> &
segmentKeys()
{
  // The Couinaud segments on the function keys, in order; F10 clears the segment.
  static const std::map<std::string, int> keys{ { "F1", 2 }, { "F2", 3 }, { "F3", 4 }, { "F4", 5 },  { "F5", 6 },
                                                { "F6", 7 }, { "F7", 8 }, { "F8", 9 }, { "F9", 10 }, { "F10", 1 } };
  return keys;
}

const std::map<std::string, int> &
typeKeys()
{
  static const std::map<std::string, int> keys{ { "u", 0 }, { "h", 1 }, { "p", 2 }, { "a", 3 }, { "b", 4 } };
  return keys;
}

const std::map<std::string, int> &
statusKeys()
{
  static const std::map<std::string, int> keys{ { "0", 1 }, { "k", 2 }, { "r", 3 }, { "w", 4 } };
  return keys;
}

std::string
plural(std::size_t n, const std::string & word)
{
  return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

std::string
fixed(double value, int digits)
{
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

/** Where a display position lies at the given depth (0 near, 1 far). */
lumo::Point3D
displayToWorld(vtkRenderer * r, double x, double y, double depth)
{
  r->SetDisplayPoint(x, y, depth);
  r->DisplayToWorld();
  const double * w = r->GetWorldPoint();
  lumo::Point3D p;
  for (int i = 0; i < 3; ++i)
  {
    p[i] = w[3] != 0 ? w[i] / w[3] : w[i];
  }
  return p;
}

std::array<double, 3>
worldToDisplay(vtkRenderer * r, const lumo::Point3D & p)
{
  r->SetWorldPoint(p[0], p[1], p[2], 1.0);
  r->WorldToDisplay();
  const double * d = r->GetDisplayPoint();
  return { d[0], d[1], d[2] };
}
} // namespace

std::string
Viewer::helpText()
{
  return "click: select vessel   shift+click: add to selection   drag: rotate   wheel: zoom\n"
         "1 vessel only   2 path to the root   3 everything downstream (what a click selects)\n"
         "type:    p portal   h hepatic   a artery   b bile duct   u undefined\n"
         "segment: F1-F3 I-III   F4 IVa   F5 IVb   F6-F9 V-VIII   F10 none\n"
         "status:  r resect   k keep   w area at risk   0 undefined\n"
         "x hide selected   v show all   t tubes/centre lines (/vessel surface)   c reset view   Tab next tree\n"
         "plane:   drag a handle: move a control point   i add one under the mouse   d remove the last grabbed\n"
         "         o place a plane through the organ's centre\n"
         "z undo   y redo   s save as *.edited.ves (*.plane.mps)   S twice: overwrite the originals (a scene: write it "
         "back)\n"
         "? this help   q quit";
}

Viewer::Viewer(const Options & options, Context & context)
  : m_Context(context)
  , m_Options(options)
  , m_Scene(buildScene(options.files, false))
  , m_Renderer(lumo::BaseRenderer::New())
{
  if (m_Scene.trees.empty() && m_Scene.surfaces == 0)
  {
    throw Error("", "nothing to show");
  }
  if (!options.vesselMask.empty())
  {
    showVesselSurface(m_Scene, vesselMaskSurface(options.vesselMask, options.vesselLabel));
    m_VesselSurface = true;
  }
  m_Edited.assign(m_Scene.trees.size(), false);
  m_Renderer->SetDataStorage(m_Scene.storage);
  vtkRenderWindow * window = m_Renderer->GetRenderWindow();
  window->SetWindowName("arbo view");
  setUpWindow(*m_Renderer, options.width, options.height);
  vtkRenderer * r = m_Renderer->GetVtkRenderer();
  lumo::RenderingManager::GetInstance()->AddRenderWindow(window);

  m_Status = vtkSmartPointer<vtkTextActor>::New();
  m_Status->GetTextProperty()->SetFontSize(16);
  m_Status->GetTextProperty()->SetColor(1.0, 0.95, 0.6);
  m_Status->SetDisplayPosition(10, 10);
  r->AddViewProp(m_Status);
  m_Help = vtkSmartPointer<vtkTextActor>::New();
  m_Help->SetInput(helpText().c_str());
  m_Help->GetTextProperty()->SetFontSize(14);
  m_Help->GetTextProperty()->SetColor(0.9, 0.9, 0.9);
  m_Help->GetTextProperty()->SetVerticalJustificationToTop();
  m_Help->GetTextProperty()->ShadowOn();
  m_Help->SetDisplayPosition(10, options.height - 10);
  r->AddViewProp(m_Help);

  lumo::StatusBar::GetInstance()->SetImplementation(
    [this](const std::string & text) { m_Status->SetInput(text.c_str()); });
  lumo::UndoController::GetInstance()->Clear();
  for (const auto & node : m_Scene.trees)
  {
    auto interactor = lumo::YetAnotherVesselTreeInteractor::New("VesselTreeSelection", node);
    lumo::GlobalInteraction::GetInstance()->AddInteractor(interactor);
    m_Interactors.push_back(interactor);
  }
  lumo::YetAnotherVesselTreeInteractor::SetActiveVesselTree(m_Scene.trees.empty() ? nullptr : m_Scene.trees[0]);
  // The plane is read before anything is shown, so that a bad file costs no window.
  lumo::DeformablePlane::Pointer plane = options.plane.empty() ? nullptr : readPlane(options.plane);
  {
    CapturedMessages progress; // the vessel surface's mapper reports its progress on standard output
    setView(*m_Renderer, options.view);
  }
  say(m_Scene.trees.empty() ? "No vessel tree: nothing to select"
                            : "Active tree: " + m_Scene.treeFiles[0] + " (click a vessel; ? for help)");
  if (plane)
  {
    setUpPlane(plane);
  }
}

std::string
Viewer::treeDrawing() const
{
  if (m_Scene.trees.empty())
  {
    return "tubes";
  }
  bool skeleton = false;
  bool vesselSurface = false;
  m_Scene.trees.front()->GetBoolProperty("Render skeleton", skeleton);
  m_Scene.trees.front()->GetBoolProperty("Render vessel surface", vesselSurface);
  return skeleton ? "centre lines" : (m_VesselSurface && vesselSurface ? "vessel surface" : "tubes");
}

std::string
Viewer::planeFile() const
{
  const std::string & beside = !m_Scene.organFile.empty() ? m_Scene.organFile : m_Options.files.front();
  const std::string ending = formatExtension(beside);
  return beside.substr(0, beside.size() - ending.size()) + ".plane.mps";
}

void
Viewer::setUpPlane(const lumo::DeformablePlane::Pointer & plane)
{
  if (m_Scene.organ)
  {
    plane->SetOrgan(m_Scene.organ);
  }
  showPlane(m_Scene, plane);
  // The portal tree is the first tree, the hepatic tree the second one (if any).
  if (m_Scene.organ && !m_Scene.trees.empty())
  {
    m_Generator = lumo::DeformablePlaneRPG::New();
    m_Generator->SetOrganSegmentation(m_Scene.organ);
    m_Generator->SetVesselTree(tree(0));
    if (m_Scene.trees.size() > 1)
    {
      m_Generator->SetHepaticVesselTree(tree(1));
    }
    m_Generator->SetCuttingPlane(plane);
    m_Generator->GenerateSurfacesOff();
  }
  planeChanged("");
}

void
Viewer::updateHandles()
{
  vtkRenderer * r = m_Renderer->GetVtkRenderer();
  const auto & box = m_Scene.planeBox;
  const double diagonal =
    std::sqrt(std::pow(box[1] - box[0], 2) + std::pow(box[3] - box[2], 2) + std::pow(box[5] - box[4], 2));
  const auto & points = m_Scene.plane->GetControlPoints();
  while (m_Handles.size() > points.size())
  {
    r->RemoveActor(m_Handles.back());
    m_Handles.pop_back();
  }
  while (m_Handles.size() < points.size())
  {
    auto sphere = vtkSmartPointer<vtkSphereSource>::New();
    sphere->SetRadius(std::max(0.5, 0.015 * diagonal));
    sphere->SetThetaResolution(16);
    sphere->SetPhiResolution(12);
    auto mapper = vtkSmartPointer<vtkPolyDataMapper>::New();
    mapper->SetInputConnection(sphere->GetOutputPort());
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    actor->PickableOff();
    r->AddActor(actor);
    m_Handles.push_back(actor);
  }
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    m_Handles[i]->SetPosition(points[i][0], points[i][1], points[i][2]);
    const bool selected = static_cast<int>(i) == m_Selected;
    m_Handles[i]->GetProperty()->SetColor(selected ? 1.0 : 0.95, selected ? 0.85 : 0.95, selected ? 0.2 : 0.95);
  }
}

void
Viewer::colourOrgan(const lumo::Image * resection)
{
  auto * surface = m_Scene.organNode ? dynamic_cast<lumo::Surface *>(m_Scene.organNode->GetData()) : nullptr;
  vtkPolyData * original = surface ? surface->GetVtkPolyData() : nullptr;
  if (original == nullptr || resection == nullptr)
  {
    return;
  }
  // Each surface point takes the label of the voxel half a voxel inside it (the surface runs between voxels).
  const auto * labels = static_cast<const unsigned char *>(resection->GetData());
  const unsigned int size[3] = { resection->GetDimension(0), resection->GetDimension(1), resection->GetDimension(2) };
  const auto spacing = resection->GetGeometry()->GetSpacing();
  const double inward = 0.5 * std::min({ spacing[0], spacing[1], spacing[2] });
  vtkDataArray * normals = original->GetPointData()->GetNormals();
  auto scalars = vtkSmartPointer<vtkShortArray>::New();
  scalars->SetNumberOfValues(original->GetNumberOfPoints());
  for (vtkIdType i = 0; i < original->GetNumberOfPoints(); ++i)
  {
    double p[3];
    original->GetPoint(i, p);
    const double * n = normals ? normals->GetTuple3(i) : nullptr;
    lumo::Point3D world, index;
    for (int a = 0; a < 3; ++a)
    {
      world[a] = p[a] - (n ? inward * n[a] : 0.0);
    }
    resection->GetGeometry()->WorldToIndex(world, index);
    short label = 0;
    long at[3];
    bool inside = true;
    for (int a = 0; a < 3; ++a)
    {
      at[a] = std::lround(index[a]);
      inside = inside && at[a] >= 0 && at[a] < static_cast<long>(size[a]);
    }
    if (inside)
    {
      label = labels[(at[2] * size[1] + at[1]) * size[0] + at[0]];
    }
    scalars->SetValue(i, label);
  }
  auto coloured = vtkSmartPointer<vtkPolyData>::New();
  coloured->ShallowCopy(original);
  coloured->GetPointData()->SetScalars(scalars);
  surface->SetVtkPolyData(coloured);

  if (dynamic_cast<lumo::LookupTableProperty *>(m_Scene.organNode->GetProperty("LookupTable")) == nullptr)
  {
    // Labels 0 to 4: outside and unlabelled in the organ's colour, the rest in the resection-status colours.
    const auto status = planningColourTable()->GetColorByResectionStatus();
    auto table = vtkSmartPointer<vtkLookupTable>::New();
    table->SetNumberOfTableValues(5);
    table->SetTableRange(0, 4);
    for (int label = 0; label <= 4; ++label)
    {
      if (label >= 2)
      {
        table->SetTableValue(label, status[label][0], status[label][1], status[label][2], 1.0);
      }
      else
      {
        table->SetTableValue(label, 0.87, 0.72, 0.60, 1.0);
      }
    }
    table->Build();
    auto lookupTable = lumo::LookupTable::New();
    lookupTable->SetVtkLookupTable(table);
    m_Scene.organNode->SetProperty("LookupTable", lumo::LookupTableProperty::New(lookupTable));
    m_Scene.organNode->SetBoolProperty("scalar visibility", true);
    m_Scene.organNode->SetOpacity(0.45f);
  }
}

void
Viewer::planeChanged(const std::string & what)
{
  lumo::DeformablePlane * plane = m_Scene.plane;
  showPlane(m_Scene, plane);
  updateHandles();
  m_PlaneTime = plane->GetMTime();
  const std::string prefix = what.empty() ? std::string() : what + ": ";
  if (m_Generator.IsNull())
  {
    say(prefix + "give an organ mask and a portal tree to see what the plane takes");
    return;
  }
  try
  {
    m_Generator->Update();
  }
  catch (const itk::ExceptionObject & e)
  {
    say(prefix + e.GetDescription());
    return;
  }
  colourOrgan(m_Generator->GetResectionImage());
  // The trees carry the resection statuses now: after an edit of the plane, a plan to save.
  for (std::size_t i = 0; i < m_Scene.trees.size() && i < 2; ++i)
  {
    tree(i)->Modified();
    m_Edited[i] = m_Edited[i] || m_PlaneEdited;
  }
  const double ml = m_Generator->GetVoxelMillilitres();
  using Label = lumo::VascularTerritoryRPG;
  say(prefix + "remnant " + fixed(m_Generator->GetNumberOfVoxels(Label::RemnantLabel) * ml, 2) + " ml, resected " +
      fixed(m_Generator->GetNumberOfVoxels(Label::ResectedLabel) * ml, 2) + " ml, at risk " +
      fixed(m_Generator->GetNumberOfVoxels(Label::AtRiskLabel) * ml, 2) + " ml, FLR " +
      fixed(m_Generator->GetFutureLiverRemnantPercent(), 2) + " %");
}

bool
Viewer::grab(double x, double y)
{
  m_Grabbed = -1;
  if (!m_Scene.plane)
  {
    return false;
  }
  vtkRenderer * r = m_Renderer->GetVtkRenderer();
  const auto & points = m_Scene.plane->GetControlPoints();
  double nearest = 10.0; // pixels
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    const auto d = worldToDisplay(r, points[i]);
    const double distance = std::hypot(d[0] - x, d[1] - y);
    if (distance <= nearest)
    {
      nearest = distance;
      m_Grabbed = static_cast<int>(i);
      m_GrabDepth = d[2];
    }
  }
  if (m_Grabbed < 0)
  {
    return false;
  }
  m_ConfirmOverwrite = m_ConfirmQuit = false;
  m_Selected = m_Grabbed;
  m_DragTo = points[m_Grabbed];
  updateHandles();
  say("Control point " + std::to_string(m_Grabbed + 1) + ": drag it, d removes it");
  redraw();
  return true;
}

void
Viewer::drag(double x, double y)
{
  if (m_Grabbed < 0)
  {
    return;
  }
  m_DragTo = displayToWorld(m_Renderer->GetVtkRenderer(), x, y, m_GrabDepth);
  // Only the handle follows while the button is down: the plane and the volumes change on release.
  m_Handles[m_Grabbed]->SetPosition(m_DragTo[0], m_DragTo[1], m_DragTo[2]);
  redraw();
}

void
Viewer::release(double x, double y)
{
  if (m_Grabbed < 0)
  {
    return;
  }
  drag(x, y);
  const unsigned int index = static_cast<unsigned int>(m_Grabbed);
  m_Grabbed = -1;
  try
  {
    m_Scene.plane->MoveControlPoint(index, m_DragTo);
  }
  catch (const itk::ExceptionObject & e)
  {
    updateHandles();
    say(std::string("Not moved: ") + e.GetDescription());
    redraw();
    return;
  }
  m_PlaneEdited = true;
  planeChanged("Moved control point " + std::to_string(index + 1));
  redraw();
}

void
Viewer::placeDefaultPlane()
{
  if (m_Scene.plane)
  {
    say("There is a plane already: drag its handles");
    return;
  }
  if (!m_Scene.organNode)
  {
    say("A default plane needs an organ mask among the files");
    return;
  }
  // Upright through the centre of the organ's box, across its width: four points of a square.
  const auto * bounds = static_cast<lumo::Surface *>(m_Scene.organNode->GetData())->GetVtkPolyData()->GetBounds();
  const double c[3] = { (bounds[0] + bounds[1]) / 2, (bounds[2] + bounds[3]) / 2, (bounds[4] + bounds[5]) / 2 };
  const double a = (bounds[3] - bounds[2]) / 4, b = (bounds[5] - bounds[4]) / 4;
  lumo::DeformablePlane::PointsContainer points;
  for (const auto & [dy, dz] : { std::pair{ -a, -b }, { a, -b }, { a, b }, { -a, b } })
  {
    lumo::Point3D p;
    p[0] = c[0];
    p[1] = c[1] + dy;
    p[2] = c[2] + dz;
    points.push_back(p);
  }
  auto plane = lumo::DeformablePlane::New();
  plane->SetControlPoints(points);
  m_PlaneEdited = true;
  setUpPlane(plane);
}

bool
Viewer::savePlane(const std::string & target)
{
  try
  {
    writeAtomically(target, [&](const std::string & temporary) {
      lumo::WritePointSetFile(m_Scene.plane->GetControlPointsAsPointSet(), temporary);
    });
  }
  catch (const std::exception & error)
  {
    say("Not saved: " + target + ": " + error.what());
    return false;
  }
  m_PlaneEdited = false;
  if (!m_Context.quiet)
  {
    m_Context.err << "arbo: saved " << target << "\n";
  }
  return true;
}

Viewer::~Viewer()
{
  // The undo history refers to this viewer and to the trees: it ends with them.
  lumo::UndoController::GetInstance()->Clear();
  for (const auto & interactor : m_Interactors)
  {
    lumo::GlobalInteraction::GetInstance()->RemoveInteractor(interactor);
  }
  lumo::YetAnotherVesselTreeInteractor::SetActiveVesselTree(nullptr);
  lumo::StatusBar::GetInstance()->SetImplementation(nullptr);
  lumo::RenderingManager::GetInstance()->RemoveRenderWindow(m_Renderer->GetRenderWindow());
  if (m_WindowInteractor)
  {
    m_WindowInteractor->SetInteractorStyle(nullptr);
  }
}

void
Viewer::show()
{
  // The vessel surface's mapper reports its progress on standard output: not for the user of a window.
  CapturedMessages progress;
  m_Renderer->Render();
}

void
Viewer::attach()
{
  if (m_WindowInteractor)
  {
    return;
  }
  m_WindowInteractor = vtkSmartPointer<vtkRenderWindowInteractor>::New();
  auto style = vtkSmartPointer<ViewerStyle>::New();
  style->viewer = this;
  m_WindowInteractor->SetInteractorStyle(style);
  m_WindowInteractor->SetRenderWindow(m_Renderer->GetRenderWindow());
  m_WindowInteractor->Initialize();
}

void
Viewer::run()
{
  attach();
  show();
  m_WindowInteractor->Start();
}

std::string
Viewer::statusText() const
{
  return lumo::StatusBar::GetInstance()->GetText();
}

bool
Viewer::helpVisible() const
{
  return m_Help->GetVisibility() != 0;
}

lumo::VesselTreeData *
Viewer::tree(std::size_t index) const
{
  return index < m_Scene.trees.size() ? static_cast<lumo::VesselTreeData *>(m_Scene.trees[index]->GetData()) : nullptr;
}

void
Viewer::say(const std::string & text)
{
  lumo::StatusBar::GetInstance()->DisplayText(text);
}

void
Viewer::redraw()
{
  CapturedMessages progress;
  lumo::RenderingManager::GetInstance()->RequestUpdate(m_Renderer->GetRenderWindow());
  lumo::RenderingManager::GetInstance()->ExecutePendingRequests();
}

void
Viewer::click(double x, double y, bool shift)
{
  m_ConfirmOverwrite = m_ConfirmQuit = false;
  if (m_Scene.trees.empty())
  {
    return;
  }
  lumo::DisplayPositionEvent event(m_Renderer,
                                   lumo::EventType::MouseButtonPress,
                                   lumo::MouseButton::Left,
                                   shift ? lumo::ShiftModifier : 0,
                                   0,
                                   lumo::Point2D(std::array<double, 2>{ x, y }.data()));
  lumo::GlobalInteraction::GetInstance()->HandleEvent(&event);
  redraw();
}

std::size_t
Viewer::countActive(std::size_t index) const
{
  const lumo::VesselTreeData * data = tree(index);
  const ArVesselTree vessels = data ? data->GetVesselTreeData(0) : ArVesselTree();
  std::size_t count = 0;
  if (!vessels.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(vessels->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      count += (!vessel.isNull() && vessel->getProperties().isActive()) ? 1 : 0;
    }
  }
  return count;
}

void
Viewer::label(const std::string & what, const std::function<void(lumo::VesselTreeData &)> & change)
{
  lumo::VesselTreeData * data = tree(m_ActiveTree);
  const std::size_t count = countActive(m_ActiveTree);
  if (data == nullptr || count == 0)
  {
    say("Select vessels first: click a vessel (shift+click adds)");
    return;
  }
  ArVesselTree before = cloneVesselTree(data->GetVesselTreeData(0));
  change(*data);
  // The labelled vessels were deactivated; forgetting the picks as well lets the next shift+click start a new
  // selection instead of bringing the labelled vessels back.
  lumo::VesselTreeOperation forget(lumo::VesselTreeOperation::Select, 0);
  data->ExecuteOperation(&forget);
  ArVesselTree after = cloneVesselTree(data->GetVesselTreeData(0));
  lumo::UndoController::GetInstance()->SetOperationEvent(new lumo::OperationEvent(
    this, new TreeSnapshot(m_ActiveTree, after), new TreeSnapshot(m_ActiveTree, before), what));
  m_Edited[m_ActiveTree] = true;
  say(what + ": " + plural(count, "vessel"));
}

void
Viewer::ExecuteOperation(lumo::Operation * operation)
{
  auto * snapshot = dynamic_cast<TreeSnapshot *>(operation);
  lumo::VesselTreeData * data = snapshot ? tree(snapshot->m_TreeIndex) : nullptr;
  if (data == nullptr)
  {
    return;
  }
  // A copy goes in, so that the snapshot stays as it was for the next undo or redo.
  data->SetVesselTreeData(cloneVesselTree(snapshot->m_Tree), 0);
  m_Edited[snapshot->m_TreeIndex] = true;
}

void
Viewer::setActivationMode(lumo::VesselTreeData::ActivationMode mode, const std::string & name)
{
  for (std::size_t i = 0; i < m_Scene.trees.size(); ++i)
  {
    tree(i)->SetActivationMode(mode, 0);
  }
  say("A click selects " + name);
}

void
Viewer::save(bool overwriteOriginal)
{
  if (m_Scene.plane && (m_PlaneEdited || overwriteOriginal))
  {
    const std::string target = overwriteOriginal && !m_Options.plane.empty() ? m_Options.plane : planeFile();
    if (!savePlane(target))
    {
      return;
    }
    say("Saved " + target);
  }
  bool sceneEdits = false;
  for (std::size_t i = 0; i < m_Scene.trees.size(); ++i)
  {
    if (m_Scene.treeScenes[i] >= 0)
    {
      sceneEdits = sceneEdits || m_Edited[i];
      continue; // written back with its scene below
    }
    if (!m_Edited[i] && !overwriteOriginal)
    {
      continue;
    }
    const std::string & original = m_Scene.treeFiles[i];
    std::string target = original;
    if (!overwriteOriginal)
    {
      std::filesystem::path path(original);
      path.replace_extension(".edited.ves");
      target = path.string();
    }
    // The selection is not part of the plan: the saved tree has no active vessel.
    ArVesselTree copy = cloneVesselTree(tree(i)->GetVesselTreeData(0));
    auto data = lumo::VesselTreeData::New();
    data->initialize(copy);
    data->DeactivateAll(0);
    try
    {
      writeData(data, target);
    }
    catch (const Error & error)
    {
      say("Not saved: " + target + ": " + error.what());
      return;
    }
    m_Edited[i] = false;
    say("Saved " + target);
    if (!m_Context.quiet)
    {
      m_Context.err << "arbo: saved " << target << "\n";
    }
  }
  if (!overwriteOriginal)
  {
    if (sceneEdits)
    {
      say("A scene's trees are saved with it: press S twice to write the scene back");
    }
    return;
  }
  for (std::size_t k = 0; k < m_Scene.sceneFiles.size(); ++k)
  {
    const std::string & target = m_Scene.sceneFiles[k];
    // The selection is not part of the plan: it is cleared before the scene's trees are written.
    for (std::size_t i = 0; i < m_Scene.trees.size(); ++i)
    {
      if (m_Scene.treeScenes[i] == static_cast<int>(k))
      {
        tree(i)->DeactivateAll(0);
      }
    }
    bool saved = false;
    {
      CapturedMessages messages; // the scene IO's own lines; a failure is reported below
      saved = lumo::CalyxSceneIO::New()->SaveScene(m_Scene.sceneStorages[k], target);
    }
    if (!saved)
    {
      say("Not saved: " + target + ": the scene could not be written (the previous one is kept)");
      return;
    }
    for (std::size_t i = 0; i < m_Scene.trees.size(); ++i)
    {
      if (m_Scene.treeScenes[i] == static_cast<int>(k))
      {
        m_Edited[i] = false;
      }
    }
    say("Saved " + target);
    if (!m_Context.quiet)
    {
      m_Context.err << "arbo: saved " << target << "\n";
    }
  }
}

void
Viewer::key(const std::string & keySymbol, bool shift)
{
  const bool confirmOverwrite = m_ConfirmOverwrite;
  const bool confirmQuit = m_ConfirmQuit;
  m_ConfirmOverwrite = m_ConfirmQuit = false;
  lumo::VesselTreeData * data = tree(m_ActiveTree);
  if (const auto type = typeKeys().find(keySymbol); type != typeKeys().end() && !shift)
  {
    label("Type " + VesselLabels::bloodVesselTypeName(type->second),
          [&](lumo::VesselTreeData & d) { d.SetBloodVesselTypeForActive(type->second, 0); });
  }
  else if (const auto segment = segmentKeys().find(keySymbol); segment != segmentKeys().end())
  {
    label("Segment " + VesselLabels::segmentTypeName(segment->second),
          [&](lumo::VesselTreeData & d) { d.SetSegmentTypeForActive(segment->second, 0); });
  }
  else if (const auto status = statusKeys().find(keySymbol); status != statusKeys().end() && !shift)
  {
    label(VesselLabels::resectionStatusName(status->second),
          [&](lumo::VesselTreeData & d) { d.SetResectionStatusForActive(status->second, 0); });
  }
  else if (keySymbol == "1" || keySymbol == "2" || keySymbol == "3")
  {
    static const std::pair<lumo::VesselTreeData::ActivationMode, const char *> modes[] = {
      { lumo::VesselTreeData::SingleActivation, "the vessel only" },
      { lumo::VesselTreeData::PathToRootActivation, "the path to the root" },
      { lumo::VesselTreeData::SubtreeActivation, "everything downstream" },
    };
    const auto & mode = modes[keySymbol[0] - '1'];
    setActivationMode(mode.first, mode.second);
  }
  else if (keySymbol == "x" && data)
  {
    label("Hidden", [](lumo::VesselTreeData & d) { d.SetVisibilityForActive(false, 0); });
  }
  else if (keySymbol == "v" && data)
  {
    for (int type = 0; type <= 4; ++type)
    {
      data->SetVisibilityForType(type, true, 0);
    }
    data->TopologyModified();
    say("All vessels shown");
  }
  else if (keySymbol == "t")
  {
    // Tubes, centre lines and, with a vessel mask, its coloured surface, in turn.
    const std::string now = treeDrawing();
    const std::string next =
      now == "tubes" ? "centre lines" : (now == "centre lines" && m_VesselSurface ? "vessel surface" : "tubes");
    for (const auto & node : m_Scene.trees)
    {
      node->SetBoolProperty("Render skeleton", next == "centre lines");
      if (m_VesselSurface)
      {
        node->SetBoolProperty("Render vessel surface", next == "vessel surface");
      }
    }
    say(next == "tubes" ? "Tubes"
                        : (next == "centre lines" ? "Centre lines" : "Vessel surface, coloured by the nearest vessel"));
  }
  else if (keySymbol == "z" || keySymbol == "y")
  {
    auto * undo = lumo::UndoController::GetInstance();
    const bool isUndo = keySymbol == "z";
    const auto descriptions = isUndo ? undo->GetUndoDescriptions() : undo->GetRedoDescriptions();
    if (descriptions.empty())
    {
      say(isUndo ? "Nothing to undo" : "Nothing to redo");
    }
    else
    {
      isUndo ? undo->Undo() : undo->Redo();
      say((isUndo ? "Undone: " : "Redone: ") + descriptions.front());
      if (m_Scene.plane && m_Scene.plane->GetMTime() != m_PlaneTime)
      {
        m_PlaneEdited = true;
        m_Selected = std::min<int>(m_Selected, static_cast<int>(m_Scene.plane->GetNumberOfControlPoints()) - 1);
        planeChanged((isUndo ? "Undone: " : "Redone: ") + descriptions.front());
      }
    }
  }
  else if (keySymbol == "s" && !shift)
  {
    if (std::find(m_Edited.begin(), m_Edited.end(), true) == m_Edited.end() && !m_PlaneEdited)
    {
      say("No changes to save");
    }
    else if (m_PlaneEdited && !m_Options.plane.empty() &&
             std::filesystem::absolute(planeFile()) == std::filesystem::absolute(m_Options.plane))
    {
      say("Saving would overwrite " + m_Options.plane + ": press S twice to do so");
    }
    else
    {
      save(false);
    }
  }
  else if (keySymbol == "S" || (keySymbol == "s" && shift))
  {
    if (confirmOverwrite)
    {
      save(true);
    }
    else
    {
      m_ConfirmOverwrite = true;
      say(m_Scene.sceneFiles.empty()
            ? "Press S again to overwrite " +
                std::string(m_Scene.trees.size() == 1 ? "the original file" : "the original files")
            : "Press S again to write back " + m_Scene.sceneFiles.front() +
                (m_Scene.sceneFiles.size() > 1 ? " and the other scenes" : ""));
    }
  }
  else if (keySymbol == "Tab" && !m_Scene.trees.empty())
  {
    m_ActiveTree = (m_ActiveTree + 1) % m_Scene.trees.size();
    lumo::YetAnotherVesselTreeInteractor::SetActiveVesselTree(m_Scene.trees[m_ActiveTree]);
    say("Active tree: " + m_Scene.treeFiles[m_ActiveTree]);
  }
  else if (keySymbol == "o")
  {
    placeDefaultPlane();
  }
  else if ((keySymbol == "i" || keySymbol == "d") && !m_Scene.plane)
  {
    say("No plane: o places one through the organ's centre");
  }
  else if (keySymbol == "i")
  {
    // The new point lies on the surface under the mouse, so the shape stays as it is until it is dragged.
    const int * at = m_WindowInteractor ? m_WindowInteractor->GetEventPosition() : nullptr;
    vtkRenderer * r = m_Renderer->GetVtkRenderer();
    const auto centre = worldToDisplay(r, m_Scene.plane->GetCenter());
    const lumo::Point3D under = at ? displayToWorld(r, at[0], at[1], centre[2]) : m_Scene.plane->GetCenter();
    try
    {
      m_Scene.plane->AddControlPoint(m_Scene.plane->ProjectOntoSurface(under));
      m_PlaneEdited = true;
      m_Selected = static_cast<int>(m_Scene.plane->GetNumberOfControlPoints()) - 1;
      planeChanged("Added control point " + std::to_string(m_Selected + 1));
    }
    catch (const itk::ExceptionObject & e)
    {
      say(std::string("Not added: ") + e.GetDescription());
    }
  }
  else if (keySymbol == "d")
  {
    if (m_Selected < 0)
    {
      say("Grab a control point first, then d removes it");
    }
    else
    {
      try
      {
        m_Scene.plane->RemoveControlPoint(static_cast<unsigned int>(m_Selected));
        const int removed = m_Selected;
        m_Selected = -1;
        m_PlaneEdited = true;
        planeChanged("Removed control point " + std::to_string(removed + 1));
      }
      catch (const itk::ExceptionObject & e)
      {
        say(std::string("Not removed: ") + e.GetDescription());
      }
    }
  }
  else if (keySymbol == "c")
  {
    setView(*m_Renderer, m_Options.view);
  }
  else if (keySymbol == "question" || keySymbol == "F11")
  {
    m_Help->SetVisibility(!m_Help->GetVisibility());
  }
  else if (keySymbol == "q" || keySymbol == "Escape")
  {
    const bool unsaved = std::find(m_Edited.begin(), m_Edited.end(), true) != m_Edited.end() || m_PlaneEdited;
    if (unsaved && !confirmQuit)
    {
      m_ConfirmQuit = true;
      say("Unsaved changes: press q again to quit without saving, s to save");
    }
    else
    {
      m_Quit = true;
      if (m_WindowInteractor)
      {
        m_WindowInteractor->TerminateApp();
      }
    }
  }
  redraw();
}
} // namespace arbo
