#include "CleaningSelleSkeletonizer.h"

#include "NeighbourhoodOrder.h"
#include "RecursiveNeighbourhoodConnectionEvaluator.h"
#include "SimpleEndpointEvaluator.h"

#include <iostream>

namespace
{
constexpr int blockSize = 5;
constexpr int blockVolume = blockSize * blockSize * blockSize;

inline int
blockIndex(int x, int y, int z)
{
  return (z * blockSize + y) * blockSize + x;
}

inline bool
isInner(int x, int y, int z)
{
  return x >= 1 && x <= 3 && y >= 1 && y <= 3 && z >= 1 && z <= 3;
}
} // namespace

CleaningSelleSkeletonizer::CleaningSelleSkeletonizer(lumoIpPicDescriptor * pic,
                                                     bool ordering,
                                                     std::uint32_t cleanedIterations,
                                                     bool noDistanceVolume)
  : SelleSkeletonizer(pic, ordering, noDistanceVolume)
  , m_cleanedIterations(cleanedIterations)
{}

void
CleaningSelleSkeletonizer::afterLayer(DistancePoint3DList & resultList)
{
  if (getIterationCounter() <= m_cleanedIterations)
  {
    PostClean(resultList);
  }
}

void
CleaningSelleSkeletonizer::PostClean(DistancePoint3DList & list)
{
  const SimpleEndpointEvaluator endpointEvaluator;
  const RecursiveNeighbourhoodConnectionEvaluator connectionEvaluator;
  VolumeAccessor<unsigned char> & volume = *m_binaryVolume;

  for (int pass = 0; pass < 2; ++pass)
  {
    std::size_t kept = 0;
    for (DistancePoint3D * point : list)
    {
      const int px = point->getX();
      const int py = point->getY();
      const int pz = point->getZ();

      bool block[blockVolume];
      for (int z = 0; z < blockSize; ++z)
      {
        for (int y = 0; y < blockSize; ++y)
        {
          for (int x = 0; x < blockSize; ++x)
          {
            block[blockIndex(x, y, z)] = volume.getVoxel(static_cast<unsigned short>(px + x - 2),
                                                         static_cast<unsigned short>(py + y - 2),
                                                         static_cast<unsigned short>(pz + z - 2)) != 0;
          }
        }
      }
      block[blockIndex(2, 2, 2)] = false;

      int start = -1;
      for (int x = 1; x <= 3 && start < 0; ++x)
      {
        for (int y = 1; y <= 3 && start < 0; ++y)
        {
          for (int z = 1; z <= 3 && start < 0; ++z)
          {
            if (block[blockIndex(x, y, z)])
            {
              start = blockIndex(x, y, z);
            }
          }
        }
      }
      if (start < 0)
      {
        std::cout << "PostClean: no Startpoints found!" << std::endl;
        list[kept++] = point;
        continue;
      }

      unsigned char neighbourhood[NeighbourhoodOrder::size26];
      for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
      {
        const int * offset = NeighbourhoodOrder::offsets26[i];
        neighbourhood[i] = block[blockIndex(2 + offset[0], 2 + offset[1], 2 + offset[2])] ? 1 : 0;
      }
      if (endpointEvaluator.isEndpoint(neighbourhood))
      {
        list[kept++] = point;
        continue;
      }

      // Neighbours connected among themselves are connected within the block as well: no fill needed.
      bool allReached = connectionEvaluator.isConnected(neighbourhood);
      if (!allReached)
      {
        bool reached[blockVolume] = {};
        int stack[blockVolume];
        int top = 0;
        stack[top++] = start;
        reached[start] = true;
        while (top > 0)
        {
          const int current = stack[--top];
          const int cx = current % blockSize;
          const int cy = (current / blockSize) % blockSize;
          const int cz = current / (blockSize * blockSize);
          for (int dz = -1; dz <= 1; ++dz)
          {
            for (int dy = -1; dy <= 1; ++dy)
            {
              for (int dx = -1; dx <= 1; ++dx)
              {
                const int nx = cx + dx;
                const int ny = cy + dy;
                const int nz = cz + dz;
                if (nx < 0 || ny < 0 || nz < 0 || nx >= blockSize || ny >= blockSize || nz >= blockSize)
                {
                  continue;
                }
                const int next = blockIndex(nx, ny, nz);
                if (block[next] && !reached[next])
                {
                  reached[next] = true;
                  stack[top++] = next;
                }
              }
            }
          }
        }
        allReached = true;
        for (int z = 1; z <= 3 && allReached; ++z)
        {
          for (int y = 1; y <= 3 && allReached; ++y)
          {
            for (int x = 1; x <= 3 && allReached; ++x)
            {
              const int i = blockIndex(x, y, z);
              if (isInner(x, y, z) && block[i] && !reached[i])
              {
                allReached = false;
              }
            }
          }
        }
      }

      if (allReached)
      {
        volume.setVoxel(point->getX(), point->getY(), point->getZ(), 0);
      }
      else
      {
        list[kept++] = point;
      }
    }
    list.resize(kept);
  }
}
