#include "lumoVesselTreeFileReader.h"

#include <itkImageFileReader.h>

#include <fstream>
#include <locale>

namespace lumo
{
VesselTreeFileReader::VesselTreeFileReader() = default;

VesselTreeFileReader::~VesselTreeFileReader() = default;

void
VesselTreeFileReader::SetFileName(const char * fileName)
{
  const std::string name = fileName == nullptr ? std::string() : std::string(fileName);
  if (name == m_FileName)
  {
    return;
  }
  m_FileName = name;
  m_TreeCache = ArVesselTree();
  this->Modified();
}

const char *
VesselTreeFileReader::GetFileName() const
{
  return m_FileName.c_str();
}

void
VesselTreeFileReader::SetFilePrefix(const char * filePrefix)
{
  const std::string prefix = filePrefix == nullptr ? std::string() : std::string(filePrefix);
  if (prefix != m_FilePrefix)
  {
    m_FilePrefix = prefix;
    this->Modified();
  }
}

const char *
VesselTreeFileReader::GetFilePrefix() const
{
  return m_FilePrefix.c_str();
}

void
VesselTreeFileReader::SetFilePattern(const char * filePattern)
{
  const std::string pattern = filePattern == nullptr ? std::string() : std::string(filePattern);
  if (pattern != m_FilePattern)
  {
    m_FilePattern = pattern;
    this->Modified();
  }
}

const char *
VesselTreeFileReader::GetFilePattern() const
{
  return m_FilePattern.c_str();
}

bool
VesselTreeFileReader::CanReadFile(const std::string & fileName, const std::string &, const std::string &)
{
  auto endsWith = [&fileName](const std::string & ending) {
    return fileName.size() >= ending.size() &&
           fileName.compare(fileName.size() - ending.size(), ending.size(), ending) == 0;
  };
  return endsWith(".ves") || endsWith(".VES");
}

void
VesselTreeFileReader::ReadFileIntoCache()
{
  if (m_FileName.empty())
  {
    throw itk::ImageFileReaderException(
      __FILE__, __LINE__, "Sorry, the filename of the vessel tree to be read is empty!", ITK_LOCATION);
  }
  std::ifstream file(m_FileName);
  if (!file.is_open())
  {
    throw itk::ImageFileReaderException(
      __FILE__, __LINE__, "Sorry, the requested vessel tree file could not be opened!", ITK_LOCATION);
  }
  file.imbue(std::locale::classic());
  if (m_TreeCache.isNull())
  {
    m_TreeCache = ArVesselTree(new LinkedVesselTree());
  }
  m_TreeCache->read(file);
  const bool failed = file.fail();
  file.close();
  if (failed)
  {
    // Nothing of a file that did not read whole reaches the output.
    m_TreeCache = ArVesselTree();
    throw itk::ImageFileReaderException(
      __FILE__, __LINE__, "Sorry, an error occurred while reading the requested vessel tree file!", ITK_LOCATION);
  }
}

void
VesselTreeFileReader::GenerateOutputInformation()
{
  ReadFileIntoCache();
}

void
VesselTreeFileReader::GenerateData()
{
  if (m_TreeCache.isNull())
  {
    itkWarningMacro("Tree cache is empty!");
    ReadFileIntoCache();
    itkWarningMacro("Cache regenerated!");
  }
  this->GetOutput()->initialize(m_TreeCache);
}

void
VesselTreeFileReader::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "FileName: " << m_FileName << std::endl;
  os << indent << "Tree cache: " << (m_TreeCache.isNull() ? "empty" : "holds a tree") << std::endl;
}
} // namespace lumo
