#ifndef lumoVesselTreeSource_h
#define lumoVesselTreeSource_h

#include <itkObjectFactory.h>
#include "lumoBaseProcess.h"
#include "lumoVesselTreeData.h"

namespace lumo
{
/** Base of every pipeline object that produces vessel tree data. It starts with one output, a new
 *  VesselTreeData. */
class VesselTreeSource : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeSource);

  using Self = VesselTreeSource;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeSource, BaseProcess);

  using OutputType = VesselTreeData;

  /** A new VesselTreeData, whatever the index. */
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;
  using Superclass::MakeOutput;

  OutputType *
  GetOutput();
  OutputType *
  GetOutput(DataObjectPointerArraySizeType index);
  /** Makes the given object output 0. */
  void
  SetOutput(OutputType * output);
  /** Copies the content of the given object into output 0, as a mini-pipeline hands its result to the enclosing
   *  filter's output. */
  void
  GraftOutput(OutputType * graft);

protected:
  VesselTreeSource();
  ~VesselTreeSource() override;

  /** A plain source has nothing to generate. */
  void
  GenerateData() override
  {}
};
} // namespace lumo

#endif
