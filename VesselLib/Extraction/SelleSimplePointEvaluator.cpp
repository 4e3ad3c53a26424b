#include "SelleSimplePointEvaluator.h"

#include "LobregtEulerCharacteristicEvaluator.h"
#include "RecursiveNeighbourhoodConnectionEvaluator.h"
#include "SimpleEndpointEvaluator.h"

#include <typeinfo>

SelleSimplePointEvaluator::SelleSimplePointEvaluator()
  : m_connectionEvaluator(new RecursiveNeighbourhoodConnectionEvaluator)
  , m_eulerEvaluator(new LobregtEulerCharacteristicEvaluator)
  , m_endpointEvaluator(new SimpleEndpointEvaluator)
{}

SelleSimplePointEvaluator::~SelleSimplePointEvaluator()
{
  delete m_endpointEvaluator;
  delete m_eulerEvaluator;
  delete m_connectionEvaluator;
}

bool
SelleSimplePointEvaluator::isSimplePoint(const unsigned char * neighbourhood) const
{
  if (!m_connectionEvaluator->isConnected(neighbourhood))
  {
    return false;
  }
  if (m_eulerEvaluator->changesEulerCharacteristic(neighbourhood))
  {
    return false;
  }
  return !m_endpointEvaluator->isEndpoint(neighbourhood);
}

void
SelleSimplePointEvaluator::setNeighbourhoodConnectionEvaluator(NeighbourhoodConnectionEvaluator * evaluator)
{
  if (evaluator == nullptr || evaluator == m_connectionEvaluator)
  {
    return;
  }
  delete m_connectionEvaluator;
  m_connectionEvaluator = evaluator;
}

NeighbourhoodConnectionEvaluator *
SelleSimplePointEvaluator::getNeighbourhoodConnectionEvaluator() const
{
  return m_connectionEvaluator;
}

EulerCharacteristicEvaluator *
SelleSimplePointEvaluator::getEulerCharacteristicEvaluator() const
{
  return m_eulerEvaluator;
}

EndpointEvaluator *
SelleSimplePointEvaluator::getEndpointEvaluator() const
{
  return m_endpointEvaluator;
}

bool
SelleSimplePointEvaluator::hasDefaultEvaluators() const
{
  return typeid(*m_connectionEvaluator) == typeid(RecursiveNeighbourhoodConnectionEvaluator) &&
         typeid(*m_eulerEvaluator) == typeid(LobregtEulerCharacteristicEvaluator) &&
         typeid(*m_endpointEvaluator) == typeid(SimpleEndpointEvaluator);
}
