#ifndef BorderTypeEvaluator_h
#define BorderTypeEvaluator_h

/** Decides, on a 26-neighbourhood (NeighbourhoodOrder), in which directions a voxel lies on the border. */
class BorderTypeEvaluator
{
public:
  virtual ~BorderTypeEvaluator() = default;

  virtual bool
  isBorderZPlus(const unsigned char * neighbourhood) const = 0;
  virtual bool
  isBorderZMinus(const unsigned char * neighbourhood) const = 0;
  virtual bool
  isBorderXPlus(const unsigned char * neighbourhood) const = 0;
  virtual bool
  isBorderXMinus(const unsigned char * neighbourhood) const = 0;
  virtual bool
  isBorderYPlus(const unsigned char * neighbourhood) const = 0;
  virtual bool
  isBorderYMinus(const unsigned char * neighbourhood) const = 0;
};

#endif
