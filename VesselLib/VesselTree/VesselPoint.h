#ifndef VesselPoint_h
#define VesselPoint_h

/** One sample of a vessel centre line: position in world coordinates (mm) and the vessel diameter (mm) there. */
struct VesselPoint
{
  float x{ 0.0f };
  float y{ 0.0f };
  float z{ 0.0f };
  float diameter{ 0.0f };
};

inline bool
operator==(const VesselPoint & a, const VesselPoint & b)
{
  return a.x == b.x && a.y == b.y && a.z == b.z && a.diameter == b.diameter;
}

inline bool
operator!=(const VesselPoint & a, const VesselPoint & b)
{
  return !(a == b);
}

#endif
