// How the sources that limit the charging current read.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/ipc/charger.pb.h"

// The source as it is named between processes; "Unknown source" for another value.
std::string SourceToString(ipc::ECurrentControlSource source);

// For people: what the name that SourceToString gives means; empty for another text.
std::optional<std::string> SignalValueToHumanReadableString(std::string_view text);
