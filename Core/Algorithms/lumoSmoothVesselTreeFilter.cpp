#include "lumoSmoothVesselTreeFilter.h"

#include "BinomialCentreLineSmoother.h"

#include <algorithm>

namespace lumo
{
SmoothVesselTreeFilter::SmoothVesselTreeFilter()
  : m_Smoother(new BinomialCentreLineSmoother)
{}

SmoothVesselTreeFilter::~SmoothVesselTreeFilter() = default;

void
SmoothVesselTreeFilter::SetSmoother(CentreLineSmoother * smoother)
{
  if (smoother == nullptr || smoother == m_Smoother.get())
  {
    return;
  }
  m_Smoother.reset(smoother);
  m_SeenSmootherCount = smoother->getModificationCount();
  this->Modified();
}

CentreLineSmoother *
SmoothVesselTreeFilter::GetSmoother() const
{
  return m_Smoother.get();
}

itk::ModifiedTimeType
SmoothVesselTreeFilter::GetMTime() const
{
  if (m_Smoother->getModificationCount() != m_SeenSmootherCount)
  {
    m_SeenSmootherCount = m_Smoother->getModificationCount();
    m_SmootherTime.Modified();
  }
  return std::max(Superclass::GetMTime(), m_SmootherTime.GetMTime());
}

void
SmoothVesselTreeFilter::GenerateData()
{
  const VesselTreeData * input = this->GetInput();
  VesselTreeData * output = this->GetOutput();
  if (input == nullptr)
  {
    itkWarningMacro("Input is NULL!");
    return;
  }
  const ArVesselTree tree = cloneVesselTree(input->GetVesselTreeData(0));
  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      if (vessel.isNull())
      {
        continue;
      }
      Vessel::PointList points = vessel->getPoints();
      m_Smoother->smooth(points, m_NumberOfIterations);
      vessel->setPoints(std::move(points));
    }
  }
  output->SetVesselTreeData(tree, 0);
  output->SetActivationMode(input->GetActivationMode(0), 0);
}

void
SmoothVesselTreeFilter::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "NumberOfIterations: " << m_NumberOfIterations << std::endl;
}
} // namespace lumo
