#include "lumoIpPicFile.h"
#include "lumoPicImageIO.h"
#include "lumoPicImageIOFactory.h"

#include "PicTestFiles.h"

#include "itkImage.h"
#include "itkImageFileReader.h"
#include "itkImageFileWriter.h"
#include "itkImageRegionConstIterator.h"
#include "itkRGBPixel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using ::testing::HasSubstr;

namespace
{
using PicPointer = std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)>;

// ITK keeps a process-wide list of factories; register ours once however many tests run.
void
registerPicFactory()
{
  static const bool registered = [] {
    lumo::PicImageIOFactory::RegisterOneFactory();
    return true;
  }();
  (void)registered;
}

template <class TImage>
void
setGeometry(TImage * image, const std::vector<double> & spacing, const std::vector<double> & origin)
{
  typename TImage::SpacingType s;
  typename TImage::PointType o;
  for (unsigned int i = 0; i < TImage::ImageDimension; ++i)
  {
    s[i] = spacing[i];
    o[i] = origin[i];
  }
  image->SetSpacing(s);
  image->SetOrigin(o);
}

template <class TImage>
typename TImage::Pointer
makeImage(const typename TImage::SizeType & size)
{
  auto image = TImage::New();
  image->SetRegions(typename TImage::RegionType(size));
  image->Allocate();
  typename TImage::PixelType value{};
  for (itk::ImageRegionIterator<TImage> it(image, image->GetLargestPossibleRegion()); !it.IsAtEnd(); ++it)
  {
    it.Set(value);
    value = static_cast<typename TImage::PixelType>(value * 3 + 1);
  }
  return image;
}

template <class TImage>
void
expectSameImage(const TImage * expected, const TImage * actual)
{
  ASSERT_EQ(actual->GetLargestPossibleRegion(), expected->GetLargestPossibleRegion());
  for (unsigned int i = 0; i < TImage::ImageDimension; ++i)
  {
    EXPECT_DOUBLE_EQ(actual->GetSpacing()[i], expected->GetSpacing()[i]) << "axis " << i;
    EXPECT_DOUBLE_EQ(actual->GetOrigin()[i], expected->GetOrigin()[i]) << "axis " << i;
    for (unsigned int j = 0; j < TImage::ImageDimension; ++j)
    {
      EXPECT_DOUBLE_EQ(actual->GetDirection()(i, j), expected->GetDirection()(i, j)) << i << "," << j;
    }
  }
  itk::ImageRegionConstIterator<TImage> e(expected, expected->GetLargestPossibleRegion());
  itk::ImageRegionConstIterator<TImage> a(actual, actual->GetLargestPossibleRegion());
  std::size_t differences = 0;
  for (; !e.IsAtEnd(); ++e, ++a)
  {
    differences += e.Get() != a.Get();
  }
  EXPECT_EQ(differences, 0u);
}

template <class TImage>
typename TImage::Pointer
readImage(const std::string & path)
{
  auto reader = itk::ImageFileReader<TImage>::New();
  reader->SetFileName(path);
  reader->Update();
  return reader->GetOutput();
}

template <class TImage>
void
writeImage(const TImage * image, const std::string & path)
{
  auto writer = itk::ImageFileWriter<TImage>::New();
  writer->SetInput(image);
  writer->SetFileName(path);
  writer->Update();
}

// The description of the exception thrown by f, or "" when none is.
template <class F>
std::string
itkFailure(F && f)
{
  try
  {
    f();
  }
  catch (const itk::ExceptionObject & e)
  {
    return e.GetDescription();
  }
  return "";
}
} // namespace

