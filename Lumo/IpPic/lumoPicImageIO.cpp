#include "lumoPicImageIO.h"

#include "lumoIpPicFile.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>
#include <memory>

namespace
{
using PicPointer = std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)>;

// Geometry tags cover three axes; further axes have unit spacing, zero origin and identity direction.
constexpr unsigned int geometryAxes = 3;

bool
endsWith(const std::string & text, const std::string & tail)
{
  return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

bool
hasPicName(const char * fileName)
{
  if (fileName == nullptr)
  {
    return false;
  }
  std::string name(fileName);
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return endsWith(name, ".pic") || endsWith(name, ".pic.gz");
}

// The file's element kind for an ITK component type; false for kinds the format cannot hold.
bool
picKindOf(itk::IOComponentEnum component, lumoIpPicType & type, std::uint32_t & bpe)
{
  using C = itk::IOComponentEnum;
  switch (component)
  {
    case C::UCHAR:
      type = lumoIpPicUInt, bpe = 8;
      return true;
    case C::CHAR:
      type = lumoIpPicInt, bpe = 8;
      return true;
    case C::USHORT:
      type = lumoIpPicUInt, bpe = 16;
      return true;
    case C::SHORT:
      type = lumoIpPicInt, bpe = 16;
      return true;
    case C::UINT:
      type = lumoIpPicUInt, bpe = 8 * sizeof(unsigned int);
      return true;
    case C::INT:
      type = lumoIpPicInt, bpe = 8 * sizeof(int);
      return true;
    case C::ULONG:
      type = lumoIpPicUInt, bpe = 8 * sizeof(unsigned long);
      return true;
    case C::LONG:
      type = lumoIpPicInt, bpe = 8 * sizeof(long);
      return true;
    case C::ULONGLONG:
      type = lumoIpPicUInt, bpe = 8 * sizeof(unsigned long long);
      return true;
    case C::LONGLONG:
      type = lumoIpPicInt, bpe = 8 * sizeof(long long);
      return true;
    case C::FLOAT:
      type = lumoIpPicFloat, bpe = 32;
      return true;
    case C::DOUBLE:
      type = lumoIpPicFloat, bpe = 64;
      return true;
    default:
      return false;
  }
}

// The ITK component type for a file's element kind; bool and ASCII read as unsigned and signed bytes.
itk::IOComponentEnum
componentOf(lumoIpPicType type, std::uint32_t bpe)
{
  using C = itk::IOComponentEnum;
  const bool isSigned = type == lumoIpPicInt || type == lumoIpPicASCII;
  if (type == lumoIpPicFloat)
  {
    return bpe == 32 ? C::FLOAT : C::DOUBLE;
  }
  switch (bpe)
  {
    case 8:
      return isSigned ? C::CHAR : C::UCHAR;
    case 16:
      return isSigned ? C::SHORT : C::USHORT;
    case 32:
      return isSigned ? C::INT : C::UINT;
    default:
      return isSigned ? C::LONGLONG : C::ULONGLONG;
  }
}

double
determinant(const double m[3][3], unsigned int n)
{
  switch (n)
  {
    case 1:
      return m[0][0];
    case 2:
      return m[0][0] * m[1][1] - m[0][1] * m[1][0];
    default:
      return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
  }
}
} // namespace

