#ifndef lumoDeformablePlane_h
#define lumoDeformablePlane_h

#include "lumoBaseData.h"
#include "lumoGeometry3D.h"
#include "lumoImage.h"
#include "lumoPointSet.h"
#include "lumoSurface.h"
#include "lumoUndoController.h"

#include <itkNumericTraits.h>

#include <cstdint>
#include <vector>

namespace lumo
{
class SlicedGeometry3D;

/** A curved cutting surface through an organ, defined by control points (at least 3, world mm).
 *
 *  Shape: the least-squares plane of the control points (through their centroid, normal N the eigenvector of the
 *  smallest eigenvalue of their covariance), with in-plane axes U, V (U, V, N right-handed). When the points lie
 *  on that plane (always for 3 points) the surface is the plane itself. Otherwise the surface is the graph of a
 *  height function over the plane: s(u, v) = c + u U + v V + h(u, v) N, where h is the thin-plate spline of the
 *  points' heights over the plane (kernel r^2 log r, affine part), so that the surface passes through every
 *  control point. Smoothing > 0 adds that value to the diagonal of the kernel matrix and relaxes the
 *  interpolation.
 *
 *  Sides: the front side is the side N points to. N's sign is chosen so that it points away from the organ's
 *  centroid when one is given (SetOrgan, SetOrganCentroid), otherwise towards +z (for an upright plane towards +y,
 *  then +x). The front normal at a surface point is the spline surface's normal, on N's side; the back normal is
 *  its opposite. The signed height of a point p = c + u U + v V + w N is w - h(u, v): its distance from the
 *  surface along N, positive in front.
 *
 *  Edits (MoveControlPoint, AddControlPoint, RemoveControlPoint) go through DeformablePlaneOperation and are
 *  recorded on an undo controller. Every change that would leave fewer than 3 points or points all on one line
 *  is refused with an itk::InvalidArgumentError, the plane unchanged:
 *    "A deformable plane needs at least 3 control points, got <n>"
 *    "The control points of a deformable plane lie on one line"
 *
 *  Before control points are set, the point queries answer for the plane z = 0; the voxel-wide ones
 *  (ComputeColumnCrossings, ComputeSideImage, CountSides, CreateSurface) refuse with the first message.
 *
 *  Geometry: time step 0 only; identity transform, bounds of the control points. */
class DeformablePlane : public BaseData
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(DeformablePlane);

  using Self = DeformablePlane;
  using Superclass = BaseData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkNewMacro(Self);
  itkTypeMacro(DeformablePlane, BaseData);

  using PointsContainer = std::vector<Point3D>;

  /** Labels of ComputeSideImage. */
  static constexpr unsigned char OutsideLabel = 0;
  static constexpr unsigned char FrontLabel = 1;
  static constexpr unsigned char BackLabel = 2;
  static constexpr unsigned char OnSurfaceLabel = 3;

  /** Relaxation of the interpolation added to the kernel diagonal, in the kernel's units (mm^2 ln mm); default 0
   *  (the surface passes through every control point); >= 0 (negative values are taken as 0). */
  void
  SetSmoothing(double smoothing);
  itkGetConstMacro(Smoothing, double);
  /** Half-width in mm of the band around the surface in which GetSide answers 0; default 1e-6; >= 0. */
  itkSetClampMacro(Tolerance, double, 0.0, itk::NumericTraits<double>::max());
  itkGetConstMacro(Tolerance, double);

  // -- control points ---------------------------------------------------------------------------------------------

  /** Replaces the control points (throws as described above, the plane unchanged). */
  void
  SetControlPoints(const PointsContainer & points);
  /** The points of time step 0 of a point set, in the order of their ids. */
  void
  SetControlPoints(const PointSet * points);
  const PointsContainer &
  GetControlPoints() const
  {
    return m_ControlPoints;
  }
  unsigned int
  GetNumberOfControlPoints() const
  {
    return static_cast<unsigned int>(m_ControlPoints.size());
  }
  /** The control points as a point set with ids 0 to n - 1 (for the .mps file). */
  PointSet::Pointer
  GetControlPointsAsPointSet() const;

