// lumo::Image: initialisation, typed access, file round trips through ITK, Pic conversions.

#include "LumoTestUtilities.h"

#include <lumoDataNodeFactory.h>
#include <lumoImageAccess.h>
#include <lumoImageIO.h>
#include <lumoImagePayloadLimits.h>
#include <lumoImageSource.h>
#include <lumoLegacyAdaptors.h>

#include <gtest/gtest.h>

#include <itkImageFileWriter.h>
#include <itkImageIOFactory.h>

#include <cstring>
#include <fstream>

using namespace lumo;
using lumotest::P;
using lumotest::RotationZ90;
using lumotest::V;

namespace
{
/** A 3-D image of the pixel type with voxel value = a pattern of x, y, z (negative values for signed types). */
template <typename T>
Image::Pointer
MakeImage(const Image::SizeType & size,
          const Vector3D & spacing,
          const Point3D & origin,
          const Image::DirectionType & direction)
{
  Image::Pointer image = Image::New();
  image->Initialize(PixelComponentOf<T>(), size, spacing, origin, direction);
  T * data = static_cast<T *>(image->GetData());
  for (std::size_t i = 0; i < image->GetNumberOfVoxels(); ++i)
  {
    const double value = static_cast<double>(i % 97) - (std::is_signed_v<T> ? 40.0 : 0.0);
    data[i] = static_cast<T>(std::is_floating_point_v<T> ? value * 0.25 : value);
  }
  image->Modified();
  return image;
}

void
ExpectSameImage(const Image * a, const Image * b, double geometryTolerance)
{
  ASSERT_TRUE(a && b);
  EXPECT_EQ(a->GetPixelType(), b->GetPixelType());
  EXPECT_EQ(a->GetDimension(), b->GetDimension());
  EXPECT_EQ(a->GetSize(), b->GetSize());
  ASSERT_EQ(a->GetBufferSizeInBytes(), b->GetBufferSizeInBytes());
  EXPECT_EQ(std::memcmp(a->GetData(), b->GetData(), a->GetBufferSizeInBytes()), 0) << "voxels differ";
  for (unsigned int i = 0; i < 3; ++i)
  {
    EXPECT_NEAR(a->GetSpacing()[i], b->GetSpacing()[i], geometryTolerance) << "spacing " << i;
    EXPECT_NEAR(a->GetOrigin()[i], b->GetOrigin()[i], geometryTolerance) << "origin " << i;
    for (unsigned int j = 0; j < 3; ++j)
    {
      EXPECT_NEAR(a->GetDirection()[i][j], b->GetDirection()[i][j], geometryTolerance) << "direction " << i << j;
    }
  }
}

} // namespace

TEST(ImageTest, InitializeAndTypedAccess)
{
  Image::Pointer image = MakeImage<short>({ { 4, 3, 2 } }, V(0.5, 0.75, 2.5), P(-10, 20, 30), RotationZ90());
  EXPECT_TRUE(image->IsInitialized());
  EXPECT_EQ(image->GetDimension(), 3u);
  EXPECT_EQ(image->GetDimension(0), 4u);
  EXPECT_EQ(image->GetNumberOfVoxels(), 24u);
  EXPECT_EQ(image->GetBufferSizeInBytes(), 48u);
  EXPECT_EQ(image->GetBitsPerComponent(), 16u);
  EXPECT_TRUE(image->IsSignedInteger());
  EXPECT_FALSE(image->IsFloatingPoint());
  EXPECT_EQ(image->GetPixelTypeAsString(), "short");
  EXPECT_EQ(image->GetPixelValueAsDouble(1, 0, 0), -39.0);
  EXPECT_THROW(image->GetPixelValueAsDouble(4, 0, 0), itk::InvalidArgumentError);
  double minimum = 0, maximum = 0;
  EXPECT_TRUE(image->GetScalarRange(minimum, maximum));
  EXPECT_EQ(minimum, -40.0);
  EXPECT_EQ(maximum, -17.0);

  // The itk::Image is the image's own buffer, with the geometry brought up to date.
  auto itkImage = ImageToItkImage<short>(image);
  EXPECT_EQ(itkImage->GetBufferPointer(), image->GetData());
  EXPECT_DOUBLE_EQ(itkImage->GetSpacing()[2], 2.5);
  EXPECT_DOUBLE_EQ(itkImage->GetOrigin()[0], -10.0);
  EXPECT_DOUBLE_EQ(itkImage->GetDirection()[1][0], 1.0);
  image->SetOrigin(P(1, 2, 3));
  EXPECT_DOUBLE_EQ(ImageToItkImage<short>(image)->GetOrigin()[0], 1.0);
  EXPECT_THROW(ImageToItkImage<float>(image), itk::InvalidArgumentError);

  bool called = false;
  AccessByItk(image, [&](auto * typed) {
    using T = typename std::remove_pointer_t<decltype(typed)>::PixelType;
    called = std::is_same_v<T, short>;
  });
  EXPECT_TRUE(called);

  // Geometry: image geometry bounds and world placement of voxel centres.
  EXPECT_TRUE(image->GetSlicedGeometry()->GetImageGeometry());
  EXPECT_EQ(image->GetSlicedGeometry()->GetSize(), (Image::SizeType{ { 4, 3, 2 } }));

  // Importing an itk::Image shares its buffer.
  Image::Pointer imported = ImportItkImage<short>(itkImage);
  EXPECT_EQ(imported->GetData(), image->GetData());
  EXPECT_EQ(imported->GetPixelType(), itk::IOComponentEnum::SHORT);
}

