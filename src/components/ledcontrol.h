// The status LED on its three channels.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "src/components/iledcontrol.h"
#include "src/hal/iled.h"

// Owns the channels; nobody else calls them.
//
// Threads: one lock around each operation, so that its writes stay together. It is not held while a
// report is sent: the thread whose change finds nobody sending sends, in the order of the changes,
// also those that other threads make meanwhile. A diagnostics service that hangs holds up that one
// thread and no other caller of this class.
class CLedControl : public ILedControl {
 public:
  // Sets the channels up and lights the lamp steady yellow, without a report. A channel that fails
  // is logged; construction goes on.
  CLedControl(std::shared_ptr<ILed> red, std::shared_ptr<ILed> green, std::shared_ptr<ILed> blue);

  bool SetMainLed(ELedColor color, ELedMode mode) override;
  bool SetBrightness(uint8_t percent) override;
  uint8_t GetBrightness() const override;
  bool SetMinimumBrightness(uint8_t percent) override;
  bool ResetMinimumBrightness() override;

 private:
  using Action = std::function<bool(ILed&)>;
  struct Report {
    std::string value;
    std::chrono::system_clock::time_point time;
  };

  // These are called with the lock held.
  bool SetUp(ELedColor color, ELedMode mode, bool force);
  bool ApplyBrightness(uint8_t percent);
  bool SwitchOff(ELedColor color);
  bool OnEachChannel(ELedColor color, int sourceLine, const Action& action);

  // Called without it.
  void SendReports();

  const std::map<ELedColor, std::vector<std::shared_ptr<ILed>>> mChannels;

  mutable std::mutex mMutex;
  // Guarded by mMutex:
  uint8_t mBrightness = 100;
  ELedColor mColor = ELedColor::EYellow;
  ELedMode mMode = ELedMode::EOn;
  uint8_t mFloor = 0;
  std::deque<Report> mReports;
  bool mSending = false;
};
