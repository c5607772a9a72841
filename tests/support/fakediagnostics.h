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
    mRequests.push_back(request);
    const auto held = mHeld.find(request.identifier());
    if (held == mHeld.end()) {
      throw Rpc::CommunicationException("Diagnostics: no value");
    }
    return held->second;
  }

  void SetNotificationCallback(NotificationCallback callback) override {
    const std::lock_guard lock(mMutex);
    mCallback = std::move(callback);
  }

  // Every signal that was taken, the oldest first.
  std::vector<ipc::MDiagnosticsSignal> Sent() const {
    const std::lock_guard lock(mMutex);
    return mSent;
  }

  std::vector<ipc::MDiagnosticsRequest> Requests() const {
    const std::lock_guard lock(mMutex);
    return mRequests;
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

  bool HasSubscriber() const {
    const std::lock_guard lock(mMutex);
    return static_cast<bool>(mCallback);
  }

  // Notifies on the caller's thread and returns the subscriber's reply; without a subscriber, none.
  std::optional<ipc::MResult> Notify(const ipc::MDiagnosticsSignal& signal,
                                     ipc::MDiagnosticsNotificationType::Type type) {
    NotificationCallback callback;
    {
      const std::lock_guard lock(mMutex);
      callback = mCallback;
    }
    if (!callback) {
      return std::nullopt;
    }
    ipc::MDiagnosticsNotificationType notification;
    notification.set_type(type);
    return callback(signal, notification);
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
  std::vector<ipc::MDiagnosticsRequest> mRequests;
  std::map<ipc::ESignalIdentifier, ipc::MDiagnosticsSignal> mHeld;
  std::optional<std::string> mFailure;
  ipc::MResult mReply;
  NotificationCallback mCallback;
};
