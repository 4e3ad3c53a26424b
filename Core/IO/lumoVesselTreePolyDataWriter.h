#ifndef lumoVesselTreePolyDataWriter_h
#define lumoVesselTreePolyDataWriter_h

#include <itkObjectFactory.h>
#include "lumoFileWriterWithInformation.h"
#include "lumoVesselTreeData.h"

#include <vtkSmartPointer.h>

class vtkPolyData;

namespace lumo
{
/** Writes the centre lines of a vessel tree as VTK XML poly data (.vtp), for VTK-based tools such as ParaView:
 *  one polyline per vessel that has at least two points, the point arrays "radius" (mm) and "vesselIds", and the
 *  cell arrays "vesselId", "bloodVesselType", "segment" and "resectionStatus". */
class VesselTreePolyDataWriter : public FileWriterWithInformation
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreePolyDataWriter);

  using Self = VesselTreePolyDataWriter;
  using Superclass = FileWriterWithInformation;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreePolyDataWriter, FileWriterWithInformation);

  /** The centre lines of a tree as poly data, in preorder of the vessels. */
  static vtkSmartPointer<vtkPolyData>
  CreateCenterlines(const ArVesselTree & tree);

  std::string
  GetDefaultFilename() const override;
  std::string
  GetFileDialogPattern() const override;
  std::string
  GetDefaultExtension() const override;
  std::vector<std::string>
  GetPossibleFileExtensions() const override;
  bool
  CanWriteBaseDataType(const BaseData * data) const override;
  void
  DoWrite(BaseData * data) override;

protected:
  VesselTreePolyDataWriter();
  ~VesselTreePolyDataWriter() override;

  void
  GenerateData() override;
};
} // namespace lumo

#endif
