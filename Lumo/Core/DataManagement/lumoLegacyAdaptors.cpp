// Image <-> Pic descriptor.

#include "lumoLegacyAdaptors.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace lumo
{
namespace
{
bool
PicKindOf(itk::IOComponentEnum type, lumoIpPicType & kind, std::uint32_t & bpe)
{
  using E = itk::IOComponentEnum;
  switch (Image::NormalizePixelType(type))
  {
    case E::UCHAR:
      kind = lumoIpPicUInt;
      bpe = 8;
      return true;
    case E::CHAR:
      kind = lumoIpPicInt;
      bpe = 8;
      return true;
    case E::USHORT:
      kind = lumoIpPicUInt;
      bpe = 16;
      return true;
    case E::SHORT:
      kind = lumoIpPicInt;
      bpe = 16;
      return true;
    case E::UINT:
      kind = lumoIpPicUInt;
      bpe = 32;
      return true;
    case E::INT:
      kind = lumoIpPicInt;
      bpe = 32;
      return true;
    case E::ULONG:
      kind = lumoIpPicUInt;
      bpe = 64;
      return true;
    case E::LONG:
      kind = lumoIpPicInt;
      bpe = 64;
      return true;
    case E::FLOAT:
      kind = lumoIpPicFloat;
      bpe = 32;
      return true;
    case E::DOUBLE:
      kind = lumoIpPicFloat;
      bpe = 64;
      return true;
    default:
      return false;
  }
}

bool
PixelTypeOf(lumoIpPicType kind, std::uint32_t bpe, itk::IOComponentEnum & type)
{
  using E = itk::IOComponentEnum;
  if (kind == lumoIpPicUInt)
  {
    switch (bpe)
    {
      case 8:
        type = E::UCHAR;
        return true;
      case 16:
        type = E::USHORT;
        return true;
      case 32:
        type = E::UINT;
        return true;
      case 64:
        type = E::ULONG;
        return true;
    }
  }
  else if (kind == lumoIpPicInt)
  {
    switch (bpe)
    {
      case 8:
        type = E::CHAR;
        return true;
      case 16:
        type = E::SHORT;
        return true;
      case 32:
        type = E::INT;
        return true;
      case 64:
        type = E::LONG;
        return true;
    }
  }
  else if (kind == lumoIpPicFloat)
  {
    if (bpe == 32)
    {
      type = E::FLOAT;
      return true;
    }
    if (bpe == 64)
    {
      type = E::DOUBLE;
      return true;
    }
  }
  return false;
}
} // namespace

lumoIpPicDescriptor *
CastToIpPicDescriptor(const Image * image)
{
  if (!image || !image->IsInitialized())
  {
    return nullptr;
  }
  lumoIpPicType kind = lumoIpPicUnknown;
  std::uint32_t bpe = 0;
  if (!PicKindOf(image->GetPixelType(), kind, bpe))
  {
    return nullptr;
  }
  const std::uint32_t dim = image->GetDimension() == 2 ? 2 : 3;
  const std::uint32_t sizes[3] = { image->GetDimension(0), image->GetDimension(1), image->GetDimension(2) };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(kind, bpe, dim, sizes);
  if (!pic)
  {
    return nullptr;
  }
  const std::size_t bytes = image->GetBufferSizeInBytes();
  if (lumoIpPicSize(pic) != bytes)
  {
    lumoIpPicFree(pic);
    return nullptr;
  }
  std::memcpy(pic->data, image->GetData(), bytes);
  const Vector3D spacing = image->GetSpacing();
  const Point3D origin = image->GetOrigin();
  const double spacingValues[3] = { spacing[0], spacing[1], spacing[2] };
  const double originValues[3] = { origin[0], origin[1], origin[2] };
  lumoIpPicSetVectorTag(pic, lumoIpPicTagSpacing, spacingValues);
  lumoIpPicSetVectorTag(pic, lumoIpPicTagOrigin, originValues);
  return pic;
}

Image::Pointer
CastToImageDescriptor(const lumoIpPicDescriptor * pic)
{
  if (!pic || !lumoIpPicHeaderIsValid(pic) || !pic->data || pic->dim > 3)
  {
    return nullptr;
  }
  itk::IOComponentEnum type;
  if (!PixelTypeOf(pic->type, pic->bpe, type))
  {
    return nullptr;
  }
  Image::SizeType size = { { 1, 1, 1 } };
  for (std::uint32_t i = 0; i < pic->dim; ++i)
  {
    size[i] = pic->n[i];
  }
  double spacingValues[3] = { 1.0, 1.0, 1.0 };
  double originValues[3] = { 0.0, 0.0, 0.0 };
  if (!lumoIpPicGetVectorTag(pic, lumoIpPicTagSpacing, spacingValues) ||
      !std::all_of(spacingValues, spacingValues + 3, [](double v) { return v > 0.0 && std::isfinite(v); }))
  {
    spacingValues[0] = spacingValues[1] = spacingValues[2] = 1.0;
  }
  if (!lumoIpPicGetVectorTag(pic, lumoIpPicTagOrigin, originValues) ||
      !std::all_of(originValues, originValues + 3, [](double v) { return std::isfinite(v); }))
  {
    originValues[0] = originValues[1] = originValues[2] = 0.0;
  }
  Vector3D spacing;
  Point3D origin;
  for (unsigned int i = 0; i < 3; ++i)
  {
    spacing[i] = spacingValues[i];
    origin[i] = originValues[i];
  }
  Image::DirectionType direction;
  direction.SetIdentity();
  Image::Pointer image = Image::New();
  image->Initialize(type, size, spacing, origin, direction, pic->dim == 3 ? 3 : 2);
  const std::size_t bytes = lumoIpPicSize(pic);
  if (bytes != image->GetBufferSizeInBytes())
  {
    return nullptr;
  }
  std::memcpy(image->GetData(), pic->data, bytes);
  return image;
}
} // namespace lumo
