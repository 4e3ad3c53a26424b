#ifndef lumoPointLocator_h
#define lumoPointLocator_h

#include "lumoCommon.h"

#include <itkObject.h>
#include <vtkType.h>

#include <memory>
#include <vector>

class vtkPoints;

namespace lumo
{
/** Nearest-point search over a set of 3-D points (a k-d tree, nanoflann). SetPoints copies the coordinates and
 *  builds the tree; later changes to the source are not seen. FindClosestPoint answers the id (the index in the
 *  set) of the point nearest to the position by Euclidean distance; among points at the same distance the lowest
 *  id; -1 for an empty set or a position that is not finite. Points must be finite (SetPoints throws
 *  itk::ExceptionObject otherwise, leaving the locator empty). */
class PointLocator : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PointLocator);

  using Self = PointLocator;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(PointLocator, itk::Object);

  using IdType = vtkIdType;

  /** The points of the VTK set (ids as in the set); null: no points. */
  void
  SetPoints(vtkPoints * points);
  /** The points of the vector (ids are the indices). */
  void
  SetPoints(const std::vector<Point3D> & points);

  IdType
  GetNumberOfPoints() const;

  /** The id of the nearest point; -1 when there is none. */
  IdType
  FindClosestPoint(double x, double y, double z) const;
  IdType
  FindClosestPoint(const Point3D & point) const;
  /** The id of the nearest point and, through `distance` (may be null), its Euclidean distance; -1 (distance
   *  untouched) when there is none. */
  IdType
  FindClosestPointAndDistance(const Point3D & point, double * distance) const;

protected:
  PointLocator();
  ~PointLocator() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  void
  Build(std::vector<double> && coordinates);

  struct Index;
  std::unique_ptr<Index> m_Index;
};
} // namespace lumo

#endif
