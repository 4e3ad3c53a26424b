#ifndef lumoPointSet_h
#define lumoPointSet_h

#include "lumoBaseData.h"

#include <map>
#include <vector>

namespace lumo
{
/** Points with ids per time step (landmarks, seeds, measurements). Each time step maps point ids to world points,
 *  ordered by id. The geometry of each step is the identity with the bounds of its points (0 for no points). */
class PointSet : public BaseData
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PointSet);

  using Self = PointSet;
  using Superclass = BaseData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(PointSet, BaseData);
  itkNewMacro(Self);

  using PointIdentifier = unsigned int;
  using PointsContainer = std::map<PointIdentifier, Point3D>;

  /** Sets the point with that id (replacing one of the same id); grows the time steps when needed. */
  void
  InsertPoint(PointIdentifier id, const Point3D & point, TimeStepType t = 0);
  /** Inserts with the next id (largest id + 1, or 0) and returns that id. */
  PointIdentifier
  AddPoint(const Point3D & point, TimeStepType t = 0);
  /** Removes a point; false when absent. */
  bool
  RemovePoint(PointIdentifier id, TimeStepType t = 0);
  bool
  IndexExists(PointIdentifier id, TimeStepType t = 0) const;
  /** The point; false (point untouched) when absent. */
  bool
  GetPointIfExists(PointIdentifier id, Point3D & point, TimeStepType t = 0) const;
  /** The point; throws itk::InvalidArgumentError when absent. */
  Point3D
  GetPoint(PointIdentifier id, TimeStepType t = 0) const;
  /** Number of points of a time step (0 for an invalid step). */
  std::size_t
  GetSize(TimeStepType t = 0) const;
  /** The points of a time step (an empty container for an invalid step). */
  const PointsContainer &
  GetPoints(TimeStepType t = 0) const;

  bool
  IsEmptyTimeStep(TimeStepType t) const override;
  void
  Expand(unsigned int timeSteps) override;
  void
  Clear() override;
  /** Copies the points and the geometry of another PointSet. */
  void
  Graft(const itk::DataObject * data) override;

protected:
  PointSet();
  ~PointSet() override;
  void
  CalculateBounds(TimeStepType t);
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::vector<PointsContainer> m_Points;
};
} // namespace lumo

#endif
