#ifndef NeighbourhoodConnectionEvaluator_h
#define NeighbourhoodConnectionEvaluator_h

/** Decides whether the foreground voxels of a 26-neighbourhood (centre excluded) form one connected piece. */
class NeighbourhoodConnectionEvaluator
{
public:
  virtual ~NeighbourhoodConnectionEvaluator() = default;

  virtual bool
  isConnected(const unsigned char * neighbourhood) const = 0;
};

#endif
