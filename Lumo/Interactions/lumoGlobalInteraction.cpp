#include "lumoGlobalInteraction.h"

#include "lumoEventMapper.h"
#include "lumoStateMachineFactory.h"

#include <algorithm>

namespace lumo
{
namespace
{
template <class Container, class T>
auto
FindIn(Container & container, const T * item)
{
  return std::find_if(
    container.begin(), container.end(), [item](const auto & pointer) { return pointer.GetPointer() == item; });
}
} // namespace

GlobalInteraction *
GlobalInteraction::GetInstance()
{
  static GlobalInteraction instance;
  return &instance;
}

bool
GlobalInteraction::AddInteractor(Interactor * interactor)
{
  if (!interactor || FindIn(m_Interactors, interactor) != m_Interactors.end())
  {
    return false;
  }
  m_Interactors.emplace_back(interactor);
  return true;
}

bool
GlobalInteraction::RemoveInteractor(Interactor * interactor)
{
  const auto found = FindIn(m_Interactors, interactor);
  if (found == m_Interactors.end())
  {
    return false;
  }
  m_Interactors.erase(found);
  return true;
}

bool
GlobalInteraction::InteractorRegistered(const Interactor * interactor) const
{
  return interactor && FindIn(m_Interactors, interactor) != m_Interactors.end();
}

std::vector<Interactor *>
GlobalInteraction::GetInteractors() const
{
  std::vector<Interactor *> interactors;
  for (const auto & interactor : m_Interactors)
  {
    interactors.push_back(interactor.GetPointer());
  }
  return interactors;
}

bool
GlobalInteraction::AddListener(StateMachine * listener)
{
  if (!listener || FindIn(m_Listeners, listener) != m_Listeners.end())
  {
    return false;
  }
  m_Listeners.emplace_back(listener);
  return true;
}

bool
GlobalInteraction::RemoveListener(StateMachine * listener)
{
  const auto found = FindIn(m_Listeners, listener);
  if (found == m_Listeners.end())
  {
    return false;
  }
  m_Listeners.erase(found);
  return true;
}

std::vector<StateMachine *>
GlobalInteraction::GetListeners() const
{
  std::vector<StateMachine *> listeners;
  for (const auto & listener : m_Listeners)
  {
    listeners.push_back(listener.GetPointer());
  }
  return listeners;
}

void
GlobalInteraction::Clear()
{
  m_Interactors.clear();
  m_Listeners.clear();
}

void
GlobalInteraction::SetEventMapper(const EventMapper * eventMapper)
{
  m_EventMapper = eventMapper;
}

const EventMapper *
GlobalInteraction::GetEventMapper() const
{
  return m_EventMapper ? m_EventMapper : &StateMachineFactory::GetInstance()->GetEventMapper();
}

bool
GlobalInteraction::HandleEvent(const Event * event)
{
  const int id = GetEventMapper()->Map(event);
  if (id == EventId::None)
  {
    return false;
  }
  const StateEvent stateEvent(id, event);
  return HandleStateEvent(&stateEvent);
}

bool
GlobalInteraction::HandleStateEvent(const StateEvent * stateEvent)
{
  if (!stateEvent)
  {
    return false;
  }
  // Copies: an action may add or remove interactors and listeners while the event is on its way.
  const std::vector<Interactor::Pointer> interactors = m_Interactors;
  const std::vector<StateMachine::Pointer> listeners = m_Listeners;

  Interactor * best = nullptr;
  double bestConfidence = 0.0;
  for (const auto & interactor : interactors)
  {
    const double confidence = interactor->CanHandleEvent(stateEvent);
    if (confidence > bestConfidence)
    {
      best = interactor.GetPointer();
      bestConfidence = confidence;
    }
  }
  bool handled = best && best->HandleEvent(stateEvent);
  for (const auto & listener : listeners)
  {
    handled = listener->HandleEvent(stateEvent) || handled;
  }
  return handled;
}
} // namespace lumo
