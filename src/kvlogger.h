// Brings the RPC layer's own messages into the process log.
#pragma once

#include "platform/rpc/logger.h"

namespace Rpc {

// Threads: any; no state.
class KvLogger : public ILogger {
 public:
  void Critical(const std::string& message) override;
  void Error(const std::string& message) override;
  void Warning(const std::string& message) override;
  void Info(const std::string& message) override;
  void Debug(const std::string& message) override;
  void Trace(const std::string& message) override;
};

}  // namespace Rpc
