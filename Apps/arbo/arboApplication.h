#ifndef arboApplication_h
#define arboApplication_h

#include <iosfwd>

namespace arbo
{
/** Runs the arbo command line: parses the arguments, runs the chosen command and reports failures.
 *  Returns the exit status: 0 success, 1 bad input or failed work, 2 bad usage. */
int
runApplication(int argc, const char * const * argv, std::ostream & out, std::ostream & err);
} // namespace arbo

#endif
