#ifndef lumoInteractor_h
#define lumoInteractor_h

#include "lumoStateMachine.h"

namespace lumo
{
class DataNode;

/** A state machine that works on one data node: the base of the module's interactors. GlobalInteraction asks each
 *  registered interactor how confident it is that it can handle a state event (CanHandleEvent) and gives the
 *  event to the most confident one.
 *
 *  A subclass registers its actions in its constructor and answers with nested events:
 *
 *  ```cpp
 *  MyInteractor(const std::string & type, lumo::DataNode * node)
 *    : lumo::Interactor(type, node)
 *  {
 *    this->RegisterAction(lumo::ActionId::CheckElement, &Self::OnCheckElement);
 *  }
 *  bool OnCheckElement(lumo::Action *, const lumo::StateEvent * stateEvent)
 *  {
 *    const bool hit = ...;   // pick at stateEvent->GetEvent()'s display position
 *    lumo::StateEvent answer(hit ? lumo::EventId::Yes : lumo::EventId::No, stateEvent->GetEvent());
 *    return this->HandleEvent(&answer);
 *  }
 *  ``` */
class Interactor : public StateMachine
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Interactor);

  using Self = Interactor;
  using Superclass = StateMachine;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;
  itkTypeMacro(Interactor, StateMachine);
  /** New(state machine type name, data node); throws itk::ExceptionObject for an unknown type. */
  lumoNewMacro2Param(Interactor, const std::string &, DataNode *);

  /** The data node worked on (not owned, no reference held: the node must outlive the interactor's use of it;
   *  may be null). */
  DataNode *
  GetDataNode() const
  {
    return m_DataNode;
  }
  void
  SetDataNode(DataNode * dataNode);

  /** Confidence in [0, 1] that this interactor can handle the state event. Default: 0.5 when the current state
   *  has a transition for the event id, 0 otherwise (and for a null event). */
  virtual double
  CanHandleEvent(const StateEvent * stateEvent) const;

protected:
  Interactor(const std::string & type, DataNode * dataNode);
  ~Interactor() override = default;
  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  DataNode * m_DataNode;
};
} // namespace lumo

#endif
