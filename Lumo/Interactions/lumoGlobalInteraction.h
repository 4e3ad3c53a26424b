#ifndef lumoGlobalInteraction_h
#define lumoGlobalInteraction_h

#include "lumoInteractor.h"

#include <vector>

namespace lumo
{
class Event;
class EventMapper;

/** The process-wide dispatcher of raw events. HandleEvent maps the event to a state event id with the event mapper
 *  (that of StateMachineFactory::GetInstance() unless another is set), asks every registered interactor for its
 *  confidence (Interactor::CanHandleEvent) and gives the state event to the most confident one (on a tie the one
 *  added first; confidence 0 never gets it). Then every listener (a state machine that watches all events, such as
 *  a display interactor) gets it too, in the order added. Interactors and listeners are held by reference, in the
 *  order added, each at most once. Not thread-safe (one user-interface thread). */
class GlobalInteraction
{
public:
  static GlobalInteraction *
  GetInstance();

  GlobalInteraction(const GlobalInteraction &) = delete;
  GlobalInteraction &
  operator=(const GlobalInteraction &) = delete;

  /** Adds the interactor at the end; false when it is null or already there. */
  bool
  AddInteractor(Interactor * interactor);
  /** Removes the interactor; false when it was not there. */
  bool
  RemoveInteractor(Interactor * interactor);
  bool
  InteractorRegistered(const Interactor * interactor) const;
  /** The interactors in the order added. */
  std::vector<Interactor *>
  GetInteractors() const;

  /** Adds the listener at the end; false when it is null or already there. */
  bool
  AddListener(StateMachine * listener);
  bool
  RemoveListener(StateMachine * listener);
  std::vector<StateMachine *>
  GetListeners() const;

  /** Removes every interactor and listener. */
  void
  Clear();

  /** Dispatches the raw event as described above; true when an interactor or a listener took a transition. False
   *  for a null event or one the mapper maps to nothing. */
  bool
  HandleEvent(const Event * event);
  /** Dispatches an already mapped state event the same way. */
  bool
  HandleStateEvent(const StateEvent * stateEvent);

  /** The event mapper used; null restores the factory's. */
  void
  SetEventMapper(const EventMapper * eventMapper);
  const EventMapper *
  GetEventMapper() const;

private:
  GlobalInteraction() = default;

  std::vector<Interactor::Pointer> m_Interactors;
  std::vector<StateMachine::Pointer> m_Listeners;
  const EventMapper * m_EventMapper{ nullptr };
};
} // namespace lumo

#endif
