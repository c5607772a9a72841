// A callback that its owner may replace while another thread calls it.
#pragma once

#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

namespace Rpc {

// Threads: all from any thread. Call runs the callback under the slot's lock, so that Set returns
// only when the callback before it is not under way any more; from inside the callback it may be
// replaced too.
template <typename Callback>
class CCallbackSlot {
 public:
  void Set(Callback callback) {
    const std::lock_guard lock(mMutex);
    mCallback = std::make_shared<Callback>(std::move(callback));
  }

  // Returns what the callback returns, or nothing-was-set's default.
  template <typename... Arguments>
  auto Call(const Arguments&... arguments) {
    const std::lock_guard lock(mMutex);
    const std::shared_ptr<Callback> callback = mCallback;
    if (callback && *callback) {
      return (*callback)(arguments...);
    }
    return std::invoke_result_t<Callback, const Arguments&...>();
  }

 private:
  std::recursive_mutex mMutex;
  std::shared_ptr<Callback> mCallback;  // guarded by mMutex
};

}  // namespace Rpc
