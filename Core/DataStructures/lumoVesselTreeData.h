#ifndef lumoVesselTreeData_h
#define lumoVesselTreeData_h

#include <itkObjectFactory.h>
#include "lumoBaseData.h"

#include "ArVesselTree.h"
#include "VesselLabels.h"

#include <itkTimeStamp.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace lumo
{
/** A time-resolved vessel tree as toolkit data.
 *
 *  For each time step it holds one legacy tree, an index of that tree's vessels by vessel id, the picked vessel id
 *  and an activation mode. From the picked id and the mode it keeps the active flags of the vessels up to date,
 *  and it applies the labelling operations to the active vessels.
 *
 *  The vessel maps are rebuilt whenever a tree is set and whenever TopologyModified() is called, so readers never
 *  see stale maps: whoever changes the structure or the ids of a tree calls TopologyModified(); whoever changes
 *  labels or visibility calls AttributesModified(). Renderers compare the two time stamps to decide between
 *  rebuilding geometry and recolouring. */
class VesselTreeData : public BaseData
{
public:
  using Self = VesselTreeData;
  using Superclass = BaseData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(VesselTreeData, BaseData);

  using BloodVesselType = ::BloodVesselType;
  using SegmentType = ::SegmentType;
  using ResectionStatus = ::ResectionStatus;
  using TimeStep = std::int32_t;
  using VesselMap = std::map<std::int32_t, ar<Vessel>>;

  /** How the picked vessel turns into active vessels. */
  enum ActivationMode
  {
    NoActivation = 0,         // nothing is active
    SingleActivation = 1,     // only the picked vessel
    MultipleActivation = 2,   // the picked vessel joins the earlier selection
    PathToRootActivation = 3, // the picked vessel and every ancestor up to the root
    SubtreeActivation = 4     // the picked vessel and everything downstream of it
  };

  /** Stands for "no vessel" wherever an id is returned or stored. */
  static constexpr std::int32_t ErrorId = 2147483647;

  /** A shallow copy: the same legacy trees (shared), maps, picked ids and modes. */
  VesselTreeData(const VesselTreeData & other);
  VesselTreeData &
  operator=(const VesselTreeData &) = delete;

  static std::string
  GetNameOfBloodVesselType(std::int32_t type);
  static std::string
  GetNameOfSegmentType(std::int32_t segment);
  static std::string
  GetNameOfResectionStatus(std::int32_t status);
  /** prefix followed by GetNameOfSegmentType(segment). */
  static std::string
  GetStringForSegment(const std::string & prefix, std::int32_t segment);

  virtual void
  AttributesModified();
  virtual void
  TopologyModified();
  virtual itk::ModifiedTimeType
  GetAttributesMTime() const;
  virtual itk::ModifiedTimeType
  GetTopologyMTime() const;

  virtual std::int32_t
  GetMaxVesselId(TimeStep t) const;
  virtual std::int32_t
  GetMinVesselId(TimeStep t) const;
  virtual bool
  GetVisibility(std::int32_t id, TimeStep t) const;

  /** Label operations on the active vessels of time step t; each changed vessel is deactivated. */
  virtual void
  SetBloodVesselTypeForActive(std::int32_t type, TimeStep t);
  virtual void
  SetSegmentTypeForActive(std::int32_t segment, TimeStep t);
  virtual void
  SetResectionStatusForActive(std::int32_t status, TimeStep t);
  virtual void
  SetVisibilityForActive(bool visible, TimeStep t);
  virtual void
  SetVisibilityForType(std::int32_t type, bool visible, TimeStep t);

  /** Stores the mode and recomputes the activation, unless the mode is the current one. */
  virtual void
  SetActivationMode(ActivationMode mode, TimeStep t);
  virtual ActivationMode
  GetActivationMode(TimeStep t) const;
  virtual std::int32_t
  GetPickedVesselId(TimeStep t) const;
  /** The vessel of that id in time step t; a null handle when there is none. */
  virtual ar<Vessel>
  GetVesselById(std::int32_t id, TimeStep t) const;
  /** Per blood vessel type (0..4): true when at least half of its vessels are visible (so also when it has none). */
  virtual void
  GetEstimatedVisibility(bool & undefined, bool & hepatic, bool & portal, bool & artery, bool & bile, TimeStep t) const;

  bool
  IsInitialized() const override
  {
    return m_Initialized;
  }
  /** Sets the object up from a tree at time step 0 and marks it initialised. */
  void
  initialize(const ArVesselTree & tree);
  /** Stores the tree at time step t (growing the time steps when needed), rebuilds the vessel maps and gives the
   *  time step a geometry with the tree's bounds. */
  void
  SetVesselTreeData(const ArVesselTree & tree, TimeStep t);
  /** The tree of time step t; a null handle when there is none. */
  ArVesselTree
  GetVesselTreeData(TimeStep t) const;
  /** Number of time steps that can hold a tree. */
  TimeStep
  GetNumberOfTreeTimeSteps() const
  {
    return static_cast<TimeStep>(m_Trees.size());
  }
  void
  DeactivateAll(TimeStep t);

  void
  ExecuteOperation(Operation * operation) override;

  bool
  IsEmptyTimeStep(TimeStepType t) const override;
  void
  Clear() override;
  void
  Expand(unsigned int timeSteps) override;
  /** Shares the trees and the selection state of another VesselTreeData, as a pipeline hands a result over. */
  void
  Graft(const itk::DataObject * data) override;
  void
  UpdateOutputInformation() override;

protected:
  VesselTreeData();
  ~VesselTreeData() override;

  /** Clone() is the shallow copy of the copy constructor (shared trees, copied geometry). */
  itk::LightObject::Pointer
  InternalClone() const override;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  virtual void
  SetPickedVesselId(std::int32_t id, TimeStep t);
  /** Adds to the selection without deactivating: the vessel, and in modes 3 and 4 its path to the root or its
   *  subtree. */
  virtual void
  SetMultiplePickedVesselId(std::int32_t id, TimeStep t);
  virtual void
  ResizeTimesteps(std::size_t count);
  virtual void
  UpdateVesselMapSeries();
  virtual void
  UpdateActivation(TimeStep t);

private:
  bool
  IsValidTimeStep(TimeStep t) const
  {
    return t >= 0 && static_cast<std::size_t>(t) < m_Trees.size();
  }
  /** Shared by the four Set...ForActive operations: checks t and the tree, applies to each active vessel. */
  template <class Apply>
  void
  ForEachActiveVessel(TimeStep t, const Apply & apply);
  /** Activates the picked vessel and, by mode, its path to the root (3) or its subtree (4). */
  void
  ActivateFrom(std::int32_t id, ActivationMode mode, TimeStep t);

  std::vector<VesselMap> m_VesselMaps;
  std::vector<ArVesselTree> m_Trees;
  std::vector<std::int32_t> m_PickedVesselIds;
  std::vector<ActivationMode> m_ActivationModes;
  itk::TimeStamp m_AttributesTime;
  itk::TimeStamp m_TopologyTime;
};
} // namespace lumo

#endif
