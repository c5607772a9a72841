#include "src/hal/opt3001.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/log/log.h"
#include "utils/traceentry.h"

namespace {

using std::chrono::milliseconds;

constexpr float kSignalThreshold = 100000.0F;
constexpr double kUnitsPerLux = 120.0;

// Also where the integration time is unknown.
constexpr milliseconds kRetryDelay{5000};

struct IntegrationTime {
  EIntegrationTime code;
  const char* text;
  milliseconds duration;  // a reading takes a little longer than its nominal time
};

constexpr auto kIntegrationTimes = std::to_array<IntegrationTime>({
    {EIntegrationTime::E100Milliseconds, "0.1", milliseconds(130)},
    {EIntegrationTime::E800Milliseconds, "0.8", milliseconds(900)},
});

}  // namespace

COpt3001::COpt3001(const std::filesystem::path& basePath, EIntegrationTime integrationTime,
                   milliseconds measurementPeriod, std::shared_ptr<CSysfsAccess> access,
                   uint32_t minimum, uint32_t maximum, std::shared_ptr<ISteadyClock> clock)
    : CLightSensor(basePath, std::move(access), minimum, maximum, kSignalThreshold),
      CWorker("lightsensor", std::move(clock)),
      mIntegrationTime(integrationTime),
      mMeasurementPeriod(measurementPeriod) {
  TraceEntry<COpt3001>("COpt3001");
  CWorker::Start();
}

COpt3001::~COpt3001() {
  COpt3001::Disable();
  CWorker::Stop();
}

void COpt3001::Enable() {
  TraceEntry<COpt3001>("Enable");
  if (mEnabled.exchange(true)) {
    LOG(Warning, "(src/hal/opt3001:55) Opt3001 is already enabled!");
    return;
  }
  SetIntegrationTime(mIntegrationTime);
  NonBlockingCall([this] { PollIlluminance(); });
}

void COpt3001::Disable() {
  TraceEntry<COpt3001>("Disable");
  if (!mEnabled.exchange(false)) {
    LOG(Trace, "(src/hal/opt3001:69) Opt3001 is not enabled!");
  }
}

uint8_t COpt3001::GetIlluminancePercentage() {
  TraceEntry<COpt3001>("GetIlluminancePercentage");
  return mPercentage;
}

bool COpt3001::ReadIlluminance(uint32_t& value) {
  TraceEntry<COpt3001>("ReadIlluminance");
  if (!Measure("in_illuminance_input", kUnitsPerLux, value)) {
    LOG(Error, "(src/hal/opt3001:109) Failed to get input value for Opt3001");
    return false;
  }
  return true;
}

void COpt3001::PollIlluminance() {
  TraceEntry<COpt3001>("PollIlluminance");
  if (!mEnabled) {
    return;
  }
  uint32_t value = 0;
  if (ReadIlluminance(value)) {
    mPercentage = CalculatePercentage(value);
    Sleep(mDelay.load());
  } else {
    Sleep(kRetryDelay);
  }
  NonBlockingCall([this] { PollIlluminance(); });
}

void COpt3001::SetIntegrationTime(EIntegrationTime code) {
  TraceEntry<COpt3001>("SetIntegrationTime");
  const auto time = std::ranges::find(kIntegrationTimes, code, &IntegrationTime::code);
  if (time == kIntegrationTimes.end()) {
    LOG(Error, "(src/hal/opt3001:140) Unsupported integration time enum: {}",
        static_cast<uint32_t>(code));
    mDelay = kRetryDelay;
    return;
  }
  if (!mAccess->Write(AttributePath("in_illuminance_integration_time"), time->text)) {
    LOG(Error, "(src/hal/opt3001:132) Failed to write opt3001 integration time: {}", time->text);
  }
  const milliseconds delay = mMeasurementPeriod - time->duration;
  mDelay = delay;
  LOG(Trace, "(src/hal/opt3001:136) Setting delay between measurements: {}ms", delay.count());
}
