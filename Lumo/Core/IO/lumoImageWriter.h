#ifndef lumoImageWriter_h
#define lumoImageWriter_h

#include "lumoFileWriterWithInformation.h"
#include "lumoImage.h"

#include <string>
#include <vector>

namespace lumo
{
/** The image writer offered to save dialogs: NRRD by default; also .nii, .nii.gz, .mhd, .mha. */
class ImageWriter : public FileWriterWithInformation
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ImageWriter);

  using Self = ImageWriter;
  using Superclass = FileWriterWithInformation;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(ImageWriter, FileWriterWithInformation);
  itkNewMacro(Self);

  void
  SetInput(Image * image);
  Image *
  GetInput();

  /** Compress where the format allows it (.nrrd; .nii.gz is compressed anyway); default false. */
  itkSetMacro(UseCompression, bool);
  itkGetConstMacro(UseCompression, bool);
  itkBooleanMacro(UseCompression);

  /** "Image.nrrd" */
  std::string
  GetDefaultFilename() const override;
  /** "Image (*.nrrd *.nii *.nii.gz *.mhd *.mha)" */
  std::string
  GetFileDialogPattern() const override;
  /** ".nrrd" */
  std::string
  GetDefaultExtension() const override;
  /** ".nrrd", ".nii", ".nii.gz", ".mhd", ".mha" */
  std::vector<std::string>
  GetPossibleFileExtensions() const override;
  bool
  CanWriteBaseDataType(const BaseData * data) const override;
  void
  DoWrite(BaseData * data) override;

protected:
  ImageWriter() = default;
  ~ImageWriter() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
  void
  GenerateData() override;

  bool m_UseCompression{ false };
};
} // namespace lumo

#endif
