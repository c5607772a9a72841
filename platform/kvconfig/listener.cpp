#include "platform/kvconfig/listener.h"

#include <exception>
#include <utility>

#include "platform/log/log.h"

namespace KvConfig {

void CallLogged(const std::string& name, const std::function<void()>& handler) {
  try {
    handler();
  } catch (const std::exception& exception) {
    LOG(Error, "A configuration handler of \"{}\" failed: {}", name, exception.what());
  } catch (...) {
    LOG(Error, "A configuration handler of \"{}\" failed: unknown exception", name);
  }
}

bool CListener::Hears(const std::string& key) const {
  return mOptions.match == EMatch::EWhole ? key == mOptions.key : key.starts_with(mOptions.key);
}

void CListener::Tell(const std::string& key, const Json::Value& value) {
  if (Hears(key)) {
    Run([&] {
      if (mOptions.onChange) {
        mOptions.onChange(key, value);
      }
    });
  }
}

void CListener::TellError(const std::string& error) {
  Run([&] {
    if (mOptions.onError) {
      mOptions.onError(error);
    }
  });
}

void CListener::Run(const std::function<void()>& handler) {
  const std::lock_guard lock(mMutex);
  if (mClosed) {
    return;
  }
  mRunning = true;
  CallLogged(mOptions.name, handler);
  mRunning = false;
  if (mClosed) {
    Release();
  }
}

void CListener::Close() {
  const std::lock_guard lock(mMutex);
  mClosed = true;
  // A function that runs is not to be destroyed under itself.
  if (!mRunning) {
    Release();
  }
}

void CListener::Release() {
  mOptions.onChange = nullptr;
  mOptions.onError = nullptr;
}

}  // namespace KvConfig
