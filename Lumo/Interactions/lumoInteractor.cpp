#include "lumoInteractor.h"

#include "lumoState.h"

namespace lumo
{
Interactor::Interactor(const std::string & type, DataNode * dataNode)
  : StateMachine(type)
  , m_DataNode(dataNode)
{}

void
Interactor::SetDataNode(DataNode * dataNode)
{
  if (m_DataNode != dataNode)
  {
    m_DataNode = dataNode;
    this->Modified();
  }
}

double
Interactor::CanHandleEvent(const StateEvent * stateEvent) const
{
  return stateEvent && this->GetCurrentState()->GetTransition(stateEvent->GetId()) ? 0.5 : 0.0;
}

void
Interactor::PrintSelf(std::ostream & os, itk::Indent indent) const
{
  Superclass::PrintSelf(os, indent);
  os << indent << "DataNode: " << m_DataNode << '\n';
}
} // namespace lumo
