// A store of the test's own and everything that the settings library says about it.
#pragma once

#include <gmock/gmock.h>
#include <sys/fsuid.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/kvconfig/kvconfig.h"
#include "tests/support/logcapture.h"
#include "tests/support/temporarydirectory.h"

// What was heard, the oldest first, as text: "key=value" or an error.
class Heard {
 public:
  void Add(std::string text) {
    const std::lock_guard lock(mMutex);
    mTexts.push_back(std::move(text));
    mChanged.notify_all();
  }

  // All of it once the last one holds the text.
  std::vector<std::string> Until(const std::string& last) const {
    std::unique_lock lock(mMutex);
    const auto isThere = [&] {
      return !mTexts.empty() && mTexts.back().find(last) != std::string::npos;
    };
    // A limit that only a fault reaches.
    EXPECT_TRUE(mChanged.wait_for(lock, std::chrono::seconds(60), isThere)) << "no " << last;
    return mTexts;
  }

  void Clear() {
    const std::lock_guard lock(mMutex);
    mTexts.clear();
  }

  std::vector<std::string> Texts() const {
    const std::lock_guard lock(mMutex);
    return mTexts;
  }

 private:
  mutable std::mutex mMutex;
  mutable std::condition_variable mChanged;
  std::vector<std::string> mTexts;
};

class StoreFixture : public testing::Test {
 protected:
  StoreFixture() { KvConfig::SetStore(mStore); }

  // As a writer that replaces the store at once.
  void Replace(const std::string& text) const {
    mDirectory.WriteFile("replacement", text);
    std::filesystem::rename(mDirectory.Path() / "replacement", mStore);
  }

  // Runs the commands in the test's directory.
  void Shell(const std::string& commands) const {
    const std::string line = "set -e; cd '" + mDirectory.Path().string() + "'; " + commands;
    ASSERT_EQ(std::system(line.c_str()), 0) << commands;
  }

  std::unique_ptr<KvConfig::IConfig> Create(KvConfig::ChangeHandler onChange = {}) {
    return std::unique_ptr<KvConfig::IConfig>(
        KvConfig::Create("s", OnError(), std::move(onChange)));
  }

  std::unique_ptr<KvConfig::IReadOnlyConfig> CreateReadOnly(bool optional) {
    return std::unique_ptr<KvConfig::IReadOnlyConfig>(
        KvConfig::CreateReadOnly("s", OnError(), optional));
  }

  KvConfig::ErrorHandler OnError() {
    return [this](const std::string& error) { mErrors.Add(error); };
  }

  KvConfig::ChangeHandler OnChange() {
    return [this](const std::string& key, const Json::Value& value) {
      mChanges.Add(key + "=" + (value.isNull() ? "null" : value.asString()));
    };
  }

  LogCapture mLog{Log::ELogLevel::EWarning};
  const TemporaryDirectory mDirectory;
  const std::filesystem::path mStore = mDirectory.Path() / "etc" / "ovra.json";
  Heard mErrors;
  Heard mChanges;
};

// Permissions stop what this thread, and any that it starts, does as long as this lives, also where
// the tests run as root.
class AsNobody {
 public:
  AsNobody() { setfsuid(65534); }
  ~AsNobody() { setfsuid(geteuid()); }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;
};
