#ifndef lumoPointSetIO_h
#define lumoPointSetIO_h

// The point set file (.mps): XML, UTF-8, written and read with tinyxml2.
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <LumoPointSet version="1">
//     <TimeStep index="0">
//       <Point id="0" x="12.5" y="-3" z="40.25"/>
//       <Point id="4" x="1" y="2" z="3"/>
//     </TimeStep>
//   </LumoPointSet>
//
// Rules (a file breaking any of them is refused as a whole):
// - the root element is "LumoPointSet" with the attribute version="1" and no other attribute;
// - its children are "TimeStep" elements with exactly the attribute "index", a non-negative decimal integer
//   below 100000, each index at most once; steps may be missing (they are empty) and the point set has
//   max index + 1 time steps (1 for a file without steps);
// - the children of a "TimeStep" are "Point" elements with exactly the attributes "id" (non-negative decimal
//   integer that fits 32 bits, each id at most once per step) and "x", "y", "z" (finite decimal numbers, C
//   syntax with a point, no surrounding text);
// - no other elements, and no text other than white space.
// Numbers are written in the shortest form that reads back to the same double.

#include "lumoFileWriterWithInformation.h"
#include "lumoPointSet.h"
#include "lumoPointSetWriter.h"

#include <string>

namespace lumo
{
/** Whether the name ends (case-insensitively) in .mps. */
bool
CanReadPointSetFile(const std::string & fileName);

/** Reads a .mps file. Throws itk::ExceptionObject:
 *    "Could not read point set '<file>': the file does not exist"
 *    "Could not read point set '<file>': not well-formed XML (<tinyxml2 error>)"
 *    "Malformed point set file '<file>', line <n>: <what is wrong>" */
PointSet::Pointer
ReadPointSetFile(const std::string & fileName);

/** Writes every time step (empty steps too). Throws itk::ExceptionObject ("Could not write point set '<file>'...")
 *  for a null point set or a failed write. */
void
WritePointSetFile(const PointSet * pointSet, const std::string & fileName);

} // namespace lumo

#endif
