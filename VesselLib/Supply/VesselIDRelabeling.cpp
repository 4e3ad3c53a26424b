#include "VesselIDRelabeling.h"

#include <iostream>
#include <memory>
#include <stdexcept>

std::int32_t
TableRelabelingRule::getNewLabel(const std::uint32_t & id)
{
  if (id >= m_table.size())
  {
    std::cout << "Range overflow: " << id << std::endl;
    throw std::runtime_error(overflowMessage());
  }
  return m_table[id];
}

void
TableRelabelingRule::buildTable(const ArVesselTree & tree)
{
  std::int32_t largest = 0;
  if (!tree.isNull())
  {
    std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
    while (it->hasNext())
    {
      const ar<Vessel> vessel = it->next();
      if (!vessel.isNull())
      {
        largest = std::max(largest, vessel->getVesselId());
      }
    }
  }
  m_table.assign(static_cast<std::size_t>(largest) + 1, 0);
  if (tree.isNull())
  {
    return;
  }
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    // Negative ids cannot index the table; they stand for unset ids and own no voxel.
    if (!vessel.isNull() && vessel->getVesselId() >= 0)
    {
      m_table[static_cast<std::size_t>(vessel->getVesselId())] = labelOf(*vessel);
    }
  }
}

IdToSegmentRelabelingRule::IdToSegmentRelabelingRule(ArVesselTree tree)
{
  buildTable(tree);
}

std::int32_t
IdToSegmentRelabelingRule::labelOf(const Vessel & vessel) const
{
  return vessel.getProperties().getSegmentType();
}

const char *
IdToSegmentRelabelingRule::overflowMessage() const
{
  return "IdToSegmentRelabelingRule::getNewLabel(...): Id > size()";
}

IdToTypeRelabelingRule::IdToTypeRelabelingRule(ArVesselTree tree)
{
  buildTable(tree);
}

std::int32_t
IdToTypeRelabelingRule::labelOf(const Vessel & vessel) const
{
  return vessel.getProperties().getBloodVesselType() + 1;
}

const char *
IdToTypeRelabelingRule::overflowMessage() const
{
  return "IdToTypeRelabelingRule::getNewLabel(...): Id > size()!";
}

IdToResectionStatusRelabelingRule::IdToResectionStatusRelabelingRule(ArVesselTree tree)
{
  buildTable(tree);
}

std::int32_t
IdToResectionStatusRelabelingRule::labelOf(const Vessel & vessel) const
{
  return vessel.getProperties().getResectionStatus();
}

const char *
IdToResectionStatusRelabelingRule::overflowMessage() const
{
  return "IdToResectionStatusRelabelingRule::getNewLabel(...): Id > size()!";
}

lumoIpPicDescriptor *
VesselIDRelabeling::relabel(lumoIpPicDescriptor * pic, AbstractRelabelingRule * rule, bool copy)
{
  if (pic == nullptr || rule == nullptr)
  {
    throw std::runtime_error("Error in VesselIDRelabeling::relabel(...): parameter == NULL!");
  }
  if (pic->dim != 3)
  {
    throw std::runtime_error("Error in VesselIDRelabeling::relabel(...): pic->dim!=3");
  }
  if (pic->type != lumoIpPicUInt || pic->bpe != 16)
  {
    throw std::runtime_error("Error in VesselIDRelabeling::relabel(...): wrong datatype (!=lumoIpUInt2_t)");
  }
  std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)> clone(nullptr, lumoIpPicFree);
  lumoIpPicDescriptor * target = pic;
  if (copy)
  {
    clone.reset(lumoIpPicClone(pic));
    if (clone == nullptr)
    {
      throw std::bad_alloc();
    }
    target = clone.get();
  }
  auto * data = static_cast<std::uint16_t *>(target->data);
  const std::size_t elements = lumoIpPicElements(target);
  for (std::size_t i = 0; i < elements; ++i)
  {
    if (data[i] != 0)
    {
      const std::uint32_t id = data[i];
      data[i] = static_cast<std::uint16_t>(rule->getNewLabel(id));
    }
  }
  clone.release();
  return target;
}
