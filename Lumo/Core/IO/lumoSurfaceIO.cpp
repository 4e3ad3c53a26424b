// Surface files through VTK.

#include "lumoSurfaceIO.h"

#include "lumoFileNames.h"
#include "lumoSurface.h"

#include <vtkCallbackCommand.h>
#include <vtkCommand.h>
#include <vtkExecutive.h>
#include <vtkOBJReader.h>
#include <vtkOBJWriter.h>
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
  return EndsWithNoCase(fileName, ".vtp") || EndsWithNoCase(fileName, ".vtk") || EndsWithNoCase(fileName, ".stl") ||
         EndsWithNoCase(fileName, ".obj");
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
  else if (EndsWithNoCase(fileName, ".obj"))
  {
    // Wavefront text: points, normals when the surface has them, and the polygons.
    vtkSmartPointer<vtkOBJWriter> writer = vtkSmartPointer<vtkOBJWriter>::New();
    RunWriter(writer.GetPointer(), polyData, fileName);
  }
  else
  {
    ThrowSurface("write", fileName, "unknown surface file extension", "", __LINE__);
  }
}
} // namespace lumo
