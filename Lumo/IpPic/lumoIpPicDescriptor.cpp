#include "lumoIpPicDescriptor.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

namespace
{
// Calls f with a typed pointer to the elements of a buffer of the given kind.
template <class F>
bool
dispatch(lumoIpPicType type, std::uint32_t bpe, void * data, F && f)
{
  switch (type)
  {
    case lumoIpPicBool:
    case lumoIpPicUInt:
      switch (bpe)
      {
        case 8:
          f(static_cast<std::uint8_t *>(data));
          return true;
        case 16:
          f(static_cast<std::uint16_t *>(data));
          return true;
        case 32:
          f(static_cast<std::uint32_t *>(data));
          return true;
        case 64:
          f(static_cast<std::uint64_t *>(data));
          return true;
      }
      return false;
    case lumoIpPicASCII:
    case lumoIpPicInt:
      switch (bpe)
      {
        case 8:
          f(static_cast<std::int8_t *>(data));
          return true;
        case 16:
          f(static_cast<std::int16_t *>(data));
          return true;
        case 32:
          f(static_cast<std::int32_t *>(data));
          return true;
        case 64:
          f(static_cast<std::int64_t *>(data));
          return true;
      }
      return false;
    case lumoIpPicFloat:
      switch (bpe)
      {
        case 32:
          f(static_cast<float *>(data));
          return true;
        case 64:
          f(static_cast<double *>(data));
          return true;
      }
      return false;
    default:
      return false;
  }
}

template <class From>
bool
isNaN(From value)
{
  if constexpr (std::is_floating_point_v<From>)
  {
    return std::isnan(value);
  }
  return false;
}

template <class To, class From>
To
convertValue(From value, bool toBool)
{
  if (toBool)
  {
    // Bool elements are stored in 8 bits; a plain cast would wrap 256 to 0.
    return (isNaN(value) || value == From(0)) ? To(0) : To(1);
  }
  if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>)
  {
    if (std::isnan(value))
    {
      return To(0);
    }
    if (value <= static_cast<From>(std::numeric_limits<To>::lowest()))
    {
      return std::numeric_limits<To>::lowest();
    }
    if (value >= static_cast<From>(std::numeric_limits<To>::max()))
    {
      return std::numeric_limits<To>::max();
    }
  }
  return static_cast<To>(value);
}
} // namespace

bool
lumoIpPicKindIsSupported(lumoIpPicType type, std::uint32_t bpe)
{
  switch (type)
  {
    case lumoIpPicBool:
    case lumoIpPicASCII:
      return bpe == 8;
    case lumoIpPicInt:
    case lumoIpPicUInt:
      return bpe == 8 || bpe == 16 || bpe == 32 || bpe == 64;
    case lumoIpPicFloat:
      return bpe == 32 || bpe == 64;
    default:
      return false;
  }
}

lumoIpPicDescriptor *
lumoIpPicNew()
{
  return new (std::nothrow) lumoIpPicDescriptor();
}

void
lumoIpPicFree(lumoIpPicDescriptor * pic)
{
  if (pic == nullptr)
  {
    return;
  }
  lumoIpPicFreeData(pic);
  delete pic;
}

void
lumoIpPicFreeData(lumoIpPicDescriptor * pic)
{
  if (pic != nullptr)
  {
    std::free(pic->data);
    pic->data = nullptr;
  }
}

std::size_t
lumoIpPicElements(const lumoIpPicDescriptor * pic)
{
  if (pic == nullptr || pic->dim == 0 || pic->dim > lumoIpPicMaxDim)
  {
    return 0;
  }
  std::size_t count = 1;
  for (std::uint32_t i = 0; i < pic->dim; ++i)
  {
    const std::size_t size = pic->n[i];
    if (size != 0 && count > std::numeric_limits<std::size_t>::max() / size)
    {
      return std::numeric_limits<std::size_t>::max();
    }
    count *= size;
  }
  return count;
}

