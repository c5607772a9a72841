// Waits for what another thread or process does.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

// False when the condition has not become true within a limit that only a fault reaches.
inline bool Eventually(const std::function<bool()>& condition) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}
