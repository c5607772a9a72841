// What becomes of an error in the configuration, whenever it is found.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "statemachines/hsminterface.h"

// An error found before the diagnostics service can be told is kept until it can.
//
// Threads: Handle from any thread; the others from the owner's.
class CConfigErrors {
 public:
  // Whom to post the fatal error to; not owned.
  void SetMachine(std::weak_ptr<IHsmInterface> machine);

  // Logs the error and reports it, now or later.
  void Handle(const std::string& error);

  // Runs the function that initialises the diagnostics client: no error found meanwhile is lost.
  template <typename Initialize>
  void WhileUnreported(const Initialize& initialize) {
    const std::lock_guard lock(mMutex);
    initialize();
  }

  // Reports what was kept.
  void ReportPending() const;

 private:
  // Tells the diagnostics service, where it can be reached, and the machine, in any case.
  void Report() const;

  mutable std::mutex mMutex;
  std::weak_ptr<IHsmInterface> mMachine;  // guarded by mMutex
  bool mPending = false;                  // guarded by mMutex
};
