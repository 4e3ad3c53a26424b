#ifndef lumoLabelStatistics_h
#define lumoLabelStatistics_h

#include <itkObject.h>
#include <itkObjectFactory.h>
#include "lumoImage.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumo
{
/** Voxel count, volume and share of every label of a label image (supply areas, segmentations).
 *
 *  Without a mask every non-zero label is counted and the shares are of all labelled voxels. With a mask (an
 *  unsigned 8-bit image of the same size, for instance the organ) only voxels inside it count, label 0 included,
 *  and the shares are of the mask's voxels. Volumes are voxels times the product of the label image's spacing
 *  (mm), given in millilitres. */
class LabelStatistics : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(LabelStatistics);

  using Self = LabelStatistics;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkNewMacro(Self);
  itkTypeMacro(LabelStatistics, itk::Object);

  struct Entry
  {
    std::uint32_t label;
    std::size_t voxels;
    double millilitres;
    double percent;
  };

  /** The label image: unsigned 8 or 16-bit. */
  itkSetConstObjectMacro(LabelImage, Image);
  itkGetConstObjectMacro(LabelImage, Image);
  /** Optional region to count in (non-zero voxels); null counts every labelled voxel. */
  itkSetConstObjectMacro(Mask, Image);
  itkGetConstObjectMacro(Mask, Image);

  /** Counts. Throws itk::InvalidArgumentError for a missing or non-integer label image, or a mask of another size
   *  or pixel type. */
  void
  Compute();

  /** One entry per label present, by increasing label. */
  const std::vector<Entry> &
  GetEntries() const
  {
    return m_Entries;
  }
  /** Voxels counted (the mask's, or all labelled ones) and their volume. */
  std::size_t
  GetTotalVoxels() const
  {
    return m_TotalVoxels;
  }
  double
  GetTotalMillilitres() const
  {
    return m_TotalMillilitres;
  }
  /** Volume of one voxel in millilitres. */
  double
  GetVoxelMillilitres() const
  {
    return m_VoxelMillilitres;
  }

protected:
  LabelStatistics() = default;
  ~LabelStatistics() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

private:
  Image::ConstPointer m_LabelImage;
  Image::ConstPointer m_Mask;
  std::vector<Entry> m_Entries;
  std::size_t m_TotalVoxels{ 0 };
  double m_TotalMillilitres{ 0.0 };
  double m_VoxelMillilitres{ 0.0 };
};
} // namespace lumo

#endif
