// A stream of notifications from a service, renewed by itself for as long as its owner wants it.
//
// Only for platform/rpc: includes gRPC.
#pragma once

#include <grpcpp/alarm.h>
#include <grpcpp/client_context.h>
#include <grpcpp/generic/generic_stub.h>
#include <grpcpp/support/client_callback.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "platform/ipc/common.pb.h"
#include "platform/rpc/bordercheck.h"
#include "platform/rpc/log.h"
#include "platform/rpc/notificationqueue.h"
#include "platform/rpc/servicechannel.h"

namespace Rpc {

// Request is what this end writes: MEmpty once for a plain stream, an MNotificationReply for each
// notification where the service waits for replies.
//
// The handler runs on the notification thread, one notification after the other; the next one is
// read when it has returned, so that a service never has more than one under way here. While the
// service is down the stream waits for it; the service sends its present state first, so that the
// owner is right again as soon as the stream stands.
//
// Threads: Stop from any thread that is neither gRPC's nor, while the handler runs, the
// notification thread. The handler is not called any more when it has returned, unless one is under
// way.
template <typename Request, typename Notification>
class CSubscription : public std::enable_shared_from_this<CSubscription<Request, Notification>> {
 public:
  // Fills the reply to a notification, or leaves it alone where Request is MEmpty.
  using Handler = std::function<void(const Notification&, Request&)>;

  CSubscription(std::shared_ptr<CServiceChannel> channel, std::string method,
                std::shared_ptr<CNotificationQueue> queue, Handler handler)
      : mChannel(std::move(channel)),
        mMethod(std::move(method)),
        mQueue(std::move(queue)),
        mHandler(std::move(handler)),
        mStub(mChannel->Channel()) {}

  void Start() {
    const std::lock_guard lock(mMutex);
    Open();
  }

  // The handler is not under way and is not called any more when this returns (from inside the
  // handler: when the handler returns). The stream itself may take a moment longer to end.
  void Cancel() {
    {
      const std::lock_guard lock(mMutex);
      mStopping = true;
      if (mStream) {
        mStream->Cancel();
      }
      if (mAlarm) {
        mAlarm->Cancel();
      }
    }
    const std::lock_guard handlerIsDone(mHandlerMutex);
  }

  // Cancels and waits for the end of the stream. The queue must have been stopped: a notification
  // that waits in it keeps the stream.
  void Stop() {
    Cancel();
    std::unique_lock lock(mMutex);
    mEnded.wait(lock, [this] { return !mStream && !mAlarmSet; });
  }

 private:
  static constexpr bool kReplies = !std::is_same_v<Request, ipc::MEmpty>;
  static constexpr auto kPause = std::chrono::milliseconds(50);
  static constexpr auto kPauseAfterRefusal = std::chrono::milliseconds(500);

  // One stream; lives until gRPC is done with it.
  class CStream final : public grpc::ClientBidiReactor<Request, Notification> {
   public:
    explicit CStream(std::shared_ptr<CSubscription> owner) : mOwner(std::move(owner)) {
      mContext.set_wait_for_ready(true);
    }

    void Begin(grpc::TemplatedGenericStub<Request, Notification>& stub) {
      stub.PrepareBidiStreamingCall(&mContext, mOwner->mMethod, grpc::StubOptions(), this);
      if constexpr (!kReplies) {
        this->StartWriteLast(&mRequest, grpc::WriteOptions());
      }
      this->StartRead(&mNotification);
      this->StartCall();
    }

    void Cancel() { mContext.TryCancel(); }

    void OnReadInitialMetadataDone(bool ok) override {
      if (ok) {
        mStoodSince = std::chrono::steady_clock::now();
        Write(&ILogger::Info, "Subscribed to \"{}\"", mOwner->mChannel->Name());
      }
    }

    void OnReadDone(bool ok) override {
      if (!ok) {
        // Also after a message that cannot be read, which ends the reading but not the call.
        mContext.TryCancel();
      } else {
        // The hold keeps this stream until the task has started its operations or was dropped.
        this->AddHold();
        std::shared_ptr<void> hold(nullptr, [this](void*) { this->RemoveHold(); });
        mOwner->mQueue->Post([this, hold = std::move(hold)] { Handle(); });
      }
    }

