#ifndef lumoVesselTreeToVesselTreeFilter_h
#define lumoVesselTreeToVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoVesselTreeSource.h"

namespace lumo
{
/** Base of the filters that turn vessel tree data into vessel tree data. */
class VesselTreeToVesselTreeFilter : public VesselTreeSource
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeToVesselTreeFilter);

  using Self = VesselTreeToVesselTreeFilter;
  using Superclass = VesselTreeSource;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeToVesselTreeFilter, VesselTreeSource);

  using InputType = VesselTreeData;

  virtual void
  SetInput(const InputType * input);
  /** Grows the number of inputs to index + 1 when needed, then sets input index. */
  virtual void
  SetInput(DataObjectPointerArraySizeType index, const InputType * input);
  /** Input 0; null when the filter has no inputs. */
  const InputType *
  GetInput();
  /** Input index; null beyond the last input. */
  const InputType *
  GetInput(DataObjectPointerArraySizeType index);

protected:
  VesselTreeToVesselTreeFilter();
  ~VesselTreeToVesselTreeFilter() override;
};
} // namespace lumo

#endif
