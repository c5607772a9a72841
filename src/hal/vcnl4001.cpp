#include "src/hal/vcnl4001.h"

#include <utility>

#include "platform/log/log.h"
#include "utils/traceentry.h"

namespace {

constexpr float kSignalThreshold = 100.0F;

}  // namespace

CVcnl4001::CVcnl4001(const std::filesystem::path& basePath, std::shared_ptr<CSysfsAccess> access,
                     uint32_t minimum, uint32_t maximum)
    : CLightSensor(basePath, std::move(access), minimum, maximum, kSignalThreshold) {
  TraceEntry<CVcnl4001>("CVcnl4001");
}

void CVcnl4001::Enable() {
  TraceEntry<CVcnl4001>("Enable");
  mEnabled = true;
  GetIlluminancePercentage();
}

void CVcnl4001::Disable() {
  TraceEntry<CVcnl4001>("Disable");
  mEnabled = false;
}

uint8_t CVcnl4001::GetIlluminancePercentage() {
  TraceEntry<CVcnl4001>("GetIlluminancePercentage");
  uint32_t value = 0;
  if (mEnabled && ReadIlluminance(value)) {
    mPercentage = CalculatePercentage(value);
  }
  return mPercentage;
}

bool CVcnl4001::ReadIlluminance(uint32_t& value) {
  TraceEntry<CVcnl4001>("ReadIlluminance");
  if (!Measure("in_illuminance_raw", 1.0, value)) {
    LOG(Error, "(src/hal/vcnl4001:60) Failed to get input value for Vcnl4001");
    return false;
  }
  return true;
}