bool
lumoIpPicHeaderIsValid(const lumoIpPicDescriptor * pic)
{
  if (pic == nullptr || pic->dim == 0 || pic->dim > lumoIpPicMaxDim || !lumoIpPicKindIsSupported(pic->type, pic->bpe))
  {
    return false;
  }
  for (std::uint32_t i = 0; i < pic->dim; ++i)
  {
    if (pic->n[i] == 0)
    {
      return false;
    }
  }
  return true;
}

std::size_t
lumoIpPicSize(const lumoIpPicDescriptor * pic)
{
  if (!lumoIpPicHeaderIsValid(pic))
  {
    return 0;
  }
  const std::size_t elements = lumoIpPicElements(pic);
  const std::size_t bytesPerElement = pic->bpe / 8;
  if (elements == std::numeric_limits<std::size_t>::max() ||
      elements > std::numeric_limits<std::size_t>::max() / bytesPerElement)
  {
    return 0;
  }
  return elements * bytesPerElement;
}

bool
lumoIpPicAllocateData(lumoIpPicDescriptor * pic)
{
  if (pic == nullptr)
  {
    return false;
  }
  lumoIpPicFreeData(pic);
  const std::size_t bytes = lumoIpPicSize(pic);
  if (bytes == 0)
  {
    return false;
  }
  pic->data = std::calloc(bytes, 1);
  return pic->data != nullptr;
}

lumoIpPicDescriptor *
lumoIpPicNewVolume(lumoIpPicType type, std::uint32_t bpe, std::uint32_t dim, const std::uint32_t * sizes)
{
  if (sizes == nullptr || dim == 0 || dim > lumoIpPicMaxDim)
  {
    return nullptr;
  }
  lumoIpPicDescriptor * pic = lumoIpPicNew();
  if (pic == nullptr)
  {
    return nullptr;
  }
  pic->type = type;
  pic->bpe = bpe;
  pic->dim = dim;
  for (std::uint32_t i = 0; i < dim; ++i)
  {
    pic->n[i] = sizes[i];
  }
  if (!lumoIpPicAllocateData(pic))
  {
    lumoIpPicFree(pic);
    return nullptr;
  }
  return pic;
}

lumoIpPicDescriptor *
lumoIpPicCopyHeader(const lumoIpPicDescriptor * src, lumoIpPicDescriptor * dst)
{
  if (src == nullptr)
  {
    return nullptr;
  }
  const bool fresh = dst == nullptr;
  if (fresh)
  {
    dst = lumoIpPicNew();
    if (dst == nullptr)
    {
      return nullptr;
    }
  }
  try
  {
    dst->tags = src->tags;
  }
  catch (const std::bad_alloc &)
  {
    if (fresh)
    {
      lumoIpPicFree(dst);
    }
    return nullptr;
  }
  dst->type = src->type;
  dst->bpe = src->bpe;
  dst->dim = src->dim;
  std::memcpy(dst->n, src->n, sizeof(dst->n));
  return dst;
}

lumoIpPicDescriptor *
lumoIpPicClone(const lumoIpPicDescriptor * pic)
{
  if (pic == nullptr)
  {
    return nullptr;
  }
  lumoIpPicDescriptor * copy = lumoIpPicCopyHeader(pic, nullptr);
  if (copy == nullptr)
  {
    return nullptr;
  }
  if (pic->data != nullptr)
  {
    const std::size_t bytes = lumoIpPicSize(pic);
    if (bytes == 0 || !lumoIpPicAllocateData(copy))
    {
      lumoIpPicFree(copy);
      return nullptr;
    }
    std::memcpy(copy->data, pic->data, bytes);
  }
  return copy;
}

bool
lumoIpPicAddTag(lumoIpPicDescriptor * pic, const lumoIpPicTag & tag)
{
  if (pic == nullptr || tag.name.empty() || tag.name.size() > lumoIpPicMaxTagName)
  {
    return false;
  }
  try
  {
    for (lumoIpPicTag & existing : pic->tags)
    {
      if (existing.name == tag.name)
      {
        existing = tag;
        return true;
      }
    }
    pic->tags.push_back(tag);
  }
  catch (const std::bad_alloc &)
  {
    return false;
  }
  return true;
}

