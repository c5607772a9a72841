// A buzzer on the console's tone generator, with a volume of its own driver.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/sysfs/sysfsaccess.h"
#include "platform/worker/worker.h"
#include "src/hal/ibuzzer.h"
#include "src/hal/itonedevice.h"

// A beep that begins during another one ends with that one.
//
// Threads: Beep is called by one thread at a time, the others by any. The worker ends the beeps.
class CBuzzer : public IBuzzer, public CWorker {
 public:
  // The access is bound to the beeper driver's directory.
  explicit CBuzzer(std::shared_ptr<CSysfsAccess> access);
  CBuzzer(std::shared_ptr<CSysfsAccess> access, std::shared_ptr<IToneDevice> toneDevice,
          std::shared_ptr<ISteadyClock> clock = SystemSteadyClock());

  // Leaves the tone off.
  ~CBuzzer() override;
  CBuzzer(const CBuzzer&) = delete;
  CBuzzer& operator=(const CBuzzer&) = delete;

  void Beep() override;
  bool ReadVolume(uint8_t& volume) override;
  bool WriteVolume(uint8_t volume) override;

 private:
  // Switches the tone and reports it to diagnostics.
  void BuzzerEnable(bool on);

  const std::shared_ptr<CSysfsAccess> mAccess;
  const std::shared_ptr<IToneDevice> mToneDevice;
  WorkerCallHandle mSwitchOff;  // the last beep's end
};
