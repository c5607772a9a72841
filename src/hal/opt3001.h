// The TI OPT3001 light sensor.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>

#include "platform/worker/worker.h"
#include "src/hal/lightsensor.h"

// How long the sensor gathers light for one reading, nominally.
enum class EIntegrationTime : uint32_t { E100Milliseconds = 0, E800Milliseconds = 1 };

// A reading blocks for the integration time, so that a worker takes one a measurement period and
// keeps its percentage: GetIlluminancePercentage never waits. The chain of readings begins with
// Enable and ends after Disable when its next reading would be due, or with a reading that throws.
//
// Threads: every operation from any thread.
class COpt3001 : public CLightSensor, public CWorker {
 public:
  COpt3001(const std::filesystem::path& basePath, EIntegrationTime integrationTime,
           std::chrono::milliseconds measurementPeriod, std::shared_ptr<CSysfsAccess> access,
           uint32_t minimum, uint32_t maximum,
           std::shared_ptr<ISteadyClock> clock = SystemSteadyClock());

  // Waits for a reading that is under way, not for the next one.
  ~COpt3001() override;
  COpt3001(const COpt3001&) = delete;
  COpt3001& operator=(const COpt3001&) = delete;

  void Enable() override;
  void Disable() override;
  uint8_t GetIlluminancePercentage() override;

 private:
  bool ReadIlluminance(uint32_t& value);
  void PollIlluminance();
  void SetIntegrationTime(EIntegrationTime code);

  const EIntegrationTime mIntegrationTime;
  const std::chrono::milliseconds mMeasurementPeriod;
  std::atomic<std::chrono::milliseconds> mDelay{};  // from the end of a reading to the next one
  std::atomic<uint8_t> mPercentage{0};
};
