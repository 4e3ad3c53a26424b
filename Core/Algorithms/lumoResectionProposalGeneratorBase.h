#ifndef lumoResectionProposalGeneratorBase_h
#define lumoResectionProposalGeneratorBase_h

#include "lumoBaseData.h"
#include "lumoResectionProposalSource.h"

#include <itkObjectFactory.h>

namespace lumo
{
/** Adds the inputs every resection proposal generator has: input 0 the organ segmentation, input 1 the safety
 *  margin, both lumo::Image. Derived generators add their own inputs from index 2 on. */
class ResectionProposalGeneratorBase : public ResectionProposalSource
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ResectionProposalGeneratorBase);

  using Self = ResectionProposalGeneratorBase;
  using Superclass = ResectionProposalSource;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(ResectionProposalGeneratorBase, ResectionProposalSource);

  /** Input `index`; the process object is marked modified when the input changes. */
  virtual void
  SetInput(DataObjectPointerArraySizeType index, BaseData * input);
  /** Input 0, or null when there are no inputs. */
  BaseData *
  GetInput();
  /** Input `index`, or null. */
  BaseData *
  GetInput(DataObjectPointerArraySizeType index);

  /** Input 0. */
  void
  SetOrganSegmentation(Image * organ);
  Image *
  GetOrganSegmentation();
  /** Input 1. */
  void
  SetSafetyMargin(Image * margin);
  Image *
  GetSafetyMargin();

protected:
  ResectionProposalGeneratorBase();
  ~ResectionProposalGeneratorBase() override;
};
} // namespace lumo

#endif
