#include "lumoVesselTreeFileWriter.h"

#include <fstream>
#include <sstream>
#include <locale>

namespace lumo
{
VesselTreeFileWriter::VesselTreeFileWriter() = default;

VesselTreeFileWriter::~VesselTreeFileWriter() = default;

void
VesselTreeFileWriter::SetInputVesselTree(VesselTreeData * data)
{
  this->SetInputData(data);
}

VesselTreeData *
VesselTreeFileWriter::GetInput()
{
  return dynamic_cast<VesselTreeData *>(this->GetInputData());
}

std::string
VesselTreeFileWriter::GetDefaultFilename() const
{
  return "VesselTree.ves";
}

std::string
VesselTreeFileWriter::GetFileDialogPattern() const
{
  return "LUMO VesselTree (*.ves)";
}

std::string
VesselTreeFileWriter::GetDefaultExtension() const
{
  return ".ves";
}

std::vector<std::string>
VesselTreeFileWriter::GetPossibleFileExtensions() const
{
  return { ".ves", ".dvg", ".uvg" };
}

bool
VesselTreeFileWriter::CanWriteBaseDataType(const BaseData * data) const
{
  return dynamic_cast<const VesselTreeData *>(data) != nullptr;
}

void
VesselTreeFileWriter::DoWrite(BaseData * data)
{
  this->SetInputData(data);
  this->Update();
}

void
VesselTreeFileWriter::GenerateData()
{
  if (this->GetInputData() == nullptr)
  {
    itkWarningMacro("Sorry, input to VesselTreeFileWriter is NULL!");
    return;
  }
  VesselTreeData * input = this->GetInput();
  if (input == nullptr)
  {
    itkWarningMacro("Sorry, input to VesselTreeFileWriter is NULL!");
    return;
  }
  if (m_FileName.empty())
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "Sorry, filename has not been set!", ITK_LOCATION);
  }
  const ArVesselTree tree = input->GetVesselTreeData(0);
  if (tree.isNull())
  {
    itkWarningMacro("Sorry, input vessel tree is empty!");
    return;
  }
  std::ofstream file(m_FileName);
  if (!file.is_open())
  {
    std::ostringstream message;
    message << "Sorry, file " << m_FileName << " could not be opened for writing!";
    throw itk::ExceptionObject(__FILE__, __LINE__, message.str(), ITK_LOCATION);
  }
  file.imbue(std::locale::classic());
  tree->write(file);
  file.flush();
  file.close();
  if (file.fail())
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "Some error writing vessel tree.", ITK_LOCATION);
  }
}
} // namespace lumo
