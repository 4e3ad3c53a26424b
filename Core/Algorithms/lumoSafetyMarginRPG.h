#ifndef lumoSafetyMarginRPG_h
#define lumoSafetyMarginRPG_h

#include <itkObjectFactory.h>
#include "lumoVascularTerritoryRPG.h"

#include <cstddef>
#include <vector>

namespace lumo
{
/** Risk analysis of a tumour: what a resection with a safety margin around the tumour takes from the liver.
 *
 *  Input 1 (SetSafetyMargin) is the tumour mask: an image on the organ's grid (same size, spacing, origin and
 *  direction), any non-zero voxel tumour. The margin in mm is the parameter MarginWidth. With m = MarginWidth:
 *  1. The zone Z holds the organ or tumour voxels whose centre lies within m mm of the centre of a tumour voxel
 *     (Euclidean, in world mm); tumour voxels are in Z.
 *  2. A vessel is cut when the voxel containing one of its centre-line points (world to index, rounded to the
 *     nearest voxel) is in Z. A portal vessel is devascularised when it or an ancestor is cut; a hepatic vessel is
 *     congested when it or an ancestor is cut (the hepatic root is where the veins leave the liver).
 *  3. Organ voxels in Z and organ voxels supplied by a devascularised portal vein are 3 (to be resected); of the
 *     rest, voxels drained by a congested hepatic vein are 4 (area at risk); all other organ voxels are 2.
 *  The trees get the matching resection statuses: devascularised portal vessels 3 and the others 2, congested
 *  hepatic vessels 4 and the others 2, so that the plan can be saved and shown.
 *
 *  The distance map of the tumour (exact Euclidean distance transform, in mm, over the box of voxels within
 *  DistanceMapReach of the tumour) and the territories are kept between updates: changing only MarginWidth and updating
 * again relabels without recomputing them. Distances are compared with a relative tolerance of 1e-6 so that a voxel
 * exactly m mm away counts as within the margin despite rounding.
 *
 *  Errors (itk::InvalidArgumentError), besides those of VascularTerritoryRPG: "No tumour mask set", "Tumour mask
 *  and organ segmentation differ in size (...)", "... in spacing (...)", "... in origin (...)", "... in direction",
 *  "Tumour mask holds no tumour voxel", "Tumour lies entirely outside the organ", "Negative safety margin". */
class SafetyMarginRPG : public VascularTerritoryRPG
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SafetyMarginRPG);

  using Self = SafetyMarginRPG;
  using Superclass = VascularTerritoryRPG;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(SafetyMarginRPG, VascularTerritoryRPG);

  /** Width of the safety margin around the tumour in mm, >= 0; default 10. */
  itkSetMacro(MarginWidth, double);
  itkGetConstMacro(MarginWidth, double);

  /** How far around the tumour the distance map reaches, in mm, >= 0; default 20. A larger margin widens the map
   *  to that margin (a new map), so set it to the largest margin of a series to compute the map once. */
  itkSetClampMacro(DistanceMapReach, double, 0.0, itk::NumericTraits<double>::max());
  itkGetConstMacro(DistanceMapReach, double);

  /** Input 1, the tumour mask (another name for SetSafetyMargin). */
  void
  SetTumourMask(const Image * tumour);

  /** How many distance maps were computed so far. */
  itkGetConstMacro(NumberOfDistanceMapComputations, unsigned int);

protected:
  SafetyMarginRPG();
  ~SafetyMarginRPG() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  /** Input 1 checked against the organ's grid. */
  const Image *
  CheckedTumour(const Image * organ);
  /** The tumour's counts and the distance map of the box around the tumour that holds every voxel within reach
   *  mm of it; made again only for another organ or tumour or a farther reach. */
  void
  UpdateDistanceMap(const Image * organ, const Image * tumour, double reach);

  double m_MarginWidth{ 10.0 };
  double m_DistanceMapReach{ 20.0 };
  unsigned int m_NumberOfDistanceMapComputations{ 0 };
  // The distance map covers the tumour's bounding box widened by the reach: every voxel that can be in the zone of
  // a margin up to the reach. Nearest tumour voxels all lie in the box, so its distances are exact.
  const void * m_MapOrgan{ nullptr };
  itk::ModifiedTimeType m_MapOrganTime{ 0 };
  const void * m_MapTumour{ nullptr };
  itk::ModifiedTimeType m_MapTumourTime{ 0 };
  double m_MapReach{ 0.0 };
  std::size_t m_BoxStart[3]{ 0, 0, 0 };
  std::size_t m_BoxSize[3]{ 0, 0, 0 };
  /** Squared distance in mm² of each box voxel's centre to the nearest tumour voxel's centre. */
  std::vector<float> m_SquaredDistances;
  /** 1 for the tumour's box voxels. */
  std::vector<unsigned char> m_Tumour;
  std::size_t m_TumourVoxels{ 0 };
  std::size_t m_TumourVoxelsInOrgan{ 0 };
};
} // namespace lumo

#endif
