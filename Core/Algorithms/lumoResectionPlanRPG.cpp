#include "lumoResectionPlanRPG.h"

#include <algorithm>

namespace lumo
{
namespace
{
/** Label 3 or 4 for a vessel of that status, 0 for any other. */
std::uint8_t
plannedLabel(const Vessel & vessel)
{
  const std::int32_t status = vessel.getProperties().getResectionStatus();
  return status == ToBeResected || status == AreaAtRisk ? static_cast<std::uint8_t>(status) : 0;
}
} // namespace

ResectionPlanRPG::ResectionPlanRPG() = default;

ResectionPlanRPG::~ResectionPlanRPG() = default;

void
ResectionPlanRPG::GenerateData()
{
  const Image * organ = this->CheckedOrgan();
  ArVesselTree portal = this->CheckedPortalTree();
  ArVesselTree hepatic = this->CheckedHepaticTree();

  const std::vector<std::uint8_t> portalPlan = TableById(portal, plannedLabel);
  std::vector<std::uint8_t> hepaticPlan;
  if (!hepatic.isNull())
  {
    hepaticPlan = TableById(hepatic, plannedLabel);
  }
  const auto marked = [](const std::vector<std::uint8_t> & table) {
    return std::any_of(table.begin(), table.end(), [](std::uint8_t label) { return label != 0; });
  };
  if (!marked(portalPlan) && !marked(hepaticPlan))
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "No vessel is marked to be resected or at risk", ITK_LOCATION);
  }

  const std::vector<std::uint16_t> & portalIds = this->PortalTerritories();
  const std::vector<std::uint16_t> & hepaticIds = this->HepaticTerritories();
  unsigned char * labels = this->StartResectionImage(organ);
  // The territories hold one id per organ voxel, in the order of the organ runs: k counts the organ voxels.
  std::size_t k = 0;
  for (const OrganRun & run : this->OrganRuns())
  {
    for (std::size_t i = run.start; i < run.start + run.length; ++i, ++k)
    {
      const std::uint8_t planned = portalPlan[portalIds[k]];
      labels[i] = planned != 0 ? planned : RemnantLabel;
      if (labels[i] != ResectedLabel && !hepaticPlan.empty() && hepaticPlan[hepaticIds[k]] != 0)
      {
        labels[i] = AtRiskLabel;
      }
    }
  }
  this->FinishResectionImage(organ, 0);
}

void
ResectionPlanRPG::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
}
} // namespace lumo
