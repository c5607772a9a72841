#include "platform/kvconfig/kvconfig.h"

#include <fmt/format.h>

#include <filesystem>
#include <map>
#include <mutex>
#include <utility>

#include "platform/kvconfig/listener.h"
#include "platform/kvconfig/store.h"
#include "platform/kvconfig/storefile.h"

namespace KvConfig {
namespace {

struct ProcessStore {
  std::mutex mutex;
  std::string path = "/etc/ovra.json";  // guarded by mutex
  std::weak_ptr<CStore> followed;       // guarded by mutex
};

ProcessStore& Process() {
  static ProcessStore process;
  return process;
}

std::string StorePath() {
  const std::lock_guard lock(Process().mutex);
  return Process().path;
}

std::shared_ptr<CStore> FollowedStore() {
  const std::lock_guard lock(Process().mutex);
  auto store = Process().followed.lock();
  if (!store) {
    store = std::make_shared<CStore>(Process().path);
    Process().followed = store;
  }
  return store;
}

// json's own isInt also takes 4.0.
bool IsInteger(const Json::Value& value) {
  return value.type() != Json::realValue && value.isInt();
}

// The getters on whatever root the object has at the moment.
template <typename Interface>
class CReader : public Interface {
 public:
  CReader(std::string section, ErrorHandler errorHandler)
      : mSection(std::move(section)), mErrorHandler(std::move(errorHandler)) {}

  bool GetBool(const std::string& key, bool defaultValue) const override {
    const Json::Value value = Get(key, &Json::Value::isBool, "true or false");
    return value.isNull() ? defaultValue : value.asBool();
  }

  int GetInt(const std::string& key, int defaultValue) const override {
    const Json::Value value = Get(key, &IsInteger, "an integer of 32 bits");
    return value.isNull() ? defaultValue : value.asInt();
  }

  std::string GetString(const std::string& key, const std::string& defaultValue) const override {
    const Json::Value value = Get(key, &Json::Value::isString, "a text");
    return value.isNull() ? defaultValue : value.asString();
  }

 protected:
  virtual std::shared_ptr<const Json::Value> Root() const = 0;

  void Report(const std::string& error) const {
    if (mErrorHandler) {
      CallLogged(mSection, [&] { mErrorHandler(error); });
    }
  }

  const std::string mPath = StorePath();
  const std::string mSection;
  const ErrorHandler mErrorHandler;

 private:
  // Null when it is missing or does not fit.
  template <typename Fits>
  Json::Value Get(const std::string& key, Fits fits, const char* expected) const {
    const auto root = Root();
    const Json::Value& value = SectionOf(*root, mSection)[key];
    const bool isGood = value.isNull() || std::invoke(fits, value);
    if (IsNews(key, isGood ? Json::Value() : value)) {
      Report(DescribeMismatch(mPath, mSection, key, value, expected));
    }
    return isGood ? value : Json::Value();
  }

  // Remembers what does not fit, so that it is reported once and not at each look.
  bool IsNews(const std::string& key, const Json::Value& misfit) const {
    const std::lock_guard lock(mMutex);
    return std::exchange(mMisfits[key], misfit) != misfit && !misfit.isNull();
  }

  mutable std::mutex mMutex;
  mutable std::map<std::string, Json::Value> mMisfits;  // by key; guarded by mMutex
};

class CReadOnlyConfig : public CReader<IReadOnlyConfig> {
 public:
  CReadOnlyConfig(const std::string& section, ErrorHandler errorHandler, bool optional)
      : CReader(section, std::move(errorHandler)) {
    const StoreContent content = ReadStore(mPath);
    if (content.root) {
      mRoot = content.root;
    }
    const Json::Value& found = (*mRoot)[mSection];
    if (!found.isNull() && !found.isObject()) {
      Report(DescribeMismatch(mPath, mSection, "", found, "an object"));
    } else if (!content.root && !optional) {
      Report(content.error);
    } else if (found.isNull() && !optional) {
      Report(fmt::format("{}: section \"{}\" is missing", mPath, mSection));
    }
  }

 private:
  std::shared_ptr<const Json::Value> Root() const override { return mRoot; }

  std::shared_ptr<const Json::Value> mRoot = std::make_shared<const Json::Value>(Json::objectValue);
};

class CSubscription : public ISubscription {
 public:
  explicit CSubscription(std::shared_ptr<CListener> listener) : mListener(std::move(listener)) {}
  ~CSubscription() override { mListener->Close(); }

 private:
  const std::shared_ptr<CListener> mListener;
};

class CConfig : public CReader<IConfig> {
 public:
  CConfig(const std::string& section, ErrorHandler errorHandler, ChangeHandler changeHandler)
      : CReader(section, errorHandler),
        mStore(FollowedStore()),
        mOwnSubscription(Listen({.name = section,
                                 .section = section,
                                 .key = "",
                                 .onChange = std::move(changeHandler),
                                 .onError = std::move(errorHandler)})) {}

  Subscription Subscribe(const std::string& subscriber, const std::string& key,
                         ValueHandler handler, EMatch match) override {
    return Listen(
        {.name = subscriber,
         .section = mSection,
         .key = key,
         .match = match,
         .onChange = [handler = std::move(handler)](const std::string&,
                                                    const Json::Value& value) { handler(value); },
         .onError = {}});
  }

 private:
  std::shared_ptr<const Json::Value> Root() const override { return mStore->Root(); }

  Subscription Listen(ListenerOptions options) const {
    auto listener = std::make_shared<CListener>(std::move(options));
    mStore->Add(listener);
    return std::make_unique<CSubscription>(listener);
  }

  const std::shared_ptr<CStore> mStore;
  const Subscription mOwnSubscription;
};

}  // namespace

void SetStore(const std::string& path) {
  const std::lock_guard lock(Process().mutex);
  Process().path = std::filesystem::absolute(path);
}

IConfig* Create(const std::string& section, ErrorHandler errorHandler,
                ChangeHandler changeHandler) {
  return new CConfig(section, std::move(errorHandler), std::move(changeHandler));
}

IReadOnlyConfig* CreateReadOnly(const std::string& section, ErrorHandler errorHandler,
                                bool optional) {
  return new CReadOnlyConfig(section, std::move(errorHandler), optional);
}

void Write(const std::string& section, const std::string& key, const Json::Value& value) {
  WriteStore(StorePath(), section, key, value);
}

}  // namespace KvConfig
