#include "lumoLabelStatistics.h"

#include <itkMacro.h>

namespace lumo
{
namespace
{
template <class T>
void
countLabels(const T * labels, const unsigned char * mask, std::size_t voxels, std::vector<std::size_t> & counts)
{
  for (std::size_t i = 0; i < voxels; ++i)
  {
    if (mask != nullptr ? mask[i] == 0 : labels[i] == 0)
    {
      continue;
    }
    if (labels[i] >= counts.size())
    {
      counts.resize(static_cast<std::size_t>(labels[i]) + 1, 0);
    }
    ++counts[labels[i]];
  }
}
} // namespace

void
LabelStatistics::Compute()
{
  if (m_LabelImage.IsNull() || !m_LabelImage->IsInitialized())
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "LabelStatistics: no label image", ITK_LOCATION);
  }
  const auto type = m_LabelImage->GetPixelType();
  if (type != itk::IOComponentEnum::UCHAR && type != itk::IOComponentEnum::USHORT)
  {
    throw itk::InvalidArgumentError(
      __FILE__, __LINE__, "LabelStatistics: labels must be unsigned 8 or 16-bit integers", ITK_LOCATION);
  }
  const unsigned char * mask = nullptr;
  if (m_Mask.IsNotNull())
  {
    if (m_Mask->GetPixelType() != itk::IOComponentEnum::UCHAR || m_Mask->GetSize() != m_LabelImage->GetSize())
    {
      throw itk::InvalidArgumentError(
        __FILE__, __LINE__, "LabelStatistics: the mask must be unsigned 8-bit and of the labels' size", ITK_LOCATION);
    }
    mask = static_cast<const unsigned char *>(m_Mask->GetData());
  }
  const std::size_t voxels = m_LabelImage->GetNumberOfVoxels();
  std::vector<std::size_t> counts;
  if (type == itk::IOComponentEnum::UCHAR)
  {
    countLabels(static_cast<const unsigned char *>(m_LabelImage->GetData()), mask, voxels, counts);
  }
  else
  {
    countLabels(static_cast<const std::uint16_t *>(m_LabelImage->GetData()), mask, voxels, counts);
  }

  const Vector3D spacing = m_LabelImage->GetSpacing();
  m_VoxelMillilitres = spacing[0] * spacing[1] * spacing[2] / 1000.0;
  m_TotalVoxels = 0;
  for (std::size_t count : counts)
  {
    m_TotalVoxels += count;
  }
  m_TotalMillilitres = static_cast<double>(m_TotalVoxels) * m_VoxelMillilitres;
  m_Entries.clear();
  for (std::size_t label = 0; label < counts.size(); ++label)
  {
    if (counts[label] == 0)
    {
      continue;
    }
    const double share = 100.0 * static_cast<double>(counts[label]) / static_cast<double>(m_TotalVoxels);
    m_Entries.push_back({ static_cast<std::uint32_t>(label),
                          counts[label],
                          static_cast<double>(counts[label]) * m_VoxelMillilitres,
                          share });
  }
  this->Modified();
}

void
LabelStatistics::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "Labels: " << m_Entries.size() << std::endl;
  os << indent << "TotalVoxels: " << m_TotalVoxels << std::endl;
  os << indent << "TotalMillilitres: " << m_TotalMillilitres << std::endl;
}
} // namespace lumo
