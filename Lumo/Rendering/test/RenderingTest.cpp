#include "lumoBaseData.h"
#include "lumoBaseRenderer.h"
#include "lumoDataNode.h"
#include "lumoDataStorage.h"
#include "lumoDisplay.h"
#include "lumoRenderingManager.h"
#include "lumoSurface.h"
#include "lumoSurfaceVtkMapper3D.h"

#include <gtest/gtest.h>

#include <vtkActor.h>
#include <vtkCallbackCommand.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkSphereSource.h>

#include <cstdlib>

using namespace lumo;

namespace
{
/** Counts what Update asks of a mapper. */
class CountingMapper : public VtkMapper3D
{
public:
  using Self = CountingMapper;
  using Pointer = itk::SmartPointer<Self>;
  itkNewMacro(Self);
  itkTypeMacro(CountingMapper, VtkMapper3D);

  vtkProp *
  GetVtkProp(BaseRenderer *) override
  {
    return m_Actor;
  }
  int data{ 0 };
  int perRenderer{ 0 };
  vtkSmartPointer<vtkActor> m_Actor = vtkSmartPointer<vtkActor>::New();

protected:
  void
  GenerateData() override
  {
    ++data;
  }
  void
  GenerateDataForRenderer(BaseRenderer *) override
  {
    ++perRenderer;
  }
};

DataNode::Pointer
surfaceNode()
{
  auto sphere = vtkSmartPointer<vtkSphereSource>::New();
  sphere->Update();
  auto surface = Surface::New();
  surface->SetVtkPolyData(sphere->GetOutput());
  auto node = DataNode::New();
  node->SetData(surface);
  auto mapper = SurfaceVtkMapper3D::New();
  mapper->SetDataNode(node);
  node->SetMapper(DataNode::Standard3D, mapper);
  return node;
}

#define REQUIRE_DISPLAY()                                                                                              \
  do                                                                                                                   \
  {                                                                                                                    \
    std::string why;                                                                                                   \
    if (!IsDisplayAvailable(&why))                                                                                     \
    {                                                                                                                  \
      GTEST_SKIP() << why;                                                                                             \
    }                                                                                                                  \
  } while (false)
} // namespace

TEST(BaseRenderer, KnownByWindowAndUniqueName)
{
  auto a = BaseRenderer::New();
  auto b = BaseRenderer::New();
  EXPECT_NE(a->GetName(), b->GetName());
  EXPECT_EQ(BaseRenderer::GetInstance(a->GetRenderWindow()), a.GetPointer());
  EXPECT_EQ(BaseRenderer::GetByName(b->GetName()), b.GetPointer());
  EXPECT_EQ(a->GetMapperID(), DataNode::Standard3D);
  a->SetName("main view");
  EXPECT_EQ(BaseRenderer::GetByName("main view"), a.GetPointer());
  try
  {
    b->SetName("main view");
    FAIL() << "a second renderer took a name in use";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_STREQ(e.GetDescription(), "A renderer named \"main view\" exists already or the name is empty");
  }
  EXPECT_EQ(BaseRenderer::GetByName("main view"), a.GetPointer());
  vtkRenderWindow * window = a->GetRenderWindow();
  a = nullptr;
  EXPECT_EQ(BaseRenderer::GetByName("main view"), nullptr);
  EXPECT_EQ(BaseRenderer::GetInstance(window), nullptr);
}

TEST(BaseRenderer, WithoutDisplayDrawingThrowsInsteadOfEndingTheProcess)
{
  const char * display = std::getenv("DISPLAY");
  const std::string saved = display ? display : "";
  ::unsetenv("DISPLAY");
  auto renderer = BaseRenderer::New();
  renderer->SetName("no screen");
  try
  {
    renderer->Render();
    ADD_FAILURE() << "drawing without a display did not throw";
  }
  catch (const itk::ExceptionObject & e)
  {
    EXPECT_STREQ(e.GetDescription(), "Cannot draw the renderer \"no screen\": no X display: DISPLAY is not set");
  }
  if (display)
  {
    ::setenv("DISPLAY", saved.c_str(), 1);
  }
}

