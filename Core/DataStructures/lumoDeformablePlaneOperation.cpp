#include "lumoDeformablePlaneOperation.h"

namespace lumo
{
DeformablePlaneOperation::DeformablePlaneOperation(OperationType operationType,
                                                   unsigned int index,
                                                   const Point3D & point)
  : Operation(operationType)
  , m_Index(index)
  , m_Point(point)
{}

DeformablePlaneOperation::~DeformablePlaneOperation() = default;
} // namespace lumo
