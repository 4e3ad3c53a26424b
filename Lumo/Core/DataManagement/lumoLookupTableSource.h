#ifndef lumoLookupTableSource_h
#define lumoLookupTableSource_h

#include "lumoBaseProcess.h"
#include "lumoLookupTable.h"

namespace lumo
{
/** A process object whose output 0 is a lumo::LookupTable (base of filters that compute colour tables). The
 *  default GenerateData does nothing. */
class LookupTableSource : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(LookupTableSource);

  using Self = LookupTableSource;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(LookupTableSource, BaseProcess);
  itkNewMacro(Self);

  using Superclass::MakeOutput;
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;

  LookupTable *
  GetOutput();
  LookupTable *
  GetOutput(DataObjectPointerArraySizeType index);

protected:
  LookupTableSource();
  ~LookupTableSource() override = default;
  void
  GenerateData() override;
};
} // namespace lumo

#endif
