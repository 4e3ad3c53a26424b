#ifndef SimplePointEvaluator_h
#define SimplePointEvaluator_h

/** Decides, on a 26-neighbourhood, whether the centre voxel may be deleted by thinning. */
class SimplePointEvaluator
{
public:
  virtual ~SimplePointEvaluator() = default;

  virtual bool
  isSimplePoint(const unsigned char * neighbourhood) const = 0;
};

#endif
