#include "lumoDisplay.h"

#include <X11/Xlib.h>

#include <cstdlib>

namespace lumo
{
bool
IsDisplayAvailable(std::string * why)
{
  const char * name = std::getenv("DISPLAY");
  if (name == nullptr || *name == '\0')
  {
    if (why)
    {
      *why = "no X display: DISPLAY is not set";
    }
    return false;
  }
  // Opening a connection is the only reliable test: a stale DISPLAY (a finished Xvfb) is common. The connection
  // that succeeded stays open for the life of the process: an X server started without -noreset resets when its
  // last client leaves, and a window opened during that reset fails (VTK then ends the process).
  static std::string openedName;
  static Display * opened = nullptr;
  if (opened != nullptr && openedName == name)
  {
    return true;
  }
  Display * display = XOpenDisplay(name);
  if (display == nullptr)
  {
    if (why)
    {
      *why = std::string("no X display: cannot open DISPLAY=") + name;
    }
    return false;
  }
  if (opened != nullptr)
  {
    XCloseDisplay(opened);
  }
  opened = display;
  openedName = name;
  return true;
}
} // namespace lumo
