// lumo::Surface and its file IO through VTK.

#include "lumoFileNames.h"
#include "lumoSurfaceIO.h"

#include <vtkCallbackCommand.h>
#include <vtkCommand.h>
#include <vtkExecutive.h>
#include <vtkOBJReader.h>
#include <vtkPolyData.h>
#include <vtkPolyDataReader.h>
#include <vtkPolyDataWriter.h>
#include <vtkSTLReader.h>
#include <vtkSTLWriter.h>
#include <vtkSmartPointer.h>
#include <vtkTriangleFilter.h>
#include <vtkXMLPolyDataReader.h>
#include <vtkXMLPolyDataWriter.h>
#include <vtkXMLReader.h>

#include <filesystem>
#include <utility>
#include <vector>

namespace lumo
{
// ---------------------------------------------------------------------------------------------------------------
// Surface

Surface::Surface()
  : m_PolyDatas(1, nullptr)
{}

Surface::~Surface()
{
  for (vtkPolyData * polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Delete();
    }
  }
}

vtkPolyData *
Surface::GetVtkPolyData(TimeStepType t) const
{
  return t < m_PolyDatas.size() ? m_PolyDatas[t] : nullptr;
}

void
Surface::SetVtkPolyData(vtkPolyData * polyData, TimeStepType t)
{
  if (t >= m_PolyDatas.size())
  {
    this->Expand(t + 1);
  }
  if (m_PolyDatas[t] == polyData)
  {
    return;
  }
  if (polyData)
  {
    polyData->Register(nullptr);
  }
  if (m_PolyDatas[t])
  {
    m_PolyDatas[t]->Delete();
  }
  m_PolyDatas[t] = polyData;
  m_Initialized = true;
  this->CalculateBounds(t);
  this->Modified();
}

bool
Surface::IsEmptyTimeStep(TimeStepType t) const
{
  const vtkPolyData * polyData = this->GetVtkPolyData(t);
  return !polyData || const_cast<vtkPolyData *>(polyData)->GetNumberOfPoints() == 0;
}

void
Surface::Expand(unsigned int timeSteps)
{
  Superclass::Expand(timeSteps);
  if (timeSteps > m_PolyDatas.size())
  {
    m_PolyDatas.resize(timeSteps, nullptr);
  }
}

void
Surface::Clear()
{
  for (vtkPolyData *& polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Delete();
    }
    polyData = nullptr;
  }
  m_PolyDatas.assign(1, nullptr);
  Superclass::Clear();
}

void
Surface::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const Surface *>(data);
  if (!other || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  for (vtkPolyData * polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Delete();
    }
  }
  m_PolyDatas = other->m_PolyDatas;
  for (vtkPolyData * polyData : m_PolyDatas)
  {
    if (polyData)
    {
      polyData->Register(nullptr);
    }
  }
}

void
Surface::UpdateOutputInformation()
{
  for (TimeStepType t = 0; t < m_PolyDatas.size(); ++t)
  {
    this->CalculateBounds(t);
  }
  Superclass::UpdateOutputInformation();
}

void
Surface::CalculateBounds(TimeStepType t)
{
  Geometry3D * geometry = this->GetGeometry(t);
  if (!geometry)
  {
    return;
  }
  double bounds[6] = { 0, 0, 0, 0, 0, 0 };
  vtkPolyData * polyData = this->GetVtkPolyData(t);
  if (polyData && polyData->GetNumberOfPoints() > 0)
  {
    polyData->ComputeBounds();
    polyData->GetBounds(bounds);
  }
  geometry->SetFloatBounds(bounds);
}

void
Surface::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  for (TimeStepType t = 0; t < m_PolyDatas.size(); ++t)
  {
    os << indent << "Time step " << t << ": "
       << (m_PolyDatas[t] ? std::to_string(m_PolyDatas[t]->GetNumberOfPoints()) + " points" : "no poly data")
       << std::endl;
  }
}

// ---------------------------------------------------------------------------------------------------------------
// File IO

