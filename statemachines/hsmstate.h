// The states of a machine M as types: leaves inside composites inside the top. They hold nothing;
// each exists once.
#pragma once

#include <memory>
#include <typeinfo>

#include "statemachines/hsmdispatch.h"
#include "statemachines/hsmtrace.h"

template <typename M>
class TopState {
 public:
  // Handles the event in this state. Throws std::bad_typeid for a null event.
  virtual void Receive(M& machine, const std::shared_ptr<IHsmEvent>& event) const = 0;

  // The leaf's number, from 1.
  virtual unsigned GetId() const = 0;

  virtual void Enter(M& machine) const = 0;

 protected:
  ~TopState() = default;
};

template <typename M, unsigned N, typename Parent>
class CompState : public Parent {
 protected:
  ~CompState() = default;
};

template <typename M, unsigned N, typename Parent>
class LeafState final : public Parent {
  using Definition = typename M::Definition;

 public:
  void Receive(M& machine, const std::shared_ptr<IHsmEvent>& event) const override {
    if (!event) {
      throw std::bad_typeid();
    }
    HsmTrace::Step(Leaf().name, "event recv", *event);
    Handle(machine, event);
  }

  unsigned GetId() const override { return N; }

  void Enter(M& machine) const override {
    HsmTrace::Step(Leaf().name, "entry");
    Leaf().entry(machine.Handler(), machine);
  }

 private:
  static constexpr const auto& Leaf() { return Definition::kLeaves[N - 1]; }

  static void Handle(M& machine, const std::shared_ptr<IHsmEvent>& event) {
    const auto* row = CHsmDispatch<Definition>::Find(N, event->GetType());
    if (row == nullptr) {
      HsmTrace::Step(Definition::kName, "event unhn", *event);
      event->SetHandled(false);
      return;
    }
    HsmTrace::Step(row->level == Definition::kAnyLeaf ? Definition::kName : Leaf().name,
                   "event hndl", *event);
    // Before any action runs: whoever waits for the verdict goes on while the machine works.
    event->SetHandled(true);
    if (row->target == Definition::kStays) {
      row->reaction(machine.Handler(), machine, event);
      return;
    }
    Exit(machine);
    machine.GoTo(row->target);
  }

  static void Exit(M& machine) {
    HsmTrace::Step(Leaf().name, "exit");
    Leaf().exit(machine.Handler(), machine);
  }
};
