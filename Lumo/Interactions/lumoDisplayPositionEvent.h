#ifndef lumoDisplayPositionEvent_h
#define lumoDisplayPositionEvent_h

#include "lumoCommon.h"
#include "lumoEvent.h"

namespace lumo
{
/** A position on the display, in pixels. */
using Point2D = itk::Point<ScalarType, 2>;

/** A raw event at a position of the render window: the display position in pixels (origin and axis direction as
 *  the sending renderer defines them) and, once someone (the renderer, a picker) has computed it, the world
 *  position in millimetres. HasWorldPosition() tells whether it was set; until then it is (0, 0, 0). */
class DisplayPositionEvent : public Event
{
public:
  DisplayPositionEvent(BaseRenderer * sender,
                       EventType type,
                       MouseButton button,
                       ModifierMask modifiers,
                       int key,
                       const Point2D & displayPosition)
    : Event(sender, type, button, modifiers, key)
    , m_DisplayPosition(displayPosition)
  {
    m_WorldPosition.Fill(0.0);
  }

  const Point2D &
  GetDisplayPosition() const
  {
    return m_DisplayPosition;
  }
  void
  SetDisplayPosition(const Point2D & displayPosition)
  {
    m_DisplayPosition = displayPosition;
  }

  /** The world position (mm); (0, 0, 0) until set. */
  const Point3D &
  GetWorldPosition() const
  {
    return m_WorldPosition;
  }
  void
  SetWorldPosition(const Point3D & worldPosition)
  {
    m_WorldPosition = worldPosition;
    m_HasWorldPosition = true;
  }
  bool
  HasWorldPosition() const
  {
    return m_HasWorldPosition;
  }

private:
  Point2D m_DisplayPosition;
  Point3D m_WorldPosition;
  bool m_HasWorldPosition{ false };
};
} // namespace lumo

#endif