TEST(PicImageIORead, ImageFileReaderReadsVoxelsAndGeometryOfAPicFile)
{
  registerPicFactory();
  ScratchDirectory dir;
  const std::uint32_t sizes[3] = { 4, 3, 2 };
  PicPointer pic(lumoIpPicNewVolume(lumoIpPicUInt, 8, 3, sizes), lumoIpPicFree);
  for (std::size_t i = 0; i < 24; ++i)
  {
    static_cast<unsigned char *>(pic->data)[i] = static_cast<unsigned char>(10 * i);
  }
  const double spacing[3] = { 0.5, 0.75, 2.0 };
  const double origin[3] = { -10.0, 20.0, 30.5 };
  lumoIpPicSetVectorTag(pic.get(), lumoIpPicTagSpacing, spacing);
  lumoIpPicSetVectorTag(pic.get(), lumoIpPicTagOrigin, origin);
  // Axes x and y swapped: column j of the matrix is the direction of axis j.
  const double rows[9] = { 0, 1, 0, 1, 0, 0, 0, 0, 1 };
  lumoIpPicTag direction;
  direction.name = lumoIpPicTagDirection;
  direction.type = lumoIpPicFloat;
  direction.bpe = 64;
  direction.value.assign(reinterpret_cast<const unsigned char *>(rows),
                         reinterpret_cast<const unsigned char *>(rows) + sizeof(rows));
  lumoIpPicAddTag(pic.get(), direction);
  std::string error;
  for (const std::string name : { "liver.pic", "liver.pic.gz" })
  {
    SCOPED_TRACE(name);
    ASSERT_TRUE(lumoIpPicPut(dir.path(name), pic.get(), &error)) << error;
    using ImageType = itk::Image<unsigned char, 3>;
    const ImageType::Pointer image = readImage<ImageType>(dir.path(name));
    const ImageType::SizeType size = image->GetLargestPossibleRegion().GetSize();
    EXPECT_EQ(size[0], 4u);
    EXPECT_EQ(size[1], 3u);
    EXPECT_EQ(size[2], 2u);
    EXPECT_EQ(image->GetSpacing()[1], 0.75);
    EXPECT_EQ(image->GetOrigin()[2], 30.5);
    EXPECT_EQ(image->GetDirection()(0, 1), 1.0);
    EXPECT_EQ(image->GetDirection()(0, 0), 0.0);
    EXPECT_EQ(image->GetPixel({ { 3, 2, 1 } }), 230); // index (1 * 3 + 2) * 4 + 3 = 23
  }
}

TEST(PicImageIORead, OnlyPicNamesWithTheMagicAreClaimed)
{
  ScratchDirectory dir;
  const std::uint32_t sizes[1] = { 2 };
  PicPointer pic(lumoIpPicNewVolume(lumoIpPicInt, 16, 1, sizes), lumoIpPicFree);
  std::string error;
  ASSERT_TRUE(lumoIpPicPut(dir.path("a.pic"), pic.get(), &error)) << error;
  ASSERT_TRUE(lumoIpPicPut(dir.path("B.PIC.GZ"), pic.get(), &error)) << error;
  ASSERT_TRUE(lumoIpPicPut(dir.path("a.raw"), pic.get(), &error)) << error;
  writeBytes(dir.path("other.pic"), Bytes(64, 'x'));
  auto io = lumo::PicImageIO::New();
  EXPECT_TRUE(io->CanReadFile(dir.path("a.pic").c_str()));
  EXPECT_TRUE(io->CanReadFile(dir.path("B.PIC.GZ").c_str()));
  EXPECT_FALSE(io->CanReadFile(dir.path("a.raw").c_str())) << "right content, wrong name";
  EXPECT_FALSE(io->CanReadFile(dir.path("other.pic").c_str())) << "right name, wrong content";
  EXPECT_FALSE(io->CanReadFile(dir.path("absent.pic").c_str()));
  EXPECT_TRUE(io->CanWriteFile("/somewhere/new.pic.gz"));
  EXPECT_FALSE(io->CanWriteFile("/somewhere/new.nii"));
  EXPECT_EQ(io->GetNameOfClass(), std::string("PicImageIO"));

  io->SetFileName(dir.path("a.pic"));
  io->ReadImageInformation();
  EXPECT_EQ(io->GetNumberOfDimensions(), 1u);
  EXPECT_EQ(io->GetComponentType(), itk::IOComponentEnum::SHORT);
  EXPECT_EQ(io->GetSpacing(0), 1.0) << "no SPACING tag";
}

