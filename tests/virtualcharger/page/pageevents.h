// The charger's side of the page's server: keeps what comes for the test's thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <string>

#include "virtualcharger/page/pageserver.h"

class CPageEvents : public IPageHandler {
 public:
  struct SEntry {
    ClientId client;
    bool mayWrite;
    std::string type;
  };

  void OnHello(ClientId client, bool mayWrite) override { Push({client, mayWrite, "hello"}); }
  void OnMessage(ClientId client, const Json::Value& message) override {
    Push({client, true, message["type"].asString()});
  }

  SEntry Next() {
    std::unique_lock lock(mMutex);
    if (!mArrived.wait_for(lock, kLimit, [this] { return !mEntries.empty(); })) {
      throw std::runtime_error("no client said anything");
    }
    auto entry = mEntries.front();
    mEntries.pop_front();
    return entry;
  }

 private:
  void Push(const SEntry& entry) {
    const std::lock_guard lock(mMutex);
    mEntries.push_back(entry);
    mArrived.notify_one();
  }

  static constexpr std::chrono::seconds kLimit{30};

  std::mutex mMutex;
  std::condition_variable mArrived;
  std::deque<SEntry> mEntries;
};
