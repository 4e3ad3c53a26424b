#ifndef FatalExit_h
#define FatalExit_h

#include <cstdlib>
#include <iostream>
#include <string>

/** Ends the process the way the extraction classes always have: the message and a line end on standard output,
 *  then exit status 1. Callers guard against reaching it; nothing is thrown, so no caller has to unwind. */
[[noreturn]] inline void
fatalExit(const std::string & message)
{
  std::cout << message << std::endl;
  std::exit(1);
}

#endif
