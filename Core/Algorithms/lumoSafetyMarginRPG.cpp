#include "lumoSafetyMarginRPG.h"

#include "LinkedTreeWalk.h"

#include <itkMultiThreaderBase.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>
#include <unordered_map>

namespace lumo
{
namespace
{
/** Stands for "no tumour voxel on this line" in the distance transform: finite, so that the envelope arithmetic
 *  stays free of infinities, and far above any squared distance in a scan. */
constexpr double farAway = 1e20;

/** Exact 1-D squared distance transform (lower envelope of parabolas, Felzenszwalb and Huttenlocher) of the n
 *  samples f, spaced s mm apart: d[q] = min over p of ((q - p) s)² + f[p]. */
void
distanceTransform1D(const double * f,
                    double * d,
                    std::size_t n,
                    double s,
                    std::vector<std::size_t> & v,
                    std::vector<double> & z)
{
  v.resize(n);
  z.resize(n + 1);
  std::size_t k = 0;
  v[0] = 0;
  z[0] = -std::numeric_limits<double>::infinity();
  z[1] = std::numeric_limits<double>::infinity();
  for (std::size_t q = 1; q < n; ++q)
  {
    const double pq = static_cast<double>(q) * s;
    double crossing = 0.0;
    for (;;)
    {
      const double pv = static_cast<double>(v[k]) * s;
      crossing = ((f[q] + pq * pq) - (f[v[k]] + pv * pv)) / (2.0 * (pq - pv));
      if (crossing <= z[k])
      {
        --k; // z[0] is -infinity, so k never passes below 0
        continue;
      }
      break;
    }
    ++k;
    v[k] = q;
    z[k] = crossing;
    z[k + 1] = std::numeric_limits<double>::infinity();
  }
  k = 0;
  for (std::size_t q = 0; q < n; ++q)
  {
    const double pq = static_cast<double>(q) * s;
    while (z[k + 1] < pq)
    {
      ++k;
    }
    const double offset = (static_cast<double>(q) - static_cast<double>(v[k])) * s;
    d[q] = offset * offset + f[v[k]];
  }
}

std::string
triple(double a, double b, double c, const char * separator)
{
  std::ostringstream text;
  text << a << separator << b << separator << c;
  return text.str();
}

bool
near(double a, double b)
{
  return std::abs(a - b) <= 1e-6 * std::max(1.0, std::max(std::abs(a), std::abs(b)));
}
} // namespace

SafetyMarginRPG::SafetyMarginRPG() = default;

SafetyMarginRPG::~SafetyMarginRPG() = default;

void
SafetyMarginRPG::SetTumourMask(const Image * tumour)
{
  this->SetSafetyMargin(const_cast<Image *>(tumour));
}

const Image *
SafetyMarginRPG::CheckedTumour(const Image * organ)
{
  const auto * tumour = dynamic_cast<const Image *>(this->GetSafetyMargin());
  if (tumour == nullptr || !tumour->IsInitialized())
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "No tumour mask set", ITK_LOCATION);
  }
  const std::string differ = "Tumour mask and organ segmentation differ in ";
  const auto size = tumour->GetSize();
  const auto organSize = organ->GetSize();
  if (tumour->GetDimension() != 3 || size != organSize)
  {
    throw itk::InvalidArgumentError(__FILE__,
                                    __LINE__,
                                    differ + "size (" + triple(size[0], size[1], size[2], " x ") + " vs " +
                                      triple(organSize[0], organSize[1], organSize[2], " x ") + ")",
                                    ITK_LOCATION);
  }
  const Vector3D spacing = tumour->GetSpacing();
  const Vector3D organSpacing = organ->GetSpacing();
  const Point3D origin = tumour->GetOrigin();
  const Point3D organOrigin = organ->GetOrigin();
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (!near(spacing[a], organSpacing[a]))
    {
      throw itk::InvalidArgumentError(__FILE__,
                                      __LINE__,
                                      differ + "spacing (" + triple(spacing[0], spacing[1], spacing[2], ", ") + " vs " +
                                        triple(organSpacing[0], organSpacing[1], organSpacing[2], ", ") + " mm)",
                                      ITK_LOCATION);
    }
  }
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (!near(origin[a], organOrigin[a]))
    {
      throw itk::InvalidArgumentError(__FILE__,
                                      __LINE__,
                                      differ + "origin (" + triple(origin[0], origin[1], origin[2], ", ") + " vs " +
                                        triple(organOrigin[0], organOrigin[1], organOrigin[2], ", ") + " mm)",
                                      ITK_LOCATION);
    }
  }
  for (unsigned int r = 0; r < 3; ++r)
  {
    for (unsigned int c = 0; c < 3; ++c)
    {
      if (!near(tumour->GetDirection()[r][c], organ->GetDirection()[r][c]))
      {
        throw itk::InvalidArgumentError(__FILE__, __LINE__, differ + "direction", ITK_LOCATION);
      }
    }
  }
  return tumour;
}

