// Points with ids per time step.

#include "lumoPointSet.h"

namespace lumo
{
PointSet::PointSet()
  : m_Points(1)
{}

PointSet::~PointSet() = default;

void
PointSet::InsertPoint(PointIdentifier id, const Point3D & point, TimeStepType t)
{
  if (t >= m_Points.size())
  {
    this->Expand(t + 1);
  }
  m_Points[t][id] = point;
  m_Initialized = true;
  this->CalculateBounds(t);
  this->Modified();
}

PointSet::PointIdentifier
PointSet::AddPoint(const Point3D & point, TimeStepType t)
{
  PointIdentifier id = 0;
  if (t < m_Points.size() && !m_Points[t].empty())
  {
    id = m_Points[t].rbegin()->first + 1;
  }
  this->InsertPoint(id, point, t);
  return id;
}

bool
PointSet::RemovePoint(PointIdentifier id, TimeStepType t)
{
  if (t >= m_Points.size() || m_Points[t].erase(id) == 0)
  {
    return false;
  }
  this->CalculateBounds(t);
  this->Modified();
  return true;
}

bool
PointSet::IndexExists(PointIdentifier id, TimeStepType t) const
{
  return t < m_Points.size() && m_Points[t].count(id) > 0;
}

bool
PointSet::GetPointIfExists(PointIdentifier id, Point3D & point, TimeStepType t) const
{
  if (t >= m_Points.size())
  {
    return false;
  }
  const auto it = m_Points[t].find(id);
  if (it == m_Points[t].end())
  {
    return false;
  }
  point = it->second;
  return true;
}

Point3D
PointSet::GetPoint(PointIdentifier id, TimeStepType t) const
{
  Point3D point;
  if (!this->GetPointIfExists(id, point, t))
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "PointSet::GetPoint: no point " + std::to_string(id) + " at time step " +
                                      std::to_string(t),
                                    "lumo::PointSet::GetPoint");
  }
  return point;
}

std::size_t
PointSet::GetSize(TimeStepType t) const
{
  return t < m_Points.size() ? m_Points[t].size() : 0;
}

const PointSet::PointsContainer &
PointSet::GetPoints(TimeStepType t) const
{
  static const PointsContainer empty;
  return t < m_Points.size() ? m_Points[t] : empty;
}

bool
PointSet::IsEmptyTimeStep(TimeStepType t) const
{
  return this->GetSize(t) == 0;
}

void
PointSet::Expand(unsigned int timeSteps)
{
  Superclass::Expand(timeSteps);
  if (timeSteps > m_Points.size())
  {
    m_Points.resize(timeSteps);
  }
}

void
PointSet::Clear()
{
  m_Points.assign(1, PointsContainer());
  Superclass::Clear();
}

void
PointSet::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const PointSet *>(data);
  if (!other || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  m_Points = other->m_Points;
}

void
PointSet::CalculateBounds(TimeStepType t)
{
  Geometry3D * geometry = this->GetGeometry(t);
  if (!geometry || t >= m_Points.size())
  {
    return;
  }
  Geometry3D::BoundsArrayType bounds;
  bounds.Fill(0.0);
  bool first = true;
  for (const auto & entry : m_Points[t])
  {
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
      const ScalarType value = entry.second[axis];
      if (first || value < bounds[2 * axis])
      {
        bounds[2 * axis] = value;
      }
      if (first || value > bounds[2 * axis + 1])
      {
        bounds[2 * axis + 1] = value;
      }
    }
    first = false;
  }
  geometry->SetBounds(bounds);
}

void
PointSet::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  for (TimeStepType t = 0; t < m_Points.size(); ++t)
  {
    os << indent << "Time step " << t << ": " << m_Points[t].size() << " points" << std::endl;
  }
}
} // namespace lumo
