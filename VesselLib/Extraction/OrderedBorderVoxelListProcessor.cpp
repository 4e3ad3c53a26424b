#include "OrderedBorderVoxelListProcessor.h"

#include "NeighbourhoodOrder.h"
#include "PackedNeighbourhood.h"
#include "SelleBorderTypeEvaluator.h"
#include "SelleSimplePointEvaluator.h"

#include <typeinfo>

OrderedBorderVoxelListProcessor::OrderedBorderVoxelListProcessor(VolumeAccessor<unsigned char> * binaryVolume,
                                                                 VolumeAccessor<float> * distanceVolume,
                                                                 bool ordering)
  : BorderVoxelListProcessor(binaryVolume, distanceVolume)
  , m_borderTypeEvaluator(new SelleBorderTypeEvaluator)
  , m_buckets(bucketCount)
  , m_ordering(ordering)
  , m_offsets{}
  , m_rowStarts{}
{}

OrderedBorderVoxelListProcessor::~OrderedBorderVoxelListProcessor()
{
  delete m_borderTypeEvaluator;
}

void
OrderedBorderVoxelListProcessor::setBorderTypeEvaluator(BorderTypeEvaluator * evaluator)
{
  if (evaluator == nullptr || evaluator == m_borderTypeEvaluator)
  {
    return;
  }
  delete m_borderTypeEvaluator;
  m_borderTypeEvaluator = evaluator;
}

bool
OrderedBorderVoxelListProcessor::canUsePackedTests() const
{
  return typeid(*m_borderTypeEvaluator) == typeid(SelleBorderTypeEvaluator) &&
         typeid(*m_simplePointEvaluator) == typeid(SelleSimplePointEvaluator) &&
         m_simplePointEvaluator->hasDefaultEvaluators() && m_binaryVolume->getData() != nullptr;
}

std::uint32_t
OrderedBorderVoxelListProcessor::readPacked(const DistancePoint3D * point) const
{
  const unsigned short x = point->getX();
  const unsigned short y = point->getY();
  const unsigned short z = point->getZ();
  // Voxels on a face of the volume need the accessor's outside value; all others are read directly.
  if (x == 0 || y == 0 || z == 0 || x + 1u >= m_binaryVolume->getSizeX() || y + 1u >= m_binaryVolume->getSizeY() ||
      z + 1u >= m_binaryVolume->getSizeZ())
  {
    unsigned char neighbourhood[NeighbourhoodOrder::size26];
    m_binaryVolume->read26Neighbourhood(x, y, z, neighbourhood);
    return PackedNeighbourhood::pack(neighbourhood);
  }
  const unsigned char * centre = m_binaryVolume->getData() + m_binaryVolume->linearIndex(x, y, z);
  std::uint32_t packed = 0;
  for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
  {
    packed |= static_cast<std::uint32_t>(centre[m_offsets[i]] != 0) << i;
  }
  return packed;
}

void
OrderedBorderVoxelListProcessor::prefetchNeighbourhood(const DistancePoint3D * point) const
{
  const std::size_t index = m_binaryVolume->linearIndex(point->getX(), point->getY(), point->getZ());
  const std::size_t elements =
    static_cast<std::size_t>(m_binaryVolume->getSizeX()) * m_binaryVolume->getSizeY() * m_binaryVolume->getSizeZ();
  const unsigned char * data = m_binaryVolume->getData();
  for (std::ptrdiff_t start : m_rowStarts)
  {
    const std::size_t row = index + static_cast<std::size_t>(start); // wraps harmlessly at the volume's faces
    if (row < elements)
    {
      __builtin_prefetch(data + row);
    }
  }
}

bool
OrderedBorderVoxelListProcessor::isSimpleNow(const DistancePoint3D * point, bool packed) const
{
  if (packed)
  {
    return PackedNeighbourhood::isDeletable(readPacked(point));
  }
  return isSimple(point);
}

