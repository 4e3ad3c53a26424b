#ifndef lumoFileWriterWithInformation_h
#define lumoFileWriterWithInformation_h

#include "lumoFileWriter.h"

#include <string>
#include <vector>

namespace lumo
{
/** A file writer that tells the application what it writes, so that save dialogs can offer it:
 *  - GetDefaultFilename(): a file name to propose, for instance "VesselTree.ves";
 *  - GetFileDialogPattern(): the dialog filter, for instance "LUMO VesselTree (*.ves)";
 *  - GetDefaultExtension(): the extension to append, with its dot, for instance ".ves";
 *  - GetPossibleFileExtensions(): every extension it writes, with dots, the default one first;
 *  - CanWriteBaseDataType(data): whether it writes that data object;
 *  - DoWrite(data): writes the data to the file name set before (input set, then Write()). */
class FileWriterWithInformation : public FileWriter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(FileWriterWithInformation);

  using Self = FileWriterWithInformation;
  using Superclass = FileWriter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(FileWriterWithInformation, FileWriter);

  virtual std::string
  GetDefaultFilename() const = 0;
  virtual std::string
  GetFileDialogPattern() const = 0;
  virtual std::string
  GetDefaultExtension() const = 0;
  virtual std::vector<std::string>
  GetPossibleFileExtensions() const = 0;
  virtual bool
  CanWriteBaseDataType(const BaseData * data) const = 0;
  virtual void
  DoWrite(BaseData * data) = 0;

protected:
  FileWriterWithInformation() = default;
  ~FileWriterWithInformation() override = default;
};
} // namespace lumo

#endif