namespace lumo
{
PicImageIO::PicImageIO()
{
  this->SetNumberOfDimensions(3);
  m_ByteOrder = itk::IOByteOrderEnum::LittleEndian;
  this->Self::SetMaximumCompressionLevel(9);
  this->Self::SetCompressionLevel(lumoIpPicFileDefaultCompressionLevel);
  for (const char * extension : { ".pic", ".pic.gz" })
  {
    this->AddSupportedReadExtension(extension);
    this->AddSupportedWriteExtension(extension);
  }
}

PicImageIO::~PicImageIO() = default;

bool
PicImageIO::SupportsDimension(unsigned long dimension)
{
  return dimension >= 1 && dimension <= lumoIpPicMaxDim;
}

bool
PicImageIO::CanReadFile(const char * fileName)
{
  return hasPicName(fileName) && lumoIpPicFileHasMagic(fileName);
}

bool
PicImageIO::CanWriteFile(const char * fileName)
{
  return hasPicName(fileName);
}

void
PicImageIO::ReadImageInformation()
{
  std::string error;
  PicPointer pic(lumoIpPicGetHeader(m_FileName, &error), lumoIpPicFree);
  if (!pic)
  {
    itkExceptionMacro(<< error);
  }
  const unsigned int dim = pic->dim;
  const unsigned int axes = std::min(dim, geometryAxes);
  double spacing[3] = { 1.0, 1.0, 1.0 };
  double origin[3] = { 0.0, 0.0, 0.0 };
  double rows[9] = { 1, 0, 0, 0, 1, 0, 0, 0, 1 };
  lumoIpPicGetVectorTag(pic.get(), lumoIpPicTagSpacing, spacing);
  lumoIpPicGetVectorTag(pic.get(), lumoIpPicTagOrigin, origin);
  if (const lumoIpPicTag * tag = lumoIpPicQueryTag(pic.get(), lumoIpPicTagDirection))
  {
    // The reader has checked the tag: nine float64 values.
    std::memcpy(rows, tag->value.data(), sizeof(rows));
  }
  double matrix[3][3];
  for (unsigned int r = 0; r < 3; ++r)
  {
    for (unsigned int c = 0; c < 3; ++c)
    {
      matrix[r][c] = rows[3 * r + c];
    }
  }
  // A file of fewer than three axes uses the upper-left block, which must be invertible on its own.
  if (determinant(matrix, axes) == 0.0)
  {
    itkExceptionMacro(<< m_FileName << ": the direction of a " << dim << "-dimensional image is singular");
  }

  this->SetNumberOfDimensions(dim);
  for (unsigned int i = 0; i < dim; ++i)
  {
    this->SetDimensions(i, pic->n[i]);
    this->SetSpacing(i, i < axes ? spacing[i] : 1.0);
    this->SetOrigin(i, i < axes ? origin[i] : 0.0);
    std::vector<double> column(dim, 0.0);
    for (unsigned int r = 0; r < dim; ++r)
    {
      column[r] = (r < axes && i < axes) ? matrix[r][i] : (r == i ? 1.0 : 0.0);
    }
    this->SetDirection(i, column);
  }
  this->SetPixelType(itk::IOPixelEnum::SCALAR);
  this->SetNumberOfComponents(1);
  this->SetComponentType(componentOf(pic->type, pic->bpe));
}

void
PicImageIO::Read(void * buffer)
{
  const itk::ImageIORegion & region = this->GetIORegion();
  for (unsigned int i = 0; i < this->GetNumberOfDimensions(); ++i)
  {
    const bool whole =
      i >= region.GetImageDimension() || (region.GetIndex(i) == 0 && region.GetSize(i) == this->GetDimensions(i));
    if (!whole)
    {
      itkExceptionMacro(<< m_FileName << ": reading part of an image is not supported");
    }
  }
  const auto bytes = static_cast<std::size_t>(this->GetImageSizeInBytes());
  std::string error;
  lumoIpPicDescriptor header;
  if (!lumoIpPicGetData(m_FileName, buffer, bytes, &header, &error))
  {
    itkExceptionMacro(<< error);
  }
  // The file could have been replaced since ReadImageInformation.
  bool same =
    header.dim == this->GetNumberOfDimensions() && componentOf(header.type, header.bpe) == this->GetComponentType();
  for (unsigned int i = 0; same && i < header.dim; ++i)
  {
    same = header.n[i] == this->GetDimensions(i);
  }
  if (!same)
  {
    itkExceptionMacro(<< m_FileName << ": the file changed after its header was read");
  }
}

void
PicImageIO::WriteImageInformation()
{}

void
PicImageIO::Write(const void * buffer)
{
  if (this->GetPixelType() != itk::IOPixelEnum::SCALAR || this->GetNumberOfComponents() != 1)
  {
    itkExceptionMacro(<< m_FileName << ": only scalar images can be written as Pic files, not pixel type "
                      << itk::ImageIOBase::GetPixelTypeAsString(this->GetPixelType()) << " with "
                      << this->GetNumberOfComponents() << " components");
  }
  lumoIpPicDescriptor pic;
  if (!picKindOf(this->GetComponentType(), pic.type, pic.bpe))
  {
    itkExceptionMacro(<< m_FileName << ": component type "
                      << itk::ImageIOBase::GetComponentTypeAsString(this->GetComponentType())
                      << " cannot be written as a Pic file");
  }
  const unsigned int dim = this->GetNumberOfDimensions();
  if (!this->SupportsDimension(dim))
  {
    itkExceptionMacro(<< m_FileName << ": " << dim << " dimensions cannot be written as a Pic file (1 to "
                      << lumoIpPicMaxDim << ")");
  }
  const itk::ImageIORegion & region = this->GetIORegion();
  pic.dim = dim;
  for (unsigned int i = 0; i < dim; ++i)
  {
    if (this->GetDimensions(i) > std::numeric_limits<std::uint32_t>::max())
    {
      itkExceptionMacro(<< m_FileName << ": size " << this->GetDimensions(i) << " of axis " << i
                        << " does not fit the 32-bit sizes of a Pic file");
    }
    if (i < region.GetImageDimension() && (region.GetIndex(i) != 0 || region.GetSize(i) != this->GetDimensions(i)))
    {
      itkExceptionMacro(<< m_FileName << ": writing part of an image is not supported");
    }
    pic.n[i] = static_cast<std::uint32_t>(this->GetDimensions(i));
  }

  const unsigned int axes = std::min(dim, geometryAxes);
  double spacing[3] = { 1.0, 1.0, 1.0 };
  double origin[3] = { 0.0, 0.0, 0.0 };
  double rows[9] = { 1, 0, 0, 0, 1, 0, 0, 0, 1 };
  for (unsigned int c = 0; c < axes; ++c)
  {
    spacing[c] = this->GetSpacing(c);
    origin[c] = this->GetOrigin(c);
    const std::vector<double> column = this->GetDirection(c);
    for (unsigned int r = 0; r < axes; ++r)
    {
      rows[3 * r + c] = column[r];
    }
  }
  lumoIpPicTag direction;
  direction.name = lumoIpPicTagDirection;
  direction.type = lumoIpPicFloat;
  direction.bpe = 64;
  direction.value.resize(sizeof(rows));
  std::memcpy(direction.value.data(), rows, sizeof(rows));
  lumoIpPicSetVectorTag(&pic, lumoIpPicTagSpacing, spacing);
  lumoIpPicSetVectorTag(&pic, lumoIpPicTagOrigin, origin);
  lumoIpPicAddTag(&pic, direction);

  // The descriptor only borrows the caller's buffer; it is a local and frees nothing.
  pic.data = const_cast<void *>(buffer);
  std::string error;
  if (!lumoIpPicPut(m_FileName, &pic, &error, this->GetCompressionLevel()))
  {
    itkExceptionMacro(<< error);
  }
}

void
PicImageIO::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Format version: " << lumoIpPicFileVersion << std::endl;
  os << indent << "Compressed when the name ends in: .gz" << std::endl;
}
} // namespace lumo
