#include "lumoVesselTreeData.h"

#include "lumoVesselTreeGeometry3D.h"
#include "lumoVesselTreeOperation.h"

#include "VesselLabelRules.h"

namespace lumo
{
VesselTreeData::VesselTreeData()
{
  ResizeTimesteps(1);
}

VesselTreeData::VesselTreeData(const VesselTreeData & other)
  : Superclass()
  , m_VesselMaps(other.m_VesselMaps)
  , m_Trees(other.m_Trees)
  , m_PickedVesselIds(other.m_PickedVesselIds)
  , m_ActivationModes(other.m_ActivationModes)
{
  m_Initialized = other.m_Initialized;
  if (other.GetTimeSlicedGeometry() != nullptr)
  {
    this->SetClonedGeometry(other.GetTimeSlicedGeometry());
  }
}

VesselTreeData::~VesselTreeData() = default;

itk::LightObject::Pointer
VesselTreeData::InternalClone() const
{
  Pointer copy = new VesselTreeData(*this);
  copy->UnRegister();
  return copy.GetPointer();
}

std::string
VesselTreeData::GetNameOfBloodVesselType(std::int32_t type)
{
  return VesselLabels::bloodVesselTypeName(type);
}

std::string
VesselTreeData::GetNameOfSegmentType(std::int32_t segment)
{
  return VesselLabels::segmentTypeName(segment);
}

std::string
VesselTreeData::GetNameOfResectionStatus(std::int32_t status)
{
  return VesselLabels::resectionStatusName(status);
}

std::string
VesselTreeData::GetStringForSegment(const std::string & prefix, std::int32_t segment)
{
  return prefix + GetNameOfSegmentType(segment);
}

void
VesselTreeData::AttributesModified()
{
  m_AttributesTime.Modified();
  this->Modified();
}

void
VesselTreeData::TopologyModified()
{
  UpdateVesselMapSeries();
  m_TopologyTime.Modified();
  this->Modified();
}

itk::ModifiedTimeType
VesselTreeData::GetAttributesMTime() const
{
  return m_AttributesTime.GetMTime();
}

itk::ModifiedTimeType
VesselTreeData::GetTopologyMTime() const
{
  return m_TopologyTime.GetMTime();
}

std::int32_t
VesselTreeData::GetMaxVesselId(TimeStep t) const
{
  if (!IsValidTimeStep(t) || m_VesselMaps[t].empty())
  {
    itkWarningMacro("vessel map at timestep " << t << " is empty!");
    return ErrorId;
  }
  return m_VesselMaps[t].rbegin()->first;
}

std::int32_t
VesselTreeData::GetMinVesselId(TimeStep t) const
{
  if (!IsValidTimeStep(t) || m_VesselMaps[t].empty())
  {
    itkWarningMacro("vessel map at timestep " << t << " is empty!");
    return ErrorId;
  }
  return m_VesselMaps[t].begin()->first;
}

bool
VesselTreeData::GetVisibility(std::int32_t id, TimeStep t) const
{
  if (!IsValidTimeStep(t) || m_VesselMaps[t].empty())
  {
    itkWarningMacro("vessel map at timestep " << t << " is empty!");
    return false;
  }
  auto it = m_VesselMaps[t].find(id);
  if (it == m_VesselMaps[t].end() || it->second.isNull())
  {
    itkWarningMacro("unknown vessel id (" << id << ") given.");
    return false;
  }
  return it->second->getProperties().isVisible();
}

template <class Apply>
void
VesselTreeData::ForEachActiveVessel(TimeStep t, const Apply & apply)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t is out of range!");
    return;
  }
  if (m_Trees[t].isNull())
  {
    itkWarningMacro("internal vessel tree at time step " << t << " is NULL!");
    return;
  }
  // Collect first: applying a rule deactivates the vessel.
  std::vector<ar<Vessel>> active;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(m_Trees[t]->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (!vessel.isNull() && vessel->getProperties().isActive())
    {
      active.push_back(vessel);
    }
  }
  for (const ar<Vessel> & vessel : active)
  {
    apply(*vessel);
  }
  AttributesModified();
}

