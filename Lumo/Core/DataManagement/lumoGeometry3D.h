#ifndef lumoGeometry3D_h
#define lumoGeometry3D_h

#include "lumoCommon.h"

#include <itkFixedArray.h>
#include <itkMatrix.h>
#include <itkObject.h>

class vtkLinearTransform;
class vtkMatrix4x4;
class vtkMatrixToLinearTransform;

namespace lumo
{
/** The spatial extent of a data object: an axis-aligned box (the bounds) in the object's own index coordinates
 *  and the affine index-to-world transform that places it in world coordinates (millimetres).
 *
 *  The transform is held as a VTK linear transform (a vtkMatrixToLinearTransform over a 4 x 4 matrix), so that
 *  renderers and filters can use it directly. Its upper 3 x 3 block is direction x diag(spacing) and its
 *  translation column is the origin: index i goes to world origin + D S i. Spacing and origin are always
 *  consistent with the matrix. Change the transform through this class only (the VTK objects are its own).
 *
 *  Bounds are (xmin, xmax, ymin, ymax, zmin, zmax) in index coordinates. With the image-geometry flag on (images
 *  set it), index i denotes a voxel centre and the voxel covers [i - 0.5, i + 0.5]; the flag is informative only:
 *  the bounds are what is set.
 *
 *  UpdateBounds() is the hook through which a geometry recomputes its bounds from the content of its data (the
 *  vessel tree geometry walks its tree, for example); the base class keeps its bounds. A new geometry has the
 *  identity transform and bounds (0, 1, 0, 1, 0, 1). */
class Geometry3D : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Geometry3D);

  using Self = Geometry3D;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(Geometry3D, itk::Object);
  itkNewMacro(Self);

  using BoundsArrayType = itk::FixedArray<ScalarType, 6>;
  using DirectionType = itk::Matrix<ScalarType, 3, 3>;

  /** Back to the state of a new geometry (identity, unit bounds, image-geometry flag off). */
  virtual void
  Initialize();

  // -- bounds -----------------------------------------------------------------------------------------------------

  const BoundsArrayType &
  GetBounds() const
  {
    return m_Bounds;
  }
  /** Each minimum larger than its maximum is swapped with it. */
  virtual void
  SetBounds(const BoundsArrayType & bounds);
  void
  SetFloatBounds(const double bounds[6]);
  void
  SetFloatBounds(const float bounds[6]);

  /** Recomputes the bounds from the content (hook for subclasses; the base keeps the bounds as they are). */
  virtual void
  UpdateBounds();

  /** bounds max - min along axis 0, 1 or 2, in index units. */
  ScalarType
  GetExtent(unsigned int direction) const;
  /** The extent along an axis in millimetres (extent times the spacing of that axis). */
  ScalarType
  GetExtentInMM(unsigned int direction) const;
  /** Corner id 0..7 (bit 0: x max, bit 1: y max, bit 2: z max) in world coordinates. */
  Point3D
  GetCornerPoint(unsigned int id) const;
  /** The centre of the box in world coordinates. */
  Point3D
  GetCenter() const;
  /** The axis-aligned world box around the eight transformed corners. */
  BoundsArrayType
  GetWorldBounds() const;
  /** Whether the world point lies in the box (borders included). */
  bool
  IsInside(const Point3D & world) const;

  /** Whether index i denotes a voxel centre (informative only, the bounds are as set); default false. */
  itkSetMacro(ImageGeometry, bool);
  itkGetConstMacro(ImageGeometry, bool);
  itkBooleanMacro(ImageGeometry);

  // -- index-to-world transform -------------------------------------------------------------------------------------

  /** The index-to-world transform (never null; owned by the geometry, reflects every change). */
  vtkLinearTransform *
  GetVtkTransform() const;
  /** Copies the 4 x 4 index-to-world matrix into the given matrix. */
  void
  GetIndexToWorldMatrix(vtkMatrix4x4 * matrix) const;
  /** The index-to-world matrix as 16 numbers, row by row. */
  void
  GetIndexToWorldMatrix(double elements[16]) const;
  /** Takes the index-to-world transform from the matrix (last row taken as 0 0 0 1); spacing becomes the lengths of
   *  the columns of the 3 x 3 block, origin the translation. A null matrix is ignored. */
  void
  SetIndexToWorldTransformByVtkMatrix(vtkMatrix4x4 * matrix);
  void
  SetIndexToWorldMatrix(const double elements[16]);
  /** Identity transform (spacing 1, origin 0, no rotation). */
  void
  SetIdentity();
  /** Adds the vector to the origin. */
  void
  Translate(const Vector3D & vector);

  const Vector3D &
  GetSpacing() const
  {
    return m_Spacing;
  }
  /** Keeps direction and origin; non-positive components are refused with an itk::InvalidArgumentError. */
  virtual void
  SetSpacing(const Vector3D & spacing);
  void
  SetSpacing(const ScalarType spacing[3]);

  Point3D
  GetOrigin() const;
  void
  SetOrigin(const Point3D & origin);

  /** The direction cosines: the columns of the 3 x 3 block divided by the spacing. */
  DirectionType
  GetDirection() const;
  /** Keeps spacing and origin. */
  void
  SetDirection(const DirectionType & direction);

  void
  IndexToWorld(const Point3D & index, Point3D & world) const;
  void
  WorldToIndex(const Point3D & world, Point3D & index) const;
  /** Vectors: without the translation. */
  void
  IndexToWorld(const Vector3D & index, Vector3D & world) const;
  void
  WorldToIndex(const Vector3D & world, Vector3D & index) const;

protected:
  Geometry3D();
  ~Geometry3D() override;
  /** Copies bounds, transform and flags into a new object of the same class. */
  itk::LightObject::Pointer
  InternalClone() const override;
  /** Copies this geometry's values into another (used by InternalClone of subclasses). */
  virtual void
  CopyValuesTo(Geometry3D * other) const;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** Recomputes the cached spacing from the matrix after a change of the matrix. */
  void
  TransformChanged();

  /** Index coordinates, (xmin, xmax, ymin, ymax, zmin, zmax); default the unit box. */
  BoundsArrayType m_Bounds{ { { 0.0, 1.0, 0.0, 1.0, 0.0, 1.0 } } };
  /** Owned; made in the constructor (VTK objects come from New()). */
  vtkMatrix4x4 * m_Matrix{ nullptr };
  vtkMatrixToLinearTransform * m_Transform{ nullptr };
  /** Millimetres per index step along each axis, the column lengths of the matrix; default 1. */
  Vector3D m_Spacing{ 1.0 };
  bool m_ImageGeometry{ false };
};
} // namespace lumo

#endif
