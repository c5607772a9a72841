#include "utils/signalcatalogue.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace {

template <typename T>
constexpr std::string_view kTypeName = "";
template <>
constexpr std::string_view kTypeName<bool> = "bool";
template <>
constexpr std::string_view kTypeName<std::int32_t> = "int32";
template <>
constexpr std::string_view kTypeName<std::uint32_t> = "uint32";
template <>
constexpr std::string_view kTypeName<std::int64_t> = "int64";
template <>
constexpr std::string_view kTypeName<float> = "float";
template <>
constexpr std::string_view kTypeName<std::string> = "text";
template <>
constexpr std::string_view kTypeName<std::vector<std::int32_t>> = "vector<int32>";
template <>
constexpr std::string_view kTypeName<std::vector<std::uint32_t>> = "vector<uint32>";
template <>
constexpr std::string_view kTypeName<std::vector<float>> = "vector<float>";
template <>
constexpr std::string_view kTypeName<std::vector<std::string>> = "vector<text>";

template <typename T>
std::string DefaultText(const CSignalDefinition<T>& definition) {
  if constexpr (std::is_same_v<T, float>) {
    return fmt::format("{:#}", definition.defaultValue);
  } else if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
    return fmt::format("{}", definition.defaultValue);
  } else {
    return "[]";
  }
}

template <typename T>
CSignalDescription Describe(const CSignalDefinition<T>& definition) {
  static_assert(!kTypeName<T>.empty());
  return {definition.identifier,   definition.name, kTypeName<T>,
          DefaultText(definition), definition.unit, definition.category};
}

}  // namespace

std::span<const CSignalDescription> AllSignals() {
#define FEEDBACK_SIGNAL(constant, ...) Describe(Signals::constant),
  // Ascending: the ranges follow each other.
  static const auto descriptions = std::to_array<CSignalDescription>({
// clang-format off
#include "utils/signals/states.inc"
#include "utils/signals/errors.inc"
#include "utils/signals/warnings.inc"
#include "utils/signals/events.inc"
      // clang-format on
  });
#undef FEEDBACK_SIGNAL
  return descriptions;
}

const CSignalDescription* FindSignal(ipc::ESignalIdentifier identifier) {
  const auto signals = AllSignals();
  const auto found =
      std::ranges::lower_bound(signals, identifier, {}, &CSignalDescription::identifier);
  return found != signals.end() && found->identifier == identifier ? &*found : nullptr;
}

std::string SignalName(const CSignalDescription& signal) {
  constexpr std::string_view kPrefix = "ESignalIdentifier";
  return ipc::ESignalIdentifier_Name(signal.identifier).substr(kPrefix.size());
}
