// The store while it is followed: its last good content and who hears of its changes.
#pragma once

#include <json/json.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/kvconfig/filewatch.h"
#include "platform/kvconfig/listener.h"
#include "platform/kvconfig/storefile.h"
#include "platform/worker/worker.h"

namespace KvConfig {

// Owns the watch and its thread, on which the listeners are told.
//
// Threads: every operation from any thread; destroyed on any thread but its own.
class CStore {
 public:
  // A writer that does not replace the file at once leaves it broken for a moment: what is broken
  // is read again when nothing has changed for the settling time.
  explicit CStore(std::string path,
                  std::chrono::milliseconds settlingTime = std::chrono::milliseconds(50));
  ~CStore();
  CStore(const CStore&) = delete;
  CStore& operator=(const CStore&) = delete;

  // The last good content; an empty object before there was one.
  std::shared_ptr<const Json::Value> Root() const;

  // The listener hears every change after what Root returned at this moment, for as long as its
  // owner keeps it. One that wants errors hears on this thread of those that are there already.
  void Add(const std::shared_ptr<CListener>& listener);

 private:
  void Follow();
  void Take(const StoreContent& content);
  void TellSectionError(CListener& listener, const Json::Value& section) const;
  std::vector<std::shared_ptr<CListener>> Listeners();

  const std::string mPath;
  const std::chrono::milliseconds mSettlingTime;
  CFileWatch mWatch;

  mutable std::mutex mMutex;
  // Guarded by mMutex:
  StoreContent mContent;  // as it was read last
  std::shared_ptr<const Json::Value> mRoot;
  std::vector<std::weak_ptr<CListener>> mListeners;

  CWorker mWorker;
};

}  // namespace KvConfig
