#include "statemachines/hsmtrace.h"

namespace HsmTrace {

void Write(std::string_view state, std::string_view step) {
  LOG(Trace, "State {}: {}", state, step);
}

void Write(std::string_view state, std::string_view step, const IHsmEvent& event) {
  LOG(Trace, "State {}: {} {}", state, step, event.GetName());
}

}  // namespace HsmTrace