TEST(PicImageIOWrite, ImageFileWriterRoundTripsPixelsAndGeometry)
{
  registerPicFactory();
  ScratchDirectory dir;

  using ShortImage = itk::Image<short, 3>;
  ShortImage::Pointer volume = makeImage<ShortImage>({ { 7, 5, 3 } });
  setGeometry<ShortImage>(volume, { 0.8, 0.9, 2.5 }, { -100.0, 50.25, 7.0 });
  ShortImage::DirectionType direction;
  direction.SetIdentity();
  direction(0, 0) = 0.0;
  direction(0, 2) = 1.0;
  direction(2, 0) = 1.0;
  direction(2, 2) = 0.0;
  volume->SetDirection(direction);
  for (const std::string name : { "volume.pic", "volume.pic.gz" })
  {
    SCOPED_TRACE(name);
    writeImage<ShortImage>(volume, dir.path(name));
    expectSameImage<ShortImage>(volume, readImage<ShortImage>(dir.path(name)));
    std::string error;
    PicPointer pic(lumoIpPicGetHeader(dir.path(name), &error), lumoIpPicFree);
    ASSERT_TRUE(pic) << error;
    EXPECT_EQ(pic->type, lumoIpPicInt);
    EXPECT_EQ(pic->bpe, 16u);
    double spacing[3] = {};
    ASSERT_TRUE(lumoIpPicGetVectorTag(pic.get(), lumoIpPicTagSpacing, spacing));
    EXPECT_EQ(spacing[2], 2.5);
  }

  using FloatImage = itk::Image<float, 2>;
  FloatImage::Pointer slice = makeImage<FloatImage>({ { 6, 4 } });
  setGeometry<FloatImage>(slice, { 0.25, 0.5 }, { 3.0, -4.0 });
  writeImage<FloatImage>(slice, dir.path("slice.pic.gz"));
  expectSameImage<FloatImage>(slice, readImage<FloatImage>(dir.path("slice.pic.gz")));

  using LongImage = itk::Image<unsigned long long, 4>;
  LongImage::Pointer series = makeImage<LongImage>({ { 2, 3, 2, 2 } });
  setGeometry<LongImage>(series, { 1.5, 1.5, 3.0, 1.0 }, { 10.0, 20.0, 30.0, 0.0 });
  writeImage<LongImage>(series, dir.path("series.pic"));
  expectSameImage<LongImage>(series, readImage<LongImage>(dir.path("series.pic")));

  EXPECT_EQ(dir.entries(), (std::vector<std::string>{ "series.pic", "slice.pic.gz", "volume.pic", "volume.pic.gz" }));
}

TEST(PicImageIOWrite, RefusesWhatTheFormatCannotHoldAndLeavesNoFile)
{
  registerPicFactory();
  ScratchDirectory dir;

  using RGBImage = itk::Image<itk::RGBPixel<unsigned char>, 2>;
  RGBImage::Pointer colour = makeImage<RGBImage>({ { 2, 2 } });
  EXPECT_THAT(itkFailure([&] { writeImage<RGBImage>(colour, dir.path("colour.pic")); }),
              HasSubstr(dir.path("colour.pic") +
                        ": only scalar images can be written as Pic files, not pixel type rgb with 3 components"));

  auto io = lumo::PicImageIO::New();
  io->SetNumberOfDimensions(2);
  io->SetDimensions(0, 2);
  io->SetDimensions(1, 1);
  io->SetComponentType(itk::IOComponentEnum::LDOUBLE);
  itk::ImageIORegion region(2);
  region.SetSize(0, 2);
  region.SetSize(1, 1);
  io->SetIORegion(region); // as ImageFileWriter does
  io->SetFileName(dir.path("long.pic"));
  const long double values[2] = { 1.0L, 2.0L };
  EXPECT_THAT(itkFailure([&] { io->Write(values); }),
              HasSubstr(dir.path("long.pic") + ": component type unknown cannot be written as a Pic file"));

  io->SetComponentType(itk::IOComponentEnum::FLOAT);
  io->SetSpacing(1, -1.0);
  io->SetFileName(dir.path("flipped.pic"));
  const float floats[2] = { 1.0f, 2.0f };
  EXPECT_THAT(itkFailure([&] { io->Write(floats); }),
              HasSubstr(dir.path("flipped.pic") + ": tag 'SPACING' must hold three finite positive 64-bit floats"));

  io->SetSpacing(1, 1.0);
  io->SetFileName(dir.path("missing/x.pic"));
  EXPECT_THAT(itkFailure([&] { io->Write(floats); }), HasSubstr("cannot create a temporary file beside it"));

  EXPECT_EQ(dir.entries(), std::vector<std::string>{});
}