void
SafetyMarginRPG::UpdateDistanceMap(const Image * organ, const Image * tumour, double reach)
{
  if (m_MapOrgan == organ && m_MapOrganTime == organ->GetMTime() && m_MapTumour == tumour &&
      m_MapTumourTime == tumour->GetMTime() && reach <= m_MapReach)
  {
    return;
  }
  m_MapOrgan = nullptr;
  m_MapTumour = nullptr;
  const auto size = organ->GetSize();
  const std::size_t n[3] = { size[0], size[1], size[2] };
  const auto * organVoxels = static_cast<const unsigned char *>(organ->GetData());
  const bool byteTumour = tumour->GetPixelType() == itk::IOComponentEnum::UCHAR;
  const auto * tumourBytes = static_cast<const unsigned char *>(tumour->GetData());
  auto isTumour = [&](std::size_t x, std::size_t y, std::size_t z, std::size_t i) {
    return byteTumour ? tumourBytes[i] != 0
                      : tumour->GetPixelValueAsDouble(static_cast<unsigned int>(x),
                                                      static_cast<unsigned int>(y),
                                                      static_cast<unsigned int>(z)) != 0.0;
  };

  // The tumour's bounding box and counts.
  std::size_t low[3] = { n[0], n[1], n[2] };
  std::size_t high[3] = { 0, 0, 0 };
  m_TumourVoxels = 0;
  m_TumourVoxelsInOrgan = 0;
  for (std::size_t z = 0, i = 0; z < n[2]; ++z)
  {
    for (std::size_t y = 0; y < n[1]; ++y)
    {
      for (std::size_t x = 0; x < n[0]; ++x, ++i)
      {
        if (isTumour(x, y, z, i))
        {
          ++m_TumourVoxels;
          m_TumourVoxelsInOrgan += organVoxels[i] != 0 ? 1 : 0;
          const std::size_t position[3] = { x, y, z };
          for (unsigned int a = 0; a < 3; ++a)
          {
            low[a] = std::min(low[a], position[a]);
            high[a] = std::max(high[a], position[a] + 1);
          }
        }
      }
    }
  }
  // Widened by the reach (and a voxel for rounding), within the grid.
  const Vector3D spacing = organ->GetSpacing();
  for (unsigned int a = 0; a < 3; ++a)
  {
    if (high[a] <= low[a])
    {
      m_BoxStart[a] = 0;
      m_BoxSize[a] = 0;
      continue;
    }
    const auto widen = static_cast<std::size_t>(std::min(static_cast<double>(n[a]), std::ceil(reach / spacing[a]) + 1));
    m_BoxStart[a] = low[a] > widen ? low[a] - widen : 0;
    m_BoxSize[a] = std::min(n[a], high[a] + widen) - m_BoxStart[a];
  }
  const std::size_t * b = m_BoxSize;
  const std::size_t boxVoxels = b[0] * b[1] * b[2];
  m_Tumour.assign(boxVoxels, 0);
  for (std::size_t z = 0, k = 0; z < b[2]; ++z)
  {
    for (std::size_t y = 0; y < b[1]; ++y)
    {
      for (std::size_t x = 0; x < b[0]; ++x, ++k)
      {
        const std::size_t gx = x + m_BoxStart[0];
        const std::size_t gy = y + m_BoxStart[1];
        const std::size_t gz = z + m_BoxStart[2];
        m_Tumour[k] = isTumour(gx, gy, gz, gx + n[0] * (gy + n[1] * gz)) ? 1 : 0;
      }
    }
  }

  // Separable exact transform: along x from the tumour, then along y and z over the previous pass's values.
  m_SquaredDistances.assign(boxVoxels, 0.0f);
  const std::size_t stride[3] = { 1, b[0], b[0] * b[1] };
  itk::MultiThreaderBase * threader = this->GetMultiThreader();
  threader->SetNumberOfWorkUnits(this->GetNumberOfWorkUnits());
  for (unsigned int axis = 0; axis < 3 && boxVoxels > 0; ++axis)
  {
    const unsigned int a1 = axis == 0 ? 1 : 0;
    const unsigned int a2 = axis == 2 ? 1 : 2;
    const std::size_t lines = b[a1] * b[a2];
    const std::size_t length = b[axis];
    threader->ParallelizeArray(
      0,
      lines,
      [&, axis, a1, a2, length](itk::SizeValueType line) {
        thread_local std::vector<double> f;
        thread_local std::vector<double> d;
        thread_local std::vector<std::size_t> v;
        thread_local std::vector<double> z;
        f.resize(length);
        d.resize(length);
        const std::size_t start = (line % b[a1]) * stride[a1] + (line / b[a1]) * stride[a2];
        for (std::size_t q = 0; q < length; ++q)
        {
          const std::size_t k = start + q * stride[axis];
          f[q] = axis == 0 ? (m_Tumour[k] != 0 ? 0.0 : farAway) : static_cast<double>(m_SquaredDistances[k]);
        }
        distanceTransform1D(f.data(), d.data(), length, spacing[axis], v, z);
        for (std::size_t q = 0; q < length; ++q)
        {
          m_SquaredDistances[start + q * stride[axis]] = static_cast<float>(d[q]);
        }
      },
      nullptr);
  }
  m_MapOrgan = organ;
  m_MapOrganTime = organ->GetMTime();
  m_MapTumour = tumour;
  m_MapTumourTime = tumour->GetMTime();
  m_MapReach = reach;
  ++m_NumberOfDistanceMapComputations;
}

