#ifndef lumoVesselCentreLineRefinementFilter_h
#define lumoVesselCentreLineRefinementFilter_h

#include <itkObjectFactory.h>
#include "lumoMaskedVesselTreeFilter.h"

namespace lumo
{
/** Moves the points of an extracted tree onto the centres of the vessel mask's cross-sections.
 *
 *  Thinning leaves the centre line on voxel centres, up to half a voxel beside the true axis, and that error decides
 *  where the territories of two neighbouring vessels meet. Each interior point is moved across its vessel to the
 *  centroid of the mask's cross-section there (see MaskCrossSection), a few rounds, each move at most a fraction of
 *  a voxel; the free ends (the root's first point, a terminal vessel's last) make the move of their neighbours, as a
 *  cross-section there is a cap. Then the points are smoothed along the vessel with the ends fixed. Where a
 * cross-section is much wider than the vessel's median (a branching, or a vessel in contact with another) its centroid
 * is not the axis, and the point stays.
 *
 *  Input 0 is the tree (in the mask's world coordinates), the mask is set with SetMask (unsigned 8-bit, non-zero is
 *  vessel). The output holds a copy of the tree; diameters are kept. */
class VesselCentreLineRefinementFilter : public MaskedVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VesselCentreLineRefinementFilter);

  using Self = VesselCentreLineRefinementFilter;
  using Superclass = MaskedVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselCentreLineRefinementFilter, MaskedVesselTreeFilter);

  /** Rounds of moving the points to the centroids; default 2, 0 leaves the points (but still smooths them). */
  itkSetMacro(NumberOfIterations, unsigned int);
  itkGetConstMacro(NumberOfIterations, unsigned int);
  /** Half the thickness of the slab, in voxels of the largest spacing; default 1.5, above 0. */
  itkSetMacro(SlabHalfThickness, double);
  itkGetConstMacro(SlabHalfThickness, double);
  /** How far beyond the point's radius voxels count, in voxels of the largest spacing; default 0.5, at least 0. */
  itkSetMacro(ReachMargin, double);
  itkGetConstMacro(ReachMargin, double);
  /** The longest move of a point in one round, in voxels of the largest spacing; default 0.75, above 0. */
  itkSetMacro(MaximumShift, double);
  itkGetConstMacro(MaximumShift, double);
  /** A point stays when its cross-section's radius exceeds this times the vessel's median radius; default 1.3. */
  itkSetMacro(MaximumRadiusRatio, double);
  itkGetConstMacro(MaximumRadiusRatio, double);
  /** Passes of the (1/4, 1/2, 1/4) average along each vessel after the moves; default 3, 0 switches it off. */
  itkSetMacro(NumberOfSmoothingIterations, unsigned int);
  itkGetConstMacro(NumberOfSmoothingIterations, unsigned int);

protected:
  VesselCentreLineRefinementFilter();
  ~VesselCentreLineRefinementFilter() override;

  void
  RefineVessel(const ArVesselTree & tree, ar<Vessel> & vessel, const MaskCrossSection & sections) override;
  const char *
  GetNameOfWhatIsRefined() const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  unsigned int m_NumberOfIterations{ 2 };
  double m_SlabHalfThickness{ 1.5 };
  double m_ReachMargin{ 0.5 };
  double m_MaximumShift{ 0.75 };
  double m_MaximumRadiusRatio{ 1.3 };
  unsigned int m_NumberOfSmoothingIterations{ 3 };
};
} // namespace lumo

#endif
