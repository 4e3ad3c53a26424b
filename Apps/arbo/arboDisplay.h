#ifndef arboDisplay_h
#define arboDisplay_h

#include "arboCommands.h"

#include <CLI/CLI.hpp>

#include <string>

namespace arbo
{
/** Reads "WIDTHxHEIGHT" (16 to 8192 each); throws arbo::Error otherwise. */
void
parseSize(const std::string & text, int & width, int & height);
/** The same check as a command-line validator (bad usage, exit status 2). */
CLI::Validator
sizeValidator();

/** Whether the command must run elsewhere because there is no X display. Then, when xvfb-run exists and this is
 *  not already the re-run, the command line runs again under "xvfb-run -a" and `status` is its exit status;
 *  without xvfb-run (or on the re-run) an arbo::Error says why. False when a display is there. */
bool
needsVirtualDisplay(const Context & context, int & status);
} // namespace arbo

#endif