namespace
{
/** Collects the VTK error messages of an algorithm (and of its executive and, for XML readers, of its internal
 *  parser) instead of letting them go to VTK's output window. */
class VtkErrorCatcher
{
public:
  explicit VtkErrorCatcher(vtkAlgorithm * algorithm)
  {
    m_Callback->SetClientData(this);
    m_Callback->SetCallback(&VtkErrorCatcher::OnEvent);
    this->Observe(algorithm);
    this->Observe(algorithm->GetExecutive());
    if (auto * xmlReader = vtkXMLReader::SafeDownCast(algorithm))
    {
      xmlReader->SetParserErrorObserver(m_Callback);
      xmlReader->SetReaderErrorObserver(m_Callback);
    }
  }
  ~VtkErrorCatcher()
  {
    for (const auto & observed : m_Observed)
    {
      observed.first->RemoveObserver(observed.second);
    }
  }
  VtkErrorCatcher(const VtkErrorCatcher &) = delete;
  VtkErrorCatcher &
  operator=(const VtkErrorCatcher &) = delete;

  bool
  HasError() const
  {
    return m_Error;
  }
  const std::string &
  GetMessage() const
  {
    return m_Message;
  }

private:
  void
  Observe(vtkObject * object)
  {
    if (object)
    {
      m_Observed.emplace_back(object, object->AddObserver(vtkCommand::ErrorEvent, m_Callback));
      m_Observed.emplace_back(object, object->AddObserver(vtkCommand::WarningEvent, m_Callback));
    }
  }

  static void
  OnEvent(vtkObject *, unsigned long event, void * clientData, void * callData)
  {
    auto * self = static_cast<VtkErrorCatcher *>(clientData);
    if (event == vtkCommand::ErrorEvent)
    {
      self->m_Error = true;
      if (self->m_Message.empty() && callData)
      {
        self->m_Message = static_cast<const char *>(callData);
        while (!self->m_Message.empty() && (self->m_Message.back() == '\n' || self->m_Message.back() == ' '))
        {
          self->m_Message.pop_back();
        }
      }
    }
  }

  vtkSmartPointer<vtkCallbackCommand> m_Callback = vtkSmartPointer<vtkCallbackCommand>::New();
  std::vector<std::pair<vtkObject *, unsigned long>> m_Observed;
  bool m_Error{ false };
  std::string m_Message;
};

[[noreturn]] void
ThrowSurface(const char * verb,
             const std::string & fileName,
             const std::string & what,
             const std::string & detail,
             unsigned int line)
{
  std::string message = std::string("Could not ") + verb + " surface '" + fileName + "': " + what;
  if (!detail.empty())
  {
    message += ": " + detail;
  }
  throw itk::ExceptionObject(__FILE__, line, message, "lumo::SurfaceIO");
}

template <typename TReader>
vtkSmartPointer<vtkPolyData>
RunReader(const std::string & fileName)
{
  vtkSmartPointer<TReader> reader = vtkSmartPointer<TReader>::New();
  reader->SetFileName(fileName.c_str());
  VtkErrorCatcher catcher(reader);
  reader->Update();
  if (catcher.HasError() || reader->GetErrorCode() != 0 || !reader->GetOutput())
  {
    ThrowSurface("read", fileName, "VTK reader failed", catcher.GetMessage(), __LINE__);
  }
  vtkSmartPointer<vtkPolyData> polyData = vtkSmartPointer<vtkPolyData>::New();
  polyData->ShallowCopy(reader->GetOutput());
  return polyData;
}

template <typename TWriter>
void
RunWriter(TWriter * writer, vtkPolyData * polyData, const std::string & fileName)
{
  writer->SetInputData(polyData);
  writer->SetFileName(fileName.c_str());
  VtkErrorCatcher catcher(writer);
  const int ok = writer->Write();
  if (!ok || catcher.HasError() || writer->GetErrorCode() != 0)
  {
    ThrowSurface("write", fileName, "VTK writer failed", catcher.GetMessage(), __LINE__);
  }
}
} // namespace

