// The words on the command line that stand for the wire's numbers.
#pragma once

#include <array>
#include <string_view>

// In the order of ipc::EFbEventType.
inline constexpr auto kFeedbackEvents =
    std::to_array<std::string_view>({"auth-success", "auth-failure", "tag-swipe", "identify"});

// In the order of ipc::ELogLevel.
inline constexpr auto kLogLevels = std::to_array<std::string_view>(
    {"trace", "debug", "info", "warning", "error", "critical", "off"});
