#ifndef Point3D_h
#define Point3D_h

/** A voxel position: three unsigned 16-bit coordinates. */
class Point3D
{
public:
  Point3D(unsigned short x, unsigned short y, unsigned short z);
  virtual ~Point3D();

  virtual void
  set(unsigned short x, unsigned short y, unsigned short z);
  virtual void
  setX(unsigned short x);
  virtual unsigned short
  getX() const;
  virtual void
  setY(unsigned short y);
  virtual unsigned short
  getY() const;
  virtual void
  setZ(unsigned short z);
  virtual unsigned short
  getZ() const;

protected:
  unsigned short m_x;
  unsigned short m_y;
  unsigned short m_z;
};

#endif
