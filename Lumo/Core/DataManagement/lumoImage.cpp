// The 3-D scalar image.

#include "lumoImage.h"

#include "lumoImageAccess.h"

#include <itkImageIOBase.h>

#include <algorithm>
#include <limits>

namespace lumo
{
namespace
{
/** Runs f(itk::Image<T,3> *) on the held image. */
template <typename TFunctor>
void
VisitHeld(itk::IOComponentEnum type, itk::DataObject * held, TFunctor && f)
{
  DispatchPixelType(type, [&](auto * tag) {
    using T = std::remove_pointer_t<decltype(tag)>;
    auto * itkImage = dynamic_cast<itk::Image<T, 3> *>(held);
    if (itkImage)
    {
      f(itkImage);
    }
  });
}
} // namespace

Image::Image() = default;

Image::~Image() = default;

bool
Image::IsSupportedPixelType(PixelComponentType type)
{
  return DispatchPixelType(type, [](auto *) {});
}

Image::PixelComponentType
Image::NormalizePixelType(PixelComponentType type)
{
  if (type == itk::IOComponentEnum::ULONGLONG)
  {
    return itk::IOComponentEnum::ULONG;
  }
  if (type == itk::IOComponentEnum::LONGLONG)
  {
    return itk::IOComponentEnum::LONG;
  }
  return type;
}

void
Image::Initialize(PixelComponentType type,
                  const SizeType & size,
                  const Vector3D & spacing,
                  const Point3D & origin,
                  const DirectionType & direction,
                  unsigned int dimension)
{
  type = NormalizePixelType(type);
  if (!IsSupportedPixelType(type))
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    std::string("Image::Initialize: unsupported pixel type ") +
                                      itk::ImageIOBase::GetComponentTypeAsString(type),
                                    "lumo::Image::Initialize");
  }
  if (size[0] == 0 || size[1] == 0 || size[2] == 0)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Image::Initialize: every size must be > 0", "lumo::Image::Initialize");
  }
  if (dimension != 2 && dimension != 3)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Image::Initialize: the dimension must be 2 or 3", "lumo::Image::Initialize");
  }
  if (dimension == 2 && size[2] != 1)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Image::Initialize: a 2-D image must have size 1 along z", "lumo::Image::Initialize");
  }
  SlicedGeometry3D::Pointer geometry = SlicedGeometry3D::New();
  geometry->InitializeImage(size, spacing, origin, direction); // checks the spacing

  itk::DataObject::Pointer held;
  DispatchPixelType(type, [&](auto * tag) {
    using T = std::remove_pointer_t<decltype(tag)>;
    using ItkImageType = itk::Image<T, 3>;
    typename ItkImageType::Pointer itkImage = ItkImageType::New();
    typename ItkImageType::SizeType itkSize;
    typename ItkImageType::IndexType start;
    for (unsigned int i = 0; i < 3; ++i)
    {
      itkSize[i] = size[i];
      start[i] = 0;
    }
    itkImage->SetRegions(typename ItkImageType::RegionType(start, itkSize));
    itkImage->Allocate(true);
    held = itkImage.GetPointer();
  });

  m_PixelType = type;
  m_Dimension = dimension;
  m_Size = size;
  m_ItkImage = held;
  Superclass::SetGeometry(geometry.GetPointer());
  m_Initialized = true;
  this->Modified();
}

void
Image::Initialize(PixelComponentType type, const SizeType & size, unsigned int dimension)
{
  Vector3D spacing;
  spacing.Fill(1.0);
  Point3D origin;
  origin.Fill(0.0);
  DirectionType direction;
  direction.SetIdentity();
  this->Initialize(type, size, spacing, origin, direction, dimension);
}

