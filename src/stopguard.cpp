#include "src/stopguard.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/log/log.h"
#include "src/hal/tonedevice.h"

namespace StopGuard {
namespace {

using namespace std::chrono_literals;

// Sanitizers slow everything down, and look for leaks only at an orderly end.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr auto kTimeForTheOrderlyEnd = 4000ms;
#else
constexpr auto kTimeForTheOrderlyEnd = 700ms;
#endif
constexpr auto kTimeForTheFarewell = 150ms;

struct Guard {
  std::mutex mutex;
  std::function<void()> farewell;  // guarded by mutex
  bool hasStarted = false;         // guarded by mutex
  bool hasStruck = false;          // guarded by mutex
};

// Never destroyed: the guard's thread may outlive main.
Guard& TheGuard() {
  static auto* const guard = new Guard;
  return *guard;
}

std::future<void> Begin(std::function<void()> function) {
  std::packaged_task<void()> task(std::move(function));
  auto done = task.get_future();
  std::thread(std::move(task)).detach();
  return done;
}

void Explain() {
  LOG(Warning,
      "The orderly end takes too long, as when a device does not answer; ending without it");
}

// Each of the acts may hang as well, the log too where the system's log service stands still.
[[noreturn]] void Strike() {
  std::vector<std::function<void()>> acts{SwitchToneOff, Explain};
  {
    const std::lock_guard lock(TheGuard().mutex);
    TheGuard().hasStruck = true;
    if (TheGuard().farewell) {
      acts.push_back(TheGuard().farewell);
    }
  }
  const auto end = std::chrono::steady_clock::now() + kTimeForTheFarewell;
  std::vector<std::future<void>> done;
  for (auto& act : acts) {
    done.push_back(Begin(std::move(act)));
  }
  for (const auto& each : done) {
    each.wait_until(end);
  }
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

void SetFarewell(std::function<void()> farewell) {
  std::unique_lock lock(TheGuard().mutex);
  if (TheGuard().hasStruck) {
    lock.unlock();
    for (;;) {
      pause();
    }
  }
  TheGuard().farewell = std::move(farewell);
}

void Start() {
  const std::lock_guard lock(TheGuard().mutex);
  if (std::exchange(TheGuard().hasStarted, true)) {
    return;
  }
  std::thread([] {
    std::this_thread::sleep_for(kTimeForTheOrderlyEnd);
    Strike();
  }).detach();
}

}  // namespace StopGuard
