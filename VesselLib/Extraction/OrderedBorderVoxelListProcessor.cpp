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
OrderedBorderVoxelListProcessor::readPacked(const Entry & entry) const
{
  if (entry.onFace)
  {
    unsigned char neighbourhood[NeighbourhoodOrder::size26];
    m_binaryVolume->read26Neighbourhood(entry.x, entry.y, entry.z, neighbourhood);
    return PackedNeighbourhood::pack(neighbourhood);
  }
  const unsigned char * centre = m_binaryVolume->getData() + entry.index;
  std::uint32_t packed = 0;
  for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
  {
    packed |= static_cast<std::uint32_t>(centre[m_offsets[i]] != 0) << i;
  }
  return packed;
}

void
OrderedBorderVoxelListProcessor::prefetchNeighbourhood(const Entry & entry) const
{
  if (entry.onFace)
  {
    return;
  }
  const unsigned char * centre = m_binaryVolume->getData() + entry.index;
  for (std::ptrdiff_t start : m_rowStarts)
  {
    __builtin_prefetch(centre + start);
  }
}

bool
OrderedBorderVoxelListProcessor::isSimpleNow(const Entry & entry, bool packed) const
{
  if (packed)
  {
    return PackedNeighbourhood::isDeletable(readPacked(entry));
  }
  return isSimple(entry.point);
}

bool
OrderedBorderVoxelListProcessor::classify(const Entry & entry, bool packed, int & bucket) const
{
  unsigned directions = 0;
  int n = 1;
  if (packed)
  {
    const std::uint32_t neighbourhood = readPacked(entry);
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
    m_binaryVolume->read26Neighbourhood(entry.x, entry.y, entry.z, neighbourhood);
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
  const std::uint32_t sizeX = m_binaryVolume->getSizeX();
  const std::uint32_t sizeY = m_binaryVolume->getSizeY();
  const std::uint32_t sizeZ = m_binaryVolume->getSizeZ();
  if (packed)
  {
    const std::ptrdiff_t planeSize = static_cast<std::ptrdiff_t>(sizeX) * sizeY;
    for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
    {
      const int * offset = NeighbourhoodOrder::offsets26[i];
      m_offsets[i] = offset[0] + offset[1] * static_cast<std::ptrdiff_t>(sizeX) + offset[2] * planeSize;
    }
    for (int row = 0; row < 9; ++row)
    {
      m_rowStarts[row] = -1 + (row % 3 - 1) * static_cast<std::ptrdiff_t>(sizeX) + (row / 3 - 1) * planeSize;
    }
  }

  // Prefetching a few voxels ahead hides the memory latency of the scattered points and neighbourhoods.
  constexpr std::size_t ahead = 8;
  std::vector<Entry> work;
  work.reserve(list.size());
  for (std::size_t i = 0; i < list.size(); ++i)
  {
    if (i + ahead < list.size())
    {
      __builtin_prefetch(list[i + ahead]);
    }
    DistancePoint3D * point = list[i];
    const unsigned short x = point->getX();
    const unsigned short y = point->getY();
    const unsigned short z = point->getZ();
    const bool onFace = !m_binaryVolume->isInside(x, y, z) || x == 0 || y == 0 || z == 0 || x + 1u >= sizeX ||
                        y + 1u >= sizeY || z + 1u >= sizeZ;
    work.push_back(Entry{ point, onFace ? 0 : m_binaryVolume->linearIndex(x, y, z), x, y, z, onFace });
  }

  m_removedVoxels = 0;
  std::vector<Entry> side;
  for (;;)
  {
    int lowest = bucketCount;
    int highest = -1;
    for (std::size_t i = 0; i < work.size(); ++i)
    {
      if (packed && i + ahead < work.size())
      {
        prefetchNeighbourhood(work[i + ahead]);
      }
      int bucket = 0;
      if (classify(work[i], packed, bucket))
      {
        m_buckets[bucket].push_back(work[i]);
        lowest = bucket < lowest ? bucket : lowest;
        highest = bucket > highest ? bucket : highest;
      }
      else
      {
        side.push_back(work[i]);
      }
    }

    std::int32_t removedInPass = 0;
    for (int b = highest; b >= lowest; --b)
    {
      std::vector<Entry> & bucket = m_buckets[b];
      std::size_t kept = 0;
      for (std::size_t i = 0; i < bucket.size(); ++i)
      {
        if (packed && i + ahead < bucket.size())
        {
          prefetchNeighbourhood(bucket[i + ahead]);
        }
        // Earlier deletions of this pass may have changed the neighbourhood since the voxel was bucketed.
        const Entry & entry = bucket[i];
        if (isSimpleNow(entry, packed))
        {
          m_binaryVolume->setVoxel(entry.x, entry.y, entry.z, 0);
          ++removedInPass;
        }
        else
        {
          bucket[kept++] = entry;
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

  auto * survivors = new DistancePoint3DList;
  survivors->reserve(work.size());
  for (const Entry & entry : work)
  {
    survivors->push_back(entry.point);
  }
  return survivors;
}
