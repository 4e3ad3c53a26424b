// What a module tells the toolkit about its data types.

#include "lumoCoreObjectFactoryBase.h"

#include <algorithm>

namespace lumo
{
std::string
CoreObjectFactoryBase::GetFileExtensions()
{
  return CreateFileExtensions(this->GetFileExtensionsMap());
}

CoreObjectFactoryBase::MultimapType
CoreObjectFactoryBase::GetFileExtensionsMap()
{
  return m_FileExtensionsMap;
}

std::string
CoreObjectFactoryBase::GetSaveFileExtensions()
{
  return CreateFileExtensions(this->GetSaveFileExtensionsMap());
}

CoreObjectFactoryBase::MultimapType
CoreObjectFactoryBase::GetSaveFileExtensionsMap()
{
  return m_SaveFileExtensionsMap;
}

CoreObjectFactoryBase::FileWriterList
CoreObjectFactoryBase::GetFileWriters()
{
  return m_FileWriters;
}

std::string
CoreObjectFactoryBase::CreateFileExtensions(const MultimapType & fileExtensionsMap)
{
  // description -> its patterns, in map (pattern) order, each once
  std::map<std::string, std::vector<std::string>> byDescription;
  for (const auto & entry : fileExtensionsMap)
  {
    std::vector<std::string> & patterns = byDescription[entry.second];
    if (std::find(patterns.begin(), patterns.end(), entry.first) == patterns.end())
    {
      patterns.push_back(entry.first);
    }
  }
  std::string text;
  for (const auto & entry : byDescription)
  {
    text += entry.first + " (";
    for (std::size_t i = 0; i < entry.second.size(); ++i)
    {
      if (i > 0)
      {
        text += ' ';
      }
      text += entry.second[i];
    }
    text += ");;";
  }
  return text;
}

void
CoreObjectFactoryBase::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "FileExtensions: " << m_FileExtensionsMap.size() << std::endl;
  os << indent << "SaveFileExtensions: " << m_SaveFileExtensionsMap.size() << std::endl;
  os << indent << "FileWriters: " << m_FileWriters.size() << std::endl;
}
} // namespace lumo
