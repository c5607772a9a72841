#include "platform/kvconfig/store.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace KvConfig {
namespace {

std::map<std::string, Json::Value> Difference(const Json::Value& before, const Json::Value& after) {
  std::map<std::string, Json::Value> changes;
  for (const std::string& key : after.getMemberNames()) {
    if (before[key] != after[key]) {
      changes[key] = after[key];
    }
  }
  for (const std::string& key : before.getMemberNames()) {
    if (!after.isMember(key) && !before[key].isNull()) {
      changes[key] = Json::Value();
    }
  }
  return changes;
}

}  // namespace

CStore::CStore(std::string path, std::chrono::milliseconds settlingTime)
    : mPath(std::move(path)),
      mSettlingTime(settlingTime),
      mWatch(mPath),
      mContent(ReadStore(mPath)),
      mRoot(mContent.root ? mContent.root : std::make_shared<const Json::Value>(Json::objectValue)),
      mWorker("kvconfig") {
  mWorker.Start();
  mWorker.NonBlockingCall([this] { Follow(); });
}

CStore::~CStore() {
  mWatch.Stop();
  mWorker.Stop();
}

std::shared_ptr<const Json::Value> CStore::Root() const {
  const std::lock_guard lock(mMutex);
  return mRoot;
}

void CStore::Add(const std::shared_ptr<CListener>& listener) {
  std::string error;
  std::shared_ptr<const Json::Value> root;
  {
    const std::lock_guard lock(mMutex);
    mListeners.push_back(listener);
    error = mContent.error;
    root = mRoot;
  }
  if (!error.empty()) {
    listener->TellError(error);
  }
  TellSectionError(*listener, (*root)[listener->Section()]);
}

void CStore::Follow() {
  bool settling = false;
  for (;;) {
    const auto result = mWatch.Wait(settling ? std::optional(mSettlingTime) : std::nullopt);
    if (result == CFileWatch::EResult::EStopped) {
      return;
    }
    StoreContent content = ReadStore(mPath);
    settling = !content.root && result == CFileWatch::EResult::EChanged;
    if (!settling) {
      Take(content);
    }
  }
}

void CStore::Take(const StoreContent& content) {
  std::shared_ptr<const Json::Value> before;
  std::vector<std::shared_ptr<CListener>> listeners;
  {
    const std::lock_guard lock(mMutex);
    if (content.text == mContent.text && content.error == mContent.error) {
      return;
    }
    mContent = content;
    before = mRoot;
    if (content.root) {
      mRoot = content.root;
    }
    listeners = Listeners();
  }
  for (const auto& listener : listeners) {
    if (!content.root) {
      listener->TellError(content.error);
      continue;
    }
    const std::string& section = listener->Section();
    for (const auto& [key, value] :
         Difference(SectionOf(*before, section), SectionOf(*content.root, section))) {
      listener->Tell(key, value);
    }
    if ((*before)[section] != (*content.root)[section]) {
      TellSectionError(*listener, (*content.root)[section]);
    }
  }
}

void CStore::TellSectionError(CListener& listener, const Json::Value& section) const {
  if (!section.isNull() && !section.isObject()) {
    listener.TellError(DescribeMismatch(mPath, listener.Section(), "", section, "an object"));
  }
}

std::vector<std::shared_ptr<CListener>> CStore::Listeners() {
  std::vector<std::shared_ptr<CListener>> living;
  std::erase_if(mListeners, [&](const auto& each) {
    living.push_back(each.lock());
    if (living.back()) {
      return false;
    }
    living.pop_back();
    return true;
  });
  return living;
}

}  // namespace KvConfig
