#ifndef lumoSurfaceIO_h
#define lumoSurfaceIO_h

#include "lumoFileWriterWithInformation.h"
#include "lumoSurface.h"
#include "lumoSurfaceWriter.h"

#include <string>

namespace lumo
{
/** Whether the name ends (case-insensitively) in .vtp, .vtk, .stl or .obj. */
bool
CanReadSurfaceFile(const std::string & fileName);
/** Whether the name ends (case-insensitively) in .vtp, .vtk, .stl or .obj. */
bool
CanWriteSurfaceFile(const std::string & fileName);

/** Reads a surface (one time step) with VTK's readers: .vtp XML poly data, .vtk legacy poly data, .stl, .obj.
 *  Throws itk::ExceptionObject with these messages (VTK's error text is appended after ": " where VTK gives one):
 *    "Could not read surface '<file>': the file does not exist"
 *    "Could not read surface '<file>': unknown surface file extension"
 *    "Could not read surface '<file>': the file is not VTK poly data"
 *    "Could not read surface '<file>': VTK reader failed" */
Surface::Pointer
ReadSurfaceFile(const std::string & fileName);

/** Writes the poly data of a time step: .vtp (binary XML, compressed), .vtk (legacy binary), .stl (binary, the
 *  polygons as triangles), .obj (Wavefront text with the point normals, if any). Throws itk::ExceptionObject ("Could
 * not write surface '<file>': ...") for a null surface, a step without poly data, an unknown extension or a failed
 * write. */
void
WriteSurfaceFile(const Surface * surface, const std::string & fileName, TimeStepType t = 0);

} // namespace lumo

#endif
