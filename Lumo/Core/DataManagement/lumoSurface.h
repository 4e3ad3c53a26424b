#ifndef lumoSurface_h
#define lumoSurface_h

#include "lumoBaseData.h"

#include <vector>

class vtkPolyData;

namespace lumo
{
/** A surface mesh per time step: one vtkPolyData per time step (held with a VTK reference), in the coordinates of
 *  that time step's geometry, whose bounds follow the points of the poly data (updated when poly data is set and
 *  by UpdateOutputInformation; a step without points has bounds 0). Changes made to a held vtkPolyData from
 *  outside must be followed by Modified() (and UpdateOutputInformation for the bounds). */
class Surface : public BaseData
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Surface);

  using Self = Surface;
  using Superclass = BaseData;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(Surface, BaseData);
  itkNewMacro(Self);

  /** The poly data of a time step, or null. */
  vtkPolyData *
  GetVtkPolyData(TimeStepType t = 0) const;
  /** Sets the poly data of a time step (grows the time steps when needed); null clears the step. */
  void
  SetVtkPolyData(vtkPolyData * polyData, TimeStepType t = 0);

  /** Null or without points. */
  bool
  IsEmptyTimeStep(TimeStepType t) const override;
  void
  Expand(unsigned int timeSteps) override;
  void
  Clear() override;
  /** Shares the poly data and copies the geometry of another Surface. */
  void
  Graft(const itk::DataObject * data) override;
  void
  UpdateOutputInformation() override;

protected:
  Surface();
  ~Surface() override;
  /** Sets the bounds of step t from its poly data. */
  void
  CalculateBounds(TimeStepType t);
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  std::vector<vtkPolyData *> m_PolyDatas;
};
} // namespace lumo

#endif
