#include "lumoPruneVesselTreeFilter.h"

#include "ChildMergingTreeCleaner.h"

#include <vector>

namespace lumo
{
namespace
{
double
meanDiameter(const Vessel & vessel)
{
  if (vessel.numberOfPoints() == 0)
  {
    return 0.0;
  }
  double sum = 0.0;
  for (const VesselPoint & p : vessel.getPoints())
  {
    sum += p.diameter;
  }
  return sum / static_cast<double>(vessel.numberOfPoints());
}
} // namespace

PruneVesselTreeFilter::PruneVesselTreeFilter() = default;

PruneVesselTreeFilter::~PruneVesselTreeFilter() = default;

void
PruneVesselTreeFilter::GenerateData()
{
  m_NumberOfDroppedVessels = 0;
  const VesselTreeData * input = this->GetInput();
  VesselTreeData * output = this->GetOutput();
  if (input == nullptr)
  {
    itkWarningMacro("Input is NULL!");
    return;
  }
  const ArVesselTree tree = cloneVesselTree(input->GetVesselTreeData(0));
  LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked != nullptr && linked->getRootNode() != nullptr)
  {
    for (bool dropped = true; dropped;)
    {
      dropped = false;
      std::vector<VesselNode *> leaves;
      std::vector<VesselNode *> stack{ linked->getRootNode() };
      while (!stack.empty())
      {
        VesselNode * node = stack.back();
        stack.pop_back();
        for (VesselNode * child : node->children())
        {
          stack.push_back(child);
        }
        if (node->getParent() == nullptr || node->hasChildren() || node->getData().isNull())
        {
          continue;
        }
        const Vessel & vessel = *node->getData();
        if (vessel.centreLineLength() < m_MinimumLength || meanDiameter(vessel) < m_MinimumDiameter)
        {
          leaves.push_back(node);
        }
      }
      for (VesselNode * leaf : leaves)
      {
        delete leaf; // unlinks itself from its parent
      }
      m_NumberOfDroppedVessels += leaves.size();
      dropped = !leaves.empty();
    }
    if (m_MergeSingleChildren)
    {
      ChildMergingTreeCleaner().clean(tree);
    }
    else
    {
      VesselTreeCleaner::renumberBreadthFirst(tree);
    }
  }
  output->SetVesselTreeData(tree, 0);
  output->SetActivationMode(input->GetActivationMode(0), 0);
}

void
PruneVesselTreeFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "MinimumLength: " << m_MinimumLength << std::endl;
  os << indent << "MinimumDiameter: " << m_MinimumDiameter << std::endl;
  os << indent << "MergeSingleChildren: " << m_MergeSingleChildren << std::endl;
}
} // namespace lumo
