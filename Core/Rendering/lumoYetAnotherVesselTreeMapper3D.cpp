#include "lumoYetAnotherVesselTreeMapper3D.h"

#include "lumoBaseRenderer.h"
#include "lumoVesselTreeLookupTable.h"
#include "lumoVesselTreeLookupTableProperty.h"

#include <vtkAppendPolyData.h>
#include <vtkCellArray.h>
#include <vtkFloatArray.h>
#include <vtkLookupTable.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkProperty.h>
#include <vtkSphereSource.h>
#include <vtkTubeFilter.h>
#include <vtkUnsignedIntArray.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace lumo
{
YetAnotherVesselTreeMapper3D::YetAnotherVesselTreeMapper3D()
  : m_PolyDataMapper(vtkSmartPointer<vtkPolyDataMapper>::New())
  , m_Actor(vtkSmartPointer<vtkActor>::New())
  , m_LookupTableFilter(VesselTreeToLookupTableFilter::New())
{
  m_Actor->SetMapper(m_PolyDataMapper);
  // The default colours, for nodes without a "VesselTreeLookupTable" of their own.
  m_LookupTableFilter->SetLookupTable(VesselTreeLookupTable::New());
}

YetAnotherVesselTreeMapper3D::~YetAnotherVesselTreeMapper3D() = default;

VesselTreeData *
YetAnotherVesselTreeMapper3D::GetInput() const
{
  return dynamic_cast<VesselTreeData *>(this->GetData());
}

vtkProp *
YetAnotherVesselTreeMapper3D::GetVtkProp(BaseRenderer *)
{
  return m_Actor;
}

void
YetAnotherVesselTreeMapper3D::GenerateData()
{
  VesselTreeData * input = this->GetInput();
  if (input == nullptr)
  {
    itkWarningMacro("Input to vessel mapper is NULL!");
    return;
  }
  if (input->GetTopologyMTime() > m_ColorTimeStamp.GetMTime())
  {
    ++m_GeometryBuildCount;
    this->GenerateSkeleton();
    this->GenerateSurface();
  }
  m_PolyDataMapper->SetInputData(this->GetRenderedPolyData());
  if (input->GetAttributesMTime() <= m_ColorTimeStamp.GetMTime())
  {
    itkWarningMacro("Strange: generate data was called, but vessels seem to be up to date!");
  }
  else
  {
    this->UpdateColors();
    // The stamp says when geometry and colours were last brought up to date; without it every attribute change
    // would rebuild the tubes as well.
    m_ColorTimeStamp.Modified();
  }
}

void
YetAnotherVesselTreeMapper3D::GenerateDataForRenderer(BaseRenderer * renderer)
{
  m_PolyDataMapper->SetInputData(this->GetRenderedPolyData());
  if (!this->IsVisible(renderer))
  {
    m_Actor->VisibilityOff();
    return;
  }
  m_Actor->VisibilityOn();
  if (m_ColorTimeStamp.GetMTime() < this->GetLookupTableMTime())
  {
    this->UpdateColors();
    m_ColorTimeStamp.Modified();
  }
}

void
YetAnotherVesselTreeMapper3D::GenerateSkeleton()
{
  m_Skeleton = vtkSmartPointer<vtkPolyData>::New();
  const VesselTreeData * input = this->GetInput();
  const ArVesselTree tree = input ? input->GetVesselTreeData(0) : ArVesselTree();
  if (tree.isNull())
  {
    itkWarningMacro("): Output of vessel tree smoother is NULL!");
    return;
  }

  auto points = vtkSmartPointer<vtkPoints>::New();
  auto radii = vtkSmartPointer<vtkFloatArray>::New();
  radii->SetName("diameters");
  radii->SetNumberOfComponents(1);
  auto ids = vtkSmartPointer<vtkUnsignedIntArray>::New();
  ids->SetName("vesselIds");
  ids->SetNumberOfComponents(1);
  auto lines = vtkSmartPointer<vtkCellArray>::New();

  vtkIdType pointId = 0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull() || !vessel->getProperties().isVisible() || vessel->numberOfPoints() < 2)
    {
      continue;
    }
    const double id = static_cast<double>(vessel->getVesselId());
    lines->InsertNextCell(static_cast<int>(vessel->numberOfPoints()));
    // Vessels share no points: a branching point stored by parent and child is inserted for each.
    for (const VesselPoint & p : vessel->getPoints())
    {
      points->InsertPoint(pointId, p.x, p.y, p.z);
      radii->InsertTuple1(pointId, std::fabs(p.diameter) * 0.5);
      ids->InsertTuple1(pointId, id);
      lines->InsertCellPoint(pointId);
      ++pointId;
    }
  }
  m_Skeleton->SetPoints(points);
  m_Skeleton->SetLines(lines);
  m_Skeleton->GetPointData()->AddArray(radii);
  m_Skeleton->GetPointData()->AddArray(ids);
  m_Skeleton->GetPointData()->SetActiveScalars("diameters");
}

