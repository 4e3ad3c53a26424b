// Opens files of any registered type into data nodes.

#include "lumoDataNodeFactory.h"

#include "lumoFileNames.h"
#include "lumoIOAdapterBase.h"
#include "lumoImageIO.h"
#include "lumoPointSetIO.h"
#include "lumoSurfaceIO.h"

#include <itkObjectFactoryBase.h>

#include <filesystem>
#include <list>

namespace lumo
{
namespace
{
std::vector<IOAdapterBase::Pointer>
RegisteredIOAdapters()
{
  std::vector<IOAdapterBase::Pointer> adapters;
  std::list<itk::LightObject::Pointer> instances = itk::ObjectFactoryBase::CreateAllInstance("lumoIOAdapter");
  for (const itk::LightObject::Pointer & instance : instances)
  {
    auto * adapter = dynamic_cast<IOAdapterBase *>(instance.GetPointer());
    if (adapter)
    {
      adapters.emplace_back(adapter);
    }
  }
  return adapters;
}
} // namespace

DataNodeFactory::DataNodeFactory()
{
  this->SetNumberOfRequiredInputs(0);
  this->SetNthOutput(0, this->MakeOutput(0));
}

DataNodeFactory::~DataNodeFactory() = default;

itk::DataObject::Pointer
DataNodeFactory::MakeOutput(DataObjectPointerArraySizeType)
{
  return DataNode::New().GetPointer();
}

DataNode *
DataNodeFactory::GetOutput()
{
  return this->GetNumberOfIndexedOutputs() > 0 ? dynamic_cast<DataNode *>(this->GetPrimaryOutput()) : nullptr;
}

DataNode *
DataNodeFactory::GetOutput(DataObjectPointerArraySizeType index)
{
  return index < this->GetNumberOfIndexedOutputs()
           ? dynamic_cast<DataNode *>(this->itk::ProcessObject::GetOutput(index))
           : nullptr;
}

void
DataNodeFactory::Update()
{
  // After a read that produced no node there is no output to drive the pipeline: make one.
  if (this->GetNumberOfIndexedOutputs() == 0)
  {
    this->SetNthOutput(0, this->MakeOutput(0));
  }
  Superclass::Update();
}

bool
DataNodeFactory::CanReadFile(const std::string & fileName,
                             const std::string & filePrefix,
                             const std::string & filePattern)
{
  for (const IOAdapterBase::Pointer & adapter : RegisteredIOAdapters())
  {
    if (adapter->CanReadFile(fileName, filePrefix, filePattern))
    {
      return true;
    }
  }
  return CanReadImageFile(fileName) || CanReadSurfaceFile(fileName) || CanReadPointSetFile(fileName);
}

void
DataNodeFactory::GenerateData()
{
  const std::string & fileName = m_FileName;
  if (fileName.empty() && m_FilePrefix.empty() && m_FilePattern.empty())
  {
    throw itk::ExceptionObject(
      __FILE__, __LINE__, "DataNodeFactory: no file name given", "lumo::DataNodeFactory::GenerateData");
  }
  std::error_code error;
  if (m_FilePrefix.empty() && m_FilePattern.empty() && !std::filesystem::exists(fileName, error))
  {
    throw itk::ExceptionObject(__FILE__,
                               __LINE__,
                               "DataNodeFactory: the file '" + fileName + "' does not exist",
                               "lumo::DataNodeFactory::GenerateData");
  }

  std::vector<BaseData::Pointer> data;
  bool read = false;
  for (const IOAdapterBase::Pointer & adapter : RegisteredIOAdapters())
  {
    if (!adapter->CanReadFile(fileName, m_FilePrefix, m_FilePattern))
    {
      continue;
    }
    BaseProcess::Pointer reader = adapter->CreateIOProcessObject(fileName, m_FilePrefix, m_FilePattern);
    if (reader.IsNull())
    {
      continue;
    }
    reader->Update();
    for (DataObjectPointerArraySizeType i = 0; i < reader->GetNumberOfIndexedOutputs(); ++i)
    {
      BaseData * output = reader->GetOutputData(i);
      if (output)
      {
        data.emplace_back(output);
      }
    }
    read = true;
    break;
  }
  if (!read)
  {
    if (CanReadImageFile(fileName))
    {
      data.emplace_back(lumo::ReadImageFile(fileName).GetPointer());
    }
    else if (CanReadSurfaceFile(fileName))
    {
      data.emplace_back(lumo::ReadSurfaceFile(fileName).GetPointer());
    }
    else if (CanReadPointSetFile(fileName))
    {
      data.emplace_back(lumo::ReadPointSetFile(fileName).GetPointer());
    }
    else
    {
      throw itk::ExceptionObject(__FILE__,
                                 __LINE__,
                                 "DataNodeFactory: no reader for the file '" + fileName + "'",
                                 "lumo::DataNodeFactory::GenerateData");
    }
  }
  this->SetOutputData(data);
}

void
DataNodeFactory::SetOutputData(const std::vector<BaseData::Pointer> & data)
{
  const std::string name = GetFileNameWithoutExtension(m_FileName);
  const std::string path = GetDirectoryOfPath(m_FileName);
  this->SetNumberOfIndexedOutputs(data.size());
  for (std::size_t i = 0; i < data.size(); ++i)
  {
    // New nodes every time: nodes handed out by an earlier run keep their data.
    DataNode::Pointer node = DataNode::New();
    node->SetName(name);
    node->SetStringProperty("path", path);
    this->PrepareNode(node);
    node->SetData(data[i]);
    this->SetNthOutput(i, node);
  }
}

void
DataNodeFactory::PrepareNode(DataNode *)
{}

void
DataNodeFactory::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "FileName: " << m_FileName << std::endl;
  os << indent << "FilePrefix: " << m_FilePrefix << std::endl;
  os << indent << "FilePattern: " << m_FilePattern << std::endl;
}
} // namespace lumo