void
VesselTreeData::SetBloodVesselTypeForActive(std::int32_t type, TimeStep t)
{
  ForEachActiveVessel(t, [type](Vessel & vessel) { VesselLabelRules::applyBloodVesselType(vessel, type); });
}

void
VesselTreeData::SetSegmentTypeForActive(std::int32_t segment, TimeStep t)
{
  ForEachActiveVessel(t, [segment](Vessel & vessel) { VesselLabelRules::applySegmentType(vessel, segment); });
}

void
VesselTreeData::SetResectionStatusForActive(std::int32_t status, TimeStep t)
{
  ForEachActiveVessel(t, [status](Vessel & vessel) { VesselLabelRules::applyResectionStatus(vessel, status); });
}

void
VesselTreeData::SetVisibilityForActive(bool visible, TimeStep t)
{
  ForEachActiveVessel(t, [visible](Vessel & vessel) { VesselLabelRules::applyVisibility(vessel, visible); });
}

void
VesselTreeData::SetVisibilityForType(std::int32_t type, bool visible, TimeStep t)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t is out of range!");
    return;
  }
  for (auto & [id, vessel] : m_VesselMaps[t])
  {
    if (!vessel.isNull() && vessel->getProperties().getBloodVesselType() == type)
    {
      vessel->getProperties().setVisible(visible);
    }
  }
  AttributesModified();
}

void
VesselTreeData::SetActivationMode(ActivationMode mode, TimeStep t)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t is out of range!");
    return;
  }
  if (m_ActivationModes[t] == mode)
  {
    return;
  }
  m_ActivationModes[t] = mode;
  UpdateActivation(t);
}

VesselTreeData::ActivationMode
VesselTreeData::GetActivationMode(TimeStep t) const
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t (" << t << ") is out of range!");
    return NoActivation;
  }
  return m_ActivationModes[t];
}

std::int32_t
VesselTreeData::GetPickedVesselId(TimeStep t) const
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t is out of range!");
    return ErrorId;
  }
  return m_PickedVesselIds[t];
}

ar<Vessel>
VesselTreeData::GetVesselById(std::int32_t id, TimeStep t) const
{
  if (!IsValidTimeStep(t))
  {
    return ar<Vessel>();
  }
  auto it = m_VesselMaps[t].find(id);
  return it == m_VesselMaps[t].end() ? ar<Vessel>() : it->second;
}

void
VesselTreeData::GetEstimatedVisibility(bool & undefined,
                                       bool & hepatic,
                                       bool & portal,
                                       bool & artery,
                                       bool & bile,
                                       TimeStep t) const
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t is out of range!");
    return;
  }
  std::size_t count[5] = { 0, 0, 0, 0, 0 };
  std::size_t visible[5] = { 0, 0, 0, 0, 0 };
  if (!m_Trees[t].isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(m_Trees[t]->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      const std::int32_t type = vessel.isNull() ? -1 : vessel->getProperties().getBloodVesselType();
      if (type < 0 || type > 4)
      {
        continue;
      }
      ++count[type];
      if (vessel->getProperties().isVisible())
      {
        ++visible[type];
      }
    }
  }
  // At least half visible; compared without division so that an empty type counts as visible.
  auto estimate = [&](int type) { return 2 * visible[type] >= count[type]; };
  undefined = estimate(UndefinedBloodVesselType);
  hepatic = estimate(HepaticVein);
  portal = estimate(PortalVein);
  artery = estimate(Artery);
  bile = estimate(BileDuct);
}

void
VesselTreeData::initialize(const ArVesselTree & tree)
{
  SetVesselTreeData(tree, 0);
  m_Initialized = true;
}

