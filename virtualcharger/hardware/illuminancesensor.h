// The ambient light sensor, as the kernel's industrial I/O offers it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

#include "platform/worker/steadyclock.h"
#include "virtualcharger/hardware/device.h"

// A reading comes when the sensor has collected light for its integration time, 0.1 s or 0.8 s, and
// tells the light at that moment.
//
// Threads: may be called from any.
class CIlluminanceSensor : public IDevice {
 public:
  // Quick: readings come at once.
  explicit CIlluminanceSensor(std::shared_ptr<ISteadyClock> clock, bool quick = false);

  std::vector<SAttribute> Attributes() const override;
  int Read(std::string_view attribute, std::string& text) override;
  int Write(std::string_view attribute, std::string_view text) override;
  void Close() override;

  // 0 or more.
  void SetLux(double lux);
  double Lux() const;

 private:
  double Measure();

  const std::shared_ptr<ISteadyClock> mClock;
  const bool mQuick;

  mutable std::mutex mMutex;
  std::condition_variable mClosing;
  // Guarded by mMutex.
  double mLux = 0;
  bool mLongIntegration = true;
  bool mClosed = false;
};
