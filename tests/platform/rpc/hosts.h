// Hosts as processes have them, several in one test program: each with its own threads, all with
// their sockets in one directory.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "platform/rpc/appcommunicationhost.h"
#include "platform/rpc/interfaces/feedback.h"
#include "platform/rpc/interfaces/sessionmanager.h"
#include "tests/support/temporarydirectory.h"

// Nothing that works takes this long.
inline constexpr auto kGenerous = std::chrono::seconds(20);

using Host = AppCommunicationHost<GrpcBackend>;

class SocketDirectory {
 public:
  SocketDirectory()
      : mStore(mDirectory.WriteFile(
            "ovra.json", "{\"communication\":{\"SocketDirectory\":\"" + Path() + "\"}}")) {}

  std::string Path() const { return (mDirectory.Path() / "run").string(); }
  std::string Socket(const std::string& name) const { return Path() + "/" + name; }
  const std::string& Store() const { return mStore; }

 private:
  const TemporaryDirectory mDirectory;
  const std::string mStore;
};

// A host between StartServices and Stop.
class RunningHost {
 public:
  // The function registers services and creates clients, before the host runs.
  explicit RunningHost(
      const SocketDirectory& directory, const std::function<void(Host&)>& prepare = [](Host&) {})
      : mHost(directory.Store()) {
    prepare(mHost);
    mHost.StartServices();
    mServer = std::thread([this] { mHost.RunServer(); });
    mNotifications = std::thread([this] { mHost.HandleClientNotifications(); });
  }

  ~RunningHost() {
    mHost.Stop();
    mServer.join();
    mNotifications.join();
  }

  Host& operator*() { return mHost; }
  Host* operator->() { return &mHost; }

  template <typename Interface>
  std::shared_ptr<Interface> Client(const std::string& name) {
    return mHost.CreateClient<Interface>(name)->GetInterface();
  }

 private:
  Host mHost;
  std::thread mServer;
  std::thread mNotifications;
};

// What arrives somewhere, in order, to be waited for.
template <typename T>
class Arrivals {
 public:
  void Add(T value) {
    const std::lock_guard lock(mMutex);
    mValues.push_back(std::move(value));
    mCondition.notify_all();
  }

  // The next one; empty when none came within the generous limit.
  std::optional<T> Next() {
    std::unique_lock lock(mMutex);
    if (!mCondition.wait_for(lock, kGenerous, [this] { return !mValues.empty(); })) {
      return std::nullopt;
    }
    T value = std::move(mValues.front());
    mValues.pop_front();
    return value;
  }

 private:
  std::mutex mMutex;
  std::condition_variable mCondition;
  std::deque<T> mValues;
};

// A session manager at the serving end.
class ServedSessionManager : public ISessionManager {
 public:
  ipc::MConnectorInfo GetConnectorInfo(const ipc::MInstanceType&) override { return {}; }
  ipc::MResult Authorize(const ipc::MAuthorizeRequest&) override { return {}; }
  void SetConnectorStateCallback(ConnectorStateCallback callback) override {
    mCallback = std::move(callback);
  }

  void Announce(int state) {
    ipc::MConnectorState message;
    message.set_state(static_cast<ipc::EConnectorState>(state));
    mCallback(message);
  }

 private:
  ConnectorStateCallback mCallback;
};

// A feedback service whose answer the test writes.
class ServedFeedback : public IFeedback {
 public:
  using Answer = std::function<ipc::MResult(const ipc::MFbEventType&, const ipc::MInstanceType&)>;
  explicit ServedFeedback(Answer answer) : mAnswer(std::move(answer)) {}

  ipc::MResult TriggerFeedbackEvent(const ipc::MFbEventType& event,
                                    const ipc::MInstanceType& instance) override {
    return mAnswer(event, instance);
  }

 private:
  const Answer mAnswer;
};
