#ifndef lumoMaskedVesselTreeFilter_h
#define lumoMaskedVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoImage.h"
#include "lumoMaskCrossSection.h"
#include "lumoVesselTreeToVesselTreeFilter.h"

namespace lumo
{
/** Base of the filters that measure an extracted tree again on the vessel mask it came from, a vessel at a time.
 *
 *  Input 0 is the tree (in the mask's world coordinates), the mask is set with SetMask (3-D unsigned 8-bit,
 *  non-zero is vessel). The output holds a copy of the tree in which RefineVessel has changed every vessel, in
 *  pre-order. Without a tree or a mask the filter warns and leaves the output empty; with a mask of another type it
 *  warns and the output is the input. */
class MaskedVesselTreeFilter : public VesselTreeToVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(MaskedVesselTreeFilter);

  using Self = MaskedVesselTreeFilter;
  using Superclass = VesselTreeToVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(MaskedVesselTreeFilter, VesselTreeToVesselTreeFilter);

  /** The vessel mask (input 1). */
  void
  SetMask(const Image * mask);
  const Image *
  GetMask();

protected:
  MaskedVesselTreeFilter();
  ~MaskedVesselTreeFilter() override;

  /** Changes one vessel of the copied tree, measuring on the mask's cross-sections. */
  virtual void
  RefineVessel(const ArVesselTree & tree, ar<Vessel> & vessel, const MaskCrossSection & sections) = 0;
  /** What the output keeps when the mask has another type, for the warning ("diameters", ...). */
  virtual const char *
  GetNameOfWhatIsRefined() const = 0;

  void
  GenerateData() override;
};
} // namespace lumo

#endif
