#include "lumoSurfaceBasedVesselTreeMapper3D.h"

#include "lumoDataNode.h"
#include "lumoPointLocator.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkFloatArray.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyDataNormals.h>
#include <vtkSMPTools.h>
#include <vtkTriangleFilter.h>
#include <vtkUnsignedIntArray.h>

#include <algorithm>
#include <iostream>
#include <vector>

namespace lumo
{
namespace
{
itk::ModifiedTimeType
SurfaceTime(const Surface * surface)
{
  if (surface == nullptr)
  {
    return 0;
  }
  const vtkPolyData * polyData = surface->GetVtkPolyData(0);
  return std::max<itk::ModifiedTimeType>(surface->GetMTime(),
                                         polyData ? const_cast<vtkPolyData *>(polyData)->GetMTime() : 0);
}
} // namespace

SurfaceBasedVesselTreeMapper3D::SurfaceBasedVesselTreeMapper3D() = default;

SurfaceBasedVesselTreeMapper3D::~SurfaceBasedVesselTreeMapper3D() = default;

void
SurfaceBasedVesselTreeMapper3D::SetInputSurface(Surface * surface)
{
  if (m_InputSurface.GetPointer() != surface)
  {
    m_InputSurface = surface;
    this->Modified();
  }
}

Surface *
SurfaceBasedVesselTreeMapper3D::GetInputSurface() const
{
  return m_InputSurface;
}

bool
SurfaceBasedVesselTreeMapper3D::InputSurfaceAvailable() const
{
  return m_InputSurface.IsNotNull() && m_InputSurface->GetVtkPolyData(0) != nullptr;
}

bool
SurfaceBasedVesselTreeMapper3D::PreprocessedSurfaceAvailable() const
{
  return m_PreprocessedSurface != nullptr;
}

bool
SurfaceBasedVesselTreeMapper3D::SkeletonAvailable() const
{
  const vtkPolyData * skeleton = this->GetSkeleton();
  return skeleton != nullptr && const_cast<vtkPolyData *>(skeleton)->GetNumberOfPoints() > 0;
}

bool
SurfaceBasedVesselTreeMapper3D::PreprocessSurface()
{
  std::cout << "Preprocess surface called..." << std::endl;
  if (!this->InputSurfaceAvailable())
  {
    itkWarningMacro("): no input surface available");
    return false;
  }
  // Quads and strips become triangles, so that every cell has a centroid of three corners and one colour.
  auto triangles = vtkSmartPointer<vtkTriangleFilter>::New();
  triangles->SetInputData(m_InputSurface->GetVtkPolyData(0));
  triangles->PassVertsOff();
  triangles->PassLinesOff();
  triangles->Update();
  vtkSmartPointer<vtkPolyData> surface = triangles->GetOutput();
  if (surface == nullptr)
  {
    itkWarningMacro("): output of triangle filter is NULL!");
    return false;
  }
  surface->BuildCells();
  surface->BuildLinks();

  if (!this->SkeletonAvailable())
  {
    itkWarningMacro("): Skeleton not available or empty...");
    return false;
  }
  vtkPolyData * source = m_UseTubedSurface ? this->GetSurface() : this->GetSkeleton();
  auto * sourceIds =
    source ? vtkUnsignedIntArray::SafeDownCast(source->GetPointData()->GetArray("vesselIds")) : nullptr;
  if (source == nullptr || sourceIds == nullptr || source->GetNumberOfPoints() == 0)
  {
    itkWarningMacro("): Skeleton not available or empty...");
    return false;
  }
  auto locator = PointLocator::New();
  locator->SetPoints(source->GetPoints());

  // The corners in one flat array (and the triangle test on the way): the parallel loop below then reads plain
  // memory, where the cell array's own traversal keeps state and is not safe to share between threads.
  const vtkIdType cells = surface->GetNumberOfCells();
  std::vector<vtkIdType> corners(static_cast<std::size_t>(3 * cells));
  {
    vtkIdType count = 0;
    const vtkIdType * cell = nullptr;
    vtkIdType index = 0;
    vtkCellArray * polys = surface->GetPolys();
    for (polys->InitTraversal(); polys->GetNextCell(count, cell); ++index)
    {
      if (count != 3)
      {
        itkWarningMacro("): cell is not a triangle");
        return false;
      }
      std::copy(cell, cell + 3, corners.begin() + 3 * index);
    }
  }
  auto ids = vtkSmartPointer<vtkUnsignedIntArray>::New();
  ids->SetName("vesselIds");
  ids->SetNumberOfComponents(1);
  ids->SetNumberOfTuples(cells);
  unsigned int * out = ids->GetPointer(0);
  const unsigned int * vesselOf = sourceIds->GetPointer(0);
  vtkPoints * surfacePoints = surface->GetPoints();
  // Independent queries of a read-only k-d tree: one range of triangles per task of VTK's pool.
  vtkSMPTools::For(0, cells, [&](vtkIdType first, vtkIdType last) {
    for (vtkIdType cell = first; cell < last; ++cell)
    {
      const vtkIdType * corner = corners.data() + 3 * cell;
      double a[3], b[3], c[3];
      surfacePoints->GetPoint(corner[0], a);
      surfacePoints->GetPoint(corner[1], b);
      surfacePoints->GetPoint(corner[2], c);
      const vtkIdType nearest =
        locator->FindClosestPoint((a[0] + b[0] + c[0]) / 3.0, (a[1] + b[1] + c[1]) / 3.0, (a[2] + b[2] + c[2]) / 3.0);
      out[cell] = nearest >= 0 ? vesselOf[nearest] : 0u;
    }
  });
  surface->GetCellData()->RemoveArray("vesselIds");
  surface->GetCellData()->AddArray(ids);
  m_PreprocessedSurface = surface;
  std::cout << "...finished!" << std::endl;
  return true;
}

void
SurfaceBasedVesselTreeMapper3D::BuildSkeletonSurface()
{
  std::cout << "Build skeleton surface called..." << std::endl;
  if (!this->PreprocessedSurfaceAvailable() && !this->PreprocessSurface())
  {
    itkWarningMacro("): couldn't preprocess surface!");
  }
  vtkPolyData * surface = m_PreprocessedSurface;
  if (surface == nullptr)
  {
    itkWarningMacro("): preprocessed surface is NULL");
    return;
  }
  auto * triangleIds = vtkUnsignedIntArray::SafeDownCast(surface->GetCellData()->GetArray("vesselIds"));
  const vtkIdType cells = surface->GetNumberOfCells();
  auto points = vtkSmartPointer<vtkPoints>::New();
  points->SetDataTypeToFloat();
  points->Allocate(3 * cells);
  auto ids = vtkSmartPointer<vtkUnsignedIntArray>::New();
  ids->SetName("vesselIds");
  ids->SetNumberOfComponents(1);
  ids->Allocate(3 * cells);
  auto polys = vtkSmartPointer<vtkCellArray>::New();
  polys->AllocateExact(cells, 3 * cells);
  vtkIdType count = 0;
  const vtkIdType * corners = nullptr;
  for (vtkIdType cell = 0; cell < cells; ++cell)
  {
    surface->GetCellPoints(cell, count, corners);
    if (count != 3)
    {
      itkWarningMacro("): non-triangle encountered!");
      continue;
    }
    // Each triangle gets corners of its own, so that its colour does not blend into its neighbours'.
    const double id = triangleIds ? static_cast<double>(triangleIds->GetValue(cell)) : 0.0;
    const vtkIdType first = points->GetNumberOfPoints();
    for (vtkIdType k = 0; k < 3; ++k)
    {
      points->InsertNextPoint(surface->GetPoint(corners[k]));
      ids->InsertNextTuple1(id);
    }
    const vtkIdType triangle[3] = { first, first + 1, first + 2 };
    polys->InsertNextCell(3, triangle);
  }
  auto labelled = vtkSmartPointer<vtkPolyData>::New();
  labelled->SetPoints(points);
  labelled->SetPolys(polys);
  labelled->GetPointData()->RemoveArray("vesselIds");
  labelled->GetPointData()->AddArray(ids);
  labelled->Modified();
  this->PostProcessSurface(labelled);
  m_LabelledSurface = labelled;
  m_LabelledInputTime = SurfaceTime(m_InputSurface);
  std::cout << "...finished!" << std::endl;
}

void
SurfaceBasedVesselTreeMapper3D::PostProcessSurface(vtkPolyData * labelled)
{
  // Normals of the shared-vertex surface average over the triangles around a vertex; computed on the labelled
  // surface they would be one per triangle (its corners are its own) and show every facet. Without consistency
  // reordering and with only triangles passed, the normals filter keeps the cells and their corner order, so corner
  // k of output triangle i is corner k of labelled triangle i, even where a smaller feature angle splits vertices.
  auto normals = vtkSmartPointer<vtkPolyDataNormals>::New();
  normals->SetInputData(m_PreprocessedSurface);
  normals->SetFeatureAngle(m_FeatureAngle);
  normals->SplittingOn();
  normals->ConsistencyOff();
  normals->AutoOrientNormalsOff();
  normals->ComputePointNormalsOn();
  normals->ComputeCellNormalsOff();
  normals->Update();
  vtkPolyData * smooth = normals->GetOutput();
  vtkDataArray * smoothNormals = smooth->GetPointData()->GetNormals();
  if (smoothNormals == nullptr || smooth->GetNumberOfPolys() * 3 != labelled->GetNumberOfPoints())
  {
    return; // non-triangles were left out: no corner correspondence, VTK's renderer makes its own normals
  }
  auto perCorner = vtkSmartPointer<vtkFloatArray>::New();
  perCorner->SetName("Normals");
  perCorner->SetNumberOfComponents(3);
  perCorner->SetNumberOfTuples(labelled->GetNumberOfPoints());
  vtkCellArray * polys = smooth->GetPolys();
  vtkIdType count = 0;
  const vtkIdType * corners = nullptr;
  vtkIdType corner = 0;
  for (polys->InitTraversal(); polys->GetNextCell(count, corners);)
  {
    for (vtkIdType k = 0; k < count; ++k)
    {
      perCorner->SetTuple(corner++, smoothNormals->GetTuple(corners[k]));
    }
  }
  labelled->GetPointData()->SetNormals(perCorner);
}

void
SurfaceBasedVesselTreeMapper3D::GenerateSurface()
{
  Superclass::GenerateSurface();
  if (!this->InputSurfaceAvailable())
  {
    m_PreprocessedSurface = nullptr;
    m_LabelledSurface = nullptr;
    return;
  }
  // The tree changed: labels of the old tree are wrong, so a surface that cannot be labelled is not drawn.
  if (this->PreprocessSurface())
  {
    this->BuildSkeletonSurface();
  }
  else
  {
    m_PreprocessedSurface = nullptr;
    m_LabelledSurface = nullptr;
  }
}

void
SurfaceBasedVesselTreeMapper3D::GenerateDataForRenderer(BaseRenderer * renderer)
{
  // Another input surface (or a changed one) after the tree was drawn: the tree's times do not tell.
  if (this->InputSurfaceAvailable() && this->SkeletonAvailable() && SurfaceTime(m_InputSurface) != m_LabelledInputTime)
  {
    if (this->PreprocessSurface())
    {
      this->BuildSkeletonSurface();
    }
    // Tried once per surface change: a surface that cannot be labelled does not warn at every frame.
    m_LabelledInputTime = SurfaceTime(m_InputSurface);
  }
  Superclass::GenerateDataForRenderer(renderer);
}

bool
SurfaceBasedVesselTreeMapper3D::IsLabelledSurfaceRendered() const
{
  if (m_LabelledSurface == nullptr || !this->InputSurfaceAvailable() || this->IsSkeletonRendered())
  {
    return false;
  }
  const DataNode * node = this->GetDataNode();
  bool vesselSurface = true;
  if (node != nullptr)
  {
    node->GetBoolProperty("Render vessel surface", vesselSurface);
  }
  return vesselSurface;
}

vtkPolyData *
SurfaceBasedVesselTreeMapper3D::GetRenderedPolyData() const
{
  return this->IsLabelledSurfaceRendered() ? m_LabelledSurface.GetPointer() : Superclass::GetRenderedPolyData();
}

void
SurfaceBasedVesselTreeMapper3D::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "InputSurface: " << m_InputSurface.GetPointer() << '\n';
  os << indent << "UseTubedSurface: " << (m_UseTubedSurface ? "On" : "Off") << '\n';
  os << indent << "FeatureAngle: " << m_FeatureAngle << '\n';
  os << indent << "Preprocessed triangles: " << (m_PreprocessedSurface ? m_PreprocessedSurface->GetNumberOfCells() : 0)
     << '\n';
  os << indent << "Labelled surface points: " << (m_LabelledSurface ? m_LabelledSurface->GetNumberOfPoints() : 0)
     << '\n';
}
} // namespace lumo
