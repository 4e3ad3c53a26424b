#include "Skeletonizer.h"

#include "FatalExit.h"
#include "OrderedBorderVoxelListProcessor.h"

Skeletonizer::Skeletonizer(lumoIpPicDescriptor * pic, bool ordering, bool noDistanceVolume)
  : m_noDistanceVolume(noDistanceVolume)
{
  if (pic == nullptr)
  {
    // Windows-1252 text; "BordeVoxel" is the class name as the message has always spelt it.
    fatalExit("Skeletonizer::Skeletonizer(lumoIpPicDescriptor*, BordeVoxelListProcessor*) fehlgeschlagen: NULL \xFC"
              "bergeben!");
  }
  if (pic->dim != 3)
  {
    fatalExit("Sorry, only 3D-Volumes are supported!");
  }
  if (pic->type != lumoIpPicUInt || pic->bpe != 8)
  {
    lumoIpPicDescriptor * converted = lumoIpPicConvert(pic, lumoIpPicUInt, 8);
    lumoIpPicFree(pic);
    pic = converted;
    if (pic == nullptr)
    {
      // Nothing to thin: the binary volume's constructor ends the process with its own message.
      m_binaryVolume = new VolumeAccessor<unsigned char>(nullptr, 0, false);
    }
  }

  if (noDistanceVolume)
  {
    m_distanceVolume = new VolumeAccessor<float>(0.0f);
  }
  else
  {
    lumoIpPicDescriptor * distancePic = lumoIpPicNewVolume(lumoIpPicFloat, 32, pic->dim, pic->n);
    m_distanceVolume = new VolumeAccessor<float>(distancePic, 0.0f, false);
  }
  m_binaryVolume = new VolumeAccessor<unsigned char>(pic, 0, false);
  m_borderVoxelListProcessor = new OrderedBorderVoxelListProcessor(m_binaryVolume, m_distanceVolume, ordering);
}

Skeletonizer::~Skeletonizer()
{
  delete m_borderVoxelListProcessor;
  delete m_binaryVolume;
  delete m_distanceVolume;
}

void
Skeletonizer::setBorderVoxelListProcessor(BorderVoxelListProcessor * processor)
{
  if (processor == nullptr || processor == m_borderVoxelListProcessor)
  {
    return;
  }
  delete m_borderVoxelListProcessor;
  m_borderVoxelListProcessor = processor;
}

lumoIpPicDescriptor *
Skeletonizer::getBinaryPic()
{
  return m_binaryVolume->getPic();
}

lumoIpPicDescriptor *
Skeletonizer::getDistancePic()
{
  return m_distanceVolume->getPic();
}

VolumeAccessor<unsigned char> *
Skeletonizer::getBinaryVolume()
{
  return m_binaryVolume;
}

VolumeAccessor<float> *
Skeletonizer::getDistanceVolume()
{
  return m_distanceVolume;
}

BorderVoxelListProcessor *
Skeletonizer::getBorderVoxelListProcessor()
{
  return m_borderVoxelListProcessor;
}

void
Skeletonizer::setVoxelSizeX(float size)
{
  m_binaryVolume->setVoxelSizeX(size);
  m_distanceVolume->setVoxelSizeX(size);
}

void
Skeletonizer::setVoxelSizeY(float size)
{
  m_binaryVolume->setVoxelSizeY(size);
  m_distanceVolume->setVoxelSizeY(size);
}

void
Skeletonizer::setVoxelSizeZ(float size)
{
  m_binaryVolume->setVoxelSizeZ(size);
  m_distanceVolume->setVoxelSizeZ(size);
}
