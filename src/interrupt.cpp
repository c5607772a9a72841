#include "src/interrupt.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <mutex>
#include <thread>
#include <utility>

namespace Interrupt {
namespace {

// Taken by the handler too: it runs on its own thread only, which never holds it otherwise.
std::mutex sMutex;
std::function<void(int)> sHook;  // guarded by sMutex

void Handle(int signal) {
  const std::lock_guard lock(sMutex);
  if (sHook) {
    sHook(signal);
  }
}

void Mask(int how) {
  sigset_t interrupt;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  pthread_sigmask(how, &interrupt, nullptr);
}

}  // namespace

void StartThread() {
  Mask(SIG_BLOCK);
  std::thread([] {
    pthread_setname_np(pthread_self(), "signal");
    Mask(SIG_UNBLOCK);
    for (;;) {
      pause();
    }
  }).detach();
}

void SetHook(std::function<void(int)> hook) {
  {
    const std::lock_guard lock(sMutex);
    sHook = std::move(hook);
  }
  std::signal(SIGINT, Handle);
}

void RemoveHook() {
  std::signal(SIGINT, SIG_DFL);
  const std::lock_guard lock(sMutex);
  sHook = nullptr;
}

}  // namespace Interrupt
