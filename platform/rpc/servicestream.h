// One subscriber's stream at the serving end, on gRPC's callback API: it costs no thread.
//
// Only for platform/rpc: includes gRPC.
#pragma once

#include <grpcpp/support/server_callback.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/rpc/publisher.h"

namespace Rpc {

// What both kinds of stream share: one message under way at a time, the others in the backlog. A
// stream deletes itself when gRPC is done with it.
//
// Threads: reactions run on gRPC's threads and never block; Push comes from publishing threads.
template <typename Reactor, typename Message>
class CServiceStream : public Reactor, public CPublisher<Message>::ISubscriber {
 public:
  void Push(typename CBacklog<Message>::Item item) override {
    const std::lock_guard lock(mMutex);
    if (mFinished) {
      CBacklog<Message>::Complete(item);
      return;
    }
    ++mSequence;  // counted before anything is dropped, so that a gap shows it
    if constexpr (requires(Message & message) { message.set_sequence(mSequence); }) {
      item.message.set_sequence(mSequence);
    }
    mBacklog.Push(std::move(item));
    SendNext();
  }

  void OnCancel() override {
    const std::lock_guard lock(mMutex);
    FinishOnce();
  }

  void OnDone() override {
    mPublisher->Remove(this);
    delete this;
  }

 protected:
  explicit CServiceStream(std::shared_ptr<CPublisher<Message>> publisher)
      : mPublisher(std::move(publisher)), mBacklog(mPublisher->GetReplaces()) {}

  ~CServiceStream() override { CompleteCurrent({}); }

  void Begin() {
    this->StartSendInitialMetadata();
    mPublisher->Add(this);
  }

  // The following are called with the lock held.

  void SendNext() {
    if (mWriting || mCurrent || mFinished || mBacklog.IsEmpty()) {
      return;
    }
    mCurrent = mBacklog.Pop();
    mWriting = true;
    this->StartWrite(&mCurrent->message);
  }

  void CompleteCurrent(const ipc::MResult& result) {
    if (mCurrent && mCurrent->delivery) {
      mCurrent->delivery->Complete(result);
    }
    mCurrent.reset();
  }

  void FinishOnce() {
    if (!mFinished) {
      mFinished = true;
      mBacklog.Clear();
      this->Finish(grpc::Status::OK);
    }
  }

  std::mutex mMutex;
  std::optional<typename CBacklog<Message>::Item> mCurrent;  // guarded by mMutex
  uint64_t mSequence = 0;                                    // guarded by mMutex
  bool mWriting = false;                                     // guarded by mMutex
  bool mFinished = false;                                    // guarded by mMutex

 private:
  const std::shared_ptr<CPublisher<Message>> mPublisher;
  CBacklog<Message> mBacklog;  // guarded by mMutex
};

// Each message is done with when it is written.
template <typename Message>
class CPlainStream final : public CServiceStream<grpc::ServerWriteReactor<Message>, Message> {
 public:
  explicit CPlainStream(std::shared_ptr<CPublisher<Message>> publisher)
      : CPlainStream::CServiceStream(std::move(publisher)) {
    this->Begin();
  }

  void OnWriteDone(bool ok) override {
    const std::lock_guard lock(this->mMutex);
    this->mWriting = false;
    if (!ok) {
      this->FinishOnce();
      return;
    }
    this->CompleteCurrent({});
    this->SendNext();
  }

 private:
  ~CPlainStream() override = default;
};

// Each message is done with when the subscriber has replied to it.
template <typename Message>
class CRepliedStream final
    : public CServiceStream<grpc::ServerBidiReactor<ipc::MNotificationReply, Message>, Message> {
 public:
  explicit CRepliedStream(std::shared_ptr<CPublisher<Message>> publisher)
      : CRepliedStream::CServiceStream(std::move(publisher)) {
    this->Begin();
    this->StartRead(&mReply);
  }

  void OnWriteDone(bool ok) override {
    const std::lock_guard lock(this->mMutex);
    this->mWriting = false;
    if (ok) {
      this->SendNext();  // where the reply was quicker than this
    } else {
      this->FinishOnce();
    }
  }

  void OnReadDone(bool ok) override {
    const std::lock_guard lock(this->mMutex);
    if (!ok) {
      this->FinishOnce();
      return;
    }
    if (this->mCurrent && mReply.sequence() == this->mCurrent->message.sequence()) {
      this->CompleteCurrent(mReply.result());
    }
    if (!this->mFinished) {
      this->StartRead(&mReply);
      this->SendNext();
    }
  }

 private:
  ~CRepliedStream() override = default;

  ipc::MNotificationReply mReply;
};

}  // namespace Rpc