bool
OrderedBorderVoxelListProcessor::classify(const DistancePoint3D * point, bool packed, int & bucket) const
{
  unsigned directions = 0;
  int n = 1;
  if (packed)
  {
    const std::uint32_t neighbourhood = readPacked(point);
    if (!PackedNeighbourhood::isDeletable(neighbourhood))
    {
      return false;
    }
    directions = PackedNeighbourhood::borderDirections(neighbourhood);
    n += PackedNeighbourhood::foregroundCount(neighbourhood);
  }
  else
  {
    unsigned char neighbourhood[NeighbourhoodOrder::size26];
    m_binaryVolume->read26Neighbourhood(point->getX(), point->getY(), point->getZ(), neighbourhood);
    if (!m_simplePointEvaluator->isSimplePoint(neighbourhood))
    {
      return false;
    }
    directions = (m_borderTypeEvaluator->isBorderYMinus(neighbourhood) ? 1u : 0u) |
                 (m_borderTypeEvaluator->isBorderYPlus(neighbourhood) ? 2u : 0u) |
                 (m_borderTypeEvaluator->isBorderXMinus(neighbourhood) ? 4u : 0u) |
                 (m_borderTypeEvaluator->isBorderXPlus(neighbourhood) ? 8u : 0u) |
                 (m_borderTypeEvaluator->isBorderZMinus(neighbourhood) ? 16u : 0u) |
                 (m_borderTypeEvaluator->isBorderZPlus(neighbourhood) ? 32u : 0u);
    for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
    {
      n += neighbourhood[i] != 0 ? 1 : 0;
    }
  }
  bucket = bucketNumber(directions, n, m_ordering);
  // A simple voxel has between 2 and 25 foreground neighbours, so the bucket is always in range.
  return bucket >= 0 && bucket < bucketCount;
}

DistancePoint3DList *
OrderedBorderVoxelListProcessor::processList(const DistancePoint3DList & list)
{
  const bool packed = canUsePackedTests();
  if (packed)
  {
    const std::ptrdiff_t sizeX = m_binaryVolume->getSizeX();
    const std::ptrdiff_t planeSize = sizeX * static_cast<std::ptrdiff_t>(m_binaryVolume->getSizeY());
    for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
    {
      const int * offset = NeighbourhoodOrder::offsets26[i];
      m_offsets[i] = offset[0] + offset[1] * sizeX + offset[2] * planeSize;
    }
    for (int row = 0; row < 9; ++row)
    {
      m_rowStarts[row] = -1 + (row % 3 - 1) * sizeX + (row / 3 - 1) * planeSize;
    }
  }

  m_removedVoxels = 0;
  DistancePoint3DList work(list);
  DistancePoint3DList side;
  for (;;)
  {
    int lowest = bucketCount;
    int highest = -1;
    // Prefetching a few voxels ahead hides the memory latency of the scattered neighbourhoods.
    constexpr std::size_t ahead = 8;
    for (std::size_t i = 0; i < work.size(); ++i)
    {
      DistancePoint3D * point = work[i];
      if (packed && i + ahead < work.size())
      {
        prefetchNeighbourhood(work[i + ahead]);
        if (i + 2 * ahead < work.size())
        {
          __builtin_prefetch(work[i + 2 * ahead]);
        }
      }
      int bucket = 0;
      if (classify(point, packed, bucket))
      {
        m_buckets[bucket].push_back(point);
        lowest = bucket < lowest ? bucket : lowest;
        highest = bucket > highest ? bucket : highest;
      }
      else
      {
        side.push_back(point);
      }
    }

    std::int32_t removedInPass = 0;
    for (int b = highest; b >= lowest; --b)
    {
      DistancePoint3DList & bucket = m_buckets[b];
      std::size_t kept = 0;
      for (std::size_t i = 0; i < bucket.size(); ++i)
      {
        DistancePoint3D * point = bucket[i];
        if (packed && i + ahead < bucket.size())
        {
          prefetchNeighbourhood(bucket[i + ahead]);
        }
        // Earlier deletions of this pass may have changed the neighbourhood since the voxel was bucketed.
        if (isSimpleNow(point, packed))
        {
          m_binaryVolume->setVoxel(point->getX(), point->getY(), point->getZ(), 0);
          ++removedInPass;
        }
        else
        {
          bucket[kept++] = point;
        }
      }
      bucket.resize(kept);
    }
    m_removedVoxels += removedInPass;

    // Survivors in bucket order, then the voxels that were not simple: deletions may have made them simple.
    work.clear();
    for (int b = highest; b >= lowest; --b)
    {
      work.insert(work.end(), m_buckets[b].begin(), m_buckets[b].end());
      m_buckets[b].clear();
    }
    work.insert(work.end(), side.begin(), side.end());
    side.clear();

    if (removedInPass == 0)
    {
      break;
    }
  }
  return new DistancePoint3DList(std::move(work));
}
