#ifndef BinomialCentreLineSmoother_h
#define BinomialCentreLineSmoother_h

#include "CentreLineSmoother.h"

/** Each iteration replaces every inner point by the weighted mean of itself (centre weight w) and its two
 *  neighbours ((1 - w) / 2 each); the default w = 0.5 is the binomial kernel 1/4, 1/2, 1/4, which takes the
 *  voxel staircase out of an extracted centre line within a few iterations and hardly shortens curves. */
class BinomialCentreLineSmoother : public CentreLineSmoother
{
public:
  explicit BinomialCentreLineSmoother(float centreWeight = 0.5f);

  void
  smooth(Vessel::PointList & points, unsigned int iterations) const override;

  /** Clamped to [0, 1]; 1 leaves the line as it is. */
  void
  setCentreWeight(float weight);
  float
  getCentreWeight() const
  {
    return m_centreWeight;
  }

private:
  float m_centreWeight;
};

#endif