void
Image::InitializeByItkImage(itk::ImageBase<3> * itkImage, unsigned int dimension)
{
  if (!itkImage)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "Image::InitializeByItkImage: the itk::Image is null", "lumo::Image::InitializeByItkImage");
  }
  PixelComponentType found = itk::IOComponentEnum::UNKNOWNCOMPONENTTYPE;
  for (auto candidate : { itk::IOComponentEnum::UCHAR,
                          itk::IOComponentEnum::CHAR,
                          itk::IOComponentEnum::USHORT,
                          itk::IOComponentEnum::SHORT,
                          itk::IOComponentEnum::UINT,
                          itk::IOComponentEnum::INT,
                          itk::IOComponentEnum::ULONG,
                          itk::IOComponentEnum::LONG,
                          itk::IOComponentEnum::FLOAT,
                          itk::IOComponentEnum::DOUBLE })
  {
    VisitHeld(candidate, itkImage, [&](auto *) { found = candidate; });
  }
  if (found == itk::IOComponentEnum::UNKNOWNCOMPONENTTYPE)
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "Image::InitializeByItkImage: the itk::Image has an unsupported pixel type",
                                    "lumo::Image::InitializeByItkImage");
  }
  const auto & region = itkImage->GetLargestPossibleRegion();
  const auto & buffered = itkImage->GetBufferedRegion();
  if (region != buffered || region.GetNumberOfPixels() == 0)
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "Image::InitializeByItkImage: the itk::Image must be allocated as a whole",
                                    "lumo::Image::InitializeByItkImage");
  }
  SizeType size;
  for (unsigned int i = 0; i < 3; ++i)
  {
    size[i] = static_cast<unsigned int>(region.GetSize()[i]);
  }
  if (dimension != 3 && !(dimension == 2 && size[2] == 1))
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "Image::InitializeByItkImage: the dimension must be 3, or 2 with size 1 along z",
                                    "lumo::Image::InitializeByItkImage");
  }
  Vector3D spacing;
  Point3D origin;
  for (unsigned int i = 0; i < 3; ++i)
  {
    spacing[i] = itkImage->GetSpacing()[i];
    origin[i] = itkImage->GetOrigin()[i];
  }
  SlicedGeometry3D::Pointer geometry = SlicedGeometry3D::New();
  geometry->InitializeImage(size, spacing, origin, itkImage->GetDirection());

  m_PixelType = found;
  m_Dimension = dimension;
  m_Size = size;
  m_ItkImage = itkImage;
  Superclass::SetGeometry(geometry.GetPointer());
  m_Initialized = true;
  this->Modified();
}

itk::ImageBase<3> *
Image::GetItkImageBase() const
{
  return dynamic_cast<itk::ImageBase<3> *>(m_ItkImage.GetPointer());
}

std::string
Image::GetPixelTypeAsString() const
{
  return itk::ImageIOBase::GetComponentTypeAsString(m_PixelType);
}

unsigned int
Image::GetBitsPerComponent() const
{
  unsigned int bits = 0;
  DispatchPixelType(m_PixelType, [&](auto * tag) { bits = 8 * sizeof(*tag); });
  return bits;
}

bool
Image::IsFloatingPoint() const
{
  return m_PixelType == itk::IOComponentEnum::FLOAT || m_PixelType == itk::IOComponentEnum::DOUBLE;
}

bool
Image::IsSignedInteger() const
{
  bool isSigned = false;
  DispatchPixelType(m_PixelType, [&](auto * tag) {
    using T = std::remove_pointer_t<decltype(tag)>;
    isSigned = std::numeric_limits<T>::is_integer && std::numeric_limits<T>::is_signed;
  });
  return isSigned;
}

unsigned int
Image::GetDimension(unsigned int axis) const
{
  return axis < 3 ? m_Size[axis] : 0;
}

std::size_t
Image::GetNumberOfVoxels() const
{
  if (!m_ItkImage)
  {
    return 0;
  }
  return static_cast<std::size_t>(m_Size[0]) * m_Size[1] * m_Size[2];
}

std::size_t
Image::GetBufferSizeInBytes() const
{
  return this->GetNumberOfVoxels() * this->GetBitsPerComponent() / 8;
}

void *
Image::GetData()
{
  void * data = nullptr;
  VisitHeld(m_PixelType, m_ItkImage, [&](auto * itkImage) { data = itkImage->GetBufferPointer(); });
  return data;
}

