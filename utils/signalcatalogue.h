// The diagnostics signals of the whole charger: one constant a signal, and the list of them all.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/diagnostics/signaldefinition.h"

// Signals::LedState and its like: constant data, from the same rows as the list below. Values whose
// owner publishes no default are zero, false or empty; units are given where they are published.
namespace Signals {

#define FEEDBACK_SIGNAL(constant, type, name, defaultValue, unit, category) \
  inline constexpr CSignalDefinition<type> constant{                        \
      ipc::ESignalIdentifier##constant, name, defaultValue, unit, ESignalCategory::category};
#include "utils/signals/errors.inc"
#include "utils/signals/events.inc"
#include "utils/signals/states.inc"
#include "utils/signals/warnings.inc"
#undef FEEDBACK_SIGNAL

}  // namespace Signals

// A definition as text, whatever the type of its value.
struct CSignalDescription {
  ipc::ESignalIdentifier identifier;
  std::string_view name;
  std::string_view typeName;  // "bool", "int32", "text", "vector<float>", ...
  std::string defaultText;    // "[]" for an empty vector
  std::string_view unit;
  ESignalCategory category;
};

// Where errors, warnings and events begin; measurements and states stand before them.
inline constexpr int kFirstError = 1000;
inline constexpr int kFirstWarning = 10'000;
inline constexpr int kLastWarning = 19'999;
inline constexpr int kFirstEvent = 20'000;

// All signals in ascending order of their identifiers. Valid until the process ends; any thread.
std::span<const CSignalDescription> AllSignals();

// Null for an identifier that is not in the catalogue.
const CSignalDescription* FindSignal(ipc::ESignalIdentifier identifier);

// The constant's name without its prefix: "LedState".
std::string SignalName(const CSignalDescription& signal);
