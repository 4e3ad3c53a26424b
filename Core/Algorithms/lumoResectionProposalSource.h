#ifndef lumoResectionProposalSource_h
#define lumoResectionProposalSource_h

#include "lumoBaseProcess.h"
#include "lumoImage.h"
#include "lumoSurface.h"

#include <itkObjectFactory.h>

namespace lumo
{
/** Base of the process objects that make resection proposals. Output 0 is the resection image (a label image,
 *  lumo::Image); outputs 1 to n are the surfaces of the proposed parts (lumo::Surface), surface i being output
 *  i + 1. Two outputs are required and made by the constructor: the image and at least one surface; a generator
 *  that shows more parts adds outputs with ResizeOutputs. The labels of the image are described by a
 *  ResectionProposalDescriptorProperty whose SurfaceOutputIndex values count the surfaces from 0.
 *
 *  No GenerateData here: concrete generators derive from this class (through ResectionProposalGeneratorBase). */
class ResectionProposalSource : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ResectionProposalSource);

  using Self = ResectionProposalSource;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(ResectionProposalSource, BaseProcess);

  /** Output 0. */
  Image *
  GetResectionImage();
  /** Surface i, that is output i + 1; null when there is no such output. */
  Surface *
  GetResectionSurface(unsigned int i);
  /** The number of outputs minus one (the image). */
  unsigned int
  GetNumberOfResectionSurfaces() const;

  using Superclass::MakeOutput;
  /** A new lumo::Image for index 0, a new lumo::Surface for every other index. */
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;

  /** Output 0 shares the voxels and takes the geometry of the given image (a mini-pipeline hands its result
   *  over). */
  virtual void
  GraftOutput(Image * graft);
  /** Output `index` shares the content of the given data object of the same class; nothing happens for a missing
   *  output or a null graft. */
  virtual void
  GraftNthOutput(DataObjectPointerArraySizeType index, itk::DataObject * graft);

  /** Every output is generated whole: each output's requested region becomes its largest possible region. */
  void
  GenerateOutputRequestedRegion(itk::DataObject * output) override;

protected:
  ResectionProposalSource();
  ~ResectionProposalSource() override;
};
} // namespace lumo

#endif
