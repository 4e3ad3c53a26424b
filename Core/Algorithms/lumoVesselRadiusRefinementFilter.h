#ifndef lumoVesselRadiusRefinementFilter_h
#define lumoVesselRadiusRefinementFilter_h

#include <itkObjectFactory.h>
#include "lumoMaskedVesselTreeFilter.h"

namespace lumo
{
/** Measures the diameters of an extracted tree again from the vessel mask it came from.
 *
 *  Thinning gives each centre-line voxel its distance to the nearest background voxel, and a diameter from that
 *  distance is short by about half a voxel on average: the mask's wall lies between the last vessel voxel and the
 *  first background voxel, and the centre line rarely runs through voxel centres. Here the radius at a centre-line
 *  point is taken from the cross-section instead: the mask voxels in a thin slab across the local direction, within
 *  reach of the point and weighted by a tent along the direction, give the cross-section's area (weighted voxel
 *  volume over the tent's width), and the
 *  radius is that of the circle of this area. A running median along each vessel quietens the count. Points whose
 *  slab holds no mask voxel keep their diameter.
 *
 *  Input 0 is the tree (in the mask's world coordinates), the mask is set with SetMask (unsigned 8-bit, non-zero is
 *  vessel). The output holds a copy of the tree. */
class VesselRadiusRefinementFilter : public MaskedVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselRadiusRefinementFilter);

  using Self = VesselRadiusRefinementFilter;
  using Superclass = MaskedVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselRadiusRefinementFilter, MaskedVesselTreeFilter);

  /** Half the thickness of the counting slab, in voxels of the largest spacing; default 2, above 0. */
  itkSetMacro(SlabHalfThickness, double);
  itkGetConstMacro(SlabHalfThickness, double);
  /** Points in the running median along each vessel; default 5, 1 switches it off. */
  itkSetMacro(MedianWindow, unsigned int);
  itkGetConstMacro(MedianWindow, unsigned int);

protected:
  VesselRadiusRefinementFilter();
  ~VesselRadiusRefinementFilter() override;

  void
  RefineVessel(const ArVesselTree & tree, ar<Vessel> & vessel, const MaskCrossSection & sections) override;
  const char *
  GetNameOfWhatIsRefined() const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  double m_SlabHalfThickness{ 2.0 };
  unsigned int m_MedianWindow{ 5 };
};
} // namespace lumo

#endif
