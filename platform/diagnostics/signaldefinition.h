// What is constant about a diagnostics signal.
#pragma once

#include <string_view>
#include <type_traits>

#include "platform/ipc/signalidentifier.pb.h"

// A signal of the charger itself or of one of its connectors.
enum class ESignalCategory { ECharger = 0, EConnector = 1 };

// T is the type of the signal's value: bool, int32_t, uint32_t, int64_t, float, std::string, or a
// std::vector of int32_t, uint32_t, float or std::string.
//
// A default value is what the signal holds before its first update. Text defaults are views of
// constant text; vector defaults are empty, so that the whole catalogue is constant data.
template <typename T>
struct CSignalDefinition {
  struct EmptyVector {};
  using Value = T;
  using Default =
      std::conditional_t<std::is_arithmetic_v<T>, T,
                         std::conditional_t<std::is_constructible_v<T, std::string_view>,
                                            std::string_view, EmptyVector>>;

  ipc::ESignalIdentifier identifier;
  std::string_view name;
  Default defaultValue;
  std::string_view unit;
  ESignalCategory category;

  // The default as a value of the signal's type.
  T DefaultValue() const {
    if constexpr (std::is_same_v<Default, EmptyVector>) {
      return T{};
    } else {
      return T(defaultValue);
    }
  }
};
