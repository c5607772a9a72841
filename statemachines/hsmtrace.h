// The lines that a state machine leaves in the log at trace level. They are written out of line, so
// that the path of an event is short while the trace is off.
#pragma once

#include <string_view>

#include "platform/log/log.h"
#include "statemachines/hsmevent.h"

namespace HsmTrace {

void Write(std::string_view state, std::string_view step);
void Write(std::string_view state, std::string_view step, const IHsmEvent& event);

// "State {}: {}" and, with an event, "State {}: {} {}".
template <typename... Event>
void Step(std::string_view state, std::string_view step, const Event&... event) {
  if (Log::IsEnabled(Log::ELogLevel::ETrace)) [[unlikely]] {
    Write(state, step, event...);
  }
}

}  // namespace HsmTrace