void
SafetyMarginRPG::GenerateData()
{
  const Image * organ = this->CheckedOrgan();
  if (!(m_MarginWidth >= 0.0) || !std::isfinite(m_MarginWidth))
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "Negative safety margin", ITK_LOCATION);
  }
  const Image * tumour = this->CheckedTumour(organ);
  ArVesselTree portal = this->CheckedPortalTree();
  ArVesselTree hepatic = this->CheckedHepaticTree();

  this->UpdateDistanceMap(organ, tumour, std::max(m_MarginWidth, m_DistanceMapReach));
  if (m_TumourVoxels == 0)
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "Tumour mask holds no tumour voxel", ITK_LOCATION);
  }
  if (m_TumourVoxelsInOrgan == 0)
  {
    throw itk::InvalidArgumentError(__FILE__, __LINE__, "Tumour lies entirely outside the organ", ITK_LOCATION);
  }

  // Territories before the statuses change: they depend on the trees' points only.
  const std::vector<std::uint16_t> & portalIds = this->PortalTerritories();
  const std::vector<std::uint16_t> & hepaticIds = this->HepaticTerritories();

  const auto size = organ->GetSize();
  const std::size_t n[3] = { size[0], size[1], size[2] };
  const auto * organVoxels = static_cast<const unsigned char *>(organ->GetData());
  const float limit = static_cast<float>(m_MarginWidth * m_MarginWidth * (1.0 + 1e-6));
  // Voxel (x, y, z) of the grid is in the zone: organ or tumour, and near enough to the tumour.
  auto inZone = [&](std::size_t x, std::size_t y, std::size_t z) {
    if (x < m_BoxStart[0] || y < m_BoxStart[1] || z < m_BoxStart[2])
    {
      return false;
    }
    x -= m_BoxStart[0];
    y -= m_BoxStart[1];
    z -= m_BoxStart[2];
    if (x >= m_BoxSize[0] || y >= m_BoxSize[1] || z >= m_BoxSize[2])
    {
      return false;
    }
    const std::size_t k = x + m_BoxSize[0] * (y + m_BoxSize[1] * z);
    const std::size_t i = (x + m_BoxStart[0]) + n[0] * ((y + m_BoxStart[1]) + n[1] * (z + m_BoxStart[2]));
    return (organVoxels[i] != 0 || m_Tumour[k] != 0) && m_SquaredDistances[k] <= limit;
  };

  // World to index, rounded half up as ITK rounds physical points to indices.
  const Vector3D spacing = organ->GetSpacing();
  const Point3D origin = organ->GetOrigin();
  const auto inverse = organ->GetDirection().GetInverse();
  auto pointInZone = [&](const VesselPoint & point) {
    const double world[3] = { point.x - origin[0], point.y - origin[1], point.z - origin[2] };
    std::size_t index[3];
    for (unsigned int r = 0; r < 3; ++r)
    {
      const double continuous =
        (inverse(r, 0) * world[0] + inverse(r, 1) * world[1] + inverse(r, 2) * world[2]) / spacing[r];
      const double rounded = std::floor(continuous + 0.5);
      if (!(rounded >= 0.0) || rounded >= static_cast<double>(n[r]))
      {
        return false;
      }
      index[r] = static_cast<std::size_t>(rounded);
    }
    return inZone(index[0], index[1], index[2]);
  };

  // A vessel loses its supply (or drainage) when it or an ancestor is cut: pre-order meets parents first. Answers
  // whether a status changed.
  auto markTree = [&](const ArVesselTree & tree, std::int32_t lostStatus) {
    bool changed = false;
    const LinkedVesselTree * linked = asLinkedVesselTree(tree);
    using Walk = LinkedTreeWalk<ar<Vessel>>;
    VesselNode * root = linked->getRootNode();
    std::unordered_map<const VesselNode *, bool> lost;
    for (VesselNode * node = Walk::preorder(nullptr, root); node != nullptr; node = Walk::preorder(node, root))
    {
      bool isLost = node != root && lost[node->getParent()];
      ar<Vessel> vessel = node->getData();
      if (!vessel.isNull())
      {
        if (!isLost)
        {
          const Vessel::PointList & points = vessel->getPoints();
          isLost = std::any_of(points.begin(), points.end(), pointInZone);
        }
        const std::int32_t status = isLost ? lostStatus : NotToBeResected;
        changed = changed || vessel->getProperties().getResectionStatus() != status;
        vessel->getProperties().setResectionStatus(status);
      }
      lost[node] = isLost;
    }
    return changed;
  };
  // Trees whose statuses stay as they were are not marked modified, so that an update without changes does not
  // make the next one run again.
  if (markTree(portal, ToBeResected))
  {
    this->StatusesWritten(this->GetVesselTree());
  }
  const std::vector<std::uint8_t> devascularised =
    TableById(portal, [](const Vessel & v) { return v.getProperties().getResectionStatus() == ToBeResected; });
  std::vector<std::uint8_t> congested;
  if (!hepatic.isNull())
  {
    if (markTree(hepatic, AreaAtRisk))
    {
      this->StatusesWritten(this->GetHepaticVesselTree());
    }
    congested =
      TableById(hepatic, [](const Vessel & v) { return v.getProperties().getResectionStatus() == AreaAtRisk; });
  }

  // Territories first (they hold one id per organ voxel, in the order of the organ runs: k counts organ voxels),
  // then the zone over the box, which can only turn voxels into 3.
  unsigned char * labels = this->StartResectionImage(organ);
  std::size_t k = 0;
  for (const OrganRun & run : this->OrganRuns())
  {
    for (std::size_t i = run.start; i < run.start + run.length; ++i, ++k)
    {
      if (devascularised[portalIds[k]] != 0)
      {
        labels[i] = ResectedLabel;
      }
      else if (!congested.empty() && congested[hepaticIds[k]] != 0)
      {
        labels[i] = AtRiskLabel;
      }
      else
      {
        labels[i] = RemnantLabel;
      }
    }
  }
  for (std::size_t z = 0, b = 0; z < m_BoxSize[2]; ++z)
  {
    for (std::size_t y = 0; y < m_BoxSize[1]; ++y)
    {
      const std::size_t row = m_BoxStart[0] + n[0] * ((y + m_BoxStart[1]) + n[1] * (z + m_BoxStart[2]));
      for (std::size_t x = 0; x < m_BoxSize[0]; ++x, ++b)
      {
        if (organVoxels[row + x] != 0 && m_SquaredDistances[b] <= limit)
        {
          labels[row + x] = ResectedLabel;
        }
      }
    }
  }
  this->FinishResectionImage(organ, m_TumourVoxelsInOrgan);
}

void
SafetyMarginRPG::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "MarginWidth: " << m_MarginWidth << " mm" << std::endl;
  os << indent << "DistanceMapReach: " << m_DistanceMapReach << " mm" << std::endl;
  os << indent << "NumberOfDistanceMapComputations: " << m_NumberOfDistanceMapComputations << std::endl;
}
} // namespace lumo