    void OnDone(const grpc::Status& status) override {
      const CCallbackCount::CInside inside(mOwner->mChannel->Callbacks());
      mOwner->OnStreamDone(status, mStoodSince);
    }

   private:
    void Handle() {
      mRequest.Clear();
      mOwner->Deliver(mNotification, mRequest);
      if constexpr (kReplies) {
        mRequest.set_sequence(mNotification.sequence());
        this->StartWrite(&mRequest);
      } else {
        this->StartRead(&mNotification);
      }
    }

    // The reply is out: only then is its buffer free for the next one.
    void OnWriteDone(bool ok) override {
      if constexpr (kReplies) {
        if (ok) {
          this->StartRead(&mNotification);
        }
      }
    }

    const std::shared_ptr<CSubscription> mOwner;
    grpc::ClientContext mContext;
    Request mRequest;
    Notification mNotification;
    std::optional<std::chrono::steady_clock::time_point> mStoodSince;
  };

  void Open() {
    mStream = std::make_unique<CStream>(this->shared_from_this());
    mStream->Begin(mStub);
  }

  void Deliver(const Notification& notification, Request& reply) {
    const std::lock_guard handling(mHandlerMutex);
    {
      const std::lock_guard lock(mMutex);
      if (mStopping) {
        return;
      }
    }
    std::string error = Check(notification);
    if (error.empty()) {
      try {
        mHandler(notification, reply);
        return;
      } catch (const std::exception& exception) {
        error = exception.what();
      }
    }
    Write(&ILogger::Warning, "Refused a notification of \"{}\": {}", mChannel->Name(), error);
    if constexpr (kReplies) {
      reply.mutable_result()->set_result(ipc::EResultIllegal);
      reply.mutable_result()->set_text(error);
    }
  }

  void OnStreamDone(const grpc::Status& status,
                    std::optional<std::chrono::steady_clock::time_point> stoodSince) {
    std::unique_ptr<CStream> ended;
    const std::lock_guard lock(mMutex);
    ended = std::move(mStream);
    if (mStopping) {
      mEnded.notify_all();
      return;
    }
    // A peer that went down is waited for by the next stream itself; one that ends its streams as
    // soon as they stand is not asked again and again.
    const bool lasted =
        stoodSince && std::chrono::steady_clock::now() - *stoodSince >= kPauseAfterRefusal;
    const bool isDown = !stoodSince && status.error_code() == grpc::StatusCode::UNAVAILABLE;
    if (lasted || (!isDown && !mRefused)) {
      Write(&ILogger::Warning, "Subscription to \"{}\" {}: {}; renewing it", mChannel->Name(),
            stoodSince ? "broke" : "was refused", status.error_message());
    }
    mRefused = !lasted && !isDown;
    mAlarmSet = true;
    mAlarm.emplace();
    mAlarm->Set(std::chrono::system_clock::now() + (mRefused ? kPauseAfterRefusal : kPause),
                // The alarm keeps this even after it has gone off.
                [weak = this->weak_from_this(), callbacks = mChannel->Callbacks()](bool) {
                  const CCallbackCount::CInside inside(callbacks);
                  if (const auto self = weak.lock()) {
                    self->OnAlarm();
                  }
                });
  }

  void OnAlarm() {
    const std::lock_guard lock(mMutex);
    mAlarmSet = false;
    if (mStopping) {
      mEnded.notify_all();
    } else {
      Open();
    }
  }

  const std::shared_ptr<CServiceChannel> mChannel;
  const std::string mMethod;
  const std::shared_ptr<CNotificationQueue> mQueue;
  const Handler mHandler;
  grpc::TemplatedGenericStub<Request, Notification> mStub;

  std::recursive_mutex mHandlerMutex;  // held while the handler runs; taken before mMutex
  std::mutex mMutex;
  std::condition_variable mEnded;
  std::unique_ptr<CStream> mStream;   // guarded by mMutex
  std::optional<grpc::Alarm> mAlarm;  // guarded by mMutex; a new one each time
  bool mAlarmSet = false;             // guarded by mMutex
  bool mStopping = false;             // guarded by mMutex
  bool mRefused = false;              // guarded by mMutex
};

}  // namespace Rpc
