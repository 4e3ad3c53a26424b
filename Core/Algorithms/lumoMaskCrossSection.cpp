#include "lumoMaskCrossSection.h"

#include <algorithm>
#include <cmath>

namespace lumo
{
MaskCrossSection::MaskCrossSection(const Image * mask)
{
  if (mask == nullptr || mask->GetPixelType() != itk::IOComponentEnum::UCHAR || mask->GetDimension() != 3 ||
      mask->GetData() == nullptr)
  {
    return;
  }
  m_Voxels = static_cast<const unsigned char *>(mask->GetData());
  const Vector3D spacing = mask->GetSpacing();
  const Point3D origin = mask->GetOrigin();
  const auto direction = mask->GetDirection();
  for (unsigned int a = 0; a < 3; ++a)
  {
    m_Size[a] = mask->GetDimension(a);
    m_Spacing[a] = spacing[a];
    m_Origin[a] = origin[a];
    for (unsigned int c = 0; c < 3; ++c)
    {
      m_Direction[a][c] = direction[a][c];
    }
  }
}

double
MaskCrossSection::GetLargestSpacing() const
{
  return std::max({ m_Spacing[0], m_Spacing[1], m_Spacing[2] });
}

void
MaskCrossSection::ToWorld(const double index[3], double world[3]) const
{
  for (int r = 0; r < 3; ++r)
  {
    world[r] = m_Origin[r];
    for (int c = 0; c < 3; ++c)
    {
      world[r] += m_Direction[r][c] * m_Spacing[c] * index[c];
    }
  }
}

void
MaskCrossSection::ToIndex(const double world[3], double index[3]) const
{
  for (int c = 0; c < 3; ++c)
  {
    double sum = 0.0;
    for (int r = 0; r < 3; ++r)
    {
      sum += m_Direction[r][c] * (world[r] - m_Origin[r]);
    }
    index[c] = sum / m_Spacing[c];
  }
}

MaskCrossSection::Measure
MaskCrossSection::Across(const double point[3], const double direction[3], double reach, double halfThickness) const
{
  Measure measure;
  if (m_Voxels == nullptr || halfThickness <= 0.0)
  {
    return measure;
  }
  double centre[3];
  this->ToIndex(point, centre);
  const double extent = std::sqrt(reach * reach + halfThickness * halfThickness);
  long low[3];
  long high[3];
  for (int a = 0; a < 3; ++a)
  {
    low[a] = std::max<long>(0, static_cast<long>(std::floor(centre[a] - extent / m_Spacing[a])));
    high[a] = std::min<long>(m_Size[a] - 1, static_cast<long>(std::ceil(centre[a] + extent / m_Spacing[a])));
  }
  double sum[3] = { 0.0, 0.0, 0.0 };
  for (long z = low[2]; z <= high[2]; ++z)
  {
    for (long y = low[1]; y <= high[1]; ++y)
    {
      const unsigned char * row = m_Voxels + (z * m_Size[1] + y) * m_Size[0];
      for (long x = low[0]; x <= high[0]; ++x)
      {
        if (row[x] == 0)
        {
          continue;
        }
        const double index[3] = { static_cast<double>(x), static_cast<double>(y), static_cast<double>(z) };
        double q[3];
        this->ToWorld(index, q);
        const double d[3] = { q[0] - point[0], q[1] - point[1], q[2] - point[2] };
        const double axial = d[0] * direction[0] + d[1] * direction[1] + d[2] * direction[2];
        if (std::abs(axial) >= halfThickness)
        {
          continue;
        }
        const double radial2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2] - axial * axial;
        if (radial2 > reach * reach)
        {
          continue;
        }
        const double w = 1.0 - std::abs(axial) / halfThickness;
        measure.weight += w;
        for (int a = 0; a < 3; ++a)
        {
          sum[a] += w * (d[a] - axial * direction[a]);
        }
      }
    }
  }
  if (measure.weight <= 0.0)
  {
    return measure;
  }
  measure.area = measure.weight * m_Spacing[0] * m_Spacing[1] * m_Spacing[2] / halfThickness;
  measure.radius = std::sqrt(measure.area / M_PI);
  for (int a = 0; a < 3; ++a)
  {
    measure.offset[a] = sum[a] / measure.weight;
  }
  return measure;
}
} // namespace lumo
