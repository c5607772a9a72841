// An energy meter and its display.
#pragma once

#include "platform/ipc/meter.pb.h"

// Threads: at the serving end calls arrive on any of the RPC layer's threads at once.
class IMeter {
 public:
  virtual ~IMeter() = default;

  // Throws Rpc::CommunicationException at the calling end when the service cannot be reached.
  virtual ipc::MResult SetDisplayBrightness(const ipc::MDisplayBrightness& brightness) = 0;
};
