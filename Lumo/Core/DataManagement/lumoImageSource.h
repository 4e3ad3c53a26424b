#ifndef lumoImageSource_h
#define lumoImageSource_h

#include "lumoBaseProcess.h"
#include "lumoImage.h"

namespace lumo
{
/** A process object whose output 0 is a lumo::Image (base of image readers and image filters). The constructor
 *  makes output 0; MakeOutput makes a new lumo::Image for any index. */
class ImageSource : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ImageSource);

  using Self = ImageSource;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(ImageSource, BaseProcess);
  itkNewMacro(Self);

  using Superclass::MakeOutput;
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;

  Image *
  GetOutput();
  Image *
  GetOutput(DataObjectPointerArraySizeType index);

  /** Output 0 shares the voxels and takes a copy of the geometry of the given image (a mini-pipeline hands its
   *  result over). */
  virtual void
  GraftOutput(Image * graft);
  virtual void
  GraftNthOutput(DataObjectPointerArraySizeType index, Image * graft);

protected:
  ImageSource();
  ~ImageSource() override = default;
  /** The default does nothing. */
  void
  GenerateData() override;
};
} // namespace lumo

#endif
