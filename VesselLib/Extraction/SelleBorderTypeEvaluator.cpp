#include "SelleBorderTypeEvaluator.h"

bool
SelleBorderTypeEvaluator::isBorder(int direction, const unsigned char * neighbourhood)
{
  if (neighbourhood[faceIndex[direction]] != 0)
  {
    return false;
  }
  int foreground = 0;
  for (int i = 0; i < 9; ++i)
  {
    foreground += neighbourhood[sidePlane[direction][i]] != 0 ? 1 : 0;
  }
  return foreground < 2;
}

bool
SelleBorderTypeEvaluator::isBorderZPlus(const unsigned char * neighbourhood) const
{
  return isBorder(0, neighbourhood);
}

bool
SelleBorderTypeEvaluator::isBorderZMinus(const unsigned char * neighbourhood) const
{
  return isBorder(1, neighbourhood);
}

bool
SelleBorderTypeEvaluator::isBorderXPlus(const unsigned char * neighbourhood) const
{
  return isBorder(2, neighbourhood);
}

bool
SelleBorderTypeEvaluator::isBorderXMinus(const unsigned char * neighbourhood) const
{
  return isBorder(3, neighbourhood);
}

bool
SelleBorderTypeEvaluator::isBorderYPlus(const unsigned char * neighbourhood) const
{
  return isBorder(4, neighbourhood);
}

bool
SelleBorderTypeEvaluator::isBorderYMinus(const unsigned char * neighbourhood) const
{
  return isBorder(5, neighbourhood);
}
