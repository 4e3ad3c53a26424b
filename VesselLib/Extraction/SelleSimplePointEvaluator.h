#ifndef SelleSimplePointEvaluator_h
#define SelleSimplePointEvaluator_h

#include "SimplePointEvaluator.h"

class NeighbourhoodConnectionEvaluator;
class EulerCharacteristicEvaluator;
class EndpointEvaluator;

/** Deletable when the foreground neighbours are connected, the Euler characteristic does not change and the
 *  voxel is no endpoint; the tests run in that order and stop at the first failure. Connection and Euler test
 *  together make a simple point; the endpoint test keeps line ends. Owns its three evaluators. */
class SelleSimplePointEvaluator : public SimplePointEvaluator
{
public:
  /** With the recursive connection, Lobregt Euler and simple endpoint evaluators. */
  SelleSimplePointEvaluator();
  SelleSimplePointEvaluator(const SelleSimplePointEvaluator &) = delete;
  SelleSimplePointEvaluator &
  operator=(const SelleSimplePointEvaluator &) = delete;
  ~SelleSimplePointEvaluator() override;

  bool
  isSimplePoint(const unsigned char * neighbourhood) const override;

  /** Replaces the connection evaluator and deletes the old one; null is ignored. */
  void
  setNeighbourhoodConnectionEvaluator(NeighbourhoodConnectionEvaluator * evaluator);
  NeighbourhoodConnectionEvaluator *
  getNeighbourhoodConnectionEvaluator() const;
  EulerCharacteristicEvaluator *
  getEulerCharacteristicEvaluator() const;
  EndpointEvaluator *
  getEndpointEvaluator() const;

  /** Whether all three evaluators are exactly the default classes, so that a packed-neighbourhood evaluation
   *  gives the same answers. */
  bool
  hasDefaultEvaluators() const;

private:
  NeighbourhoodConnectionEvaluator * m_connectionEvaluator;
  EulerCharacteristicEvaluator * m_eulerEvaluator;
  EndpointEvaluator * m_endpointEvaluator;
};

#endif
