// The trace line that every operation of the hardware and indication classes begins with.
#pragma once

#include <string>
#include <string_view>
#include <typeinfo>

#include "platform/log/log.h"

// Writes "{}{}::{}": prefix, class name, operation. The class's readable name is found once.
template <typename Class>
void TraceEntry(std::string_view operation, std::string_view prefix = {}) {
  if (Log::IsEnabled(Log::ELogLevel::ETrace)) {
    static const std::string className = Log::Demangle(typeid(Class).name());
    Log::Write(Log::ELogLevel::ETrace, "{}{}::{}", prefix, className, operation);
  }
}