TEST(BaseRenderer, PropsFollowTheNodesOfTheStorage)
{
  auto storage = DataStorage::New();
  auto renderer = BaseRenderer::New();
  renderer->SetDataStorage(storage);
  auto first = surfaceNode();
  auto second = DataNode::New();
  second->SetData(Surface::New());
  auto counting = CountingMapper::New();
  counting->SetDataNode(second);
  second->SetMapper(DataNode::Standard3D, counting);
  storage->Add(first);
  storage->Add(second);
  renderer->Update();
  EXPECT_EQ(renderer->GetVtkRenderer()->GetViewProps()->GetNumberOfItems(), 2);
  EXPECT_EQ(counting->data, 1);
  EXPECT_EQ(counting->perRenderer, 1);

  // Nothing changed: only the per-renderer part runs again.
  renderer->Update();
  EXPECT_EQ(counting->data, 1);
  EXPECT_EQ(counting->perRenderer, 2);
  second->GetData()->Modified();
  renderer->Update();
  EXPECT_EQ(counting->data, 2);
  EXPECT_EQ(counting->GetGenerateDataCount(), 2u);

  storage->Remove(first);
  renderer->Update();
  EXPECT_EQ(renderer->GetVtkRenderer()->GetViewProps()->GetNumberOfItems(), 1);
  EXPECT_TRUE(renderer->GetVtkRenderer()->HasViewProp(counting->m_Actor));

  // "visible" of this renderer hides a surface in this renderer only.
  storage->Add(first);
  first->SetVisibility(false, renderer->GetName());
  renderer->Update();
  auto * actor = dynamic_cast<SurfaceVtkMapper3D *>(first->GetMapper(DataNode::Standard3D))->GetVtkProp(renderer);
  EXPECT_FALSE(actor->GetVisibility());
  first->SetVisibility(true, renderer->GetName());
  renderer->Update();
  EXPECT_TRUE(actor->GetVisibility());
}

TEST(RenderingManager, WindowsInOrderAndOneFramePerRequest)
{
  REQUIRE_DISPLAY();
  auto * manager = RenderingManager::GetInstance();
  auto a = BaseRenderer::New();
  auto b = BaseRenderer::New();
  for (auto * r : { a.GetPointer(), b.GetPointer() })
  {
    r->GetRenderWindow()->SetSize(64, 64);
    r->GetRenderWindow()->OffScreenRenderingOn();
  }
  manager->AddRenderWindow(b->GetRenderWindow());
  manager->AddRenderWindow(a->GetRenderWindow());
  manager->AddRenderWindow(b->GetRenderWindow());
  EXPECT_EQ(manager->GetAllRegisteredRenderWindows(),
            (std::vector<vtkRenderWindow *>{ b->GetRenderWindow(), a->GetRenderWindow() }));

  manager->RequestUpdate(a->GetRenderWindow());
  manager->RequestUpdate(a->GetRenderWindow());
  manager->RequestUpdate(nullptr);
  EXPECT_TRUE(manager->IsUpdatePending(a->GetRenderWindow()));
  EXPECT_FALSE(manager->IsUpdatePending(b->GetRenderWindow()));
  int frames[2] = { 0, 0 };
  for (int i = 0; i < 2; ++i)
  {
    auto count = vtkSmartPointer<vtkCallbackCommand>::New();
    count->SetCallback([](vtkObject *, unsigned long, void * frame, void *) { ++*static_cast<int *>(frame); });
    count->SetClientData(&frames[i]);
    (i == 0 ? a : b)->GetRenderWindow()->AddObserver(vtkCommand::EndEvent, count);
  }
  EXPECT_EQ(manager->ExecutePendingRequests(), 1u);
  EXPECT_FALSE(manager->IsUpdatePending(a->GetRenderWindow()));
  EXPECT_EQ(frames[0], 1);
  EXPECT_EQ(frames[1], 0);
  EXPECT_EQ(manager->ExecutePendingRequests(), 0u);
  EXPECT_EQ(frames[0], 1);

  manager->RequestUpdateAll();
  manager->RemoveRenderWindow(b->GetRenderWindow());
  EXPECT_EQ(manager->ExecutePendingRequests(), 1u);
  EXPECT_EQ(frames[0], 2);
  EXPECT_EQ(frames[1], 0);
  manager->RemoveRenderWindow(a->GetRenderWindow());
  EXPECT_TRUE(manager->GetAllRegisteredRenderWindows().empty());
}
