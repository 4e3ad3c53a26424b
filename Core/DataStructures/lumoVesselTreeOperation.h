#ifndef lumoVesselTreeOperation_h
#define lumoVesselTreeOperation_h

#include "lumoOperation.h"

#include <cstdint>

namespace lumo
{
/** The undoable operation through which interactors pick vessels of a VesselTreeData: 703 adds a vessel to the
 *  selection, 705 selects a vessel, 805 clears the selection. It carries the id of the vessel. */
class VesselTreeOperation : public Operation
{
public:
  /** Operation types understood by VesselTreeData::ExecuteOperation. */
  static constexpr OperationType MultipleSelect = 703;
  static constexpr OperationType Select = 705;
  static constexpr OperationType Deselect = 805;

  VesselTreeOperation(OperationType operationType, std::int32_t vesselId);
  VesselTreeOperation(const VesselTreeOperation &) = default;
  VesselTreeOperation &
  operator=(const VesselTreeOperation &) = default;
  ~VesselTreeOperation() override;

  std::int32_t
  GetVesselId() const
  {
    return m_VesselId;
  }
  void
  SetVesselId(std::int32_t vesselId)
  {
    m_VesselId = vesselId;
  }

private:
  std::int32_t m_VesselId;
};
} // namespace lumo

#endif
