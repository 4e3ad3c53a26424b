#ifndef lumoTimeSlicedGeometry_h
#define lumoTimeSlicedGeometry_h

#include "lumoGeometry3D.h"

#include <vector>

namespace lumo
{
/** One geometry per time step of a time-resolved data object. As a Geometry3D it stands for all time steps:
 *  UpdateBounds() updates the bounds of every time step and then sets its own transform to the identity and its
 *  bounds to the union of the world bounds of the time steps (the scene extent). */
class TimeSlicedGeometry : public Geometry3D
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TimeSlicedGeometry);

  using Self = TimeSlicedGeometry;
  using Superclass = Geometry3D;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(TimeSlicedGeometry, Geometry3D);
  itkNewMacro(Self);

  /** timeSteps steps (at least 1): step 0 is the given geometry itself, every further step a clone of it.
   *  A null geometry starts every step with a new Geometry3D. */
  void
  InitializeEvenlyTimed(Geometry3D * geometry, unsigned int timeSteps);
  /** timeSteps new Geometry3D objects. */
  void
  InitializeEmpty(unsigned int timeSteps);

  unsigned int
  GetTimeSteps() const
  {
    return static_cast<unsigned int>(m_Geometries.size());
  }
  bool
  IsValidTime(TimeStepType t) const
  {
    return t < m_Geometries.size();
  }

  /** The geometry of that step, or null outside the time steps. */
  Geometry3D *
  GetGeometry3D(TimeStepType t) const;
  /** Replaces the geometry of a step (kept as given, not cloned); false for a null geometry or an invalid step. */
  bool
  SetGeometry3D(Geometry3D * geometry, TimeStepType t);

  /** Grows to timeSteps steps with clones of the last step (never shrinks). */
  void
  Expand(unsigned int timeSteps);

  void
  UpdateBounds() override;

  void
  Initialize() override;

  /** Includes the modification times of the time steps. */
  itk::ModifiedTimeType
  GetMTime() const override;

protected:
  TimeSlicedGeometry();
  ~TimeSlicedGeometry() override = default;
  void
  CopyValuesTo(Geometry3D * other) const override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::vector<Geometry3D::Pointer> m_Geometries;
};
} // namespace lumo

#endif
