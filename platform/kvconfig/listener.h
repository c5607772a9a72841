// Who hears of changes of one section: the handlers, and the promise that they end with their
// owner.
#pragma once

#include <functional>
#include <mutex>
#include <string>

#include "platform/kvconfig/kvconfig.h"

namespace KvConfig {

// Calls the handler; what it throws is logged under the name.
void CallLogged(const std::string& name, const std::function<void()>& handler);

struct ListenerOptions {
  std::string name;     // for the log
  std::string section;  // what it hears of,
  std::string key;      // and which keys of it
  EMatch match = EMatch::EBeginning;
  ChangeHandler onChange;  // these two may be empty
  ErrorHandler onError;
};

// Threads: Tell and TellError from any thread, one handler at a time; Close from any thread.
class CListener {
 public:
  explicit CListener(ListenerOptions options) : mOptions(std::move(options)) {}

  const std::string& Section() const { return mOptions.section; }

  // Calls the handler if the key is one that this listener hears.
  void Tell(const std::string& key, const Json::Value& value);
  void TellError(const std::string& error);

  // No handler is called any more and none is under way, and what they held is released, when this
  // returns; from inside a handler: when that returns.
  void Close();

 private:
  bool Hears(const std::string& key) const;
  void Run(const std::function<void()>& handler);
  void Release();

  ListenerOptions mOptions;     // the handlers are guarded by mMutex
  std::recursive_mutex mMutex;  // held while a handler runs, which may close its own listener
  bool mRunning = false;        // guarded by mMutex
  bool mClosed = false;         // guarded by mMutex
};

}  // namespace KvConfig
