#include "SuppliedTissueClassifier.h"

#include "KDTreeNextVesselEstimator.h"
#include "VesselTreeSamplers.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <stdexcept>

std::uint8_t SuppliedTissueClassifier::s_backgroundValue = 0;

namespace
{
/** Edge of the voxel blocks that share one candidate search. Four keeps the candidate lists short while one k-d
 *  tree query serves up to 64 voxels. */
constexpr std::uint32_t blockEdge = 4;
} // namespace

SuppliedTissueClassifier::SuppliedTissueClassifier(ThreeDPicAccessor<unsigned char> * organVolume, ArVesselTree tree)
  : m_organVolume(organVolume)
  , m_tree(tree)
{
  if (organVolume == nullptr)
  {
    throw std::runtime_error("Error in SuppliedTissueClassifier::SuppliedTissueClassifier(): volume == NULL");
  }
  s_backgroundValue = organVolume->getOutsideValue();
  m_sampler = new EntireVesselTreeSampler();
  m_estimator = new KDTreeNextVesselEstimator();
  m_distanceMeasure = new EuclideanDistanceMeasure();
  m_estimator->setDistanceMeasure(m_distanceMeasure);
  for (int r = 0; r < 4; ++r)
  {
    for (int c = 0; c < 4; ++c)
    {
      m_transformation[r][c] = r == c ? 1.0 : 0.0;
    }
  }
}

SuppliedTissueClassifier::~SuppliedTissueClassifier()
{
  if (m_ownsOrganVolume)
  {
    delete m_organVolume;
  }
  if (m_ownsVesselIdVolume)
  {
    delete m_vesselIdVolume;
  }
  if (m_ownsDistanceVolume && m_computeDistance)
  {
    delete m_distanceVolume;
  }
  delete m_estimator->getVesselElementList();
  delete m_estimator;
  delete m_sampler;
}

void
SuppliedTissueClassifier::setVesselTreeSampler(AbstractVesselTreeSampler * sampler)
{
  if (sampler == nullptr)
  {
    throw std::runtime_error("Error in SuppliedTissueClassifier::setVesselTreeSampler(...): sampler == NULL");
  }
  if (sampler != m_sampler)
  {
    delete m_sampler;
    m_sampler = sampler;
  }
}

void
SuppliedTissueClassifier::setNextVesselEstimator(AbstractNextVesselEstimator * estimator)
{
  if (estimator == nullptr || estimator == m_estimator)
  {
    return;
  }
  delete m_estimator->getVesselElementList();
  delete m_estimator;
  m_estimator = estimator;
  if (m_estimator->getDistanceMeasure() == nullptr)
  {
    m_distanceMeasure = new EuclideanDistanceMeasure();
    m_estimator->setDistanceMeasure(m_distanceMeasure);
  }
}

void
SuppliedTissueClassifier::setComputeDistance(bool compute)
{
  m_computeDistance = compute;
}

void
SuppliedTissueClassifier::setOwnsOrganVolume(bool owns)
{
  m_ownsOrganVolume = owns;
}

void
SuppliedTissueClassifier::setTransformation(const double matrix[4][4])
{
  for (int r = 0; r < 4; ++r)
  {
    for (int c = 0; c < 4; ++c)
    {
      m_transformation[r][c] = matrix[r][c];
    }
  }
}

void
SuppliedTissueClassifier::setWorkRunner(WorkRunner runner, unsigned int units)
{
  m_runner = std::move(runner);
  m_workUnits = std::max(1u, units);
}

void
SuppliedTissueClassifier::setProgressCallback(ProgressCallback callback)
{
  m_progress = std::move(callback);
}

ThreeDPicAccessor<unsigned short> *
SuppliedTissueClassifier::getVesselIDVolume() const
{
  return m_vesselIdVolume;
}

ThreeDPicAccessor<float> *
SuppliedTissueClassifier::getDistanceVolume() const
{
  return m_distanceVolume;
}

std::uint8_t
SuppliedTissueClassifier::getBackgroundValue()
{
  return s_backgroundValue;
}

ThreeDPicAccessor<unsigned short> *
SuppliedTissueClassifier::createVesselIDVolume(const std::uint32_t & sizeX,
                                               const std::uint32_t & sizeY,
                                               const std::uint32_t & sizeZ)
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(lumoIpPicUInt, 16, 3, sizes);
  if (pic == nullptr)
  {
    throw std::runtime_error("Error in SuppliedTissueClassifier::createVesselIDVolume(): failed to allocate memory!");
  }
  return new ThreeDPicAccessor<unsigned short>(pic, true, s_backgroundValue);
}

