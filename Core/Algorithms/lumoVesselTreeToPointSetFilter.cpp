#include "lumoVesselTreeToPointSetFilter.h"

#include <vector>

namespace lumo
{
VesselTreeToPointSetFilter::VesselTreeToPointSetFilter()
{
  this->SetNumberOfRequiredInputs(1);
  this->SetNumberOfRequiredOutputs(1);
  this->SetNthOutput(0, this->MakeOutput(0));
}

VesselTreeToPointSetFilter::~VesselTreeToPointSetFilter() = default;

itk::DataObject::Pointer
VesselTreeToPointSetFilter::MakeOutput(DataObjectPointerArraySizeType)
{
  return PointSet::New().GetPointer();
}

void
VesselTreeToPointSetFilter::SetInput(const VesselTreeData * input)
{
  this->SetNthInput(0, const_cast<VesselTreeData *>(input));
}

const VesselTreeData *
VesselTreeToPointSetFilter::GetInput()
{
  return dynamic_cast<const VesselTreeData *>(this->ProcessObject::GetInput(0));
}

PointSet *
VesselTreeToPointSetFilter::GetOutput()
{
  return dynamic_cast<PointSet *>(this->ProcessObject::GetOutput(0));
}

void
VesselTreeToPointSetFilter::GenerateData()
{
  const VesselTreeData * input = this->GetInput();
  PointSet * output = this->GetOutput();
  output->Clear();
  if (input == nullptr)
  {
    return;
  }
  LinkedVesselTree * tree = asLinkedVesselTree(input->GetVesselTreeData(0));
  if (tree == nullptr || tree->getRootNode() == nullptr)
  {
    return;
  }
  PointSet::PointIdentifier id = 0;
  std::vector<const VesselNode *> stack{ tree->getRootNode() };
  while (!stack.empty())
  {
    const VesselNode * node = stack.back();
    stack.pop_back();
    const auto & children = node->children();
    for (auto it = children.rbegin(); it != children.rend(); ++it)
    {
      stack.push_back(*it);
    }
    if (node->getData().isNull())
    {
      continue;
    }
    const Vessel::PointList & points = node->getData()->getPoints();
    const std::size_t first = node->getParent() != nullptr && !m_KeepSharedPoints ? 1 : 0;
    for (std::size_t i = first; i < points.size(); ++i)
    {
      Point3D p;
      p[0] = points[i].x;
      p[1] = points[i].y;
      p[2] = points[i].z;
      output->InsertPoint(id++, p, 0);
    }
  }
}

void
VesselTreeToPointSetFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "KeepSharedPoints: " << m_KeepSharedPoints << std::endl;
}
} // namespace lumo