TEST(ImageTest, InitializeRefusesBadArguments)
{
  Image::Pointer image = Image::New();
  EXPECT_FALSE(image->IsInitialized());
  EXPECT_EQ(image->GetData(), nullptr);
  EXPECT_THROW(image->Initialize(itk::IOComponentEnum::LDOUBLE, { { 2, 2, 2 } }), itk::InvalidArgumentError);
  EXPECT_THROW(image->Initialize(itk::IOComponentEnum::UCHAR, { { 2, 0, 2 } }), itk::InvalidArgumentError);
  EXPECT_THROW(image->Initialize(itk::IOComponentEnum::UCHAR, { { 2, 2, 2 } }, 2), itk::InvalidArgumentError);
  image->Initialize(itk::IOComponentEnum::ULONGLONG, { { 2, 2, 1 } }, 2);
  EXPECT_EQ(image->GetPixelType(), itk::IOComponentEnum::ULONG);
  EXPECT_EQ(image->GetDimension(), 2u);
}

TEST(ImageTest, GraftSharesVoxels)
{
  Image::Pointer image = MakeImage<unsigned char>({ { 3, 3, 3 } }, V(1, 1, 1), P(0, 0, 0), RotationZ90());
  ImageSource::Pointer source = ImageSource::New();
  source->GraftOutput(image);
  EXPECT_EQ(source->GetOutput()->GetData(), image->GetData());
  EXPECT_EQ(source->GetOutput()->GetSpacing(), image->GetSpacing());
  EXPECT_EQ(source->GetOutput()->GetDirection(), image->GetDirection());
  EXPECT_NE(source->GetOutput()->GetGeometry(), image->GetGeometry()); // a copy of the geometry
}

TEST(ImageIOTest, NrrdRoundTripKeepsVoxelsAndGeometry)
{
  lumotest::TemporaryDirectory directory;
  Image::Pointer image = MakeImage<short>({ { 7, 5, 3 } }, V(0.7, 0.35, 1.25), P(-120.3, 44.1, 7), RotationZ90());
  const std::string file = directory.File("volume.nrrd");
  WriteImageFile(image, file);
  Image::Pointer back = ReadImageFile(file);
  ExpectSameImage(image, back, 1e-12);
}

