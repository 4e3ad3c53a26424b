#ifndef lumoRenderingManager_h
#define lumoRenderingManager_h

#include <itkObjectFactory.h>

#include <vector>

class vtkRenderWindow;

namespace lumo
{
/** The application's render windows, and the requests to redraw them.
 *
 *  Windows are kept in the order in which they were added (the order in which they are drawn). A request marks a
 *  window; ExecutePendingRequests draws each marked window once through its lumo::BaseRenderer, so that many
 *  requests between two frames cost one frame. The application calls it from its event loop (a timer in the
 *  viewer); ForceImmediateUpdate draws at once. */
class RenderingManager : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(RenderingManager);

  using Self = RenderingManager;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(RenderingManager, itk::Object);

  /** The process's manager, made on first use. */
  static RenderingManager *
  GetInstance();

  /** Adds a window (again: nothing happens). */
  void
  AddRenderWindow(vtkRenderWindow * window);
  /** Removes a window and its pending request. */
  void
  RemoveRenderWindow(vtkRenderWindow * window);
  bool
  IsRenderWindowRegistered(vtkRenderWindow * window) const;
  const std::vector<vtkRenderWindow *> &
  GetAllRegisteredRenderWindows() const
  {
    return m_RenderWindows;
  }

  /** Marks a registered window for redrawing (unknown windows are ignored). */
  void
  RequestUpdate(vtkRenderWindow * window);
  void
  RequestUpdateAll();
  bool
  IsUpdatePending(vtkRenderWindow * window) const;
  /** Draws the marked windows, in registration order; returns how many were drawn. */
  unsigned int
  ExecutePendingRequests();

  /** Draws a window now (through its renderer when it has one) and clears its request. */
  void
  ForceImmediateUpdate(vtkRenderWindow * window);
  void
  ForceImmediateUpdateAll();

protected:
  RenderingManager() = default;
  ~RenderingManager() override = default;

  itkNewMacro(Self);

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  std::vector<vtkRenderWindow *> m_RenderWindows;
  std::vector<bool> m_Pending;
};
} // namespace lumo

#endif
