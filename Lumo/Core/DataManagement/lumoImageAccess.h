#ifndef lumoImageAccess_h
#define lumoImageAccess_h

// Typed access to the voxels of a lumo::Image as itk::Image<T, 3>. Include this header only where the typed
// access is needed: it brings in itkImage.h.
//
//   auto itkImage = lumo::ImageToItkImage<unsigned char>(image);   // throws when the pixel type differs
//   lumo::AccessByItk(image, [&](auto * itkImage) { ... });          // called with the image's own pixel type
//   lumo::Image::Pointer image = lumo::ImportItkImage(itkImage.GetPointer());

#include "lumoImage.h"

#include <itkImage.h>

#include <cstdint>
#include <type_traits>

namespace lumo
{
/** The component type of a C++ pixel type (UNKNOWNCOMPONENTTYPE for an unsupported type). */
template <typename T>
constexpr itk::IOComponentEnum
PixelComponentOf()
{
  using E = itk::IOComponentEnum;
  if constexpr (std::is_same_v<T, unsigned char>)
    return E::UCHAR;
  else if constexpr (std::is_same_v<T, signed char>)
    return E::CHAR;
  else if constexpr (std::is_same_v<T, unsigned short>)
    return E::USHORT;
  else if constexpr (std::is_same_v<T, short>)
    return E::SHORT;
  else if constexpr (std::is_same_v<T, unsigned int>)
    return E::UINT;
  else if constexpr (std::is_same_v<T, int>)
    return E::INT;
  else if constexpr (std::is_same_v<T, unsigned long>)
    return E::ULONG;
  else if constexpr (std::is_same_v<T, long>)
    return E::LONG;
  else if constexpr (std::is_same_v<T, float>)
    return E::FLOAT;
  else if constexpr (std::is_same_v<T, double>)
    return E::DOUBLE;
  else
    return E::UNKNOWNCOMPONENTTYPE;
}

/** Calls f(static_cast<T *>(nullptr)) for the C++ type T of a supported component type; returns false (without a
 *  call) for an unsupported one. The storage types: UCHAR unsigned char, CHAR signed char, USHORT unsigned short,
 *  SHORT short, UINT unsigned int, INT int, ULONG/ULONGLONG unsigned long, LONG/LONGLONG long, FLOAT float,
 *  DOUBLE double. */
template <typename TFunctor>
bool
DispatchPixelType(itk::IOComponentEnum type, TFunctor && f)
{
  static_assert(sizeof(long) == 8, "64-bit integers are stored as long");
  using E = itk::IOComponentEnum;
  switch (type)
  {
    case E::UCHAR:
      f(static_cast<unsigned char *>(nullptr));
      return true;
    case E::CHAR:
      f(static_cast<signed char *>(nullptr));
      return true;
    case E::USHORT:
      f(static_cast<unsigned short *>(nullptr));
      return true;
    case E::SHORT:
      f(static_cast<short *>(nullptr));
      return true;
    case E::UINT:
      f(static_cast<unsigned int *>(nullptr));
      return true;
    case E::INT:
      f(static_cast<int *>(nullptr));
      return true;
    case E::ULONG:
    case E::ULONGLONG:
      f(static_cast<unsigned long *>(nullptr));
      return true;
    case E::LONG:
    case E::LONGLONG:
      f(static_cast<long *>(nullptr));
      return true;
    case E::FLOAT:
      f(static_cast<float *>(nullptr));
      return true;
    case E::DOUBLE:
      f(static_cast<double *>(nullptr));
      return true;
    default:
      return false;
  }
}

/** The held itk::Image<TPixel, 3> of the image (TPixel as DispatchPixelType names it: CHAR is signed char), with
 * spacing, origin and direction taken from the image's geometry. Throws itk::InvalidArgumentError for a null or
 * uninitialised image or another pixel type. */
template <typename TPixel>
typename itk::Image<TPixel, 3>::Pointer
ImageToItkImage(const Image * image)
{
  using ItkImageType = itk::Image<TPixel, 3>;
  if (!image || !image->IsInitialized())
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "ImageToItkImage: the image is null or not initialized", "lumo::ImageToItkImage");
  }
  auto * typed = dynamic_cast<ItkImageType *>(image->GetItkImageBase());
  if (!typed)
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    "ImageToItkImage: the image's pixel type is " + image->GetPixelTypeAsString() +
                                      ", not the requested one",
                                    "lumo::ImageToItkImage");
  }
  typename ItkImageType::SpacingType spacing;
  typename ItkImageType::PointType origin;
  const Vector3D s = image->GetSpacing();
  const Point3D o = image->GetOrigin();
  for (unsigned int i = 0; i < 3; ++i)
  {
    spacing[i] = s[i];
    origin[i] = o[i];
  }
  typed->SetSpacing(spacing);
  typed->SetOrigin(origin);
  typed->SetDirection(image->GetDirection());
  return typed;
}

/** Calls f(itk::Image<T, 3> *) with the image's own pixel type T (geometry synchronised as in ImageToItkImage).
 *  Throws itk::InvalidArgumentError for a null or uninitialised image. */
template <typename TFunctor>
void
AccessByItk(const Image * image, TFunctor && f)
{
  if (!image || !image->IsInitialized())
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "AccessByItk: the image is null or not initialized", "lumo::AccessByItk");
  }
  DispatchPixelType(image->GetPixelType(), [&](auto * tag) {
    using T = std::remove_pointer_t<decltype(tag)>;
    auto itkImage = ImageToItkImage<T>(image);
    f(itkImage.GetPointer());
  });
}

/** A new lumo::Image sharing the buffer of the itk::Image (see Image::InitializeByItkImage). */
template <typename TPixel>
Image::Pointer
ImportItkImage(itk::Image<TPixel, 3> * itkImage, unsigned int dimension = 3)
{
  Image::Pointer image = Image::New();
  image->InitializeByItkImage(itkImage, dimension);
  return image;
}
} // namespace lumo

#endif
