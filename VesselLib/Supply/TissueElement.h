#ifndef TissueElement_h
#define TissueElement_h

#include <cstdint>

/** One organ voxel under classification: its position, its organ label and, once estimated, the nearest vessel's id
 *  and the distance to it. */
class TissueElement
{
public:
  TissueElement() = default;
  TissueElement(const float & x, const float & y, const float & z, const std::uint8_t & organLabel)
    : m_position{ x, y, z }
    , m_organLabel(organLabel)
  {}
  virtual ~TissueElement() = default;

  /** The three position floats x, y, z. */
  virtual float *
  getPosition()
  {
    return m_position;
  }
  virtual void
  setPosition(const float & x, const float & y, const float & z)
  {
    m_position[0] = x;
    m_position[1] = y;
    m_position[2] = z;
  }
  virtual void
  setPosition(const float * position)
  {
    setPosition(position[0], position[1], position[2]);
  }
  virtual float
  getDistance() const
  {
    return m_distance;
  }
  virtual void
  setDistance(const float & distance)
  {
    m_distance = distance;
  }
  virtual std::uint16_t
  getVesselId() const
  {
    return m_vesselId;
  }
  virtual void
  setVesselId(const std::uint16_t & id)
  {
    m_vesselId = id;
  }
  virtual std::uint8_t
  getOrganLabel() const
  {
    return m_organLabel;
  }
  virtual void
  setOrganLabel(const std::uint8_t & label)
  {
    m_organLabel = label;
  }

private:
  float m_position[3]{ 0.0f, 0.0f, 0.0f };
  std::uint8_t m_organLabel{ 0 };
  float m_distance{ 0.0f };
  std::uint16_t m_vesselId{ 0 };
};

#endif
