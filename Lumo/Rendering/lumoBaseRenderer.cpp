#include "lumoBaseRenderer.h"

#include "lumoDisplay.h"
#include "lumoMapper.h"
#include "lumoVtkMapper3D.h"

#include <vtkProp.h>
#include <vtkRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkCellPicker.h>

#include <set>

namespace lumo
{
namespace
{
// Live renderers. Renderers are made and destroyed on the user-interface thread only.
std::map<vtkRenderWindow *, BaseRenderer *> &
RenderersByWindow()
{
  static std::map<vtkRenderWindow *, BaseRenderer *> renderers;
  return renderers;
}
std::map<std::string, BaseRenderer *> &
RenderersByName()
{
  static std::map<std::string, BaseRenderer *> renderers;
  return renderers;
}
unsigned long g_RendererCounter = 0;
} // namespace

BaseRenderer::BaseRenderer()
  : m_VtkRenderer(vtkSmartPointer<vtkRenderer>::New())
  , m_RenderWindow(vtkSmartPointer<vtkRenderWindow>::New())
{
  m_RenderWindow->AddRenderer(m_VtkRenderer);
  do
  {
    m_Name = "lumo-renderer-" + std::to_string(++g_RendererCounter);
  } while (RenderersByName().count(m_Name) != 0);
  RenderersByName()[m_Name] = this;
  RenderersByWindow()[m_RenderWindow.GetPointer()] = this;
}

BaseRenderer::~BaseRenderer()
{
  RenderersByName().erase(m_Name);
  RenderersByWindow().erase(m_RenderWindow.GetPointer());
  for (auto & entry : m_Props)
  {
    m_VtkRenderer->RemoveViewProp(entry.second);
  }
}

BaseRenderer *
BaseRenderer::GetInstance(vtkRenderWindow * window)
{
  const auto found = RenderersByWindow().find(window);
  return found == RenderersByWindow().end() ? nullptr : found->second;
}

BaseRenderer *
BaseRenderer::GetByName(const std::string & name)
{
  const auto found = RenderersByName().find(name);
  return found == RenderersByName().end() ? nullptr : found->second;
}

void
BaseRenderer::SetName(const std::string & name)
{
  if (name == m_Name)
  {
    return;
  }
  if (name.empty() || RenderersByName().count(name) != 0)
  {
    throw itk::ExceptionObject(
      __FILE__, __LINE__, "A renderer named \"" + name + "\" exists already or the name is empty", ITK_LOCATION);
  }
  RenderersByName().erase(m_Name);
  m_Name = name;
  RenderersByName()[m_Name] = this;
  this->Modified();
}

void
BaseRenderer::SetDataStorage(DataStorage * storage)
{
  if (m_DataStorage.GetPointer() == storage)
  {
    return;
  }
  m_DataStorage = storage;
  this->Modified();
}

Mapper *
BaseRenderer::GetMapperOf(const DataNode * node) const
{
  return node ? dynamic_cast<Mapper *>(node->GetMapper(m_MapperID)) : nullptr;
}

void
BaseRenderer::Update()
{
  std::set<const DataNode *> present;
  if (m_DataStorage)
  {
    const auto nodes = m_DataStorage->GetAll();
    for (const auto & node : nodes->CastToSTLConstContainer())
    {
      Mapper * mapper = this->GetMapperOf(node);
      if (mapper == nullptr)
      {
        continue;
      }
      mapper->Update(this);
      present.insert(node.GetPointer());
      auto * vtkMapper = dynamic_cast<VtkMapper3D *>(mapper);
      vtkProp * prop = vtkMapper ? vtkMapper->GetVtkProp(this) : nullptr;
      auto & known = m_Props[node.GetPointer()];
      if (known.GetPointer() != prop)
      {
        if (known)
        {
          m_VtkRenderer->RemoveViewProp(known);
        }
        known = prop;
        if (prop)
        {
          m_VtkRenderer->AddViewProp(prop);
        }
      }
    }
  }
  for (auto entry = m_Props.begin(); entry != m_Props.end();)
  {
    if (present.count(entry->first) == 0)
    {
      if (entry->second)
      {
        m_VtkRenderer->RemoveViewProp(entry->second);
      }
      entry = m_Props.erase(entry);
    }
    else
    {
      ++entry;
    }
  }
}

void
BaseRenderer::Render()
{
  // VTK's X window ends the process when it cannot reach a display (off-screen frames too): check before the
  // window is made.
  std::string why;
  if (m_RenderWindow->GetGenericWindowId() == nullptr && !IsDisplayAvailable(&why))
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "Cannot draw the renderer \"" + m_Name + "\": " + why, ITK_LOCATION);
  }
  this->Update();
  m_RenderWindow->Render();
}

bool
BaseRenderer::PickWorldPoint(double displayX, double displayY, double world[3]) const
{
  // A geometric pick rather than the depth buffer: the depth buffer of an off-screen frame cannot be read back
  // reliably on every OpenGL driver, and the geometry gives the exact surface point.
  auto picker = vtkSmartPointer<vtkCellPicker>::New();
  picker->SetTolerance(0.0005);
  if (picker->Pick(displayX, displayY, 0.0, m_VtkRenderer) == 0)
  {
    return false;
  }
  picker->GetPickPosition(world);
  return true;
}

void
BaseRenderer::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Name: " << m_Name << '\n';
  os << indent << "MapperID: " << m_MapperID << '\n';
  os << indent << "DataStorage: " << m_DataStorage.GetPointer() << '\n';
  os << indent << "Props: " << m_Props.size() << '\n';
}
} // namespace lumo
