#ifndef lumoPointSetWriter_h
#define lumoPointSetWriter_h

#include "lumoFileWriterWithInformation.h"
#include "lumoPointSet.h"

#include <string>
#include <vector>

namespace lumo
{
/** The point set writer offered to save dialogs (.mps). */
class PointSetWriter : public FileWriterWithInformation
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(PointSetWriter);

  using Self = PointSetWriter;
  using Superclass = FileWriterWithInformation;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(PointSetWriter, FileWriterWithInformation);
  itkNewMacro(Self);

  void
  SetInput(PointSet * pointSet);
  PointSet *
  GetInput();

  /** "PointSet.mps" */
  std::string
  GetDefaultFilename() const override;
  /** "Point sets (*.mps)" */
  std::string
  GetFileDialogPattern() const override;
  /** ".mps" */
  std::string
  GetDefaultExtension() const override;
  /** ".mps" */
  std::vector<std::string>
  GetPossibleFileExtensions() const override;
  bool
  CanWriteBaseDataType(const BaseData * data) const override;
  void
  DoWrite(BaseData * data) override;

protected:
  PointSetWriter() = default;
  ~PointSetWriter() override = default;
  void
  GenerateData() override;
};
} // namespace lumo

#endif
