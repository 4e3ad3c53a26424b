// Base of the file writers.

#include "lumoFileWriter.h"

#include "lumoBaseData.h"

namespace lumo
{
FileWriter::FileWriter()
{
  this->SetNumberOfRequiredInputs(1);
}

FileWriter::~FileWriter() = default;

void
FileWriter::SetFileName(const char * fileName)
{
  const std::string value = fileName ? fileName : "";
  if (value != m_FileName)
  {
    m_FileName = value;
    this->Modified();
  }
}

const char *
FileWriter::GetFileName() const
{
  return m_FileName.c_str();
}

void
FileWriter::SetFilePrefix(const char * filePrefix)
{
  const std::string value = filePrefix ? filePrefix : "";
  if (value != m_FilePrefix)
  {
    m_FilePrefix = value;
    this->Modified();
  }
}

const char *
FileWriter::GetFilePrefix() const
{
  return m_FilePrefix.c_str();
}

void
FileWriter::SetFilePattern(const char * filePattern)
{
  const std::string value = filePattern ? filePattern : "";
  if (value != m_FilePattern)
  {
    m_FilePattern = value;
    this->Modified();
  }
}

const char *
FileWriter::GetFilePattern() const
{
  return m_FilePattern.c_str();
}

void
FileWriter::SetInputData(BaseData * data)
{
  this->SetNthInput(0, data);
}

BaseData *
FileWriter::GetInputData()
{
  return dynamic_cast<BaseData *>(this->GetInput(0));
}

void
FileWriter::Write()
{
  m_Success = false;
  this->GenerateData();
  m_Success = true;
}

void
FileWriter::Update()
{
  this->Write();
}

void
FileWriter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "FileName: " << m_FileName << std::endl;
  os << indent << "FilePrefix: " << m_FilePrefix << std::endl;
  os << indent << "FilePattern: " << m_FilePattern << std::endl;
  os << indent << "Success: " << (m_Success ? "true" : "false") << std::endl;
}
} // namespace lumo
