// The diagnostics service as a test holds it: keeps every signal that is sent and can be told to
// fail.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"

// Threads: any.
class CFakeDiagnostics : public IDiagnostics {
 public:
  ipc::MResult SendSignal(const ipc::MDiagnosticsSignal& signal) override {
    const std::lock_guard lock(mMutex);
    ThrowIfTold();
    mSent.push_back(signal);
    return mReply;
  }

  ipc::MDiagnosticsSignal ReceiveSignal(const ipc::MDiagnosticsRequest& request) override {
    const std::lock_guard lock(mMutex);
    ThrowIfTold();
    const auto held = mHeld.find(request.identifier());
    if (held == mHeld.end()) {
      throw Rpc::CommunicationException("Diagnostics: no value");
    }
    return held->second;
  }

  void SetNotificationCallback(NotificationCallback) override {}

  // Every signal that was taken, the oldest first.
  std::vector<ipc::MDiagnosticsSignal> Sent() const {
    const std::lock_guard lock(mMutex);
    return mSent;
  }

  // From now on calls throw Rpc::CommunicationException with the text, and take nothing.
  void Fail(std::string text) {
    const std::lock_guard lock(mMutex);
    mFailure = std::move(text);
  }

  void Recover() {
    const std::lock_guard lock(mMutex);
    mFailure.reset();
  }

  // What signals are replied with from now on.
  void Reply(ipc::MResult reply) {
    const std::lock_guard lock(mMutex);
    mReply = std::move(reply);
  }

  // The value that a request for the signal's identifier gets.
  void Hold(const ipc::MDiagnosticsSignal& signal) {
    const std::lock_guard lock(mMutex);
    mHeld[signal.identifier()] = signal;
  }

 private:
  void ThrowIfTold() const {
    if (mFailure) {
      throw Rpc::CommunicationException(*mFailure);
    }
  }

  mutable std::mutex mMutex;
  // Guarded by mMutex.
  std::vector<ipc::MDiagnosticsSignal> mSent;
  std::map<ipc::ESignalIdentifier, ipc::MDiagnosticsSignal> mHeld;
  std::optional<std::string> mFailure;
  ipc::MResult mReply;
};
