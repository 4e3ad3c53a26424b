#include "BorderVoxelListProcessor.h"

#include "FatalExit.h"
#include "NeighbourhoodOrder.h"
#include "SelleSimplePointEvaluator.h"

BorderVoxelListProcessor::BorderVoxelListProcessor(VolumeAccessor<unsigned char> * binaryVolume,
                                                   VolumeAccessor<float> * distanceVolume)
  : m_binaryVolume(binaryVolume)
  , m_distanceVolume(distanceVolume)
  , m_simplePointEvaluator(nullptr)
{
  if (binaryVolume == nullptr || distanceVolume == nullptr)
  {
    // Windows-1252 text, as the legacy library has always printed it.
    fatalExit("BorderVoxelListProcessor::Konstruktor: ein Parameter wurde mit Wert Null \xFC"
              "bergeben!");
  }
  m_simplePointEvaluator = new SelleSimplePointEvaluator;
}

BorderVoxelListProcessor::~BorderVoxelListProcessor()
{
  delete m_simplePointEvaluator;
}

bool
BorderVoxelListProcessor::isSimple(const DistancePoint3D * point) const
{
  unsigned char neighbourhood[NeighbourhoodOrder::size26];
  m_binaryVolume->read26Neighbourhood(point->getX(), point->getY(), point->getZ(), neighbourhood);
  return m_simplePointEvaluator->isSimplePoint(neighbourhood);
}

DistancePoint3DList *
BorderVoxelListProcessor::processList(const DistancePoint3DList & list)
{
  m_removedVoxels = 0;
  DistancePoint3DList work(list);
  for (;;)
  {
    std::size_t kept = 0;
    for (DistancePoint3D * point : work)
    {
      if (isSimple(point))
      {
        m_binaryVolume->setVoxel(point->getX(), point->getY(), point->getZ(), 0);
        ++m_removedVoxels;
      }
      else
      {
        work[kept++] = point;
      }
    }
    const bool deleted = kept < work.size();
    work.resize(kept);
    if (!deleted)
    {
      break;
    }
  }
  return new DistancePoint3DList(std::move(work));
}
