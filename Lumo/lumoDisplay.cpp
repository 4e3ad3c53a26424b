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
  // Opening and closing a connection is the only reliable test: a stale DISPLAY (a finished Xvfb) is common.
  Display * display = XOpenDisplay(name);
  if (display == nullptr)
  {
    if (why)
    {
      *why = std::string("no X display: cannot open DISPLAY=") + name;
    }
    return false;
  }
  XCloseDisplay(display);
  return true;
}
} // namespace lumo