ThreeDPicAccessor<float> *
SuppliedTissueClassifier::createDistanceVolume(const std::uint32_t & sizeX,
                                               const std::uint32_t & sizeY,
                                               const std::uint32_t & sizeZ)
{
  const std::uint32_t sizes[3] = { sizeX, sizeY, sizeZ };
  lumoIpPicDescriptor * pic = lumoIpPicNewVolume(lumoIpPicFloat, 32, 3, sizes);
  if (pic == nullptr)
  {
    throw std::runtime_error("Error in SuppliedTissueClassifier::createDistanceVolume(): failed to allocate memory!");
  }
  return new ThreeDPicAccessor<float>(pic, true, s_backgroundValue);
}

void
SuppliedTissueClassifier::cumputeSuppliedTissue()
{
  if (m_estimator->getVesselElementList() == nullptr)
  {
    VesselElementList * list = m_sampler->sampleVesselTree(m_tree);
    if (list == nullptr)
    {
      throw std::runtime_error("Error in SuppliedTissueClassifier::cumputeSuppliedTissue(...): elementList == NULL");
    }
    const double(*m)[4] = m_transformation;
    for (VesselElement & e : *list)
    {
      const double x = e.x;
      const double y = e.y;
      const double z = e.z;
      e.x = static_cast<float>(m[0][0] * x + m[0][1] * y + m[0][2] * z + m[0][3]);
      e.y = static_cast<float>(m[1][0] * x + m[1][1] * y + m[1][2] * z + m[1][3]);
      e.z = static_cast<float>(m[2][0] * x + m[2][1] * y + m[2][2] * z + m[2][3]);
    }
    try
    {
      m_estimator->setVesselElementList(list);
    }
    catch (...)
    {
      delete list; // the estimator did not take it
      throw;
    }
  }

  lumoIpPicDescriptor * organ = m_organVolume->getPic();
  if (m_vesselIdVolume != nullptr && m_ownsVesselIdVolume)
  {
    delete m_vesselIdVolume;
  }
  m_vesselIdVolume = nullptr;
  m_vesselIdVolume = createVesselIDVolume(organ->n[0], organ->n[1], organ->n[2]);
  if (m_distanceVolume != nullptr && m_ownsDistanceVolume)
  {
    delete m_distanceVolume;
  }
  m_distanceVolume = nullptr;
  if (m_computeDistance)
  {
    m_distanceVolume = createDistanceVolume(organ->n[0], organ->n[1], organ->n[2]);
  }

  if (m_estimator->supportsConcurrentQueries())
  {
    classifyInBlocks();
  }
  else
  {
    classifyVoxelByVoxel();
  }
}

void
SuppliedTissueClassifier::classifyVoxelByVoxel()
{
  const std::uint32_t sizeX = m_organVolume->getSizeX();
  const std::uint32_t sizeY = m_organVolume->getSizeY();
  const std::uint32_t sizeZ = m_organVolume->getSizeZ();
  const float voxelSizeX = m_organVolume->getVoxelSizeX();
  const float voxelSizeY = m_organVolume->getVoxelSizeY();
  const float voxelSizeZ = m_organVolume->getVoxelSizeZ();
  const float originX = m_organVolume->getOriginX();
  const float originY = m_organVolume->getOriginY();
  const float originZ = m_organVolume->getOriginZ();
  for (std::uint32_t z = 0; z < sizeZ; ++z)
  {
    for (std::uint32_t y = 0; y < sizeY; ++y)
    {
      for (std::uint32_t x = 0; x < sizeX; ++x)
      {
        const unsigned short vx = static_cast<unsigned short>(x);
        const unsigned short vy = static_cast<unsigned short>(y);
        const unsigned short vz = static_cast<unsigned short>(z);
        const unsigned char value = m_organVolume->getVoxel(vx, vy, vz);
        if (value == s_backgroundValue)
        {
          continue;
        }
        TissueElement element(static_cast<float>(x) * voxelSizeX + originX,
                              static_cast<float>(y) * voxelSizeY + originY,
                              static_cast<float>(z) * voxelSizeZ + originZ,
                              value);
        m_estimator->estimate(element);
        m_vesselIdVolume->setVoxel(vx, vy, vz, element.getVesselId());
        if (m_computeDistance)
        {
          m_distanceVolume->setVoxel(vx, vy, vz, element.getDistance());
        }
      }
    }
  }
  if (m_progress)
  {
    m_progress(1.0);
  }
}

