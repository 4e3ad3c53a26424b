#ifndef DistanceMeasures_h
#define DistanceMeasures_h

/** Distance between two three-component positions. */
class AbstractDistanceMeasure
{
public:
  virtual float
  computeDistance(const float * a, const float * b) = 0;
  virtual ~AbstractDistanceMeasure() = default;
};

/** Euclidean distance in single precision: differences, sum of squares and square root each rounded to float. */
class EuclideanDistanceMeasure : public AbstractDistanceMeasure
{
public:
  float
  computeDistance(const float * a, const float * b) override;
};

#endif
