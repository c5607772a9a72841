// The one way into a state machine, for everyone who does not know its states.
#pragma once

#include <memory>

class IHsmEvent;

// A machine is owned through a shared pointer to its own class, never through this interface.
class IHsmInterface {
 public:
  // Queues the event and returns. Any thread, also from within an action; the event is then handled
  // after the present one.
  virtual void PostEvent(std::shared_ptr<IHsmEvent> event) = 0;

  // Handles events on the calling thread until Stop. What an action throws leaves it.
  virtual void Run() = 0;

  // Asks Run to return after the event that it is handling. Any thread.
  virtual void Stop() = 0;

  virtual bool IsRunning() const = 0;

 protected:
  ~IHsmInterface() = default;
};
