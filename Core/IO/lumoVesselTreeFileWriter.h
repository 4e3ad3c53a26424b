#ifndef lumoVesselTreeFileWriter_h
#define lumoVesselTreeFileWriter_h

#include <itkObjectFactory.h>
#include "lumoFileWriterWithInformation.h"
#include "lumoVesselTreeData.h"

namespace lumo
{
/** Writes the tree of time step 0 of a VesselTreeData as a .ves file. Writers are not lazy: Update() writes. */
class VesselTreeFileWriter : public FileWriterWithInformation
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeFileWriter);

  using Self = VesselTreeFileWriter;
  using Superclass = FileWriterWithInformation;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeFileWriter, FileWriterWithInformation);

  void
  SetInputVesselTree(VesselTreeData * data);
  VesselTreeData *
  GetInput();

  /** "VesselTree.ves" */
  std::string
  GetDefaultFilename() const override;
  /** "LUMO VesselTree (*.ves)" */
  std::string
  GetFileDialogPattern() const override;
  /** ".ves" */
  std::string
  GetDefaultExtension() const override;
  /** ".ves", ".dvg", ".uvg" */
  std::vector<std::string>
  GetPossibleFileExtensions() const override;
  bool
  CanWriteBaseDataType(const BaseData * data) const override;
  void
  DoWrite(BaseData * data) override;

protected:
  VesselTreeFileWriter();
  ~VesselTreeFileWriter() override;

  void
  GenerateData() override;
};
} // namespace lumo

#endif
