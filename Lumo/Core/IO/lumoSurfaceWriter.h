#ifndef lumoSurfaceWriter_h
#define lumoSurfaceWriter_h

#include "lumoFileWriterWithInformation.h"
#include "lumoSurface.h"

#include <string>
#include <vector>

namespace lumo
{
/** The surface writer offered to save dialogs: .vtp by default; also .vtk and .stl. */
class SurfaceWriter : public FileWriterWithInformation
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SurfaceWriter);

  using Self = SurfaceWriter;
  using Superclass = FileWriterWithInformation;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(SurfaceWriter, FileWriterWithInformation);
  itkNewMacro(Self);

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
