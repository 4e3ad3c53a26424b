#include "BranchingCluster.h"

void
BranchingCluster::addVoxel(std::size_t voxel, float x, float y, float z)
{
  m_voxels.push_back(voxel);
  m_positions.push_back(x);
  m_positions.push_back(y);
  m_positions.push_back(z);
  m_sum[0] += x;
  m_sum[1] += y;
  m_sum[2] += z;
}

float
BranchingCluster::getCentreX() const
{
  return m_voxels.empty() ? 0.0f : static_cast<float>(m_sum[0] / static_cast<double>(m_voxels.size()));
}

float
BranchingCluster::getCentreY() const
{
  return m_voxels.empty() ? 0.0f : static_cast<float>(m_sum[1] / static_cast<double>(m_voxels.size()));
}

float
BranchingCluster::getCentreZ() const
{
  return m_voxels.empty() ? 0.0f : static_cast<float>(m_sum[2] / static_cast<double>(m_voxels.size()));
}

std::size_t
BranchingCluster::getRepresentative() const
{
  const float centre[3] = { getCentreX(), getCentreY(), getCentreZ() };
  std::size_t best = 0;
  float bestDistance = 0.0f;
  for (std::size_t i = 0; i < m_voxels.size(); ++i)
  {
    float distance = 0.0f;
    for (int a = 0; a < 3; ++a)
    {
      const float d = m_positions[3 * i + a] - centre[a];
      distance += d * d;
    }
    if (i == 0 || distance < bestDistance)
    {
      best = i;
      bestDistance = distance;
    }
  }
  return m_voxels.empty() ? 0 : m_voxels[best];
}
