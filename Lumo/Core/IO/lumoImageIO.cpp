// Image reading and writing through ITK's image IO.
//
// This translation unit includes itkImageFileReader.h and itkImageFileWriter.h with the IO factory registration
// that ITK_USE_FILE set up for this directory (ITK_IO_FACTORY_REGISTER_MANAGER): linking it in registers ITK's
// ImageIO factories of the ITK modules that this library's CMakeLists.txt asks for.

#include "lumoFileNames.h"
#include "lumoImageAccess.h"
#include "lumoImageIO.h"
#include "lumoImagePayloadLimits.h"

#include "lumoPicImageIOFactory.h"

#include <mutex>

#include <itkImageFileReader.h>
#include <itkImageFileWriter.h>
#include <itkImageIOFactory.h>

#include <filesystem>

namespace lumo
{
namespace
{
[[noreturn]] void
ThrowRead(const std::string & fileName, const std::string & what, unsigned int line)
{
  const std::string message = "Could not read image '" + fileName + "': " + what;
  throw itk::ImageFileReaderException(__FILE__, line, message.c_str(), "lumo::ReadImageFile");
}

[[noreturn]] void
ThrowWrite(const std::string & fileName, const std::string & what, unsigned int line)
{
  const std::string message = "Could not write image '" + fileName + "': " + what;
  throw itk::ImageFileWriterException(__FILE__, line, message.c_str(), "lumo::WriteImageFile");
}
} // namespace

void
RegisterImageIOFactories()
{
  // ITK's own formats are registered by the static object of itkImageIOFactoryRegisterManager.h (included through
  // itkImageFileReader.h in this translation unit) before main; the toolkit's Pic format joins them here, once.
  static std::once_flag once;
  std::call_once(once, [] { PicImageIOFactory::RegisterOneFactory(); });
}

bool
CanReadImageFile(const std::string & fileName)
{
  RegisterImageIOFactories();
  RegisterImageIOFactories();
  if (fileName.empty())
  {
    return false;
  }
  itk::ImageIOBase::Pointer io = itk::ImageIOFactory::CreateImageIO(fileName.c_str(), itk::IOFileModeEnum::ReadMode);
  return io.IsNotNull();
}

Image::Pointer
ReadImageFile(const std::string & fileName)
{
  std::error_code error;
  if (fileName.empty() || !std::filesystem::is_regular_file(fileName, error))
  {
    ThrowRead(fileName, "the file does not exist", __LINE__);
  }
  itk::ImageIOBase::Pointer io = itk::ImageIOFactory::CreateImageIO(fileName.c_str(), itk::IOFileModeEnum::ReadMode);
  if (io.IsNull())
  {
    ThrowRead(fileName, "no ITK ImageIO can read this file", __LINE__);
  }
  io->SetFileName(fileName);
  io->ReadImageInformation();
  const unsigned int dimensions = io->GetNumberOfDimensions();
  if (dimensions < 2 || dimensions > 3)
  {
    ThrowRead(fileName,
              "only 2-D and 3-D images are supported (the file has " + std::to_string(dimensions) + " dimensions)",
              __LINE__);
  }
  if (io->GetNumberOfComponents() != 1)
  {
    ThrowRead(fileName,
              "only scalar images are supported (the file has " + std::to_string(io->GetNumberOfComponents()) +
                " components per pixel)",
              __LINE__);
  }
  // Before the reader allocates the buffer the header asks for.
  CheckImagePayload(fileName, io);
  const itk::IOComponentEnum componentType = Image::NormalizePixelType(io->GetComponentType());
  Image::Pointer image;
  const bool supported = DispatchPixelType(componentType, [&](auto * tag) {
    using T = std::remove_pointer_t<decltype(tag)>;
    using ReaderType = itk::ImageFileReader<itk::Image<T, 3>>;
    typename ReaderType::Pointer reader = ReaderType::New();
    reader->SetImageIO(io);
    reader->SetFileName(fileName);
    reader->Update();
    typename itk::Image<T, 3>::Pointer itkImage = reader->GetOutput();
    itkImage->DisconnectPipeline();
    image = ImportItkImage<T>(itkImage, dimensions);
  });
  if (!supported)
  {
    ThrowRead(fileName,
              std::string("pixel type ") + itk::ImageIOBase::GetComponentTypeAsString(io->GetComponentType()) +
                " is not supported",
              __LINE__);
  }
  return image;
}

bool
CanWriteImageFile(const std::string & fileName)
{
  RegisterImageIOFactories();
  if (fileName.empty())
  {
    return false;
  }
  itk::ImageIOBase::Pointer io = itk::ImageIOFactory::CreateImageIO(fileName.c_str(), itk::IOFileModeEnum::WriteMode);
  return io.IsNotNull();
}

void
WriteImageFile(const Image * image, const std::string & fileName, bool useCompression)
{
  RegisterImageIOFactories();
  if (!image || !image->IsInitialized())
  {
    ThrowWrite(fileName, "the image is null or not initialized", __LINE__);
  }
  if (!CanWriteImageFile(fileName))
  {
    ThrowWrite(fileName, "no ITK ImageIO writes files of this name", __LINE__);
  }
  AccessByItk(image, [&](auto * itkImage) {
    using ItkImageType = std::remove_pointer_t<decltype(itkImage)>;
    using WriterType = itk::ImageFileWriter<ItkImageType>;
    typename WriterType::Pointer writer = WriterType::New();
    writer->SetInput(itkImage);
    writer->SetFileName(fileName);
    writer->SetUseCompression(useCompression);
    writer->Update();
  });
}

} // namespace lumo