TEST(PicImageIOHostile, DamagedFilesEndInAnExceptionWithTheReason)
{
  registerPicFactory();
  ScratchDirectory dir;
  const std::uint32_t most = 0xFFFFFFFFu;
  const Bytes good =
    PicBytes().header(4, 8, { 2, 1, 1 }).counts(1, 17, 2).tag("ID", 2, 8, { 'a', 'b' }).u8(7).u8(255).bytes();
  Bytes truncated = good;
  truncated.pop_back();
  const struct
  {
    const char * name;
    Bytes bytes;
    std::string message;
  } cases[] = {
    { "empty.pic", {}, "empty file" },
    { "magic.pic", Bytes(good.begin(), good.begin() + 8), "truncated header: the file ends after 8 bytes" },
    { "dim200.pic",
      PicBytes().magic().u16(1).u16(0).u32(4).u32(8).u32(200).bytes(),
      "dimension count 200 is outside 1..8" },
    { "overflow.pic",
      PicBytes().header(4, 8, { most, most, most }).counts(0, 0, 0).bytes(),
      "element count overflows 64 bits" },
    { "large.pic",
      PicBytes().header(4, 8, { 100, 100, 100 }).counts(0, 0, 1000000).u8(1).bytes(),
      "voxel block of 1000000 bytes is larger than the 1 byte left in the file" },
    { "truncated.pic", truncated, "voxel block of 2 bytes is larger than the 1 byte left in the file" },
    { "tag.pic",
      PicBytes().header(4, 8, { 1 }).counts(1, 17, 1).u8(2).text("ID").u32(2).u32(8).u32(99).text("ab").u8(0).bytes(),
      "tag 0 ('ID'): value of 99 bytes runs past the end of the tag block" },
  };
  using ImageType = itk::Image<unsigned char, 3>;
  for (const auto & c : cases)
  {
    SCOPED_TRACE(c.name);
    const std::string path = dir.path(c.name);
    writeBytes(path, c.bytes);
    auto io = lumo::PicImageIO::New();
    io->SetFileName(path);
    EXPECT_THAT(itkFailure([&] { io->ReadImageInformation(); }), HasSubstr(path + ": " + c.message));
    EXPECT_THAT(itkFailure([&] { readImage<ImageType>(path); }), HasSubstr(path));
  }

  // A cut gzip stream passes the header and fails in Read().
  writeBytes(dir.path("cut.pic.gz"), gzipBytes(truncated));
  auto io = lumo::PicImageIO::New();
  io->SetFileName(dir.path("cut.pic.gz"));
  io->ReadImageInformation();
  itk::ImageIORegion region(3);
  region.SetSize(0, 2);
  region.SetSize(1, 1);
  region.SetSize(2, 1);
  io->SetIORegion(region); // as ImageFileReader does
  unsigned char buffer[2] = {};
  EXPECT_THAT(itkFailure([&] { io->Read(buffer); }),
              HasSubstr(dir.path("cut.pic.gz") + ": truncated voxel block: got 1 of 2 bytes"));
  EXPECT_THAT(itkFailure([&] { readImage<ImageType>(dir.path("cut.pic.gz")); }),
              HasSubstr("truncated voxel block: got 1 of 2 bytes"));
}

TEST(PicImageIOHostile, ADirectionThatIsSingularForTheFilesAxesIsRefused)
{
  ScratchDirectory dir;
  // Invertible as 3 x 3, but its upper-left 2 x 2 block, all a 2-D image uses, is singular.
  const Bytes bytes = PicBytes()
                        .header(4, 8, { 2, 2 })
                        .counts(1, 94, 4)
                        .u8(9)
                        .text("DIRECTION")
                        .u32(5)
                        .u32(64)
                        .u32(72)
                        .f64(0)
                        .f64(0)
                        .f64(1)
                        .f64(0)
                        .f64(1)
                        .f64(0)
                        .f64(1)
                        .f64(0)
                        .f64(0)
                        .raw({ 1, 2, 3, 4 })
                        .bytes();
  writeBytes(dir.path("slice.pic"), bytes);
  std::string error;
  PicPointer pic(lumoIpPicGet(dir.path("slice.pic"), &error), lumoIpPicFree);
  ASSERT_TRUE(pic) << "the file itself is well-formed: " << error;
  auto io = lumo::PicImageIO::New();
  io->SetFileName(dir.path("slice.pic"));
  EXPECT_THAT(itkFailure([&] { io->ReadImageInformation(); }),
              HasSubstr(dir.path("slice.pic") + ": the direction of a 2-dimensional image is singular"));
}