void
VesselTreeData::SetVesselTreeData(const ArVesselTree & tree, TimeStep t)
{
  if (t < 0)
  {
    itkWarningMacro("timestep t (" << t << ") is out of range!");
    return;
  }
  if (static_cast<std::size_t>(t) >= m_Trees.size())
  {
    ResizeTimesteps(static_cast<std::size_t>(t) + 1);
  }
  m_Trees[t] = tree;
  auto geometry = VesselTreeGeometry3D::New();
  if (!tree.isNull())
  {
    geometry->InitializeWithTree(tree);
  }
  this->SetGeometry(geometry, static_cast<TimeStepType>(t));
  TopologyModified();
  AttributesModified();
}

ArVesselTree
VesselTreeData::GetVesselTreeData(TimeStep t) const
{
  return IsValidTimeStep(t) ? m_Trees[t] : ArVesselTree();
}

void
VesselTreeData::DeactivateAll(TimeStep t)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t is out of range!");
    return;
  }
  if (m_Trees[t].isNull())
  {
    itkWarningMacro("internal vessel tree at time step " << t << " is NULL!");
    return;
  }
  for (auto & [id, vessel] : m_VesselMaps[t])
  {
    if (!vessel.isNull())
    {
      vessel->getProperties().setActive(false);
    }
  }
  // Vessels whose ids collide are not all in the map: walk the tree as well.
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(m_Trees[t]->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (!vessel.isNull())
    {
      vessel->getProperties().setActive(false);
    }
  }
}

void
VesselTreeData::ExecuteOperation(Operation * operation)
{
  auto * vesselOperation = dynamic_cast<VesselTreeOperation *>(operation);
  if (vesselOperation == nullptr)
  {
    itkWarningMacro("Operation is not of type lumo::VesselTreeOperation!");
    return;
  }
  switch (vesselOperation->GetOperationType())
  {
    case VesselTreeOperation::MultipleSelect:
      SetMultiplePickedVesselId(vesselOperation->GetVesselId(), 0);
      break;
    case VesselTreeOperation::Select:
      SetPickedVesselId(vesselOperation->GetVesselId(), 0);
      break;
    case VesselTreeOperation::Deselect:
      SetPickedVesselId(ErrorId, 0);
      break;
    default:
      break;
  }
}

bool
VesselTreeData::IsEmptyTimeStep(TimeStepType t) const
{
  const auto step = static_cast<TimeStep>(t);
  return !IsValidTimeStep(step) || m_Trees[step].isNull() || !m_Trees[step]->hasRoot();
}

void
VesselTreeData::Clear()
{
  Superclass::Clear();
  m_Trees.clear();
  m_VesselMaps.clear();
  m_PickedVesselIds.clear();
  m_ActivationModes.clear();
  ResizeTimesteps(1);
  m_Initialized = false;
  TopologyModified();
  AttributesModified();
}

void
VesselTreeData::Expand(unsigned int timeSteps)
{
  Superclass::Expand(timeSteps);
  if (timeSteps > m_Trees.size())
  {
    ResizeTimesteps(timeSteps);
  }
}

void
VesselTreeData::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const VesselTreeData *>(data);
  if (other == nullptr || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  m_Trees = other->m_Trees;
  m_VesselMaps = other->m_VesselMaps;
  m_PickedVesselIds = other->m_PickedVesselIds;
  m_ActivationModes = other->m_ActivationModes;
  m_Initialized = other->m_Initialized;
  m_TopologyTime.Modified();
  AttributesModified();
}

void
VesselTreeData::UpdateOutputInformation()
{
  Superclass::UpdateOutputInformation();
}

void
VesselTreeData::SetPickedVesselId(std::int32_t id, TimeStep t)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t (" << t << ") is out of range!");
    return;
  }
  m_PickedVesselIds[t] = id;
  UpdateActivation(t);
  AttributesModified();
}

