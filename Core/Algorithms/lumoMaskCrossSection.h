#ifndef lumoMaskCrossSection_h
#define lumoMaskCrossSection_h

#include "lumoImage.h"

namespace lumo
{
/** Cross-sections of a vessel mask across a centre line. The mask voxels in a thin slab across the local direction,
 *  within reach of a point and weighted by a tent along the direction (1 at the point, 0 at the slab's faces), give
 *  the cross-section's area (weighted voxel volume over the tent's width) and its centroid. The tent's sum over a
 *  lattice hardly depends on how the lattice planes fall, where a hard-edged slab counts whole planes or none.
 *
 *  The mask must be 3-D unsigned 8-bit (non-zero is vessel) and outlive the object. Points are world coordinates;
 *  the mask may be rotated and anisotropic. */
class MaskCrossSection
{
public:
  /** What a slab holds; `weight` is 0 when no mask voxel lies in it. */
  struct Measure
  {
    double weight{ 0.0 };
    /** Area across the direction, in mm^2. */
    double area{ 0.0 };
    /** Radius of the circle of that area, in mm. */
    double radius{ 0.0 };
    /** Centroid minus the point, across the direction (its component along the direction removed), in mm. */
    double offset[3]{ 0.0, 0.0, 0.0 };
  };

  /** False from IsValid when the mask is not a 3-D unsigned 8-bit image with voxels. */
  explicit MaskCrossSection(const Image * mask);

  bool
  IsValid() const
  {
    return m_Voxels != nullptr;
  }

  /** The largest voxel spacing, in mm. */
  double
  GetLargestSpacing() const;

  /** The cross-section at `point` across the unit vector `direction`, counting voxels within `reach` mm of the
   *  line through the point and less than `halfThickness` mm from the point along it. */
  Measure
  Across(const double point[3], const double direction[3], double reach, double halfThickness) const;

private:
  void
  ToWorld(const double index[3], double world[3]) const;
  void
  ToIndex(const double world[3], double index[3]) const;

  const unsigned char * m_Voxels{ nullptr };
  long m_Size[3]{ 0, 0, 0 };
  double m_Spacing[3]{ 1, 1, 1 };
  double m_Origin[3]{ 0, 0, 0 };
  /** world = origin + D S index, with D orthonormal. */
  double m_Direction[3][3]{ { 1, 0, 0 }, { 0, 1, 0 }, { 0, 0, 1 } };
};
} // namespace lumo

#endif