TEST(ImageIOTest, NiftiGzRoundTripKeepsVoxelsAndGeometry)
{
  lumotest::TemporaryDirectory directory;
  // NIfTI stores geometry as 32-bit floats: values exact in float keep their digits.
  Image::Pointer image = MakeImage<float>({ { 6, 4, 5 } }, V(0.5, 0.75, 2.5), P(-100.25, 20.5, 3), RotationZ90());
  const std::string file = directory.File("volume.nii.gz");
  WriteImageFile(image, file);
  // Compressed indeed: gzip magic bytes.
  std::ifstream in(file, std::ios::binary);
  unsigned char magic[2] = { 0, 0 };
  in.read(reinterpret_cast<char *>(magic), 2);
  EXPECT_EQ(magic[0], 0x1f);
  EXPECT_EQ(magic[1], 0x8b);
  Image::Pointer back = ReadImageFile(file);
  ExpectSameImage(image, back, 1e-6);

  // Unsigned 8 bit through plain .nii as well.
  Image::Pointer labels = MakeImage<unsigned char>({ { 3, 3, 3 } }, V(1, 1, 1), P(0, 0, 0), RotationZ90());
  WriteImageFile(labels, directory.File("labels.nii"));
  ExpectSameImage(labels, ReadImageFile(directory.File("labels.nii")), 1e-6);
}

TEST(ImageIOTest, MetaImageRoundTrip)
{
  lumotest::TemporaryDirectory directory;
  Image::Pointer image = MakeImage<unsigned int>({ { 3, 4, 5 } }, V(1, 2, 3), P(4, 5, 6), RotationZ90());
  WriteImageFile(image, directory.File("volume.mha"));
  ExpectSameImage(image, ReadImageFile(directory.File("volume.mha")), 1e-9);
}

TEST(ImageIOTest, TwoDimensionalImagesAreReportedAsSuch)
{
  lumotest::TemporaryDirectory directory;
  using Image2D = itk::Image<unsigned char, 2>;
  Image2D::Pointer slice = Image2D::New();
  Image2D::SizeType size;
  size[0] = 5;
  size[1] = 4;
  slice->SetRegions(size);
  slice->Allocate(true);
  slice->GetBufferPointer()[6] = 200;
  using Writer = itk::ImageFileWriter<Image2D>;
  Writer::Pointer writer = Writer::New();
  writer->SetInput(slice);
  writer->SetFileName(directory.File("slice.png"));
  writer->Update();

  Image::Pointer image = ReadImageFile(directory.File("slice.png"));
  EXPECT_EQ(image->GetDimension(), 2u);
  EXPECT_EQ(image->GetSize(), (Image::SizeType{ { 5, 4, 1 } }));
  EXPECT_EQ(image->GetPixelValueAsDouble(1, 1, 0), 200.0);

  lumoIpPicDescriptor * pic = CastToIpPicDescriptor(image);
  ASSERT_NE(pic, nullptr);
  EXPECT_EQ(pic->dim, 2u); // callers that need volumes refuse it
  lumoIpPicFree(pic);
}

TEST(ImageIOTest, ReadErrors)
{
  lumotest::TemporaryDirectory directory;
  const std::string missing = directory.File("missing.nrrd");
  try
  {
    ReadImageFile(missing);
    FAIL() << "no exception";
  }
  catch (const itk::ImageFileReaderException & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()), "Could not read image '" + missing + "': the file does not exist");
  }
  const std::string text = directory.File("notes.txt");
  std::ofstream(text) << "not an image\n";
  try
  {
    ReadImageFile(text);
    FAIL() << "no exception";
  }
  catch (const itk::ImageFileReaderException & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()),
              "Could not read image '" + text + "': no ITK ImageIO can read this file");
  }
  EXPECT_FALSE(CanReadImageFile(text));
  EXPECT_TRUE(CanWriteImageFile("a.nrrd"));
  EXPECT_TRUE(CanWriteImageFile("a.nii.gz"));
  EXPECT_FALSE(CanWriteImageFile("a.unknown"));
  EXPECT_THROW(WriteImageFile(Image::New(), directory.File("x.nrrd")), itk::ImageFileWriterException);
}

