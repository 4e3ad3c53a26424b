#include "VesselTreeSamplers.h"

#include <memory>

VesselElementList *
AbstractVesselTreeSampler::sampleVesselTree(ArVesselTree tree)
{
  auto * list = new VesselElementList();
  if (tree.isNull())
  {
    return list;
  }
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull() || !samplesVessel(*vessel))
    {
      continue;
    }
    const auto id = static_cast<std::uint16_t>(static_cast<std::uint32_t>(vessel->getVesselId()) & 0xFFFFu);
    for (const VesselPoint & p : vessel->getPoints())
    {
      list->push_back(VesselElement{ p.x, p.y, p.z, p.diameter, id });
    }
  }
  return list;
}

bool
EntireVesselTreeSampler::samplesVessel(const Vessel &) const
{
  return true;
}

bool
PortaVesselTreeSampler::samplesVessel(const Vessel & vessel) const
{
  return vessel.getProperties().getBloodVesselType() == PortalVein;
}

bool
HepaVesselTreeSampler::samplesVessel(const Vessel & vessel) const
{
  return vessel.getProperties().getBloodVesselType() == HepaticVein;
}

bool
OnlyDefinedPortaVesselTreeSampler::samplesVessel(const Vessel & vessel) const
{
  return vessel.getProperties().getBloodVesselType() == PortalVein &&
         vessel.getProperties().getSegmentType() != S_Undefined;
}

bool
OnlyDefinedHepaVesselTreeSampler::samplesVessel(const Vessel & vessel) const
{
  return vessel.getProperties().getBloodVesselType() == HepaticVein &&
         vessel.getProperties().getSegmentType() != S_Undefined;
}

void
ResectionStatusVesselTreeSampler::setIgnoreUndefinedStatus(const bool & ignore)
{
  m_ignoreUndefinedStatus = ignore;
}

bool
ResectionStatusVesselTreeSampler::getIgnoreUndefinedStatus() const
{
  return m_ignoreUndefinedStatus;
}

void
ResectionStatusVesselTreeSampler::setVesselType(std::int32_t type)
{
  m_vesselType = type;
}

std::int32_t
ResectionStatusVesselTreeSampler::getVesselType() const
{
  return m_vesselType;
}

bool
ResectionStatusVesselTreeSampler::samplesVessel(const Vessel & vessel) const
{
  if (vessel.getProperties().getBloodVesselType() != m_vesselType)
  {
    return false;
  }
  return !m_ignoreUndefinedStatus || vessel.getProperties().getResectionStatus() != UndefinedResectionStatus;
}
