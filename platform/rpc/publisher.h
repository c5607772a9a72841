// The serving end of notifications, without the transport: who subscribed, what each still has to
// be sent, and what they replied.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/ipc/common.pb.h"

namespace Rpc {

// What became of one published message: counts the subscribers that have not replied yet.
class CDelivery {
 public:
  void Expect() {
    const std::lock_guard lock(mMutex);
    ++mOutstanding;
  }

  // A subscriber replied, or went away (then with an empty result, which is Ok).
  void Complete(const ipc::MResult& result) {
    const std::lock_guard lock(mMutex);
    if (mResult.result() == ipc::EResultOk) {
      mResult = result;
    }
    --mOutstanding;
    mCondition.notify_all();
  }

  // True when all have replied within the limit; the result is the first that is not Ok.
  bool Wait(std::chrono::milliseconds limit, ipc::MResult& result) {
    std::unique_lock lock(mMutex);
    const bool complete = mCondition.wait_for(lock, limit, [this] { return mOutstanding == 0; });
    result = mResult;
    return complete;
  }

 private:
  std::mutex mMutex;
  std::condition_variable mCondition;
  int mOutstanding = 0;  // guarded by mMutex
  ipc::MResult mResult;  // guarded by mMutex
};

// One subscriber's backlog. A subscriber that does not read loses older messages, never the newest:
// beyond the limit, a message that a newer one replaces goes first, then the oldest.
template <typename Message>
class CBacklog {
 public:
  struct Item {
    Message message;
    std::shared_ptr<CDelivery> delivery;  // empty for what was published before the subscription
  };
  // Whether the second message makes the first one out of date.
  using Replaces = bool (*)(const Message&, const Message&);

  static constexpr size_t kLimit = 256;

  explicit CBacklog(Replaces replaces) : mReplaces(replaces) {}
  ~CBacklog() { Clear(); }

  void Push(Item item) {
    mItems.push_back(std::move(item));
    if (mItems.size() <= kLimit) {
      return;
    }
    auto victim = mItems.begin();
    for (auto each = mItems.begin(); each != mItems.end(); ++each) {
      if (std::any_of(std::next(each), mItems.end(),
                      [&](const Item& newer) { return mReplaces(each->message, newer.message); })) {
        victim = each;
        break;
      }
    }
    Complete(*victim);
    mItems.erase(victim);
  }

  bool IsEmpty() const { return mItems.empty(); }

  Item Pop() {
    Item item = std::move(mItems.front());
    mItems.pop_front();
    return item;
  }

  void Clear() {
    std::for_each(mItems.begin(), mItems.end(), Complete);
    mItems.clear();
  }

  static void Complete(const Item& item) {
    if (item.delivery) {
      item.delivery->Complete({});
    }
  }

 private:
  const Replaces mReplaces;
  std::deque<Item> mItems;
};

// Threads: everything from any thread. A subscriber is called under the publisher's lock and must
// not call back.
template <typename Message>
class CPublisher {
 public:
  using Replaces = typename CBacklog<Message>::Replaces;

  class ISubscriber {
   public:
    virtual ~ISubscriber() = default;
    virtual void Push(typename CBacklog<Message>::Item item) = 0;
  };

  // Told the number of subscribers at each change, under the publisher's lock.
  using CountReporter = std::function<void(size_t)>;

  // Messages are kept for later subscribers until a newer one replaces them. Without retention
  // nothing is kept.
  explicit CPublisher(Replaces replaces, bool retain = true, CountReporter reportCount = {})
      : mReplaces(replaces), mRetain(retain), mReportCount(std::move(reportCount)) {}

  Replaces GetReplaces() const { return mReplaces; }

  std::shared_ptr<CDelivery> Publish(const Message& message) {
    auto delivery = std::make_shared<CDelivery>();
    const std::lock_guard lock(mMutex);
    if (mRetain) {
      std::erase_if(mCurrent, [&](const Message& old) { return mReplaces(old, message); });
      mCurrent.push_back(message);
    }
    for (ISubscriber* subscriber : mSubscribers) {
      delivery->Expect();
      subscriber->Push({message, delivery});
    }
    return delivery;
  }

  // The subscriber is handed what is kept, in order of publication, before anything newer.
  void Add(ISubscriber* subscriber) {
    const std::lock_guard lock(mMutex);
    for (const Message& message : mCurrent) {
      subscriber->Push({message, nullptr});
    }
    mSubscribers.push_back(subscriber);
    ReportCount();
  }

  void Remove(ISubscriber* subscriber) {
    const std::lock_guard lock(mMutex);
    if (std::erase(mSubscribers, subscriber) > 0) {
      ReportCount();
    }
  }

 private:
  void ReportCount() const {
    if (mReportCount) {
      mReportCount(mSubscribers.size());
    }
  }

  const Replaces mReplaces;
  const bool mRetain;
  const CountReporter mReportCount;
  std::mutex mMutex;
  std::vector<Message> mCurrent;           // guarded by mMutex
  std::vector<ISubscriber*> mSubscribers;  // guarded by mMutex
};

}  // namespace Rpc
