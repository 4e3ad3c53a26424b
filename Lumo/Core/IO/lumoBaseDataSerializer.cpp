// Base of the data serializers of the scene format.

#include "lumoBaseDataSerializer.h"

#include "lumoLogger.h"
#include "lumoUIDGenerator.h"

#include <itkObjectFactoryBase.h>

#include <filesystem>

namespace lumo
{
BaseDataSerializer::BaseDataSerializer() = default;

BaseDataSerializer::~BaseDataSerializer() = default;

std::string
BaseDataSerializer::Serialize()
{
  LUMO_ERROR << this->GetNameOfClass() << " cannot serialize the object at "
             << static_cast<const void *>(m_Data.GetPointer()) << ": no serializer for "
             << (m_Data ? m_Data->GetNameOfClass() : "a null object");
  return std::string();
}

std::string
BaseDataSerializer::GetUniqueFilenameInWorkingDirectory()
{
  UIDGenerator generator("", 10);
  for (;;)
  {
    const std::string stem = generator.GetUID();
    bool taken = false;
    std::error_code error;
    const std::filesystem::path directory =
      m_WorkingDirectory.empty() ? std::filesystem::path(".") : std::filesystem::path(m_WorkingDirectory);
    for (std::filesystem::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
    {
      if (it->path().filename().string().compare(0, stem.size(), stem) == 0)
      {
        taken = true;
        break;
      }
    }
    if (!taken)
    {
      return stem;
    }
  }
}

BaseDataSerializer::Pointer
BaseDataSerializer::CreateForData(const BaseData * data)
{
  if (!data)
  {
    return nullptr;
  }
  const std::string className = std::string(data->GetNameOfClass()) + "Serializer";
  for (const itk::LightObject::Pointer & instance : itk::ObjectFactoryBase::CreateAllInstance(className.c_str()))
  {
    auto * serializer = dynamic_cast<BaseDataSerializer *>(instance.GetPointer());
    if (serializer)
    {
      return serializer;
    }
  }
  return nullptr;
}

void
BaseDataSerializer::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "FilenameHint: " << m_FilenameHint << std::endl;
  os << indent << "WorkingDirectory: " << m_WorkingDirectory << std::endl;
  os << indent << "Data: " << m_Data.GetPointer() << std::endl;
}
} // namespace lumo
