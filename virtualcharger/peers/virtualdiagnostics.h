// The charger's diagnostics service: keeps the last value of each signal and tells its subscribers
// about errors, warnings and security events.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/worker/worker.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/peers/wirelog.h"

// Events: "subscribers N", "signal IDENTIFIER VALUE".
//
// Threads: any.
class CVirtualDiagnostics : public IDiagnostics {
 public:
  explicit CVirtualDiagnostics(PeerEvents events);

  // Replies before the subscribers are told: the sender may be one of them.
  ipc::MResult SendSignal(const ipc::MDiagnosticsSignal& signal) override;
  ipc::MDiagnosticsSignal ReceiveSignal(const ipc::MDiagnosticsRequest& request) override;
  void SetNotificationCallback(NotificationCallback callback) override;
  void OnSubscribers(std::size_t count) override;

  // As a sender of the boolean signal does. Returns the outcome when all subscribers have replied.
  std::string SetError(int identifier, bool on);

 private:
  using Key = std::pair<int, int>;  // identifier, instance

  void Store(const ipc::MDiagnosticsSignal& signal);
  std::string Notify(const ipc::MDiagnosticsSignal& signal,
                     ipc::MDiagnosticsNotificationType::Type type);

  const PeerEvents mEvents;
  const CWireLog mWire;
  std::atomic<std::size_t> mSubscribers = 0;
  std::mutex mMutex;
  // Guarded by mMutex.
  std::map<Key, ipc::MDiagnosticsSignal> mLast;
  NotificationCallback mTellSubscribers;
  CWorker mNotifier{"notifier"};  // last: its calls use the members above
};

// What subscribers are told about: a boolean signal from 1000 on is an error, from 10000 on a
// warning, a text from 20000 on a security event. Nothing for every other signal.
std::optional<ipc::MDiagnosticsNotificationType::Type> NotificationTypeOf(
    const ipc::MDiagnosticsSignal& signal);

// The values for people, several separated by blanks, on one line whatever the sender put in.
std::string ValueText(const ipc::MDiagnosticsSignal& signal);
