#ifndef lumoSlicedData_h
#define lumoSlicedData_h

#include "lumoBaseData.h"
#include "lumoSlicedGeometry3D.h"

namespace lumo
{
/** Base of data with a voxel grid (images). Its geometries are SlicedGeometry3D objects: a plain Geometry3D given
 *  to SetGeometry is converted (transform and bounds copied into a new SlicedGeometry3D). */
class SlicedData : public BaseData
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SlicedData);

  using Self = SlicedData;
  using Superclass = BaseData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(SlicedData, BaseData);

  /** The geometry of a time step as SlicedGeometry3D, or null. */
  SlicedGeometry3D *
  GetSlicedGeometry(TimeStepType t = 0) const;

  using Superclass::SetGeometry;
  void
  SetGeometry(Geometry3D * geometry) override;

protected:
  SlicedData();
  ~SlicedData() override;
  void
  InitializeTimeSlicedGeometry(unsigned int timeSteps = 1) override;
};
} // namespace lumo

#endif
