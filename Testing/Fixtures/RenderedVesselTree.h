#ifndef RenderedVesselTree_h
#define RenderedVesselTree_h

#include "lumoBaseRenderer.h"
#include "lumoDataNode.h"
#include "lumoDataStorage.h"
#include "lumoDisplay.h"
#include "lumoVesselTreeData.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"
#include "lumoYetAnotherVesselTreeMapper3D.h"

#include "VesselTestTree.h"

#include <gtest/gtest.h>

#include <vtkCamera.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>

#include <array>
#include <memory>

/** A vessel tree drawn as tubes in a real render window, for the picking and interaction tests. */
namespace vessel_test
{
/** Root 1 along x from (0,0,0) to (40,0,0), diameter 8; children 2 (up to (60,30,0), diameter 4), 3 (down to
 *  (60,-30,0), diameter 4) and 4 (from (40,0,0) out of the plane to (40,0,30), diameter 3); all portal vein. */
inline lumo::VesselTreeData::Pointer
makePickingTree()
{
  auto tree = std::make_unique<LinkedVesselTree>();
  tree->setRoot(makeVessel(1));
  VesselNode * root = tree->getRootNode();
  root->getData()->setPoints({ { 0, 0, 0, 8 }, { 20, 0, 0, 8 }, { 40, 0, 0, 8 } });
  const ar<Vessel> vessels[] = {
    root->getData(), addChild(root, 2)->getData(), addChild(root, 3)->getData(), addChild(root, 4)->getData()
  };
  vessels[1]->setPoints({ { 40, 0, 0, 4 }, { 50, 15, 0, 4 }, { 60, 30, 0, 4 } });
  vessels[2]->setPoints({ { 40, 0, 0, 4 }, { 50, -15, 0, 4 }, { 60, -30, 0, 4 } });
  vessels[3]->setPoints({ { 40, 0, 0, 3 }, { 40, 0, 15, 3 }, { 40, 0, 30, 3 } });
  for (const ar<Vessel> & vessel : vessels)
  {
    vessel->getProperties().setBloodVesselType(2);
  }
  auto data = lumo::VesselTreeData::New();
  data->initialize(ArVesselTree(tree.release()));
  return data;
}

/** Skips the test when no display can be opened (the Xvfb fixture provides one under ctest). */
#define LUMO_REQUIRE_DISPLAY()                                                                                         \
  do                                                                                                                   \
  {                                                                                                                    \
    std::string why;                                                                                                   \
    if (!lumo::IsDisplayAvailable(&why))                                                                               \
    {                                                                                                                  \
      GTEST_SKIP() << why;                                                                                             \
    }                                                                                                                  \
  } while (false)

/** The tree in a 400 x 400 window, looking down the z axis at the whole tree. */
struct RenderedVesselTree
{
  lumo::DataStorage::Pointer storage = lumo::DataStorage::New();
  lumo::DataNode::Pointer node = lumo::DataNode::New();
  lumo::VesselTreeData::Pointer data;
  lumo::YetAnotherVesselTreeMapper3D::Pointer mapper = lumo::YetAnotherVesselTreeMapper3D::New();
  lumo::BaseRenderer::Pointer renderer = lumo::BaseRenderer::New();

  explicit RenderedVesselTree(lumo::VesselTreeData::Pointer tree = makePickingTree())
    : data(std::move(tree))
  {
    node->SetData(data);
    node->SetProperty("VesselTreeLookupTable",
                      lumo::VesselTreeLookupTableProperty::New(lumo::VesselTreeLookupTable::New()));
    mapper->SetDataNode(node);
    node->SetMapper(lumo::DataNode::Standard3D, mapper);
    storage->Add(node);
    renderer->SetDataStorage(storage);
    renderer->GetRenderWindow()->SetSize(400, 400);
    renderer->GetRenderWindow()->OffScreenRenderingOn();
    renderer->GetVtkRenderer()->SetBackground(0, 0, 0);
    renderer->Update();
    vtkCamera * camera = renderer->GetVtkRenderer()->GetActiveCamera();
    camera->SetFocalPoint(30, 0, 0);
    camera->SetPosition(30, 0, 200);
    camera->SetViewUp(0, 1, 0);
    renderer->GetVtkRenderer()->ResetCameraClippingRange();
    renderer->Render();
  }

  /** Display position of a world point. */
  std::array<double, 2>
  project(double x, double y, double z) const
  {
    vtkRenderer * r = renderer->GetVtkRenderer();
    r->SetWorldPoint(x, y, z, 1.0);
    r->WorldToDisplay();
    double display[3];
    r->GetDisplayPoint(display);
    return { display[0], display[1] };
  }
};
} // namespace vessel_test

#endif
