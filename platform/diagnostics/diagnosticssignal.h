// One diagnostics signal of this process: its present value, and the ways to send it.
#pragma once

#include <chrono>
#include <mutex>

#include "platform/diagnostics/signaldefinition.h"
#include "platform/ipc/common.pb.h"

// T as for CSignalDefinition.
//
// Threads: SetValue and SetTimestamp are called under Lock, so that a value goes out with its own
// time; Send takes the lock itself, and never holds it while it talks to the service.
template <typename T>
class CDiagnosticsSignal {
 public:
  using TimePoint = std::chrono::system_clock::time_point;

  // The definition must outlive the signal. The value starts as the definition's default, the
  // timestamp as the epoch.
  CDiagnosticsSignal(const CSignalDefinition<T>* definition, ipc::EInstanceType instance);

  // Throws std::system_error where the lock cannot be taken.
  [[nodiscard]] std::unique_lock<std::mutex> Lock() const;
  void SetValue(const T& value);
  void SetTimestamp(TimePoint timestamp);

  // Sends the held value and timestamp. Throws Rpc::CommunicationException when the service cannot
  // be reached, does not answer in time or refuses the signal.
  void Send();

  // Holds the value, stamped with the system clock's now, and sends it.
  void Send(const T& value);

  // The value that the service holds. Throws as Send does, and when there is none yet or it is of
  // another type.
  T Receive() const;

 private:
  const CSignalDefinition<T>* const mDefinition;
  const ipc::EInstanceType mInstance;
  mutable std::mutex mMutex;
  T mValue;              // guarded by mMutex
  TimePoint mTimestamp;  // guarded by mMutex
};
