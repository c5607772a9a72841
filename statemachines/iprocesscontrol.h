// What a process tells those who watch it.
#pragma once

#include "platform/ipc/genericcontrol.pb.h"

class IProcessControl {
 public:
  virtual ~IProcessControl() = default;

  // Does nothing while nobody can be told.
  virtual void ReportState(const ipc::MState& state) = 0;

  // Throws std::bad_function_call while nobody can be told.
  virtual void SendAlive() = 0;
};
