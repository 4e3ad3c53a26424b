#include "SimpleEndpointEvaluator.h"

#include "NeighbourhoodOrder.h"

bool
SimpleEndpointEvaluator::isEndpoint(const unsigned char * neighbourhood) const
{
  int foreground = 0;
  for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
  {
    foreground += neighbourhood[i] != 0 ? 1 : 0;
  }
  return foreground <= 1;
}
