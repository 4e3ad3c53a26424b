#include "lumoVesselTreePicker.h"

#include "lumoYetAnotherVesselTreeMapper3D.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCell.h>
#include <vtkCellPicker.h>
#include <vtkMath.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkRenderer.h>
#include <vtkUnsignedIntArray.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

namespace lumo
{
namespace
{
using Vec = std::array<double, 3>;

Vec
sub(const Vec & a, const Vec & b)
{
  return { a[0] - b[0], a[1] - b[1], a[2] - b[2] };
}
double
dot(const Vec & a, const Vec & b)
{
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Vec
at(const VesselPoint & p)
{
  return { p.x, p.y, p.z };
}
double
radiusOf(const VesselPoint & p)
{
  return 0.5 * std::fabs(p.diameter);
}

/** Depth along the ray (origin o, unit direction d) at which it enters the sphere; false when it misses. */
bool
raySphere(const Vec & o, const Vec & d, const Vec & centre, double r, double & depth)
{
  const Vec oc = sub(centre, o);
  const double t = dot(oc, d);
  const double dist2 = dot(oc, oc) - t * t;
  if (dist2 > r * r)
  {
    return false;
  }
  depth = t - std::sqrt(r * r - dist2);
  return true;
}

/** Depth at which the ray enters the tube around the segment a-b (radii ra, rb linearly between); false when the
 *  ray passes the tube. The tube is tested at the ray's closest approach to the axis, where a miss is certain to
 *  be a miss; the entry depth is moved forward from there by the chord through the tube's cross-section. */
bool
rayTube(const Vec & o, const Vec & d, const Vec & a, const Vec & b, double ra, double rb, double & depth)
{
  const Vec u = sub(b, a);
  const double uu = dot(u, u);
  if (uu <= 0.0)
  {
    return raySphere(o, d, a, std::max(ra, rb), depth);
  }
  const Vec w = sub(o, a);
  const double ud = dot(u, d);
  const double denominator = uu - ud * ud; // uu * sin^2 of the angle between axis and ray
  double s = 0.0;
  if (denominator > 1e-12 * uu)
  {
    // closest points of the axis line and the ray line: s along the axis
    s = (dot(u, w) - ud * dot(d, w)) / denominator;
  }
  s = std::clamp(s, 0.0, 1.0);
  const Vec onAxis = { a[0] + s * u[0], a[1] + s * u[1], a[2] + s * u[2] };
  const double t = dot(sub(onAxis, o), d);
  const Vec onRay = { o[0] + t * d[0], o[1] + t * d[1], o[2] + t * d[2] };
  const Vec gap = sub(onAxis, onRay);
  const double dist2 = dot(gap, gap);
  const double r = ra + s * (rb - ra);
  if (dist2 > r * r)
  {
    return false;
  }
  const double sine = std::sqrt(std::max(denominator / uu, 1e-6));
  depth = t - std::sqrt(r * r - dist2) / sine;
  return true;
}

/** Distance from p to the surface of the tube around a-b (negative inside). */
double
tubeDistance(const Vec & p, const Vec & a, const Vec & b, double ra, double rb)
{
  const Vec u = sub(b, a);
  const double uu = dot(u, u);
  const double s = uu > 0.0 ? std::clamp(dot(sub(p, a), u) / uu, 0.0, 1.0) : 0.0;
  const Vec gap = sub(p, { a[0] + s * u[0], a[1] + s * u[1], a[2] + s * u[2] });
  return std::sqrt(dot(gap, gap)) - (ra + s * (rb - ra));
}

/** Calls visit(vessel) for every visible vessel of the tree at time step 0 that has points. */
template <class Visit>
void
forEachVisibleVessel(const VesselTreeData * data, const Visit & visit)
{
  const ArVesselTree tree = data ? data->GetVesselTreeData(0) : ArVesselTree();
  if (tree.isNull())
  {
    return;
  }
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (!vessel.isNull() && vessel->getProperties().isVisible() && vessel->numberOfPoints() > 0)
    {
      visit(*vessel);
    }
  }
}
} // namespace

VesselTreePicker::VesselTreePicker()
{
  this->SetNumberOfRequiredInputs(1);
}

void
VesselTreePicker::SetInput(const VesselTreeData * tree)
{
  this->SetNthInput(0, const_cast<VesselTreeData *>(tree));
}

const VesselTreeData *
VesselTreePicker::GetInput() const
{
  return dynamic_cast<const VesselTreeData *>(this->GetPrimaryInput());
}

void
VesselTreePicker::SetDisplayPosition(float x, float y)
{
  if (x != m_DisplayPosition[0] || y != m_DisplayPosition[1])
  {
    m_DisplayPosition[0] = x;
    m_DisplayPosition[1] = y;
    this->Modified();
  }
}

void
VesselTreePicker::SetRenderer(BaseRenderer * renderer)
{
  if (m_Renderer.GetPointer() != renderer)
  {
    m_Renderer = renderer;
    this->Modified();
  }
}

void
VesselTreePicker::SetDataNode(DataNode * node)
{
  if (m_DataNode.GetPointer() != node)
  {
    m_DataNode = node;
    this->Modified();
  }
}

void
VesselTreePicker::Update()
{
  this->GenerateData();
}

void
VesselTreePicker::GenerateData()
{
  m_PickedVesselId = VesselTreeData::ErrorId;
  m_Picked = false;
  switch (m_PickingMode)
  {
    case NearestPoint:
      this->PickNearestPoint();
      break;
    case Ray:
      this->PickAlongRay();
      break;
    case CellPicking:
      this->PickCell();
      break;
    default:
      itkWarningMacro("Bad picking mode");
      break;
  }
}

void
VesselTreePicker::PickNearestPoint()
{
  const VesselTreeData * input = this->GetInput();
  BaseRenderer * renderer = m_Renderer.GetPointer();
  if (renderer == nullptr)
  {
    itkWarningMacro("vtkRenderer is NULL! Maybe you have forgotten to set it?");
    return;
  }
  if (input == nullptr)
  {
    itkWarningMacro("Input is NULL!");
    return;
  }
  double world[3];
  if (!renderer->PickWorldPoint(m_DisplayPosition[0], m_DisplayPosition[1], world))
  {
    return; // background
  }
  const Vec p = { world[0], world[1], world[2] };
  double best = std::numeric_limits<double>::infinity();
  forEachVisibleVessel(input, [&](const Vessel & vessel) {
    const auto & points = vessel.getPoints();
    // Distance to the vessel's surface, so that a thin vessel beside a thick one does not win on a point of the
    // thick one's wall.
    for (std::size_t i = 0; i < points.size(); ++i)
    {
      const std::size_t j = i + 1 < points.size() ? i + 1 : i;
      const double distance = tubeDistance(p, at(points[i]), at(points[j]), radiusOf(points[i]), radiusOf(points[j]));
      if (distance < best)
      {
        best = distance;
        m_PickedVesselId = vessel.getVesselId();
      }
    }
  });
  m_Picked = m_PickedVesselId != VesselTreeData::ErrorId;
}

bool
VesselTreePicker::ComputeRay(double nearPoint[3], double farPoint[3], double direction[3])
{
  vtkRenderer * renderer = m_Renderer->GetVtkRenderer();
  double * ends[2] = { nearPoint, farPoint };
  for (int k = 0; k < 2; ++k)
  {
    renderer->SetDisplayPoint(m_DisplayPosition[0], m_DisplayPosition[1], static_cast<double>(k));
    renderer->DisplayToWorld();
    double homogeneous[4];
    renderer->GetWorldPoint(homogeneous);
    if (homogeneous[3] == 0.0)
    {
      itkWarningMacro("Bad homogeneous coordinates");
      return false;
    }
    for (int c = 0; c < 3; ++c)
    {
      ends[k][c] = homogeneous[c] / homogeneous[3];
    }
  }
  for (int c = 0; c < 3; ++c)
  {
    direction[c] = farPoint[c] - nearPoint[c];
  }
  if (vtkMath::Normalize(direction) == 0.0)
  {
    itkWarningMacro("Cannot process points");
    return false;
  }
  return true;
}

void
VesselTreePicker::PickAlongRay()
{
  for (int c = 0; c < 3; ++c)
  {
    m_NearPoint[c] = m_FarPoint[c] = 0.0f;
  }
  m_PickedVesselId = VesselTreeData::ErrorId;
  m_Picked = true;
  if (m_Renderer.GetPointer() == nullptr)
  {
    itkWarningMacro("vtkRenderer is NULL! Maybe you have forgotten to set it?");
    m_Picked = false;
    return;
  }
  const VesselTreeData * input = this->GetInput();
  if (input == nullptr)
  {
    itkWarningMacro("Input is NULL!");
    m_Picked = false;
    return;
  }
  double nearPoint[3], farPoint[3], direction[3];
  if (!this->ComputeRay(nearPoint, farPoint, direction))
  {
    m_Picked = false;
    return;
  }
  for (int c = 0; c < 3; ++c)
  {
    m_NearPoint[c] = static_cast<float>(nearPoint[c]);
    m_FarPoint[c] = static_cast<float>(farPoint[c]);
  }
  // The direction from the near to the far point is the view direction through this pixel (it equals the
  // camera's direction of projection in parallel projection and follows the pixel in perspective).
  const Vec o = { nearPoint[0], nearPoint[1], nearPoint[2] };
  const Vec d = { direction[0], direction[1], direction[2] };
  double nearest = std::numeric_limits<double>::infinity();
  forEachVisibleVessel(input, [&](const Vessel & vessel) {
    const auto & points = vessel.getPoints();
    double depth = 0.0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
    {
      if (rayTube(o, d, at(points[i]), at(points[i + 1]), radiusOf(points[i]), radiusOf(points[i + 1]), depth) &&
          depth < nearest)
      {
        nearest = depth;
        m_PickedVesselId = vessel.getVesselId();
      }
    }
    if (raySphere(o, d, at(points.back()), radiusOf(points.back()), depth) && depth < nearest)
    {
      nearest = depth;
      m_PickedVesselId = vessel.getVesselId();
    }
  });
  m_Picked = m_PickedVesselId != VesselTreeData::ErrorId;
}

void
VesselTreePicker::PickCell()
{
  BaseRenderer * renderer = m_Renderer.GetPointer();
  if (renderer == nullptr)
  {
    itkWarningMacro("vtkRenderer is NULL! Maybe you have forgotten to set it?");
    return;
  }
  auto picker = vtkSmartPointer<vtkCellPicker>::New();
  picker->SetTolerance(static_cast<double>(0.001f));
  if (picker->Pick(m_DisplayPosition[0], m_DisplayPosition[1], 0.0, renderer->GetVtkRenderer()) == 0)
  {
    return;
  }
  vtkActor * actor = picker->GetActor();
  vtkAbstractMapper3D * pickedMapper = actor ? actor->GetMapper() : picker->GetMapper();
  if (!this->ValidatePickedMapper(pickedMapper))
  {
    itkWarningMacro("): Validation of picked vessel tree returned false!");
    return;
  }
  vtkPolyData * polyData = vtkPolyDataMapper::SafeDownCast(pickedMapper)->GetInput();
  const vtkIdType cellId = picker->GetCellId();
  if (polyData == nullptr || cellId < 0)
  {
    return;
  }
  vtkCell * cell = polyData->GetCell(cellId);
  auto * ids = vtkUnsignedIntArray::SafeDownCast(polyData->GetPointData()->GetArray("vesselIds"));
  const vtkIdType index = cell && cell->GetNumberOfPoints() > 0 ? cell->GetPointId(0) : -1;
  if (ids == nullptr || index < 0)
  {
    return;
  }
  m_PickedVesselId = static_cast<std::int32_t>(ids->GetValue(index));
  m_Picked = true;
}

bool
VesselTreePicker::ValidatePickedMapper(vtkAbstractMapper3D * picked)
{
  DataNode * node = m_DataNode.GetPointer();
  if (node == nullptr)
  {
    itkWarningMacro("): DataNode is NULL");
    return false;
  }
  if (node->GetData() == nullptr)
  {
    itkWarningMacro("data is NULL");
    return false;
  }
  auto * mapper = dynamic_cast<YetAnotherVesselTreeMapper3D *>(node->GetMapper(DataNode::Standard3D));
  if (mapper == nullptr)
  {
    itkWarningMacro("): vessel tree has an unsupported 3d mapper associated!");
    return false;
  }
  auto * polyDataMapper = vtkPolyDataMapper::SafeDownCast(mapper->GetPolyDataMapper());
  if (polyDataMapper == nullptr)
  {
    itkWarningMacro("vessel tree mapper isn't a poly data mapper");
    return false;
  }
  if (vtkActor::SafeDownCast(mapper->GetVtkProp(m_Renderer.GetPointer())) == nullptr)
  {
    itkWarningMacro("vessel tree mapper doesn't return a vtkActor as prop!");
    return false;
  }
  return picked == polyDataMapper;
}

void
VesselTreePicker::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "DisplayPosition: " << m_DisplayPosition[0] << ", " << m_DisplayPosition[1] << '\n';
  os << indent << "PickingMode: " << m_PickingMode << '\n';
  os << indent << "PickedVesselId: " << m_PickedVesselId << '\n';
  os << indent << "Picked: " << m_Picked << '\n';
}
} // namespace lumo
