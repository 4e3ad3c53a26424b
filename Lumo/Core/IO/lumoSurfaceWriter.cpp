// The surface writer of save dialogs.

#include "lumoSurfaceWriter.h"

#include "lumoSurface.h"
#include "lumoSurfaceIO.h"

#include <vector>

namespace lumo
{
void
SurfaceWriter::SetInput(Surface * surface)
{
  this->SetInputData(surface);
}

Surface *
SurfaceWriter::GetInput()
{
  return dynamic_cast<Surface *>(this->GetInputData());
}

std::string
SurfaceWriter::GetDefaultFilename() const
{
  return "Surface.vtp";
}

std::string
SurfaceWriter::GetFileDialogPattern() const
{
  return "Surface (*.vtp *.vtk *.stl)";
}

std::string
SurfaceWriter::GetDefaultExtension() const
{
  return ".vtp";
}

std::vector<std::string>
SurfaceWriter::GetPossibleFileExtensions() const
{
  return { ".vtp", ".vtk", ".stl" };
}

bool
SurfaceWriter::CanWriteBaseDataType(const BaseData * data) const
{
  return dynamic_cast<const Surface *>(data) != nullptr;
}

void
SurfaceWriter::DoWrite(BaseData * data)
{
  if (this->CanWriteBaseDataType(data))
  {
    this->SetInputData(data);
    this->Write();
  }
}

void
SurfaceWriter::GenerateData()
{
  lumo::WriteSurfaceFile(this->GetInput(), m_FileName);
}
} // namespace lumo
