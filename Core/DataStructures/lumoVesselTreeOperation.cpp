#include "lumoVesselTreeOperation.h"

namespace lumo
{
VesselTreeOperation::VesselTreeOperation(OperationType operationType, std::int32_t vesselId)
  : Operation(operationType)
  , m_VesselId(vesselId)
{}

VesselTreeOperation::~VesselTreeOperation() = default;
} // namespace lumo
