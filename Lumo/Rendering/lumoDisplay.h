#ifndef lumoDisplay_h
#define lumoDisplay_h

#include <string>

namespace lumo
{
/** Whether an X display can be opened. VTK's X render window aborts the process when it cannot connect to a
 *  display, so everything that is about to create a window asks here first and reports `why` to the user.
 *  On failure `why` (when given) receives a sentence naming the DISPLAY value that was tried. */
bool
IsDisplayAvailable(std::string * why = nullptr);
} // namespace lumo

#endif