void
YetAnotherVesselTreeMapper3D::GenerateSurface()
{
  this->GenerateTubes();
  this->GenerateEndSpheres();
  auto append = vtkSmartPointer<vtkAppendPolyData>::New();
  if (m_Tubes)
  {
    append->AddInputData(m_Tubes);
  }
  if (m_EndSpheres)
  {
    append->AddInputData(m_EndSpheres);
  }
  if (append->GetNumberOfInputConnections(0) > 0)
  {
    append->Update();
    m_Surface = append->GetOutput();
  }
  else
  {
    m_Surface = vtkSmartPointer<vtkPolyData>::New();
  }
}

void
YetAnotherVesselTreeMapper3D::GenerateTubes()
{
  if (m_Skeleton == nullptr)
  {
    itkWarningMacro("Skeleton of the vessel tree is NULL!");
  }
  vtkPointData * pointData = m_Skeleton ? m_Skeleton->GetPointData() : nullptr;
  auto * radii = pointData ? vtkFloatArray::SafeDownCast(pointData->GetArray("diameters")) : nullptr;
  auto * ids = pointData ? vtkUnsignedIntArray::SafeDownCast(pointData->GetArray("vesselIds")) : nullptr;
  if (radii == nullptr || ids == nullptr)
  {
    itkWarningMacro("diameters or vessel ids not available for surface generation");
    return;
  }
  double range[2];
  radii->GetRange(range);
  auto tubes = vtkSmartPointer<vtkTubeFilter>::New();
  tubes->SetInputData(m_Skeleton);
  tubes->SetRadius(range[0]);
  // A zero minimum radius gives an infinite factor; VTK clamps what it draws, as it always has here.
  tubes->SetRadiusFactor(range[1] / range[0]);
  tubes->SetNumberOfSides(m_NumberOfSides);
  // Closed ends: a tube that starts inside its parent's end sphere shows no hole when seen from any side.
  tubes->CappingOn();
  if (range[1] != range[0])
  {
    tubes->SetVaryRadiusToVaryRadiusByScalar();
  }
  tubes->Update();
  m_Tubes = tubes->GetOutput();
  if (m_Tubes == nullptr)
  {
    itkWarningMacro("Tube filter did not produce any results");
  }
}

void
YetAnotherVesselTreeMapper3D::GenerateEndSpheres()
{
  // One sphere source's output serves as the template of every sphere: each vessel's sphere is that unit sphere
  // scaled and moved, which is what a source of that centre and radius would give, without thousands of sources
  // and an append over all of them (the spheres used to be most of the build time of a large tree).
  auto unit = vtkSmartPointer<vtkSphereSource>::New();
  unit->SetCenter(0.0, 0.0, 0.0);
  unit->SetRadius(1.0);
  unit->Update();
  vtkPolyData * sphere = unit->GetOutput();
  const vtkIdType spherePoints = sphere->GetNumberOfPoints();

  auto points = vtkSmartPointer<vtkPoints>::New();
  points->SetDataTypeToFloat();
  auto normals = vtkSmartPointer<vtkFloatArray>::New();
  normals->SetName("Normals");
  normals->SetNumberOfComponents(3);
  auto ids = vtkSmartPointer<vtkUnsignedIntArray>::New();
  ids->SetName("vesselIds");
  ids->SetNumberOfComponents(1);
  auto polys = vtkSmartPointer<vtkCellArray>::New();

  const VesselTreeData * input = this->GetInput();
  const ArVesselTree tree = input ? input->GetVesselTreeData(0) : ArVesselTree();
  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      if (vessel.isNull() || !vessel->getProperties().isVisible() || vessel->numberOfPoints() == 0)
      {
        continue;
      }
      const VesselPoint & last = vessel->getPoints().back();
      // No absolute value here, unlike the skeleton's radii: a negative stored diameter gives a negative radius,
      // which the sphere source clamps to 0 (a sphere collapsed onto the vessel's end).
      const double radius = std::max(0.0, last.diameter * 0.5);
      const double id = static_cast<double>(vessel->getVesselId());
      const vtkIdType offset = points->GetNumberOfPoints();
      for (vtkIdType i = 0; i < spherePoints; ++i)
      {
        double p[3];
        sphere->GetPoint(i, p);
        points->InsertNextPoint(last.x + radius * p[0], last.y + radius * p[1], last.z + radius * p[2]);
        // The source's normals point away from the centre, zero for a sphere of radius 0.
        if (radius > 0.0)
        {
          normals->InsertNextTuple(p);
        }
        else
        {
          normals->InsertNextTuple3(0.0, 0.0, 0.0);
        }
        ids->InsertNextTuple1(id);
      }
      vtkCellArray * cells = sphere->GetPolys();
      vtkIdType count = 0;
      const vtkIdType * cell = nullptr;
      for (cells->InitTraversal(); cells->GetNextCell(count, cell);)
      {
        polys->InsertNextCell(static_cast<int>(count));
        for (vtkIdType k = 0; k < count; ++k)
        {
          polys->InsertCellPoint(offset + cell[k]);
        }
      }
    }
  }
  m_EndSpheres = vtkSmartPointer<vtkPolyData>::New();
  m_EndSpheres->SetPoints(points);
  m_EndSpheres->SetPolys(polys);
  m_EndSpheres->GetPointData()->SetNormals(normals);
  m_EndSpheres->GetPointData()->AddArray(ids);
}

