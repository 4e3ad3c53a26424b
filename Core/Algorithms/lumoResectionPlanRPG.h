#ifndef lumoResectionPlanRPG_h
#define lumoResectionPlanRPG_h

#include <itkObjectFactory.h>
#include "lumoVascularTerritoryRPG.h"

namespace lumo
{
/** The resection proposal of a plan: the resection statuses a planner gave the vessels (arbo label --status, or
 *  the viewer). Every organ voxel takes the status of its supplying portal vein: status 3 (to be resected) gives
 *  label 3, status 4 (area at risk) label 4, any other status the remnant (2). With a hepatic tree, voxels drained
 *  by a hepatic vein of status 3 or 4 that are not already 3 become 4. Input 1 is not used; the trees are not
 *  changed.
 *
 *  Errors (itk::InvalidArgumentError), besides those of VascularTerritoryRPG: "No vessel is marked to be resected
 *  or at risk" when neither tree has a vessel of status 3 or 4. */
class ResectionPlanRPG : public VascularTerritoryRPG
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(ResectionPlanRPG);

  using Self = ResectionPlanRPG;
  using Superclass = VascularTerritoryRPG;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(ResectionPlanRPG, VascularTerritoryRPG);

protected:
  ResectionPlanRPG();
  ~ResectionPlanRPG() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;
};
} // namespace lumo

#endif
