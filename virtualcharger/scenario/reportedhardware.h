// Shows and sounds what the daemon reports, where there is no hardware that it could write to.
#pragma once

#include <optional>
#include <string>

#include "virtualcharger/hardware/chargerhardware.h"
#include "virtualcharger/scenario/processes.h"

// Threads: one.
class CReportedHardware {
 public:
  explicit CReportedHardware(CChargerHardware& hardware) : mHardware(hardware) {}

  // Takes over what was reported since the last time: "LED state", "Buzzer state", and the
  // brightness that the meter's display was set to, which is the lamp's.
  void Show(const CProcesses& processes);

 private:
  CChargerHardware& mHardware;
  std::string mLedState;
  std::string mBuzzerState;
  int mPercent = 100;
};
