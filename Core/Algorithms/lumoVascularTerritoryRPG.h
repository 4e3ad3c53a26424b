#ifndef lumoVascularTerritoryRPG_h
#define lumoVascularTerritoryRPG_h

#include <itkObjectFactory.h>
#include "lumoResectionProposalDescriptorProperty.h"
#include "lumoSupplyAreaBasedRPG.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace lumo
{
/** Base of the generators that derive a resection proposal from vascular territories. Every organ voxel is
 *  supplied by the portal vein with the nearest centre-line point (all portal veins of the portal tree take part;
 *  of equally near points the one met first in pre-order wins) and, with a hepatic tree, drained by the hepatic
 *  vein with the nearest centre-line point (same rule).
 *
 *  Inputs: 0 the organ segmentation (3-D unsigned 8-bit, 0 outside), 1 an image the generator defines, 2 the portal
 *  tree, 3 the hepatic tree (optional). Trees are in the organ's world coordinates (mm).
 *
 *  Output 0 is the resection image, unsigned 8-bit on the organ's grid: 0 outside the organ, 2 remnant (not to be
 *  resected), 3 to be resected, 4 area at risk. Outputs 1 to n are one surface per label present, in label order
 *  (empty when GenerateSurfaces is off). GetResectionProposalDescriptor() describes the labels: name, resection
 *  type, volume in ml, index of the surface (as for GetResectionSurface) and the colour of that resection status
 *  in the vessel tree lookup table (a default table when none is set).
 *
 *  The territories are kept between updates and recomputed only when the organ or a tree changed (its pointer or
 *  modified time), so that a derived generator that only changes a parameter updates cheaply. */
class VascularTerritoryRPG : public SupplyAreaBasedRPG
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(VascularTerritoryRPG);

  using Self = VascularTerritoryRPG;
  using Superclass = SupplyAreaBasedRPG;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(VascularTerritoryRPG, SupplyAreaBasedRPG);

  /** Labels of the resection image (the resection statuses they stand for). */
  static constexpr std::uint8_t OutsideLabel = 0;
  static constexpr std::uint8_t RemnantLabel = 2;
  static constexpr std::uint8_t ResectedLabel = 3;
  static constexpr std::uint8_t AtRiskLabel = 4;

  /** Input 3, the hepatic tree (optional; null removes it). */
  void
  SetHepaticVesselTree(const VesselTreeData * tree);
  const VesselTreeData *
  GetHepaticVesselTree();

  /** Whether an update also makes the surfaces of the labels (LabelImageSurfaceFilter: discrete flying edges,
   *  windowed-sinc smoothing, normals; in world mm); otherwise the surface outputs stay empty. Default true. */
  itkSetMacro(GenerateSurfaces, bool);
  itkGetConstMacro(GenerateSurfaces, bool);
  itkBooleanMacro(GenerateSurfaces);

  /** Name of the proposal in the descriptor; default "Resection proposal". */
  itkSetStringMacro(ProposalName);
  itkGetStringMacro(ProposalName);

  /** The descriptor of the last update's labels (null before the first update). */
  ResectionProposalDescriptorProperty *
  GetResectionProposalDescriptor() const;

  /** Counts of the last update: voxels of label 2, 3 or 4 (0 for any other label), of the organ, and of tumour
   *  voxels inside the organ (0 when the generator has no tumour). */
  std::size_t
  GetNumberOfVoxels(std::uint8_t label) const;
  itkGetConstMacro(NumberOfOrganVoxels, std::size_t);
  itkGetConstMacro(NumberOfTumourVoxels, std::size_t);
  /** Volume of one voxel in ml (product of the organ's spacing in mm / 1000). */
  itkGetConstMacro(VoxelMillilitres, double);
  /** Future liver remnant in percent: label 2 / (organ - tumour voxels inside the organ) x 100; 0 when that
   *  denominator is 0. */
  double
  GetFutureLiverRemnantPercent() const;

  /** How many territory labellings (one classification of the organ by one tree) were computed so far. */
  itkGetConstMacro(NumberOfTerritoryComputations, unsigned int);

protected:
  VascularTerritoryRPG();
  ~VascularTerritoryRPG() override;

  /** Outputs are made in GenerateData. */
  void
  GenerateOutputInformation() override;
  /** Inputs are checked by GenerateData with its own messages. */
  void
  VerifyPreconditions() ITKv5_CONST override;

  /** Input 0, checked: itk::InvalidArgumentError "No organ segmentation set", "Organ segmentation must be a 3-D
   *  unsigned 8-bit image". */
  const Image *
  CheckedOrgan();
  /** Input 2, checked: itk::InvalidArgumentError "No portal tree set", "Portal tree holds no portal vein with
   *  centre-line points". */
  ArVesselTree
  CheckedPortalTree();
  /** Input 3 checked as the portal tree ("Hepatic tree holds no hepatic vein with centre-line points"), or a null
   *  handle without a hepatic tree. */
  ArVesselTree
  CheckedHepaticTree();

  /** Id of the supplying portal vessel (its low 16 bits) of every organ voxel, in scan order (x fastest): one
   *  entry per organ voxel, so that the kept territories cost two bytes per organ voxel only. */
  const std::vector<std::uint16_t> &
  PortalTerritories();
  /** The same for the draining hepatic vessel; empty without a hepatic tree. */
  const std::vector<std::uint16_t> &
  HepaticTerritories();

  /** A stretch of organ voxels along x: first voxel index and count. */
  struct OrganRun
  {
    std::size_t start;
    std::size_t length;
  };
  /** The runs of organ voxels in scan order (kept per organ): the voxels that the territories list, in their
   *  order, so that labelling loops skip the background. */
  const std::vector<OrganRun> &
  OrganRuns();

  /** A table from vessel id (low 16 bits) to value(vessel), for every vessel of the tree in pre-order (of two
   *  vessels sharing an id the later wins; ids no vessel owns give 0). */
  static std::vector<std::uint8_t>
  TableById(const ArVesselTree & tree, const std::function<std::uint8_t(const Vessel &)> & value);

  /** Output 0 initialised on the organ's grid, zeroed; the derived class writes the labels into its buffer. */
  unsigned char *
  StartResectionImage(const Image * organ);
  /** Counts the labels, builds the descriptor and the surface outputs. */
  void
  FinishResectionImage(const Image * organ, std::size_t tumourVoxelsInOrgan);

  /** To be called after the generator wrote resection statuses into a tree: marks the tree modified for its
   *  readers while keeping the territories that depend only on its shape and points. */
  void
  StatusesWritten(const VesselTreeData * tree);

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  struct Territories
  {
    const void * organ{ nullptr };
    itk::ModifiedTimeType organTime{ 0 };
    const void * tree{ nullptr };
    itk::ModifiedTimeType treeTime{ 0 };
    std::vector<std::uint16_t> ids;
  };

  const std::vector<std::uint16_t> &
  TerritoriesOf(Territories & cache, const VesselTreeData * data, std::int32_t vesselType);
  void
  MakeSurfaces(const Image * resection, const std::vector<std::uint8_t> & labels);

  bool m_GenerateSurfaces{ true };
  std::string m_ProposalName{ "Resection proposal" };
  ResectionProposalDescriptorProperty::Pointer m_Descriptor;
  std::size_t m_Counts[5]{ 0, 0, 0, 0, 0 };
  std::size_t m_NumberOfOrganVoxels{ 0 };
  std::size_t m_NumberOfTumourVoxels{ 0 };
  double m_VoxelMillilitres{ 0.0 };
  unsigned int m_NumberOfTerritoryComputations{ 0 };
  Territories m_Portal;
  Territories m_Hepatic;
  const void * m_RunsOrgan{ nullptr };
  itk::ModifiedTimeType m_RunsOrganTime{ 0 };
  std::vector<OrganRun> m_OrganRuns;
};
} // namespace lumo

#endif