  /** Moves the point at index (itk::InvalidArgumentError for a bad index); recorded on undo when it is not null. */
  void
  MoveControlPoint(unsigned int index, const Point3D & point, UndoController * undo = UndoController::GetInstance());
  /** Appends a point and returns its index. */
  unsigned int
  AddControlPoint(const Point3D & point, UndoController * undo = UndoController::GetInstance());
  /** Removes the point at index. */
  void
  RemoveControlPoint(unsigned int index, UndoController * undo = UndoController::GetInstance());

  /** Executes a DeformablePlaneOperation; other operations are ignored with a warning. */
  void
  ExecuteOperation(Operation * operation) override;

  // -- orientation ------------------------------------------------------------------------------------------------

  /** The front normal points away from this point (world mm). */
  void
  SetOrganCentroid(const Point3D & centroid);
  /** The centroid of the image's non-zero voxels; an image without one removes the organ centroid. */
  void
  SetOrgan(const Image * organ);
  /** Back to the +z rule. */
  void
  RemoveOrganCentroid();
  bool
  HasOrganCentroid() const
  {
    return m_HasOrganCentroid;
  }

  /** The best-fit plane: centroid of the control points, normal N (front side), in-plane axes U and V. */
  const Point3D &
  GetCenter() const
  {
    return m_Center;
  }
  const Vector3D &
  GetPlaneNormal() const
  {
    return m_Normal;
  }
  const Vector3D &
  GetPlaneAxisU() const
  {
    return m_AxisU;
  }
  const Vector3D &
  GetPlaneAxisV() const
  {
    return m_AxisV;
  }
  /** Whether the surface is the best-fit plane itself (the control points lie on it). */
  bool
  IsFlat() const
  {
    return m_Flat;
  }

  // -- evaluation -------------------------------------------------------------------------------------------------

  /** Height of the surface over the best-fit plane at plane coordinates (u, v), mm. */
  double
  EvaluateHeight(double u, double v) const;
  /** Distance of the point from the surface along N: > 0 in front, < 0 behind. */
  double
  GetSignedHeight(const Point3D & point) const;
  /** +1 in front, -1 behind, 0 within the tolerance of the surface. */
  int
  GetSide(const Point3D & point) const;
  /** The surface point above or below the given point (same u, v). */
  Point3D
  ProjectOntoSurface(const Point3D & point) const;
  /** Unit normal of the surface at the surface point above or below the point, on the front side. */
  Vector3D
  GetFrontNormal(const Point3D & point) const;
  /** The opposite of the front normal. */
  Vector3D
  GetBackNormal(const Point3D & point) const;

  /** Where the surface crosses the columns of a voxel grid. The columns run along the grid axis closest to N;
   *  for a column, the voxels with an index below Begin lie on side LowSide, those from End on on the other side,
   *  those in between within the tolerance of the surface. Columns are numbered with the lower of the two other
   *  axes running fastest. */
  struct ColumnCrossings
  {
    unsigned int Axis{ 2 };
    /** The two other axes, lower first, and their sizes. */
    unsigned int ColumnAxes[2]{ 0, 1 };
    unsigned int ColumnSize[2]{ 0, 0 };
    int LowSide{ -1 };
    std::vector<std::int32_t> Begin;
    std::vector<std::int32_t> End;
  };
  /** Evaluates the spline a few times per column of the grid, never per voxel. Assumes that the surface meets each
   *  column at most once; a column where it does not is evaluated voxel by voxel and its voxels between the first
   *  and the last change of side count as on the surface. Throws for a null grid or fewer than 3 points. */
  ColumnCrossings
  ComputeColumnCrossings(const SlicedGeometry3D * grid) const;

