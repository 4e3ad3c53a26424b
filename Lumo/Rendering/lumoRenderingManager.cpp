#include "lumoRenderingManager.h"

#include "lumoBaseRenderer.h"

#include <vtkRenderWindow.h>
#include <vtkRenderer.h>

#include <algorithm>

namespace lumo
{
RenderingManager *
RenderingManager::GetInstance()
{
  static const Pointer instance = Self::New();
  return instance;
}

void
RenderingManager::AddRenderWindow(vtkRenderWindow * window)
{
  if (window == nullptr || this->IsRenderWindowRegistered(window))
  {
    return;
  }
  m_RenderWindows.push_back(window);
  m_Pending.push_back(false);
  this->Modified();
}

void
RenderingManager::RemoveRenderWindow(vtkRenderWindow * window)
{
  const auto found = std::find(m_RenderWindows.begin(), m_RenderWindows.end(), window);
  if (found == m_RenderWindows.end())
  {
    return;
  }
  m_Pending.erase(m_Pending.begin() + (found - m_RenderWindows.begin()));
  m_RenderWindows.erase(found);
  this->Modified();
}

bool
RenderingManager::IsRenderWindowRegistered(vtkRenderWindow * window) const
{
  return std::find(m_RenderWindows.begin(), m_RenderWindows.end(), window) != m_RenderWindows.end();
}

void
RenderingManager::RequestUpdate(vtkRenderWindow * window)
{
  const auto found = std::find(m_RenderWindows.begin(), m_RenderWindows.end(), window);
  if (found != m_RenderWindows.end())
  {
    m_Pending[found - m_RenderWindows.begin()] = true;
  }
}

void
RenderingManager::RequestUpdateAll()
{
  std::fill(m_Pending.begin(), m_Pending.end(), true);
}

bool
RenderingManager::IsUpdatePending(vtkRenderWindow * window) const
{
  const auto found = std::find(m_RenderWindows.begin(), m_RenderWindows.end(), window);
  return found != m_RenderWindows.end() && m_Pending[found - m_RenderWindows.begin()];
}

unsigned int
RenderingManager::ExecutePendingRequests()
{
  unsigned int drawn = 0;
  // Drawing may add or remove windows (a renderer made by a mapper); index-based so that this stays valid.
  for (std::size_t i = 0; i < m_RenderWindows.size(); ++i)
  {
    if (m_Pending[i])
    {
      m_Pending[i] = false;
      this->ForceImmediateUpdate(m_RenderWindows[i]);
      ++drawn;
    }
  }
  return drawn;
}

void
RenderingManager::ForceImmediateUpdate(vtkRenderWindow * window)
{
  const auto found = std::find(m_RenderWindows.begin(), m_RenderWindows.end(), window);
  if (found != m_RenderWindows.end())
  {
    m_Pending[found - m_RenderWindows.begin()] = false;
  }
  if (BaseRenderer * renderer = BaseRenderer::GetInstance(window))
  {
    renderer->Render();
  }
  else if (window != nullptr)
  {
    window->Render();
  }
}

void
RenderingManager::ForceImmediateUpdateAll()
{
  const auto windows = m_RenderWindows;
  for (vtkRenderWindow * window : windows)
  {
    this->ForceImmediateUpdate(window);
  }
}

void
RenderingManager::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "RenderWindows: " << m_RenderWindows.size() << '\n';
}
} // namespace lumo
