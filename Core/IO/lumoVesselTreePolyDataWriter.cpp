#include "lumoVesselTreePolyDataWriter.h"

#include <sstream>

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkFloatArray.h>
#include <vtkIntArray.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkUnsignedIntArray.h>
#include <vtkXMLPolyDataWriter.h>

namespace lumo
{
namespace
{
template <class ArrayType>
vtkSmartPointer<ArrayType>
namedArray(const char * name)
{
  auto array = vtkSmartPointer<ArrayType>::New();
  array->SetName(name);
  array->SetNumberOfComponents(1);
  return array;
}
} // namespace

VesselTreePolyDataWriter::VesselTreePolyDataWriter() = default;

VesselTreePolyDataWriter::~VesselTreePolyDataWriter() = default;

vtkSmartPointer<vtkPolyData>
VesselTreePolyDataWriter::CreateCenterlines(const ArVesselTree & tree)
{
  auto points = vtkSmartPointer<vtkPoints>::New();
  points->SetDataTypeToFloat();
  auto lines = vtkSmartPointer<vtkCellArray>::New();
  auto radius = namedArray<vtkFloatArray>("radius");
  auto pointIds = namedArray<vtkUnsignedIntArray>("vesselIds");
  auto cellIds = namedArray<vtkIntArray>("vesselId");
  auto types = namedArray<vtkIntArray>("bloodVesselType");
  auto segments = namedArray<vtkIntArray>("segment");
  auto statuses = namedArray<vtkIntArray>("resectionStatus");

  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      if (vessel.isNull() || vessel->numberOfPoints() < 2)
      {
        continue;
      }
      lines->InsertNextCell(static_cast<vtkIdType>(vessel->numberOfPoints()));
      for (const VesselPoint & p : vessel->getPoints())
      {
        lines->InsertCellPoint(points->InsertNextPoint(p.x, p.y, p.z));
        radius->InsertNextValue(0.5f * p.diameter);
        pointIds->InsertNextValue(static_cast<unsigned int>(vessel->getVesselId()));
      }
      const VesselProperties & properties = vessel->getProperties();
      cellIds->InsertNextValue(vessel->getVesselId());
      types->InsertNextValue(properties.getBloodVesselType());
      segments->InsertNextValue(properties.getSegmentType());
      statuses->InsertNextValue(properties.getResectionStatus());
    }
  }
  auto polyData = vtkSmartPointer<vtkPolyData>::New();
  polyData->SetPoints(points);
  polyData->SetLines(lines);
  polyData->GetPointData()->AddArray(radius);
  polyData->GetPointData()->AddArray(pointIds);
  polyData->GetPointData()->SetActiveScalars("radius");
  polyData->GetCellData()->AddArray(cellIds);
  polyData->GetCellData()->AddArray(types);
  polyData->GetCellData()->AddArray(segments);
  polyData->GetCellData()->AddArray(statuses);
  return polyData;
}

std::string
VesselTreePolyDataWriter::GetDefaultFilename() const
{
  return "VesselTree.vtp";
}

std::string
VesselTreePolyDataWriter::GetFileDialogPattern() const
{
  return "Vessel centre lines (*.vtp)";
}

std::string
VesselTreePolyDataWriter::GetDefaultExtension() const
{
  return ".vtp";
}

std::vector<std::string>
VesselTreePolyDataWriter::GetPossibleFileExtensions() const
{
  return { ".vtp" };
}

bool
VesselTreePolyDataWriter::CanWriteBaseDataType(const BaseData * data) const
{
  return dynamic_cast<const VesselTreeData *>(data) != nullptr;
}

void
VesselTreePolyDataWriter::DoWrite(BaseData * data)
{
  this->SetInputData(data);
  this->Update();
}

void
VesselTreePolyDataWriter::GenerateData()
{
  auto * input = dynamic_cast<VesselTreeData *>(this->GetInputData());
  if (input == nullptr)
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "The input is not vessel tree data.", ITK_LOCATION);
  }
  if (m_FileName.empty())
  {
    throw itk::ExceptionObject(__FILE__, __LINE__, "No file name has been set.", ITK_LOCATION);
  }
  auto writer = vtkSmartPointer<vtkXMLPolyDataWriter>::New();
  writer->SetFileName(m_FileName.c_str());
  writer->SetInputData(CreateCenterlines(input->GetVesselTreeData(0)));
  writer->SetDataModeToBinary();
  if (writer->Write() != 1)
  {
    std::ostringstream message;
    message << "Could not write " << m_FileName << ".";
    throw itk::ExceptionObject(__FILE__, __LINE__, message.str(), ITK_LOCATION);
  }
}
} // namespace lumo