void
VesselTreeData::SetMultiplePickedVesselId(std::int32_t id, TimeStep t)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t (" << t << ") is out of range!");
    return;
  }
  m_PickedVesselIds[t] = id;
  if (id != ErrorId)
  {
    ActivateFrom(id, m_ActivationModes[t], t);
  }
  AttributesModified();
}

void
VesselTreeData::ResizeTimesteps(std::size_t count)
{
  m_VesselMaps.resize(count);
  m_Trees.resize(count);
  m_PickedVesselIds.resize(count, ErrorId);
  m_ActivationModes.resize(count, SingleActivation);
  if (this->GetTimeSteps() < count)
  {
    Superclass::Expand(static_cast<unsigned int>(count));
  }
}

void
VesselTreeData::UpdateVesselMapSeries()
{
  for (std::size_t t = 0; t < m_Trees.size(); ++t)
  {
    VesselMap & map = m_VesselMaps[t];
    map.clear();
    if (m_Trees[t].isNull())
    {
      continue;
    }
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(m_Trees[t]->newPreorderIterator());
    while (it->hasNext())
    {
      ar<Vessel> vessel = it->next();
      if (!vessel.isNull())
      {
        // The first vessel of an id in preorder keeps the entry.
        map.emplace(vessel->getVesselId(), vessel);
      }
    }
  }
}

void
VesselTreeData::ActivateFrom(std::int32_t id, ActivationMode mode, TimeStep t)
{
  auto entry = m_VesselMaps[t].find(id);
  if (entry == m_VesselMaps[t].end() || entry->second.isNull() || m_Trees[t].isNull())
  {
    if (mode == PathToRootActivation || mode == SubtreeActivation)
    {
      itkWarningMacro("vessel with id " << id << " not found");
    }
    return;
  }
  entry->second->getProperties().setActive(true);
  if (mode != PathToRootActivation && mode != SubtreeActivation)
  {
    return;
  }
  // Walk in preorder to the node of the picked vessel.
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(m_Trees[t]->newPreorderIterator());
  bool found = false;
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (!vessel.isNull() && vessel->getVesselId() == id)
    {
      found = true;
      break;
    }
  }
  if (!found)
  {
    itkWarningMacro("vessel with id " << id << " not found");
    return;
  }
  if (it->get() != entry->second)
  {
    itkWarningMacro("the impossible happened!");
    return;
  }
  if (mode == PathToRootActivation)
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> up(it->newRootIterator());
    while (up->hasNext())
    {
      ar<Vessel> ancestor = up->next();
      if (!ancestor.isNull())
      {
        ancestor->getProperties().setActive(true);
      }
    }
    return;
  }
  // Downstream: every vessel of the picked node's subtree.
  std::unique_ptr<Tree<ar<Vessel>>> subtree(it->subtree());
  std::unique_ptr<TreeIterator<ar<Vessel>>> down(subtree->newPreorderIterator());
  while (down->hasNext())
  {
    ar<Vessel> vessel = down->next();
    if (!vessel.isNull())
    {
      vessel->getProperties().setActive(true);
    }
  }
}

void
VesselTreeData::UpdateActivation(TimeStep t)
{
  if (!IsValidTimeStep(t))
  {
    itkWarningMacro("timestep t (" << t << ") is out of range!");
    return;
  }
  const std::int32_t picked = m_PickedVesselIds[t];
  const ActivationMode mode = m_ActivationModes[t];
  if (mode != MultipleActivation)
  {
    DeactivateAll(t);
  }
  if (mode != NoActivation && picked != ErrorId)
  {
    ActivateFrom(picked, mode, t);
  }
  AttributesModified();
}

void
VesselTreeData::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Time steps with trees: " << m_Trees.size() << std::endl;
  for (std::size_t t = 0; t < m_Trees.size(); ++t)
  {
    os << indent << "Time step " << t << ": " << m_VesselMaps[t].size() << " vessels, picked " << m_PickedVesselIds[t]
       << ", activation mode " << m_ActivationModes[t] << std::endl;
  }
}
} // namespace lumo
