#ifndef lumoVesselTreeToPointSetFilter_h
#define lumoVesselTreeToPointSetFilter_h

#include <itkObjectFactory.h>
#include "lumoBaseProcess.h"
#include "lumoPointSet.h"
#include "lumoVesselTreeData.h"

namespace lumo
{
/** The centre-line points of input 0's tree (time step 0) as a point set: vessels in preorder, each vessel's points
 *  in order, ids 0, 1, 2, ... A child's first point repeats its parent's last one; it is left out unless
 *  KeepSharedPoints is on. */
class VesselTreeToPointSetFilter : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselTreeToPointSetFilter);

  using Self = VesselTreeToPointSetFilter;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeToPointSetFilter, BaseProcess);

  /** Keep the first point of child vessels, which repeats the parent's end point; default false. */
  itkSetMacro(KeepSharedPoints, bool);
  itkGetConstMacro(KeepSharedPoints, bool);
  itkBooleanMacro(KeepSharedPoints);

  void
  SetInput(const VesselTreeData * input);
  const VesselTreeData *
  GetInput();
  PointSet *
  GetOutput();

  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;
  using Superclass::MakeOutput;

protected:
  VesselTreeToPointSetFilter();
  ~VesselTreeToPointSetFilter() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  bool m_KeepSharedPoints{ false };
};
} // namespace lumo

#endif
