// The vocabulary in which a state machine is written down: leaves with their entry and exit actions
// and one table of rows. All of it is constant data.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "statemachines/hsmevent.h"
#include "statemachines/hsminterface.h"

namespace HsmDetail {

template <auto Action, typename H, typename... Payload>
void Call(H& handler, IHsmInterface& machine, const Payload&... payload) {
  using A = decltype(Action);
  if constexpr (std::is_null_pointer_v<A>) {
    // The row only takes the event.
  } else if constexpr (std::is_invocable_v<A, H&, const Payload&...>) {
    using Result = std::invoke_result_t<A, H&, const Payload&...>;
    if constexpr (std::is_same_v<std::remove_cvref_t<Result>, std::function<void()>>) {
      if (const auto& callback = std::invoke(Action, handler)) {
        callback();
      }
    } else {
      std::invoke(Action, handler, payload...);
    }
  } else if constexpr (sizeof...(Payload) > 0) {
    Call<Action>(handler, machine);
  } else {
    std::invoke(Action, machine);
  }
}

template <typename H, typename Event, auto Action>
void React(H& handler, IHsmInterface& machine, const std::shared_ptr<IHsmEvent>& event) {
  if constexpr (std::is_invocable_v<decltype(Action), H&, std::shared_ptr<Event>>) {
    std::invoke(Action, handler, std::static_pointer_cast<Event>(event));
  } else {
    std::apply([&](const auto&... payload) { Call<Action>(handler, machine, payload...); },
               static_cast<const Event&>(*event).GetPayload());
  }
}

}  // namespace HsmDetail

// The definition of the machine whose actions are H's; specialised for each H, derived from
// HsmTable<H>, with
//   kName     the name of the composite state around all leaves,
//   kInitial  the leaf that the machine starts in,
//   kLeaves   std::array of Leaf, numbered from 1 in order,
//   kRows     std::array of Row<...>.
// A contradiction in it (two rows of a level for one event, an unknown leaf, two event types of one
// number, leaves out of order) does not compile.
template <typename H>
struct HsmDefinition;

template <typename H>
struct HsmTable {
  using Handler = H;
  using LeafAction = void (*)(H&, IHsmInterface&);
  using Reaction = void (*)(H&, IHsmInterface&, const std::shared_ptr<IHsmEvent>&);

  // As a row's level: in every leaf, for events that the leaf itself does not take.
  static constexpr unsigned kAnyLeaf = 0;
  // As a row's target: the state stays, nothing is left or entered.
  static constexpr unsigned kStays = 0;

  struct Leaf {
    unsigned number;
    std::string_view name;
    LeafAction entry = &Do<>;
    LeafAction exit = &Do<>;
  };

  struct RowData {
    unsigned level;
    const CHsmEventType* event;
    unsigned target;
    Reaction reaction;
  };

  // A leaf's actions, in order. Each is a member function of H, a callback of H (skipped while it
  // is empty), a function that takes H&, or a member function of IHsmInterface.
  template <auto... Actions>
  static void Do([[maybe_unused]] H& handler, [[maybe_unused]] IHsmInterface& machine) {
    (HsmDetail::Call<Actions>(handler, machine), ...);
  }

  // The same; an exception that escapes them ends the process.
  template <auto... Actions>
  static void DoOrTerminate(H& handler, IHsmInterface& machine) noexcept {
    (HsmDetail::Call<Actions>(handler, machine), ...);
  }

  template <unsigned Level, typename Event, unsigned Target, auto Action>
  static constexpr RowData MakeRow() {
    static_assert(Target == kStays || std::is_null_pointer_v<decltype(Action)>,
                  "on the way to a target only the leaves' exit and entry actions run");
    return {Level, &Event::kType, Target, &HsmDetail::React<H, Event, Action>};
  }

  // What the machine does for an event: it goes to the target (exit and entry actions are the
  // leaves'), or it stays and calls the action, with the event or its payload if the action takes
  // that.
  template <unsigned Level, typename Event, unsigned Target, auto Action = nullptr>
  static constexpr RowData Row = MakeRow<Level, Event, Target, Action>();
};