TEST(LegacyAdaptorsTest, ImageToPicAndBackKeepsVoxels)
{
  Image::Pointer image = MakeImage<unsigned char>({ { 5, 4, 3 } }, V(0.5, 0.25, 2.0), P(10, -20, 30), RotationZ90());
  lumoIpPicDescriptor * pic = CastToIpPicDescriptor(image);
  ASSERT_NE(pic, nullptr);
  EXPECT_EQ(pic->dim, 3u);
  EXPECT_EQ(pic->n[0], 5u);
  EXPECT_EQ(pic->n[1], 4u);
  EXPECT_EQ(pic->n[2], 3u);
  EXPECT_EQ(pic->type, lumoIpPicUInt);
  EXPECT_EQ(pic->bpe, 8u);
  EXPECT_EQ(std::memcmp(pic->data, image->GetData(), image->GetBufferSizeInBytes()), 0);
  double spacing[3];
  double origin[3];
  ASSERT_TRUE(lumoIpPicGetVectorTag(pic, lumoIpPicTagSpacing, spacing));
  ASSERT_TRUE(lumoIpPicGetVectorTag(pic, lumoIpPicTagOrigin, origin));
  EXPECT_EQ(spacing[1], 0.25);
  EXPECT_EQ(origin[2], 30.0);

  Image::Pointer back = CastToImageDescriptor(pic);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->GetPixelType(), itk::IOComponentEnum::UCHAR);
  EXPECT_EQ(back->GetSize(), image->GetSize());
  EXPECT_EQ(std::memcmp(back->GetData(), image->GetData(), image->GetBufferSizeInBytes()), 0);
  EXPECT_EQ(back->GetSpacing(), image->GetSpacing());
  EXPECT_EQ(back->GetOrigin(), image->GetOrigin());
  lumoIpPicFree(pic);
}

TEST(LegacyAdaptorsTest, PixelTypeMapping)
{
  struct Case
  {
    itk::IOComponentEnum component;
    lumoIpPicType type;
    std::uint32_t bpe;
  };
  const Case cases[] = {
    { itk::IOComponentEnum::CHAR, lumoIpPicInt, 8 },      { itk::IOComponentEnum::USHORT, lumoIpPicUInt, 16 },
    { itk::IOComponentEnum::SHORT, lumoIpPicInt, 16 },    { itk::IOComponentEnum::UINT, lumoIpPicUInt, 32 },
    { itk::IOComponentEnum::INT, lumoIpPicInt, 32 },      { itk::IOComponentEnum::ULONG, lumoIpPicUInt, 64 },
    { itk::IOComponentEnum::LONG, lumoIpPicInt, 64 },     { itk::IOComponentEnum::FLOAT, lumoIpPicFloat, 32 },
    { itk::IOComponentEnum::DOUBLE, lumoIpPicFloat, 64 },
  };
  for (const Case & c : cases)
  {
    Image::Pointer image = Image::New();
    image->Initialize(c.component, { { 2, 2, 2 } });
    lumoIpPicDescriptor * pic = CastToIpPicDescriptor(image);
    ASSERT_NE(pic, nullptr);
    EXPECT_EQ(pic->type, c.type);
    EXPECT_EQ(pic->bpe, c.bpe);
    Image::Pointer back = CastToImageDescriptor(pic);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->GetPixelType(), c.component);
    lumoIpPicFree(pic);
  }
  EXPECT_EQ(CastToIpPicDescriptor(nullptr), nullptr);
  EXPECT_EQ(CastToIpPicDescriptor(Image::New()), nullptr);
  EXPECT_FALSE(CastToImageDescriptor(nullptr));

  // A Pic without geometry tags gives spacing 1 and origin 0.
  const std::uint32_t sizes[3] = { 2, 3, 4 };
  lumoIpPicDescriptor * bare = lumoIpPicNewVolume(lumoIpPicInt, 16, 3, sizes);
  Image::Pointer image = CastToImageDescriptor(bare);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->GetSpacing(), V(1, 1, 1));
  EXPECT_EQ(image->GetOrigin(), P(0, 0, 0));
  lumoIpPicFree(bare);
}

