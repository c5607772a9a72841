// The machine's half of every action handler: how actions report the state and post events.
#pragma once

#include <functional>
#include <memory>

#include "statemachines/hsminterface.h"

// Threads: wired before the machine runs; after that the machine's thread calls.
class CHsmActionHandlerBase {
 public:
  virtual ~CHsmActionHandlerBase() = default;

  // The machine that Post posts to; not owned, and it must outlive the last Post.
  void SetMachine(IHsmInterface* machine) { mMachine = machine; }

  // Posts a new event without payload and returns it, for its identity alone: a verdict is asked
  // for before an event is posted. Throws std::logic_error without a machine.
  template <typename Event>
  std::shared_ptr<Event> Post() {
    IHsmInterface& machine = Machine();
    auto event = std::make_shared<Event>();
    machine.PostEvent(event);
    return event;
  }

 private:
  IHsmInterface& Machine() const;

  IHsmInterface* mMachine = nullptr;

 public:
  // Called when the state of that name is entered or confirmed; an empty one is skipped.
  std::function<void()> ExtDisabledRsp;
  std::function<void()> ExtEnabledRsp;
  std::function<void()> ExtErrorRsp;
  std::function<void()> ExtFatalErrorRsp;
  std::function<void()> ExtUninitializedRsp;
};
