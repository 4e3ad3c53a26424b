#include "lumoCalyxSceneFileReader.h"

#include "lumoCalyxSceneIO.h"

#include <itksys/SystemTools.hxx>

#include <iostream>

namespace lumo
{
CalyxSceneFileReader::CalyxSceneFileReader()
{
  this->SetNumberOfRequiredInputs(0);
  this->SetNumberOfIndexedOutputs(0);
}

CalyxSceneFileReader::~CalyxSceneFileReader() = default;

bool
CalyxSceneFileReader::SetString(std::string & member, const char * value)
{
  const std::string text = value == nullptr ? std::string() : std::string(value);
  if (text == member)
  {
    return false;
  }
  member = text;
  return true;
}

void
CalyxSceneFileReader::SetFileName(const char * fileName)
{
  if (SetString(m_FileName, fileName))
  {
    this->Modified();
  }
}

const char *
CalyxSceneFileReader::GetFileName() const
{
  return m_FileName.c_str();
}

void
CalyxSceneFileReader::SetFilePrefix(const char * filePrefix)
{
  if (SetString(m_FilePrefix, filePrefix))
  {
    this->Modified();
  }
}

const char *
CalyxSceneFileReader::GetFilePrefix() const
{
  return m_FilePrefix.c_str();
}

void
CalyxSceneFileReader::SetFilePattern(const char * filePattern)
{
  if (SetString(m_FilePattern, filePattern))
  {
    this->Modified();
  }
}

const char *
CalyxSceneFileReader::GetFilePattern() const
{
  return m_FilePattern.c_str();
}

void
CalyxSceneFileReader::SetDataStorage(DataStorage * storage)
{
  if (m_DataStorage != storage)
  {
    m_DataStorage = storage;
    this->Modified();
  }
}

bool
CalyxSceneFileReader::CanReadFile(const std::string & fileName, const std::string &, const std::string &)
{
  auto endsWith = [&fileName](const char * suffix) {
    const std::string s(suffix);
    return fileName.size() >= s.size() && fileName.compare(fileName.size() - s.size(), s.size(), s) == 0;
  };
  return !fileName.empty() && (endsWith(".rs") || endsWith(".RS"));
}

void
CalyxSceneFileReader::Update()
{
  // No outputs drive a pipeline here: loading is the update.
  this->GenerateData();
}

void
CalyxSceneFileReader::GenerateData()
{
  if (m_DataStorage == nullptr)
  {
    throw itk::ExceptionObject(
      __FILE__, __LINE__, "Always initialize CalyxSceneFileReader with a DataStorage", ITK_LOCATION);
  }
  CalyxSceneIO::Pointer sceneIO = CalyxSceneIO::New();
  std::string directory;
  std::string file;
  if (!itksys::SystemTools::SplitProgramPath(m_FileName, directory, file, true))
  {
    std::cerr << "Problem with itksys::SystemTools::SplitProgramPath() in " << __FILE__ << " l. " << __LINE__
              << std::endl;
  }
  sceneIO->LoadScene(m_DataStorage, directory, file);
  this->SetNumberOfIndexedOutputs(0);
}

void
CalyxSceneFileReader::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "FileName: " << m_FileName << std::endl;
  os << indent << "FilePrefix: " << m_FilePrefix << std::endl;
  os << indent << "FilePattern: " << m_FilePattern << std::endl;
  os << indent << "DataStorage: " << m_DataStorage << std::endl;
}
} // namespace lumo
