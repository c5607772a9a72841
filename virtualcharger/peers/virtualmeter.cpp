#include "virtualcharger/peers/virtualmeter.h"

#include <fmt/format.h>

#include <utility>

CVirtualMeter::CVirtualMeter(PeerEvents events)
    : mEvents(std::move(events)), mWire("meter", mEvents) {}

ipc::MResult CVirtualMeter::SetDisplayBrightness(const ipc::MDisplayBrightness& brightness) {
  auto message =
      mWire.Called("Meter1", "SetDisplayBrightness", fmt::format("{} %", brightness.percentage()));
  ipc::MResult result;
  if (mRefuses) {
    result.set_result(ipc::EResultIllegal);
    result.set_text("the display does not obey");
  }
  message.End(result);
  if (mRefuses) return result;
  mEvents(fmt::format("display {}", brightness.percentage()));
  return result;
}

void CVirtualMeter::Refuse(bool refuse) {
  mRefuses = refuse;
  mEvents(fmt::format("accepts {}", refuse ? 0 : 1));
}
