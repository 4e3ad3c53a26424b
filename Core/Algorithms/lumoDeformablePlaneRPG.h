#ifndef lumoDeformablePlaneRPG_h
#define lumoDeformablePlaneRPG_h

#include <itkObjectFactory.h>
#include "lumoDeformablePlane.h"
#include "lumoVascularTerritoryRPG.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace lumo
{
/** What a cutting surface takes from the liver: a resection along a lumo::DeformablePlane.
 *
 *  Inputs: 0 the organ segmentation, 1 the tumour mask (optional; only for ResectSide Tumour), 2 the portal tree,
 *  3 the hepatic tree (optional), 4 the cutting plane. Outputs as VascularTerritoryRPG.
 *
 *  Sides: a voxel or centre-line point is on the resected side when the plane's GetSide for it is the resected
 *  side (+1 front, -1 back); everything else (the other side and the surface itself) is the remnant side. The
 *  resected side is ResectSide: Front, Back, or Tumour, the side holding more of the tumour mask's voxels.
 *  1. Organ voxels on the resected side are 3.
 *  2. Along a tree, the path to a point runs from the root through every point of the ancestors and then the
 *     vessel's own points up to it. A portal point keeps its supply when every point of the path from the portal
 *     root to it is on the root's side; a hepatic point keeps its drainage under the same rule with the hepatic
 *     root (where the veins leave the liver).
 *  3. A remnant organ voxel is supplied by the nearest centre-line point of a portal vein (ties to the point that
 *     comes first in pre-order) and drained by the nearest point of a hepatic vein (same rule). It is 4 (area at
 *     risk) when its supplying point lost its supply or its draining point lost its drainage, else 2.
 *  A root on the resected side puts the whole remnant at risk; GetNotes() then says so. The trees get resection
 *  statuses: 4 for a vessel with a remnant point that lost its supply (drainage), else 3 for a vessel with all of
 *  its points on the resected side, else 2.
 *
 *  The nearest-point labelling of the organ is kept between updates while organ and trees keep their points, so
 *  that moving the plane's control points only repeats the side test and the walk along the trees.
 *
 *  Errors (itk::InvalidArgumentError), besides those of VascularTerritoryRPG and the plane's own: "No cutting
 *  plane set", "The cutting plane misses the organ" (all organ voxels on one side), "No tumour mask set", "Tumour
 *  mask and organ segmentation differ in size", "Tumour mask holds no tumour voxel". */
class DeformablePlaneRPG : public VascularTerritoryRPG
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(DeformablePlaneRPG);

  using Self = DeformablePlaneRPG;
  using Superclass = VascularTerritoryRPG;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(DeformablePlaneRPG, VascularTerritoryRPG);

  enum class ResectSideType : int
  {
    Front = 0,
    Back = 1,
    Tumour = 2
  };

  /** Which side of the plane is resected; default Front. */
  itkSetEnumMacro(ResectSide, ResectSideType);
  itkGetEnumMacro(ResectSide, ResectSideType);

  /** Input 4. */
  void
  SetCuttingPlane(const DeformablePlane * plane);
  const DeformablePlane *
  GetCuttingPlane();
  /** Input 1 (another name for SetSafetyMargin). */
  void
  SetTumourMask(const Image * tumour);

  /** The side resected by the last update: +1 front, -1 back; 0 before the first. */
  itkGetConstMacro(ResectedSide, int);
  /** Remarks of the last update (a root on the resected side, a plane through the tumour). */
  const std::vector<std::string> &
  GetNotes() const
  {
    return m_Notes;
  }
  /** How many nearest-point labellings of the organ were computed so far. */
  itkGetConstMacro(NumberOfPointTerritoryComputations, unsigned int);

protected:
  DeformablePlaneRPG();
  ~DeformablePlaneRPG() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  /** Points of the vessels of one type in pre-order, and per organ voxel (scan order) the index of the nearest. */
  struct PointTerritories
  {
    const void * organ{ nullptr };
    itk::ModifiedTimeType organTime{ 0 };
    const void * tree{ nullptr };
    itk::ModifiedTimeType treeTime{ 0 };
    std::vector<std::uint32_t> nearest;
  };
  const std::vector<std::uint32_t> &
  Territories(PointTerritories & cache, const Image * organ, const VesselTreeData * data, std::int32_t vesselType);

  ResectSideType m_ResectSide{ ResectSideType::Front };
  int m_ResectedSide{ 0 };
  std::vector<std::string> m_Notes;
  unsigned int m_NumberOfPointTerritoryComputations{ 0 };
  PointTerritories m_PortalPoints;
  PointTerritories m_HepaticPoints;
};
} // namespace lumo

#endif
