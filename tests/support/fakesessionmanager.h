// The session manager as a test holds it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "platform/rpc/interfaces/sessionmanager.h"

// Threads: any.
class CFakeSessionManager : public ISessionManager {
 public:
  ipc::MConnectorInfo GetConnectorInfo(const ipc::MInstanceType&) override { return {}; }
  ipc::MResult Authorize(const ipc::MAuthorizeRequest&) override { return {}; }

  void SetConnectorStateCallback(ConnectorStateCallback callback) override {
    const std::lock_guard lock(mMutex);
    mCallback = std::move(callback);
    mChanged.notify_all();
  }

  // Notifies the state of this number on the caller's thread; false when nobody listens.
  bool Notify(int state) {
    ipc::MConnectorState message;
    message.set_state(static_cast<ipc::EConnectorState>(state));
    const std::lock_guard lock(mMutex);
    if (!mCallback) {
      return false;
    }
    mCallback(message);
    return true;
  }

  // Waits until nobody listens; false when that has not come within a limit that only a fault
  // reaches.
  bool WaitUntilNobodyListens() {
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, std::chrono::seconds(20), [this] { return !mCallback; });
  }

 private:
  // Also held while the callback runs, so that its replacement waits for it.
  std::mutex mMutex;
  std::condition_variable mChanged;
  ConnectorStateCallback mCallback;  // guarded by mMutex
};
