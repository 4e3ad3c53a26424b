#ifndef lumoSurfaceIO_h
#define lumoSurfaceIO_h

#include "lumoFileWriterWithInformation.h"
#include "lumoSurface.h"

#include <string>

namespace lumo
{
/** Whether the name ends (case-insensitively) in .vtp, .vtk, .stl or .obj. */
bool
CanReadSurfaceFile(const std::string & fileName);
/** Whether the name ends (case-insensitively) in .vtp, .vtk or .stl. */
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
 *  polygons as triangles). Throws itk::ExceptionObject ("Could not write surface '<file>': ...") for a null surface,
 *  a step without poly data, an unknown extension or a failed write. */
void
WriteSurfaceFile(const Surface * surface, const std::string & fileName, TimeStepType t = 0);

/** The surface writer offered to save dialogs: .vtp by default; also .vtk and .stl. */
class SurfaceWriter : public FileWriterWithInformation
{
public:
  lumoClassMacro(SurfaceWriter, FileWriterWithInformation);
  itkFactorylessNewMacro(Self);

  void
  SetInput(Surface * surface);
  Surface *
  GetInput();

  /** "Surface.vtp" */
  std::string
  GetDefaultFilename() const override;
  /** "Surface (*.vtp *.vtk *.stl)" */
  std::string
  GetFileDialogPattern() const override;
  /** ".vtp" */
  std::string
  GetDefaultExtension() const override;
  /** ".vtp", ".vtk", ".stl" */
  std::vector<std::string>
  GetPossibleFileExtensions() const override;
  bool
  CanWriteBaseDataType(const BaseData * data) const override;
  void
  DoWrite(BaseData * data) override;

protected:
  SurfaceWriter() = default;
  ~SurfaceWriter() override = default;
  void
  GenerateData() override;
};
} // namespace lumo

#endif