void
SuppliedTissueClassifier::classifyInBlocks()
{
  const std::uint32_t sizeX = m_organVolume->getSizeX();
  const std::uint32_t sizeY = m_organVolume->getSizeY();
  const std::uint32_t sizeZ = m_organVolume->getSizeZ();
  const float voxelSize[3] = { m_organVolume->getVoxelSizeX(),
                               m_organVolume->getVoxelSizeY(),
                               m_organVolume->getVoxelSizeZ() };
  const float origin[3] = { m_organVolume->getOriginX(), m_organVolume->getOriginY(), m_organVolume->getOriginZ() };
  const auto * organ = static_cast<const unsigned char *>(m_organVolume->getPic()->data);
  auto * ids = static_cast<std::uint16_t *>(m_vesselIdVolume->getPic()->data);
  float * distances = m_computeDistance ? static_cast<float *>(m_distanceVolume->getPic()->data) : nullptr;
  const std::uint8_t background = s_backgroundValue;

  // Work items are rows of blocks along x, handed out one by one so that the work units stay busy whatever
  // the organ's shape; every voxel's result depends on its position only.
  const std::uint32_t blocksY = (sizeY + blockEdge - 1) / blockEdge;
  const std::uint32_t blocksZ = (sizeZ + blockEdge - 1) / blockEdge;
  const std::size_t rows = static_cast<std::size_t>(blocksY) * blocksZ;
  std::atomic<std::size_t> nextRow{ 0 };
  std::atomic<std::size_t> rowsDone{ 0 };
  std::exception_ptr failure;
  std::mutex failureLock;

  auto work = [&](unsigned int unit) {
    try
    {
      constexpr std::size_t blockVoxels = blockEdge * blockEdge * blockEdge;
      float positions[3 * blockVoxels];
      std::size_t offsets[blockVoxels];
      std::uint16_t blockIds[blockVoxels];
      float blockDistances[blockVoxels];
      NextVesselWorkspace workspace;
      std::size_t reported = 0;
      for (std::size_t row = nextRow++; row < rows; row = nextRow++)
      {
        const std::uint32_t y0 = static_cast<std::uint32_t>(row % blocksY) * blockEdge;
        const std::uint32_t z0 = static_cast<std::uint32_t>(row / blocksY) * blockEdge;
        const std::uint32_t y1 = std::min(sizeY, y0 + blockEdge);
        const std::uint32_t z1 = std::min(sizeZ, z0 + blockEdge);
        for (std::uint32_t x0 = 0; x0 < sizeX; x0 += blockEdge)
        {
          const std::uint32_t x1 = std::min(sizeX, x0 + blockEdge);
          std::size_t count = 0;
          for (std::uint32_t z = z0; z < z1; ++z)
          {
            for (std::uint32_t y = y0; y < y1; ++y)
            {
              const std::size_t line = (static_cast<std::size_t>(z) * sizeY + y) * sizeX;
              for (std::uint32_t x = x0; x < x1; ++x)
              {
                if (organ[line + x] == background)
                {
                  continue;
                }
                positions[3 * count] = static_cast<float>(x) * voxelSize[0] + origin[0];
                positions[3 * count + 1] = static_cast<float>(y) * voxelSize[1] + origin[1];
                positions[3 * count + 2] = static_cast<float>(z) * voxelSize[2] + origin[2];
                offsets[count] = line + x;
                ++count;
              }
            }
          }
          if (count == 0)
          {
            continue;
          }
          m_estimator->estimateGroup(positions, count, blockIds, blockDistances, workspace);
          for (std::size_t i = 0; i < count; ++i)
          {
            ids[offsets[i]] = blockIds[i];
            if (distances != nullptr)
            {
              distances[offsets[i]] = blockDistances[i];
            }
          }
        }
        const std::size_t done = ++rowsDone;
        if (unit == 0 && m_progress && (done - reported) * 100 >= rows)
        {
          reported = done;
          m_progress(static_cast<double>(done) / static_cast<double>(rows));
        }
      }
    }
    catch (...)
    {
      std::lock_guard<std::mutex> lock(failureLock);
      if (!failure)
      {
        failure = std::current_exception();
      }
      nextRow = rows; // the others stop at their next row
    }
  };

  if (m_runner && m_workUnits > 1)
  {
    m_runner(m_workUnits, work);
  }
  else
  {
    work(0);
  }
  if (failure)
  {
    std::rethrow_exception(failure);
  }
  if (m_progress)
  {
    m_progress(1.0);
  }
}
