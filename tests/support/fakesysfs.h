// LED class devices as attributes in memory, with one history of what is written to all of them.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/sysfs/sysfsaccess.h"

// Threads: any.
class CWriteHistory {
 public:
  void Add(std::string line) {
    std::function<void()> hook;
    {
      const std::lock_guard lock(mMutex);
      mLines.push_back(std::move(line));
      hook = mHook;
    }
    if (hook) {
      hook();
    }
  }

  // What was added since the last time, the oldest first.
  std::vector<std::string> Take() {
    const std::lock_guard lock(mMutex);
    return std::exchange(mLines, {});
  }

  // Called on the writing thread after each line from now on; an empty hook ends that.
  void OnAdd(std::function<void()> hook) {
    const std::lock_guard lock(mMutex);
    mHook = std::move(hook);
  }

 private:
  std::mutex mMutex;
  // Guarded by mMutex:
  std::vector<std::string> mLines;
  std::function<void()> mHook;
};

// One device. Its lines in the history begin with its name: "red pattern=0 0 0 0"; of a write that
// was told to fail they end with " failed".
//
// Threads: any.
class CFakeSysfs : public CSysfsAccess {
 public:
  enum class EOperation { ERead, EWrite, EWait };

  CFakeSysfs(std::string name, std::shared_ptr<CWriteHistory> history)
      : mName(std::move(name)), mHistory(std::move(history)) {}

  bool Write(const std::string& attribute, std::string_view text) override {
    const bool fails = Fails(EOperation::EWrite, attribute);
    if (!fails) {
      Set(attribute, std::string(text));
    }
    mHistory->Add(mName + " " + attribute + "=" + std::string(text) + (fails ? " failed" : ""));
    return !fails;
  }

  bool Read(const std::string& attribute, std::string& text) override {
    if (Fails(EOperation::ERead, attribute)) {
      return false;
    }
    text = Value(attribute);
    return true;
  }

  bool WaitForAccess(const std::string& attribute, std::chrono::milliseconds limit) override {
    mHistory->Add(mName + " " + attribute + " awaited for " + std::to_string(limit.count()));
    return !Fails(EOperation::EWait, attribute);
  }

  std::string Value(const std::string& attribute) const {
    const std::lock_guard lock(mMutex);
    return mValues.at(attribute);
  }

  void Set(const std::string& attribute, std::string text) {
    const std::lock_guard lock(mMutex);
    mValues[attribute] = std::move(text);
  }

  // The next so many operations on the attribute fail.
  void Fail(EOperation operation, const std::string& attribute, int count = 1) {
    const std::lock_guard lock(mMutex);
    mFailures[{operation, attribute}] = count;
  }

 private:
  bool Fails(EOperation operation, const std::string& attribute) {
    const std::lock_guard lock(mMutex);
    const auto failure = mFailures.find({operation, attribute});
    return failure != mFailures.end() && failure->second-- > 0;
  }

  const std::string mName;
  const std::shared_ptr<CWriteHistory> mHistory;

  mutable std::mutex mMutex;
  // Guarded by mMutex:
  std::map<std::string, std::string> mValues{{"trigger", "none"},
                                             {"pattern", ""},
                                             {"max_pattern_brightness", "1000"},
                                             {"min_pattern_brightness", "0"}};
  std::map<std::pair<EOperation, std::string>, int> mFailures;
};
