#include "VesselIdRenumbering.h"

#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

VesselIdRenumbering::Report
VesselIdRenumbering::inspect(const ArVesselTree & tree)
{
  Report report;
  if (tree.isNull())
  {
    return report;
  }
  std::unordered_set<std::int32_t> ids;
  // Low 16 bits in use; 0 is taken by "no vessel" from the start.
  std::vector<bool> lowBits(65536, false);
  lowBits[0] = true;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    const ar<Vessel> vessel = it->next();
    if (vessel.isNull())
    {
      continue;
    }
    ++report.vessels;
    const std::int32_t id = vessel->getVesselId();
    const std::uint32_t low = static_cast<std::uint32_t>(id) & 0xFFFFu;
    if (!ids.insert(id).second)
    {
      ++report.duplicates;
    }
    else if (lowBits[low])
    {
      ++report.collisions;
    }
    lowBits[low] = true;
  }
  return report;
}

void
VesselIdRenumbering::renumberInPreorder(const ArVesselTree & tree)
{
  if (tree.isNull())
  {
    return;
  }
  std::int32_t next = 1;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(tree->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (!vessel.isNull())
    {
      vessel->setVesselId(next++);
    }
  }
}