bool
CanReadSurfaceFile(const std::string & fileName)
{
  return EndsWithNoCase(fileName, ".vtp") || EndsWithNoCase(fileName, ".vtk") || EndsWithNoCase(fileName, ".stl") ||
         EndsWithNoCase(fileName, ".obj");
}

bool
CanWriteSurfaceFile(const std::string & fileName)
{
  return EndsWithNoCase(fileName, ".vtp") || EndsWithNoCase(fileName, ".vtk") || EndsWithNoCase(fileName, ".stl");
}

Surface::Pointer
ReadSurfaceFile(const std::string & fileName)
{
  std::error_code error;
  if (fileName.empty() || !std::filesystem::is_regular_file(fileName, error))
  {
    ThrowSurface("read", fileName, "the file does not exist", "", __LINE__);
  }
  vtkSmartPointer<vtkPolyData> polyData;
  if (EndsWithNoCase(fileName, ".vtp"))
  {
    polyData = RunReader<vtkXMLPolyDataReader>(fileName);
  }
  else if (EndsWithNoCase(fileName, ".vtk"))
  {
    vtkSmartPointer<vtkPolyDataReader> probe = vtkSmartPointer<vtkPolyDataReader>::New();
    probe->SetFileName(fileName.c_str());
    VtkErrorCatcher catcher(probe);
    if (!probe->IsFilePolyData())
    {
      ThrowSurface("read", fileName, "the file is not VTK poly data", "", __LINE__);
    }
    polyData = RunReader<vtkPolyDataReader>(fileName);
  }
  else if (EndsWithNoCase(fileName, ".stl"))
  {
    polyData = RunReader<vtkSTLReader>(fileName);
  }
  else if (EndsWithNoCase(fileName, ".obj"))
  {
    polyData = RunReader<vtkOBJReader>(fileName);
  }
  else
  {
    ThrowSurface("read", fileName, "unknown surface file extension", "", __LINE__);
  }
  Surface::Pointer surface = Surface::New();
  surface->SetVtkPolyData(polyData);
  return surface;
}

void
WriteSurfaceFile(const Surface * surface, const std::string & fileName, TimeStepType t)
{
  if (!surface)
  {
    ThrowSurface("write", fileName, "the surface is null", "", __LINE__);
  }
  vtkPolyData * polyData = surface->GetVtkPolyData(t);
  if (!polyData)
  {
    ThrowSurface("write", fileName, "time step " + std::to_string(t) + " has no poly data", "", __LINE__);
  }
  if (EndsWithNoCase(fileName, ".vtp"))
  {
    vtkSmartPointer<vtkXMLPolyDataWriter> writer = vtkSmartPointer<vtkXMLPolyDataWriter>::New();
    writer->SetDataModeToBinary();
    RunWriter(writer.GetPointer(), polyData, fileName);
  }
  else if (EndsWithNoCase(fileName, ".vtk"))
  {
    vtkSmartPointer<vtkPolyDataWriter> writer = vtkSmartPointer<vtkPolyDataWriter>::New();
    writer->SetFileTypeToBinary();
    RunWriter(writer.GetPointer(), polyData, fileName);
  }
  else if (EndsWithNoCase(fileName, ".stl"))
  {
    vtkSmartPointer<vtkTriangleFilter> triangles = vtkSmartPointer<vtkTriangleFilter>::New();
    triangles->SetInputData(polyData);
    triangles->PassVertsOff();
    triangles->PassLinesOff();
    triangles->Update();
    vtkSmartPointer<vtkSTLWriter> writer = vtkSmartPointer<vtkSTLWriter>::New();
    writer->SetFileTypeToBinary();
    RunWriter(writer.GetPointer(), triangles->GetOutput(), fileName);
  }
  else
  {
    ThrowSurface("write", fileName, "unknown surface file extension", "", __LINE__);
  }
}

// ---------------------------------------------------------------------------------------------------------------
// SurfaceWriter

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