const void *
Image::GetData() const
{
  return const_cast<Image *>(this)->GetData();
}

double
Image::GetPixelValueAsDouble(unsigned int x, unsigned int y, unsigned int z) const
{
  if (!m_ItkImage || x >= m_Size[0] || y >= m_Size[1] || z >= m_Size[2])
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "Image::GetPixelValueAsDouble: index outside the image",
                                    "lumo::Image::GetPixelValueAsDouble");
  }
  double value = 0.0;
  VisitHeld(m_PixelType, m_ItkImage, [&](auto * itkImage) {
    const std::size_t offset = x + static_cast<std::size_t>(m_Size[0]) * (y + static_cast<std::size_t>(m_Size[1]) * z);
    value = static_cast<double>(itkImage->GetBufferPointer()[offset]);
  });
  return value;
}

bool
Image::GetScalarRange(double & minimum, double & maximum) const
{
  if (!m_ItkImage)
  {
    return false;
  }
  bool found = false;
  VisitHeld(m_PixelType, m_ItkImage, [&](auto * itkImage) {
    const auto * begin = itkImage->GetBufferPointer();
    const auto * end = begin + this->GetNumberOfVoxels();
    if (begin != end)
    {
      const auto range = std::minmax_element(begin, end);
      minimum = static_cast<double>(*range.first);
      maximum = static_cast<double>(*range.second);
      found = true;
    }
  });
  return found;
}

Vector3D
Image::GetSpacing() const
{
  return this->GetGeometry(0)->GetSpacing();
}

void
Image::SetSpacing(const Vector3D & spacing)
{
  // Modified only when the geometry took a new value.
  Geometry3D * geometry = this->GetGeometry(0);
  const itk::ModifiedTimeType before = geometry->GetMTime();
  geometry->SetSpacing(spacing);
  if (geometry->GetMTime() != before)
  {
    this->Modified();
  }
}

Point3D
Image::GetOrigin() const
{
  return this->GetGeometry(0)->GetOrigin();
}

void
Image::SetOrigin(const Point3D & origin)
{
  // Modified only when the geometry took a new value.
  Geometry3D * geometry = this->GetGeometry(0);
  const itk::ModifiedTimeType before = geometry->GetMTime();
  geometry->SetOrigin(origin);
  if (geometry->GetMTime() != before)
  {
    this->Modified();
  }
}

Image::DirectionType
Image::GetDirection() const
{
  return this->GetGeometry(0)->GetDirection();
}

void
Image::SetDirection(const DirectionType & direction)
{
  // Modified only when the geometry took a new value.
  Geometry3D * geometry = this->GetGeometry(0);
  const itk::ModifiedTimeType before = geometry->GetMTime();
  geometry->SetDirection(direction);
  if (geometry->GetMTime() != before)
  {
    this->Modified();
  }
}

bool
Image::IsInitialized() const
{
  return m_Initialized && m_ItkImage.IsNotNull();
}

bool
Image::IsEmptyTimeStep(TimeStepType t) const
{
  return t != 0 || !this->IsInitialized();
}

void
Image::Clear()
{
  Superclass::Clear();
  m_ItkImage = nullptr;
  m_PixelType = itk::IOComponentEnum::UNKNOWNCOMPONENTTYPE;
  m_Dimension = 0;
  m_Size = { { 0, 0, 0 } };
}

void
Image::Graft(const itk::DataObject * data)
{
  const auto * other = dynamic_cast<const Image *>(data);
  if (!other || other == this)
  {
    return;
  }
  Superclass::Graft(data);
  m_PixelType = other->m_PixelType;
  m_Dimension = other->m_Dimension;
  m_Size = other->m_Size;
  m_ItkImage = other->m_ItkImage;
}

void
Image::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "PixelType: " << this->GetPixelTypeAsString() << std::endl;
  os << indent << "Dimension: " << m_Dimension << std::endl;
  os << indent << "Size: " << m_Size[0] << " " << m_Size[1] << " " << m_Size[2] << std::endl;
}
} // namespace lumo
