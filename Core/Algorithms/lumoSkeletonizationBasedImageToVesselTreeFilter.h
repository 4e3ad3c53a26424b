#ifndef lumoSkeletonizationBasedImageToVesselTreeFilter_h
#define lumoSkeletonizationBasedImageToVesselTreeFilter_h

#include <itkObjectFactory.h>
#include "lumoImageToVesselTreeFilter.h"

#include <itkFixedArray.h>
#include <itkPoint.h>

#include <cstddef>

namespace lumo
{
/** Extracts a vessel tree from each binary vessel segmentation: input i (unsigned 8-bit, 3-D, non-zero voxels are
 *  vessel) gives output i. The mask is thinned by a CleaningSelleSkeletonizer, the skeleton becomes a tree in voxel
 *  coordinates by a BreadthFirstTreeExtractor from the start voxel, and a TransformVesselTreeFilter in place maps
 *  the tree to world coordinates with the image's geometry. Diameters stay in the units of Spacing.
 *
 *  A null input or one of another pixel type or dimension is reported with a warning and ends the run: later
 *  outputs are left as they were. No conversion is attempted here; callers threshold other masks first. The
 *  legacy classes end the process on input they cannot handle, so callers that must survive bad input check the
 *  mask before the update (non-empty, 3-D). Voxel sizes that are not positive and finite, and a skeleton with a
 *  voxel that the thinning gave no distance (on which the tree extraction would end the process), are refused with
 *  an itk::ExceptionObject whose description is one line; outputs are then left as they were. */
class SkeletonizationBasedImageToVesselTreeFilter : public ImageToVesselTreeFilter
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(SkeletonizationBasedImageToVesselTreeFilter);

  using Self = SkeletonizationBasedImageToVesselTreeFilter;
  using Superclass = ImageToVesselTreeFilter;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(SkeletonizationBasedImageToVesselTreeFilter, ImageToVesselTreeFilter);

  using StartpointType = itk::Point<unsigned int, 3>;
  using SpacingType = itk::FixedArray<float, 3>;
  using BloodVesselType = VesselTreeData::BloodVesselType;

  /** Voxel index of the tree root; each coordinate is used modulo 65536 (16-bit voxel coordinates); default
   *  (0, 0, 0). A start off the skeleton is moved to the nearest skeleton voxel. */
  itkSetMacro(Startpoint, StartpointType);
  itkGetConstMacro(Startpoint, StartpointType);
  /** Voxel sizes (mm) for the thinning and the diameters; default (1, 1, 1); positive. */
  itkSetMacro(Spacing, SpacingType);
  itkGetConstMacro(Spacing, SpacingType);
  /** Delete voxels with fewer foreground neighbours first in each layer, which keeps spurs from bumps short;
   *  default true. */
  itkSetMacro(EndpointSuppression, bool);
  itkGetConstMacro(EndpointSuppression, bool);
  itkBooleanMacro(EndpointSuppression);
  /** Number of first thinning iterations whose survivors are post-cleaned (removes small loops and thick spots);
   *  default 0 (none); 0 to any. */
  itkSetMacro(NumberOfCleanedIterations, unsigned int);
  itkGetConstMacro(NumberOfCleanedIterations, unsigned int);
  /** Blood vessel type kept for the callers that label the result; default PortalVein (2); not used by the
   *  extraction itself. */
  itkSetMacro(DefaultBloodVesselType, BloodVesselType);
  itkGetConstMacro(DefaultBloodVesselType, BloodVesselType);

  /** Ignore Startpoint and start each tree at the skeleton end point farthest from the background (where the
   *  thickest vessel ends); default false. */
  itkSetMacro(StartAtThickestEndPoint, bool);
  itkGetConstMacro(StartAtThickestEndPoint, bool);
  itkBooleanMacro(StartAtThickestEndPoint);

  /** Of the last input processed: skeleton voxels, and skeleton parts and voxels left out because they are not
   *  connected to the start. */
  itkGetConstMacro(NumberOfSkeletonVoxels, std::size_t);
  itkGetConstMacro(NumberOfLeftOutParts, std::size_t);
  itkGetConstMacro(NumberOfLeftOutVoxels, std::size_t);

  using Superclass::SetInput;
  /** Also makes output index when it does not exist yet. */
  void
  SetInput(DataObjectPointerArraySizeType index, const Image * image) override;

protected:
  SkeletonizationBasedImageToVesselTreeFilter();
  ~SkeletonizationBasedImageToVesselTreeFilter() override;

  void
  GenerateData() override;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  StartpointType m_Startpoint{};
  SpacingType m_Spacing{ 1.0f };
  bool m_EndpointSuppression{ true };
  unsigned int m_NumberOfCleanedIterations{ 0 };
  BloodVesselType m_DefaultBloodVesselType{ PortalVein };
  bool m_StartAtThickestEndPoint{ false };
  std::size_t m_NumberOfSkeletonVoxels{ 0 };
  std::size_t m_NumberOfLeftOutParts{ 0 };
  std::size_t m_NumberOfLeftOutVoxels{ 0 };
};
} // namespace lumo

#endif
