#ifndef lumoLabelImageSurfaceFilter_h
#define lumoLabelImageSurfaceFilter_h

#include <itkObjectFactory.h>
#include "lumoBaseProcess.h"
#include "lumoImage.h"
#include "lumoSurface.h"

#include <cstdint>
#include <vector>

namespace lumo
{
/** One closed surface per label of a label image, in world coordinates.
 *
 *  Input 0: a 3-D lumo::Image of any integer pixel type. Outputs: one lumo::Surface per label, in the order of the
 *  labels (GetOutputLabels() after an update), each holding triangles in millimetres of the world: the image's
 *  spacing, origin and direction are applied, so a surface lies where its voxels lie.
 *
 *  Each label is cut out of the image (its bounding box and one voxel of background around it, so that a label
 *  touching the image's border still gives a closed surface), contoured halfway between label and background voxel
 *  centres with VTK's discrete flying edges, smoothed with a windowed sinc filter (which keeps the enclosed volume
 *  where a Laplacian filter would shrink it) and, on request, given point normals pointing out of the label.
 *  The labels are independent tasks of VTK's thread pool (vtkSMPTools), as is the scan for the labels' boxes; the
 *  surfaces do not depend on the number of threads.
 *
 *  Errors (itk::ExceptionObject from Update): "LabelImageSurfaceFilter: no label image" for a missing or
 *  uninitialised input, "LabelImageSurfaceFilter: the label image has pixel type <type>; an integer type is needed"
 *  for a floating-point image, "LabelImageSurfaceFilter: label <n> is not in the image" for a requested label that no
 *  voxel has (the outputs keep what they held), and "LabelImageSurfaceFilter: label 0 is the background" when 0 is
 *  requested. */
class LabelImageSurfaceFilter : public BaseProcess
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(LabelImageSurfaceFilter);

  using Self = LabelImageSurfaceFilter;
  using Superclass = BaseProcess;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(LabelImageSurfaceFilter, BaseProcess);

  using LabelType = std::int64_t;
  using LabelVector = std::vector<LabelType>;

  /** Labels to make surfaces of, in output order; empty (the default) means every non-zero label present in
   *  increasing order. */
  void
  SetLabels(const LabelVector & labels);
  const LabelVector &
  GetLabels() const
  {
    return m_Labels;
  }

  /** Iterations of the windowed sinc smoothing; 0 keeps the voxel staircase; default 15; 0 to 1000. */
  itkSetClampMacro(SmoothingIterations, unsigned int, 0, 1000);
  itkGetConstMacro(SmoothingIterations, unsigned int);
  /** Pass band of the windowed sinc filter (smaller smooths more), default 0.05, in (0, 2). */
  itkSetClampMacro(PassBand, double, 1e-6, 1.999);
  itkGetConstMacro(PassBand, double);
  /** Whether the surfaces get point normals (array "Normals", pointing out of the label); default true. */
  itkSetMacro(ComputeNormals, bool);
  itkGetConstMacro(ComputeNormals, bool);
  itkBooleanMacro(ComputeNormals);

  void
  SetInput(const Image * labelImage);
  const Image *
  GetInput();

  /** Surface of the index-th label in output order (null past the last one). */
  Surface *
  GetOutput(DataObjectPointerArraySizeType index = 0);
  /** The labels of the outputs after the last update, in output order. */
  const LabelVector &
  GetOutputLabels() const
  {
    return m_OutputLabels;
  }

  using Superclass::MakeOutput;
  /** A lumo::Surface for every index. */
  itk::DataObject::Pointer
  MakeOutput(DataObjectPointerArraySizeType index) override;

protected:
  LabelImageSurfaceFilter();
  ~LabelImageSurfaceFilter() override;

  /** The number of outputs depends on the voxels; it is set in GenerateData. */
  void
  GenerateOutputInformation() override
  {}
  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  LabelVector m_Labels;
  LabelVector m_OutputLabels;
  unsigned int m_SmoothingIterations{ 15 };
  double m_PassBand{ 0.05 };
  bool m_ComputeNormals{ true };
};
} // namespace lumo

#endif
