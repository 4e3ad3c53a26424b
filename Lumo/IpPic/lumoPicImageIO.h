#ifndef lumoPicImageIO_h
#define lumoPicImageIO_h

#include "itkImageIOBase.h"

namespace lumo
{
/** \class PicImageIO
 * \brief Reads and writes scalar images of 1 to 8 dimensions as .pic and .pic.gz files.
 *
 * The file is read with the hardened Pic reader (lumoIpPicFile.h), so a damaged or hostile file ends in an
 * itk::ExceptionObject carrying the reader's reason, never in a crash. Spacing, origin and direction of the first
 * three axes travel in the SPACING, ORIGIN and DIRECTION tags; further axes read back with spacing 1, origin 0 and
 * identity direction. Whether a written file is compressed follows its name (".pic.gz"), not UseCompression;
 * CompressionLevel (1..9, default 6) sets the gzip level. Writing is atomic: a failed write leaves no file behind and
 * an existing target untouched. Streaming is not supported: the whole image is read and written at once.
 */
class PicImageIO : public itk::ImageIOBase
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PicImageIO);

  using Self = PicImageIO;
  using Superclass = itk::ImageIOBase;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(PicImageIO, ImageIOBase);

  /** True for a name ending in .pic or .pic.gz (any case) whose content starts with the Pic magic bytes. */
  bool
  CanReadFile(const char * fileName) override;

  void
  ReadImageInformation() override;

  void
  Read(void * buffer) override;

  /** True for a name ending in .pic or .pic.gz (any case). */
  bool
  CanWriteFile(const char * fileName) override;

  /** Nothing to do: the header is written together with the voxels by Write(). */
  void
  WriteImageInformation() override;

  void
  Write(const void * buffer) override;

  bool
  SupportsDimension(unsigned long dimension) override;

protected:
  PicImageIO();
  ~PicImageIO() override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
};
} // namespace lumo

#endif
