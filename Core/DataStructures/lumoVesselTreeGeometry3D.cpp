#include "lumoVesselTreeGeometry3D.h"

#include <itkBoundingBox.h>
#include <itkVectorContainer.h>

namespace lumo
{
VesselTreeGeometry3D::VesselTreeGeometry3D() = default;

VesselTreeGeometry3D::~VesselTreeGeometry3D() = default;

void
VesselTreeGeometry3D::InitializeWithTree(const ArVesselTree & tree)
{
  if (tree.isNull())
  {
    itkWarningMacro("cannot initialise with a NULL vessel tree!");
    return;
  }
  m_Tree = tree;
  Superclass::Initialize();
  this->UpdateBounds();
}

void
VesselTreeGeometry3D::UpdateBounds()
{
  if (m_Tree.isNull())
  {
    itkWarningMacro("no vessel tree to compute the bounds of!");
    return;
  }
  using PointsContainer = itk::VectorContainer<itk::IdentifierType, itk::Point<ScalarType, 3>>;
  using BoundingBoxType = itk::BoundingBox<itk::IdentifierType, 3, ScalarType, PointsContainer>;
  auto points = PointsContainer::New();
  itk::IdentifierType index = 0;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(m_Tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull())
    {
      continue;
    }
    for (const VesselPoint & p : vessel->getPoints())
    {
      itk::Point<ScalarType, 3> point;
      point[0] = p.x;
      point[1] = p.y;
      point[2] = p.z;
      points->InsertElement(index++, point);
    }
  }
  auto box = BoundingBoxType::New();
  box->SetPoints(points);
  box->ComputeBoundingBox();
  BoundsArrayType bounds;
  const auto & computed = box->GetBounds();
  for (unsigned int i = 0; i < 6; ++i)
  {
    bounds[i] = computed[i];
  }
  this->SetBounds(bounds);
}

void
VesselTreeGeometry3D::CopyValuesTo(Geometry3D * other) const
{
  Superclass::CopyValuesTo(other);
  if (auto * vesselGeometry = dynamic_cast<VesselTreeGeometry3D *>(other))
  {
    vesselGeometry->m_Tree = m_Tree;
  }
}

void
VesselTreeGeometry3D::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Tree: " << (m_Tree.isNull() ? "none" : "held") << std::endl;
}
} // namespace lumo
