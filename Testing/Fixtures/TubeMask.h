#ifndef TubeMask_h
#define TubeMask_h

// Masks of round tubes of known geometry for the extraction tests: a tube is the set of voxels whose centre lies
// within the radius of a segment.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

struct TubeSegment
{
  double from[3];
  double to[3];
  double radius;
};

/** Sets every voxel of the tube to `value` in an x-fastest buffer of the given size. */
inline void
drawTube(unsigned char * data, const std::uint32_t size[3], const TubeSegment & tube, unsigned char value = 1)
{
  long low[3];
  long high[3];
  for (int a = 0; a < 3; ++a)
  {
    low[a] = std::max(0L, static_cast<long>(std::floor(std::min(tube.from[a], tube.to[a]) - tube.radius)));
    high[a] = std::min(static_cast<long>(size[a]) - 1,
                       static_cast<long>(std::ceil(std::max(tube.from[a], tube.to[a]) + tube.radius)));
  }
  const double d[3] = { tube.to[0] - tube.from[0], tube.to[1] - tube.from[1], tube.to[2] - tube.from[2] };
  const double length2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  for (long z = low[2]; z <= high[2]; ++z)
    for (long y = low[1]; y <= high[1]; ++y)
      for (long x = low[0]; x <= high[0]; ++x)
      {
        const double p[3] = { x - tube.from[0], y - tube.from[1], z - tube.from[2] };
        double t = length2 > 0 ? (p[0] * d[0] + p[1] * d[1] + p[2] * d[2]) / length2 : 0.0;
        t = std::min(1.0, std::max(0.0, t));
        const double q[3] = { p[0] - t * d[0], p[1] - t * d[1], p[2] - t * d[2] };
        if (q[0] * q[0] + q[1] * q[1] + q[2] * q[2] <= tube.radius * tube.radius)
          data[(static_cast<std::size_t>(z) * size[1] + static_cast<std::size_t>(y)) * size[0] +
               static_cast<std::size_t>(x)] = value;
      }
}

/** A Y: a stem along x from (4, 20, 10) to (30, 20, 10) that splits into two branches to (52, 8, 10) and
 *  (52, 32, 10), all of radius 3, in a 60 x 40 x 21 volume. */
inline void
drawY(unsigned char * data, const std::uint32_t size[3])
{
  drawTube(data, size, TubeSegment{ { 4, 20, 10 }, { 30, 20, 10 }, 3.0 });
  drawTube(data, size, TubeSegment{ { 30, 20, 10 }, { 52, 8, 10 }, 3.0 });
  drawTube(data, size, TubeSegment{ { 30, 20, 10 }, { 52, 32, 10 }, 3.0 });
}

#endif