TEST(ImageIOTest, DataNodeFactoryOpensNrrdAndNifti)
{
  lumotest::TemporaryDirectory directory;
  Image::Pointer image = MakeImage<short>({ { 4, 4, 4 } }, V(1, 1, 1), P(0, 0, 0), RotationZ90());
  WriteImageFile(image, directory.File("liver.nrrd"));
  WriteImageFile(image, directory.File("vessels.nii.gz"));
  for (const std::string name : { "liver.nrrd", "vessels.nii.gz" })
  {
    DataNodeFactory::Pointer factory = DataNodeFactory::New();
    factory->SetFileName(directory.File(name));
    factory->Update();
    DataNode * node = factory->GetOutput();
    ASSERT_NE(node, nullptr);
    auto * read = dynamic_cast<Image *>(node->GetData());
    ASSERT_NE(read, nullptr) << name;
    EXPECT_EQ(std::memcmp(read->GetData(), image->GetData(), image->GetBufferSizeInBytes()), 0);
    EXPECT_EQ(node->GetName(), name == std::string("liver.nrrd") ? "liver" : "vessels");
    std::string path;
    EXPECT_TRUE(node->GetStringProperty("path", path));
    EXPECT_EQ(path, directory.Path().string());
    EXPECT_NE(node->GetProperty("levelwindow"), nullptr);
  }
}

// What detached data can hold: NRRD and MetaImage headers naming lists and patterns of files count each file
// (a pattern only until the promised bytes are covered).
TEST(ImageIOTest, DetachedDataInListsAndPatternsCountFileByFile)
{
  lumotest::TemporaryDirectory directory;
  auto header = [&](const std::string & name, const std::string & text) {
    std::ofstream(directory.File(name), std::ios::binary) << text;
    itk::ImageIOBase::Pointer io =
      itk::ImageIOFactory::CreateImageIO(directory.File(name).c_str(), itk::IOFileModeEnum::ReadMode);
    EXPECT_TRUE(io.IsNotNull()) << name;
    io->SetFileName(directory.File(name));
    io->ReadImageInformation();
    return GetImagePayloadCapacity(directory.File(name), io);
  };
  for (int slice = 1; slice <= 3; ++slice)
  {
    std::ofstream(directory.File("slice" + std::to_string(slice) + ".raw"), std::ios::binary)
      << std::string(16 * slice, 'x');
  }
  // One file per slice, as NRRD asks: a list counts every file, a pattern stops once the promise is covered.
  const std::string nrrd = "NRRD0004\ntype: unsigned char\ndimension: 3\nsizes: 4 4 3\nencoding: raw\n";
  EXPECT_EQ(header("list.nhdr", nrrd + "data file: LIST\nslice1.raw\nslice2.raw\nslice3.raw\n"), 96u);
  EXPECT_EQ(header("pattern.nhdr", nrrd + "data file: slice%d.raw 1 3 1\n\n"), 48u);
  EXPECT_EQ(header("gzip.nhdr",
                   "NRRD0004\ntype: unsigned char\ndimension: 3\nsizes: 4 4 1\nencoding: gzip\ndata file: "
                   "slice1.raw\n\n"),
            16u * 1032u);

  const std::string meta = "ObjectType = Image\nNDims = 3\nDimSize = 4 4 6\nElementType = MET_UCHAR\n";
  EXPECT_EQ(header("list.mhd", meta + "ElementDataFile = LIST\nslice1.raw\nslice2.raw\nslice3.raw\n"), 96u);
  EXPECT_EQ(header("pattern.mhd", meta + "ElementDataFile = slice%d.raw 1 3 1\n"), 96u);
  EXPECT_EQ(header("compressed.mhd", meta + "CompressedData = True\nElementDataFile = slice2.raw\n"), 32u * 1032u);

  EXPECT_NO_THROW(ReadImageFile(directory.File("pattern.mhd")));
  std::ofstream(directory.File("short.mhd"))
    << "ObjectType = Image\nNDims = 3\nDimSize = 4 4 20\nElementType = MET_UCHAR\n"
       "ElementDataFile = slice%d.raw 1 3 1\n";
  try
  {
    ReadImageFile(directory.File("short.mhd"));
    FAIL() << "no exception";
  }
  catch (const itk::ImageFileReaderException & e)
  {
    EXPECT_EQ(std::string(e.GetDescription()),
              "Could not read image '" + directory.File("short.mhd") +
                "': the header promises 4 x 4 x 20 voxels of 1 byte (320 bytes), more than its data can hold (at most "
                "96 bytes)");
  }
}
