// The point set writer of save dialogs.

#include "lumoPointSetWriter.h"

#include "lumoPointSet.h"
#include "lumoPointSetIO.h"

namespace lumo
{
void
PointSetWriter::SetInput(PointSet * pointSet)
{
  this->SetInputData(pointSet);
}

PointSet *
PointSetWriter::GetInput()
{
  return dynamic_cast<PointSet *>(this->GetInputData());
}

std::string
PointSetWriter::GetDefaultFilename() const
{
  return "PointSet.mps";
}

std::string
PointSetWriter::GetFileDialogPattern() const
{
  return "Point sets (*.mps)";
}

std::string
PointSetWriter::GetDefaultExtension() const
{
  return ".mps";
}

std::vector<std::string>
PointSetWriter::GetPossibleFileExtensions() const
{
  return { ".mps" };
}

bool
PointSetWriter::CanWriteBaseDataType(const BaseData * data) const
{
  return dynamic_cast<const PointSet *>(data) != nullptr;
}

void
PointSetWriter::DoWrite(BaseData * data)
{
  if (this->CanWriteBaseDataType(data))
  {
    this->SetInputData(data);
    this->Write();
  }
}

void
PointSetWriter::GenerateData()
{
  lumo::WritePointSetFile(this->GetInput(), m_FileName);
}
} // namespace lumo