const lumoIpPicTag *
lumoIpPicQueryTag(const lumoIpPicDescriptor * pic, const std::string & name)
{
  if (pic == nullptr)
  {
    return nullptr;
  }
  for (const lumoIpPicTag & tag : pic->tags)
  {
    if (tag.name == name)
    {
      return &tag;
    }
  }
  return nullptr;
}

bool
lumoIpPicDeleteTag(lumoIpPicDescriptor * pic, const std::string & name)
{
  if (pic == nullptr)
  {
    return false;
  }
  for (auto it = pic->tags.begin(); it != pic->tags.end(); ++it)
  {
    if (it->name == name)
    {
      pic->tags.erase(it);
      return true;
    }
  }
  return false;
}

bool
lumoIpPicSetVectorTag(lumoIpPicDescriptor * pic, const std::string & name, const double values[3])
{
  if (values == nullptr)
  {
    return false;
  }
  lumoIpPicTag tag;
  tag.name = name;
  tag.type = lumoIpPicFloat;
  tag.bpe = 64;
  tag.value.resize(3 * sizeof(double));
  // Tags hold little-endian bytes; this library targets little-endian machines only.
  std::memcpy(tag.value.data(), values, 3 * sizeof(double));
  return lumoIpPicAddTag(pic, tag);
}

bool
lumoIpPicGetVectorTag(const lumoIpPicDescriptor * pic, const std::string & name, double values[3])
{
  const lumoIpPicTag * tag = lumoIpPicQueryTag(pic, name);
  if (values == nullptr || tag == nullptr || tag->type != lumoIpPicFloat || tag->bpe != 64 ||
      tag->value.size() != 3 * sizeof(double))
  {
    return false;
  }
  std::memcpy(values, tag->value.data(), 3 * sizeof(double));
  return true;
}

lumoIpPicDescriptor *
lumoIpPicConvert(const lumoIpPicDescriptor * pic, lumoIpPicType type, std::uint32_t bpe)
{
  if (!lumoIpPicHeaderIsValid(pic) || pic->data == nullptr || !lumoIpPicKindIsSupported(type, bpe))
  {
    return nullptr;
  }
  lumoIpPicDescriptor * result = lumoIpPicCopyHeader(pic, nullptr);
  if (result == nullptr)
  {
    return nullptr;
  }
  result->type = type;
  result->bpe = bpe;
  if (!lumoIpPicAllocateData(result))
  {
    lumoIpPicFree(result);
    return nullptr;
  }
  const std::size_t count = lumoIpPicElements(pic);
  const bool toBool = type == lumoIpPicBool;
  bool converted = dispatch(pic->type, pic->bpe, pic->data, [&](auto * in) {
    dispatch(type, bpe, result->data, [&](auto * out) {
      using To = std::remove_pointer_t<decltype(out)>;
      for (std::size_t i = 0; i < count; ++i)
      {
        out[i] = convertValue<To>(in[i], toBool);
      }
    });
  });
  if (!converted)
  {
    lumoIpPicFree(result);
    return nullptr;
  }
  return result;
}

bool
lumoIpPicExtrema(const lumoIpPicDescriptor * pic, double * minimum, double * maximum)
{
  if (!lumoIpPicHeaderIsValid(pic) || pic->data == nullptr || minimum == nullptr || maximum == nullptr)
  {
    return false;
  }
  const std::size_t count = lumoIpPicElements(pic);
  double lo = std::numeric_limits<double>::infinity();
  double hi = -std::numeric_limits<double>::infinity();
  bool any = false;
  dispatch(pic->type, pic->bpe, pic->data, [&](auto * in) {
    for (std::size_t i = 0; i < count; ++i)
    {
      const double v = static_cast<double>(in[i]);
      if (std::isnan(v))
      {
        continue;
      }
      any = true;
      lo = v < lo ? v : lo;
      hi = v > hi ? v : hi;
    }
  });
  if (!any)
  {
    return false;
  }
  *minimum = lo;
  *maximum = hi;
  return true;
}
