#ifndef lumoImage_h
#define lumoImage_h

#include "lumoSlicedData.h"

#include <itkCommonEnums.h>

#include <cstddef>
#include <string>

namespace itk
{
template <unsigned int VImageDimension>
class ImageBase;
}

namespace lumo
{
/** A 3-D scalar image of any ITK scalar pixel type, with its geometry (a SlicedGeometry3D: size, spacing, origin,
 *  direction).
 *
 *  Storage: the voxels live in an itk::Image<T, 3> for the image's pixel type T, held type-erased; typed access
 *  (lumoImageAccess.h: ImageToItkImage<T>, AccessByItk) hands out that very itk::Image without copying, with
 *  spacing, origin and direction brought up to date from this image's geometry. The geometry of time step 0 is
 *  the authority for spacing, origin and direction.
 *
 *  Pixel types: unsigned and signed 8, 16, 32 and 64-bit integers, float and double (itk::IOComponentEnum UCHAR,
 *  CHAR, USHORT, SHORT, UINT, INT, ULONG, LONG, FLOAT, DOUBLE; ULONGLONG and LONGLONG are stored as ULONG and LONG,
 *  which have the same width on this platform).
 *
 *  Dimension: images are always held as 3-D; an image read from a 2-D file has size 1 along z and reports
 *  GetDimension() == 2, so that callers that need a volume can refuse it. One time step. */
class Image : public SlicedData
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Image);

  using Self = Image;
  using Superclass = SlicedData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(Image, SlicedData);
  itkNewMacro(Self);

  using PixelComponentType = itk::IOComponentEnum;
  using SizeType = SlicedGeometry3D::SizeType;
  using DirectionType = Geometry3D::DirectionType;

  using Superclass::Initialize;
  /** Allocates a zeroed image. dimension is 2 or 3 (2 requires size[2] == 1). Throws itk::InvalidArgumentError for
   *  an unsupported pixel type, a zero size, a bad dimension or a non-positive spacing. */
  void
  Initialize(PixelComponentType type,
             const SizeType & size,
             const Vector3D & spacing,
             const Point3D & origin,
             const DirectionType & direction,
             unsigned int dimension = 3);
  /** Spacing 1, origin 0, identity direction. */
  void
  Initialize(PixelComponentType type, const SizeType & size, unsigned int dimension = 3);

  /** Takes over an itk::Image<T, 3> of a supported pixel type (its buffer is shared, not copied) with its spacing,
   *  origin and direction. Throws itk::InvalidArgumentError for null or an unsupported pixel type. */
  void
  InitializeByItkImage(itk::ImageBase<3> * itkImage, unsigned int dimension = 3);

  /** The held itk::Image<T, 3> (null before initialisation); geometry not synchronised, see lumoImageAccess.h. */
  itk::ImageBase<3> *
  GetItkImageBase() const;

  PixelComponentType
  GetPixelType() const
  {
    return m_PixelType;
  }
  /** ITK's name of the pixel type, for instance "unsigned_char", "short", "float". */
  std::string
  GetPixelTypeAsString() const;
  /** 8, 16, 32 or 64; 0 before initialisation. */
  unsigned int
  GetBitsPerComponent() const;
  bool
  IsFloatingPoint() const;
  bool
  IsSignedInteger() const;

  /** 2 or 3; 0 before initialisation. */
  unsigned int
  GetDimension() const
  {
    return m_Dimension;
  }
  /** The size along axis 0, 1 or 2 (1 along z for a 2-D image; 0 for another axis). */
  unsigned int
  GetDimension(unsigned int axis) const;
  const SizeType &
  GetSize() const
  {
    return m_Size;
  }
  std::size_t
  GetNumberOfVoxels() const;
  std::size_t
  GetBufferSizeInBytes() const;

  /** The voxels, x fastest, then y, then z; null before initialisation. */
  void *
  GetData();
  const void *
  GetData() const;

  /** The voxel value as double; throws itk::InvalidArgumentError outside the image or before initialisation. */
  double
  GetPixelValueAsDouble(unsigned int x, unsigned int y, unsigned int z) const;
  /** Smallest and largest voxel value; false before initialisation. */
  bool
  GetScalarRange(double & minimum, double & maximum) const;

  Vector3D
  GetSpacing() const;
  void
  SetSpacing(const Vector3D & spacing);
  Point3D
  GetOrigin() const;
  void
  SetOrigin(const Point3D & origin);
  DirectionType
  GetDirection() const;
  void
  SetDirection(const DirectionType & direction);

  bool
  IsInitialized() const override;
  bool
  IsEmptyTimeStep(TimeStepType t) const override;
  void
  Clear() override;

  /** Shares the voxels and copies the geometry of another lumo::Image. */
  void
  Graft(const itk::DataObject * data) override;

  /** Whether ITK's component type is one the image can hold (after the 64-bit mapping above). */
  static bool
  IsSupportedPixelType(PixelComponentType type);
  /** ULONGLONG becomes ULONG, LONGLONG becomes LONG; other types stay. */
  static PixelComponentType
  NormalizePixelType(PixelComponentType type);

protected:
  Image();
  ~Image() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  PixelComponentType m_PixelType{ itk::IOComponentEnum::UNKNOWNCOMPONENTTYPE };
  unsigned int m_Dimension{ 0 };
  SizeType m_Size{ { 0, 0, 0 } };
  itk::DataObject::Pointer m_ItkImage;
};
} // namespace lumo

#endif
