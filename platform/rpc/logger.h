// Where the RPC layer's own messages go.
#pragma once

#include <string>

namespace Rpc {

// Threads: called from any of the RPC layer's threads.
class ILogger {
 public:
  virtual ~ILogger() = default;

  virtual void Critical(const std::string& message) = 0;
  virtual void Error(const std::string& message) = 0;
  virtual void Warning(const std::string& message) = 0;
  virtual void Info(const std::string& message) = 0;
  virtual void Debug(const std::string& message) = 0;
  virtual void Trace(const std::string& message) = 0;
};

}  // namespace Rpc
