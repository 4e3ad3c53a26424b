#ifndef SimpleEndpointEvaluator_h
#define SimpleEndpointEvaluator_h

#include "EndpointEvaluator.h"

/** An endpoint has at most one foreground voxel among its 26 neighbours (isolated voxels included). */
class SimpleEndpointEvaluator : public EndpointEvaluator
{
public:
  bool
  isEndpoint(const unsigned char * neighbourhood) const override;
};

#endif
