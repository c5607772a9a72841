// The logging of a process, changed while it runs.
#pragma once

#include "platform/ipc/logconfig.pb.h"

// Threads: calls arrive on any of the RPC layer's threads at once.
class ILogConfig {
 public:
  virtual ~ILogConfig() = default;

  // Both throw Rpc::CommunicationException at the calling end when the service cannot be reached.
  virtual ipc::MResult SetLogConfig(const ipc::MLogConfig& config) = 0;
  virtual ipc::MLogConfig GetLogConfig() = 0;
};
