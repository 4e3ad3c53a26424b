#ifndef lumoSlicedGeometry3D_h
#define lumoSlicedGeometry3D_h

#include "lumoGeometry3D.h"

#include <array>

namespace lumo
{
/** The geometry of an image: a voxel grid of the given size (x, y, z; the number of slices is z) with spacing,
 *  origin (the world position of the centre of voxel 0, 0, 0) and direction. InitializeImage sets the bounds to
 *  [-0.5, size - 0.5] per axis and the image-geometry flag on, so the bounds enclose the whole voxels. */
class SlicedGeometry3D : public Geometry3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SlicedGeometry3D);

  using Self = SlicedGeometry3D;
  using Superclass = Geometry3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(SlicedGeometry3D, Geometry3D);
  itkNewMacro(Self);

  using SizeType = std::array<unsigned int, 3>;

  void
  InitializeImage(const SizeType & size,
                  const Vector3D & spacing,
                  const Point3D & origin,
                  const DirectionType & direction);
  /** Identity direction, spacing 1, origin 0. */
  void
  InitializeImage(const SizeType & size);

  void
  Initialize() override;

  const SizeType &
  GetSize() const
  {
    return m_Size;
  }
  unsigned int
  GetSlices() const
  {
    return m_Size[2];
  }

protected:
  SlicedGeometry3D();
  ~SlicedGeometry3D() override = default;
  void
  CopyValuesTo(Geometry3D * other) const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  SizeType m_Size{ { 0, 0, 0 } };
};
} // namespace lumo

#endif
