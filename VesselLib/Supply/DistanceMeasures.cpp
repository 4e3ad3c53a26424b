#include "DistanceMeasures.h"

#include <cmath>

float
EuclideanDistanceMeasure::computeDistance(const float * a, const float * b)
{
  const float dx = a[0] - b[0];
  const float dy = a[1] - b[1];
  const float dz = a[2] - b[2];
  const float sum = dx * dx + dy * dy + dz * dz;
  return std::sqrt(sum);
}
