#ifndef lumoImageToVesselTreeFilter_h
#define lumoImageToVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoImage.h"
#include "lumoVesselTreeSource.h"

namespace lumo
{
/** Base of the filters that extract vessel trees from images; input 0 is the image. */
class ImageToVesselTreeFilter : public VesselTreeSource
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ImageToVesselTreeFilter);

  using Self = ImageToVesselTreeFilter;
  using Superclass = VesselTreeSource;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(ImageToVesselTreeFilter, VesselTreeSource);

  virtual void
  SetInput(const Image * image);
  virtual void
  SetInput(DataObjectPointerArraySizeType index, const Image * image);
  /** Input index as an image; null when absent. */
  const Image *
  GetInput(DataObjectPointerArraySizeType index = 0);

protected:
  ImageToVesselTreeFilter();
  ~ImageToVesselTreeFilter() override;
};
} // namespace lumo

#endif