void
YetAnotherVesselTreeMapper3D::UpdateColors()
{
  VesselTreeData * input = this->GetInput();
  if (input == nullptr)
  {
    itkWarningMacro("Input to vessel mapper is NULL!");
    return;
  }
  input->SetRequestedRegionToLargestPossibleRegion();
  m_LookupTableFilter->SetDataNode(this->GetDataNode());
  m_LookupTableFilter->SetInput(input);
  m_LookupTableFilter->Modified();
  m_LookupTableFilter->Update();

  vtkPointData * pointData = m_Skeleton ? m_Skeleton->GetPointData() : nullptr;
  if (pointData == nullptr || vtkUnsignedIntArray::SafeDownCast(pointData->GetArray("vesselIds")) == nullptr)
  {
    itkWarningMacro("vessel ids not available for lut generation");
    return;
  }
  ++m_ColorUpdateCount;

  // The surface appearance is the one of the colour table the filter used (the node's, else its own).
  const DataNode * node = this->GetDataNode();
  const auto * property =
    node ? dynamic_cast<const VesselTreeLookupTableProperty *>(node->GetProperty("VesselTreeLookupTable")) : nullptr;
  const VesselTreeLookupTable * colors =
    property ? property->GetVesselTreeLookupTable()
             : dynamic_cast<const VesselTreeLookupTable *>(m_LookupTableFilter->GetLookupTable());
  if (colors != nullptr && colors->GetSharedMaterialProperties() != nullptr)
  {
    colors->GetSharedMaterialProperties()->ApplyTo(m_Actor->GetProperty());
    m_Actor->Modified();
  }

  // Ids that belong to no vessel have the fully transparent colour for invisible, which would make VTK draw the
  // whole tree in its translucent pass (wrong depth order, see-through tubes); no such id is on the geometry.
  m_Actor->SetForceOpaque(m_Actor->GetProperty()->GetOpacity() >= 1.0);
  m_PolyDataMapper->SetLookupTable(m_LookupTableFilter->GetOutput()->GetVtkLookupTable());
  m_PolyDataMapper->SetScalarRange(0.0, static_cast<double>(input->GetMaxVesselId(0)));
  m_PolyDataMapper->SetColorModeToMapScalars();
  m_PolyDataMapper->SetScalarModeToUsePointFieldData();
  m_PolyDataMapper->ColorByArrayComponent("vesselIds", 0);
  m_PolyDataMapper->ScalarVisibilityOn();
  m_PolyDataMapper->Modified();
  if (m_PolyDataMapper->GetInput() != nullptr)
  {
    m_PolyDataMapper->Update();
  }
}

vtkPolyData *
YetAnotherVesselTreeMapper3D::GetRenderedPolyData() const
{
  return this->IsSkeletonRendered() ? m_Skeleton : m_Surface;
}

bool
YetAnotherVesselTreeMapper3D::IsSkeletonRendered() const
{
  const DataNode * node = this->GetDataNode();
  if (node == nullptr)
  {
    itkWarningMacro("associated node is NULL!");
    return false;
  }
  bool skeleton = false;
  node->GetBoolProperty("Render skeleton", skeleton);
  return skeleton;
}

itk::ModifiedTimeType
YetAnotherVesselTreeMapper3D::GetLookupTableMTime() const
{
  const DataNode * node = this->GetDataNode();
  const auto * property =
    node ? dynamic_cast<const VesselTreeLookupTableProperty *>(node->GetProperty("VesselTreeLookupTable")) : nullptr;
  const VesselTreeLookupTable * table = property ? property->GetVesselTreeLookupTable() : nullptr;
  return table ? table->GetMTime() : 0;
}

void
YetAnotherVesselTreeMapper3D::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "NumberOfSides: " << m_NumberOfSides << '\n';
  os << indent << "Skeleton points: " << (m_Skeleton ? m_Skeleton->GetNumberOfPoints() : 0) << '\n';
  os << indent << "Surface points: " << (m_Surface ? m_Surface->GetNumberOfPoints() : 0) << '\n';
  os << indent << "GeometryBuildCount: " << m_GeometryBuildCount << '\n';
  os << indent << "ColorUpdateCount: " << m_ColorUpdateCount << '\n';
}
} // namespace lumo
