#ifndef lumoDeformablePlaneOperation_h
#define lumoDeformablePlaneOperation_h

#include "lumoCommon.h"
#include "lumoOperation.h"

namespace lumo
{
/** The undoable edits of a DeformablePlane's control points: 1301 moves the point at an index to a position, 1302
 *  inserts a point at an index (the later points move up by one), 1303 removes the point at an index. Move is
 *  undone by a move back, insert by a remove and remove by an insert of the old point. */
class DeformablePlaneOperation : public Operation
{
public:
  /** Operation types understood by DeformablePlane::ExecuteOperation. */
  static constexpr OperationType MovePoint = 1301;
  static constexpr OperationType InsertPoint = 1302;
  static constexpr OperationType RemovePoint = 1303;

  DeformablePlaneOperation(OperationType operationType, unsigned int index, const Point3D & point);
  DeformablePlaneOperation(const DeformablePlaneOperation &) = default;
  DeformablePlaneOperation &
  operator=(const DeformablePlaneOperation &) = default;
  ~DeformablePlaneOperation() override;

  unsigned int
  GetIndex() const
  {
    return m_Index;
  }
  /** The new position (move), the inserted point (insert); unused by remove. */
  const Point3D &
  GetPoint() const
  {
    return m_Point;
  }

private:
  unsigned int m_Index;
  Point3D m_Point;
};
} // namespace lumo

#endif
