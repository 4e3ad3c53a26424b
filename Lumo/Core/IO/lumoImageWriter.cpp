// The image writer of save dialogs.

#include "lumoImageWriter.h"

#include "lumoImageIO.h"

namespace lumo
{
void
ImageWriter::SetInput(Image * image)
{
  this->SetInputData(image);
}

Image *
ImageWriter::GetInput()
{
  return dynamic_cast<Image *>(this->GetInputData());
}

std::string
ImageWriter::GetDefaultFilename() const
{
  return "Image.nrrd";
}

std::string
ImageWriter::GetFileDialogPattern() const
{
  return "Image (*.nrrd *.nii *.nii.gz *.mhd *.mha)";
}

std::string
ImageWriter::GetDefaultExtension() const
{
  return ".nrrd";
}

std::vector<std::string>
ImageWriter::GetPossibleFileExtensions() const
{
  return { ".nrrd", ".nii", ".nii.gz", ".mhd", ".mha" };
}

bool
ImageWriter::CanWriteBaseDataType(const BaseData * data) const
{
  return dynamic_cast<const Image *>(data) != nullptr;
}

void
ImageWriter::DoWrite(BaseData * data)
{
  if (this->CanWriteBaseDataType(data))
  {
    this->SetInputData(data);
    this->Write();
  }
}

void
ImageWriter::GenerateData()
{
  lumo::WriteImageFile(this->GetInput(), m_FileName, m_UseCompression);
}

void
ImageWriter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "UseCompression: " << (m_UseCompression ? "true" : "false") << std::endl;
}
} // namespace lumo