  /** Labels every voxel of the grid's image: FrontLabel, BackLabel or OnSurfaceLabel, and OutsideLabel where the
   *  mask (same size, unsigned 8-bit; optional) is 0. Unsigned 8-bit image with the grid's geometry. Throws
   *  itk::InvalidArgumentError for a null grid or a mask of another size or type. */
  Image::Pointer
  ComputeSideImage(const Image * grid, const Image * mask = nullptr) const;

  /** Writes the given labels for the voxels of the grid on the front, on the back and on the surface into out (a
   *  buffer of the grid's voxels, x fastest); with a mask only where it is non-zero, the other voxels untouched.
   *  Same checks as ComputeSideImage. */
  void
  LabelSides(const Image * grid,
             const Image * mask,
             unsigned char * out,
             unsigned char frontLabel,
             unsigned char backLabel,
             unsigned char onSurfaceLabel) const;

  struct SideCounts
  {
    std::uint64_t Front{ 0 };
    std::uint64_t Back{ 0 };
    std::uint64_t OnSurface{ 0 };
  };
  /** Counts the non-zero voxels of an unsigned 8-bit mask on each side (one pass over the mask). */
  SideCounts
  CountSides(const Image * mask) const;

  /** A triangulated surface for drawing: the spline sampled on a resolution x resolution grid over the box's
   *  shadow on the plane, clipped to the world box (xmin, xmax, ymin, ymax, zmin, zmax), with the front normals as
   *  point normals. Empty when the surface misses the box. */
  Surface::Pointer
  CreateSurface(const Geometry3D::BoundsArrayType & worldBox, unsigned int resolution = 64) const;

  bool
  IsEmptyTimeStep(TimeStepType t) const override;
  void
  Clear() override;
  /** Copies the control points, parameters and organ centroid of another DeformablePlane. */
  void
  Graft(const itk::DataObject * data) override;

protected:
  DeformablePlane();
  ~DeformablePlane() override;
  itk::LightObject::Pointer
  InternalClone() const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  /** The fitted shape of a set of control points. */
  struct Fit
  {
    Point3D Center;
    Vector3D Normal, AxisU, AxisV;
    bool Flat{ true };
    std::vector<double> U, V, Weights;
    double Affine[3]{ 0, 0, 0 };
  };
  /** Fits the points (throws for too few or collinear points). */
  Fit
  ComputeFit(const PointsContainer & points) const;
  void
  ApplyFit(const PointsContainer & points, Fit && fit);
  void
  Refit();
  /** Throws the refusal for fewer than 3 points (a plane without its points). */
  void
  CheckControlPoints() const;
  void
  UpdateBounds();
  /** Executes the operation and hands it with its inverse to the undo controller (or deletes both when there is
   *  none, or when the operation throws). */
  void
  ExecuteAndRecord(UndoController * undo, Operation * operation, Operation * inverse, const char * description);
  /** Height h and its gradient at (u, v). */
  double
  EvaluateHeightAndGradient(double u, double v, double & du, double & dv) const;
  /** Plane coordinates of a world point. */
  void
  ToPlane(const Point3D & point, double & u, double & v, double & w) const;

  PointsContainer m_ControlPoints;
  double m_Smoothing{ 0.0 };
  double m_Tolerance{ 1e-6 };
  bool m_HasOrganCentroid{ false };
  Point3D m_OrganCentroid;

  Point3D m_Center;
  Vector3D m_Normal;
  Vector3D m_AxisU;
  Vector3D m_AxisV;
  bool m_Flat{ true };
  // Spline nodes (plane coordinates of the control points), kernel weights and affine part a0 + a1 u + a2 v.
  std::vector<double> m_NodeU;
  std::vector<double> m_NodeV;
  std::vector<double> m_Weights;
  double m_Affine[3]{ 0, 0, 0 };
};
} // namespace lumo

#endif
