#ifndef EndpointEvaluator_h
#define EndpointEvaluator_h

/** Decides, on a 26-neighbourhood, whether the centre voxel ends a line and must be kept. */
class EndpointEvaluator
{
public:
  virtual ~EndpointEvaluator() = default;

  virtual bool
  isEndpoint(const unsigned char * neighbourhood) const = 0;
};

#endif
