#ifndef lumoImageIO_h
#define lumoImageIO_h

#include "lumoFileWriterWithInformation.h"
#include "lumoImage.h"
#include "lumoImageWriter.h"

#include <itkImageFileReaderException.h>

#include <string>

namespace lumo
{
/** Makes sure ITK's ImageIO factories of the formats below are registered with itk::ImageIOFactory. The
 *  registration happens when this part of the library is linked in; code that uses itk::ImageFileReader or
 *  itk::ImageFileWriter directly, without any lumo image function, calls this once first. Idempotent. */
void
RegisterImageIOFactories();

/** Whether one of ITK's registered ImageIOs (itk::ImageIOFactory) can read the file: NRRD, NIfTI (.nii,
 *  .nii.gz, .hdr), MetaImage (.mhd, .mha), GIPL, PNG, JPEG, TIFF, BMP, VTK structured points, and any format
 *  registered later as an ITK ImageIO (such as the Pic format). */
bool
CanReadImageFile(const std::string & fileName);

/** Reads a scalar 2-D or 3-D image through ITK's image IO (2-D images get size 1 along z and report
 *  GetDimension() == 2). Throws itk::ImageFileReaderException with these messages:
 *    "Could not read image '<file>': the file does not exist"
 *    "Could not read image '<file>': no ITK ImageIO can read this file"
 *    "Could not read image '<file>': only 2-D and 3-D images are supported (the file has <n> dimensions)"
 *    "Could not read image '<file>': only scalar images are supported (the file has <n> components per pixel)"
 *    "Could not read image '<file>': pixel type <type> is not supported"
 *  and passes ITK's own reading errors on. */
Image::Pointer
ReadImageFile(const std::string & fileName);

/** Whether an ITK ImageIO can write a file of that name (by its extension). */
bool
CanWriteImageFile(const std::string & fileName);

/** Writes the image through ITK's image IO (the format follows the extension; .nii.gz and .nrrd with
 *  useCompression are compressed). Throws itk::ImageFileWriterException ("Could not write image '<file>': ...")
 *  for a null or uninitialised image or a name no ImageIO writes, and passes ITK's writing errors on. */
void
WriteImageFile(const Image * image, const std::string & fileName, bool useCompression = false);

} // namespace lumo

#endif
