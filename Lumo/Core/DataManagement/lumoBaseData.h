#ifndef lumoBaseData_h
#define lumoBaseData_h

#include "lumoCommon.h"
#include "lumoOperationActor.h"
#include "lumoTimeSlicedGeometry.h"

#include <itkDataObject.h>

namespace lumo
{
/** Base of every data object of the toolkit (images, surfaces, point sets, vessel trees): an itk::DataObject, so
 *  that it can be the input and output of pipeline process objects, and an OperationActor, so that interactors
 *  change it through undoable operations. It has a time-sliced geometry with one Geometry3D per time step; a new
 *  data object has one time step with an identity geometry.
 *
 *  The requested-region operations of the pipeline have whole-object defaults here (the region is always the
 *  whole object): SetRequestedRegionToLargestPossibleRegion does nothing, RequestedRegionIsOutsideOfTheBufferedRegion
 *  answers false, VerifyRequestedRegion answers true, SetRequestedRegion does nothing. Subclasses with real regions
 *  override them.
 *
 *  GetMTime includes the modification time of the geometry. UpdateOutputInformation runs the source's (when
 *  there is one) and then the geometry's UpdateBounds. */
class BaseData
  : public itk::DataObject
  , public OperationActor
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(BaseData);

  using Self = BaseData;
  using Superclass = itk::DataObject;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(BaseData, itk::DataObject);

  /** The geometry of a time step, or null outside the time steps. */
  Geometry3D *
  GetGeometry(TimeStepType t = 0) const;
  /** UpdateOutputInformation, then GetGeometry(t). */
  Geometry3D *
  GetUpdatedGeometry(TimeStepType t = 0);

  TimeSlicedGeometry *
  GetTimeSlicedGeometry() const
  {
    return m_TimeSlicedGeometry;
  }
  TimeSlicedGeometry *
  GetUpdatedTimeSlicedGeometry();

  /** A TimeSlicedGeometry replaces the time-sliced geometry as it is. Any other geometry becomes the geometry of
   *  time step 0 as it is (not cloned), and every further existing time step gets a clone of it. Null is ignored. */
  virtual void
  SetGeometry(Geometry3D * geometry);
  /** Sets the geometry of one time step (as given); false for null or an invalid step. */
  bool
  SetGeometry(Geometry3D * geometry, TimeStepType t);
  /** Like SetGeometry, with a clone of the given geometry. */
  void
  SetClonedGeometry(const Geometry3D * geometry);

  /** Number of time steps (at least 1). */
  unsigned int
  GetTimeSteps() const;
  /** Grows to timeSteps time steps (geometries cloned from the last step); never shrinks. */
  virtual void
  Expand(unsigned int timeSteps);

  /** Whether a time step holds no content. The default answers false for a valid step, true otherwise. */
  virtual bool
  IsEmptyTimeStep(TimeStepType t) const;
  /** Whether every time step is empty. */
  virtual bool
  IsEmpty() const;

  /** Whether the object has been given content (subclasses set the flag). */
  virtual bool
  IsInitialized() const
  {
    return m_Initialized;
  }

  /** Back to one time step with an identity geometry; subclasses drop their content too. */
  virtual void
  Clear();

  /** The default ignores every operation. */
  void
  ExecuteOperation(Operation * operation) override;

  void
  SetRequestedRegionToLargestPossibleRegion() override;
  bool
  RequestedRegionIsOutsideOfTheBufferedRegion() override;
  bool
  VerifyRequestedRegion() override;
  void
  SetRequestedRegion(const itk::DataObject * data) override;

  /** Copies (clones) the time-sliced geometry of another BaseData. */
  void
  CopyInformation(const itk::DataObject * data) override;
  /** Takes a copy of the time-sliced geometry of another BaseData; subclasses share its content (voxels, poly
   *  data) as ITK's images share their buffer. */
  void
  Graft(const itk::DataObject * data) override;

  void
  UpdateOutputInformation() override;

  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  BaseData();
  ~BaseData() override;

  /** timeSteps time steps with new identity geometries. */
  virtual void
  InitializeTimeSlicedGeometry(unsigned int timeSteps = 1);
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  bool m_Initialized{ false };
  TimeSlicedGeometry::Pointer m_TimeSlicedGeometry;
};
} // namespace lumo

#endif
