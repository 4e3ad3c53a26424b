#ifndef lumoTransformVesselTreeFilter_h
#define lumoTransformVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoVesselTreeToVesselTreeFilter.h"

#include <itkVector.h>
#include <vtkSmartPointer.h>

class vtkLinearTransform;
class vtkTransform;

namespace lumo
{
/** Maps every centre-line point of a vessel tree through a linear transform; diameters are kept as they are, even
 *  when the transform scales (they stay in the units they were measured in).
 *
 *  On a copy (default) the output gets a deep copy of the input's tree, the input's activation mode of time step 0
 *  and its picked vessel. In place, the input's own tree is transformed and the output shares it. The extraction
 *  from images uses it in place to bring trees from voxel indices to world coordinates. */
class TransformVesselTreeFilter : public VesselTreeToVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(TransformVesselTreeFilter);

  using Self = TransformVesselTreeFilter;
  using Superclass = VesselTreeToVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(TransformVesselTreeFilter, VesselTreeToVesselTreeFilter);

  /** Transform the input's own tree instead of a copy; default false. In place, the input object itself becomes
   *  the output and leaves the filter's inputs (as an in-place image filter consumes its input). */
  itkSetMacro(InPlace, bool);
  itkGetConstMacro(InPlace, bool);
  itkBooleanMacro(InPlace);

  /** Replaces the transform by a copy of the given one's matrix; null only warns. */
  void
  SetVtkTransform(vtkLinearTransform * transform);
  /** Concatenates a translation (mm) to the transform; it adds to an earlier translation. */
  void
  SetTranslation(float x, float y, float z);
  /** The translation column of the transform's matrix. */
  void
  GetTranslation(float translation[3]);
  /** Divides the columns of the transform's linear part by the spacing (mm), so that a transform from indices times
   *  spacing to world maps indices directly. The translation is kept. */
  void
  DeductSpacingFromTransform(const itk::Vector<float, 3> & spacing);
  vtkTransform *
  GetTransform() const;

protected:
  TransformVesselTreeFilter();
  ~TransformVesselTreeFilter() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  bool m_InPlace{ false };
  vtkSmartPointer<vtkTransform> m_Transform;
};
} // namespace lumo

#endif
