// The RPC layer's own messages, formatted only where a logger is set.
#pragma once

#include <fmt/core.h>

#include <memory>
#include <string>
#include <utility>

#include "platform/rpc/logger.h"

namespace Rpc {

// Threads: SetLogger before any RPC object exists; CurrentLogger from any thread.
void SetLogger(std::shared_ptr<ILogger> logger);
ILogger* CurrentLogger();

using LogLevel = void (ILogger::*)(const std::string&);

// Write(&ILogger::Warning, "text with {}", value)
//
// A logger that throws, on a full disk for instance, costs its line and nothing of what goes on.
template <typename... Arguments>
void Write(LogLevel level, fmt::format_string<Arguments...> format,
           Arguments&&... arguments) noexcept {
  try {
    if (ILogger* logger = CurrentLogger()) {
      (logger->*level)(fmt::format(format, std::forward<Arguments>(arguments)...));
    }
  } catch (...) {
  }
}

}  // namespace Rpc
