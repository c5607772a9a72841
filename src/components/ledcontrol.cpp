#include "src/components/ledcontrol.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/diagnostics/diagnosticssignal.h"
#include "platform/log/log.h"
#include "platform/rpc/communicationexception.h"
#include "src/components/blinkcode.h"
#include "utils/signalcatalogue.h"
#include "utils/traceentry.h"

namespace {

constexpr int kFullScale = 1000;

// Whatever the brightness, a pulsating lamp keeps visibly moving and never goes quite dark.
constexpr int kPulsatingLeastMaximum = 76;
constexpr int kPulsatingMinimum = 3;

// What a mode does on a channel, and where the log says that it was asked for.
struct ModeAction {
  int sourceLine;
  std::function<bool(ILed&)> show;
};

const ModeAction kOff{228, [](ILed& led) { return led.SetBrightness(0); }};

std::optional<ModeAction> ActionOf(ELedMode mode) {
  switch (mode) {
    case ELedMode::EOn:
      return ModeAction{208, [](ILed& led) { return led.SetBrightness(kFullScale); }};
    case ELedMode::EOff:
      return kOff;
    case ELedMode::EPulsating:
      return ModeAction{251, [](ILed& led) {
                          return led.SetSmoothPattern({{kFullScale, 2500}, {0, 2500}});
                        }};
    case ELedMode::EFlashing:
      return ModeAction{302, [](ILed& led) {
                          return led.SetInstantPattern({{kFullScale, 167}, {0, 167}});
                        }};
    default:
      break;
  }
  if (mode < ELedMode::EBlink1 || mode > ELedMode::EBlink10) {
    return std::nullopt;
  }
  const int pulses = static_cast<int>(mode) - static_cast<int>(ELedMode::EBlink1) + 1;
  return ModeAction{
      302, [code = BlinkCode(pulses)](ILed& led) { return code && led.SetInstantPattern(*code); }};
}

void Send(const std::string& value, std::chrono::system_clock::time_point time) {
  try {
    CDiagnosticsSignal<std::string> signal(&Signals::LedState, ipc::EInstanceTypeAll);
    {
      const auto lock = signal.Lock();
      signal.SetValue(value);
      signal.SetTimestamp(time);
    }
    signal.Send();
  } catch (const Rpc::CommunicationException& exception) {
    LOG(Error,
        "(../feedback/src/components/ledcontrol:145) Failed to send diagnostics data. Error: "
        "'{}'.",
        exception.what());
  }
}

}  // namespace

CLedControl::CLedControl(std::shared_ptr<ILed> red, std::shared_ptr<ILed> green,
                         std::shared_ptr<ILed> blue)
    : mChannels{{ELedColor::ERed, {red}},
                {ELedColor::EGreen, {green}},
                {ELedColor::EBlue, {blue}},
                {ELedColor::EYellow, {red, green}},
                {ELedColor::EWhite, {red, green, blue}}} {
  if (!red->SetupTrigger() || !green->SetupTrigger() || !blue->SetupTrigger()) {
    LOG(Error, "(../feedback/src/components/ledcontrol:33) Failed to setup LEDs");
  }
  SetUp(mColor, mMode, true);
}

bool CLedControl::SetMainLed(ELedColor color, ELedMode mode) {
  bool ok = false;
  {
    const std::lock_guard lock(mMutex);
    ok = SetUp(color, mode, false);
  }
  SendReports();
  return ok;
}

bool CLedControl::SetBrightness(uint8_t percent) {
  const std::lock_guard lock(mMutex);
  return ApplyBrightness(percent);
}

uint8_t CLedControl::GetBrightness() const {
  TraceEntry<CLedControl>("GetBrightness");
  const std::lock_guard lock(mMutex);
  return mBrightness;
}

bool CLedControl::SetMinimumBrightness(uint8_t percent) {
  TraceEntry<CLedControl>("SetMinimumBrightness");
  const std::lock_guard lock(mMutex);
  mFloor = percent;
  return ApplyBrightness(mBrightness);
}

bool CLedControl::ResetMinimumBrightness() {
  TraceEntry<CLedControl>("ResetMinimumBrightness");
  const std::lock_guard lock(mMutex);
  mFloor = 0;
  return ApplyBrightness(mBrightness);
}

bool CLedControl::SetUp(ELedColor color, ELedMode mode, bool force) {
  TraceEntry<CLedControl>("SetMainLed");
  const std::string_view colorText = kLedColorTexts.at(static_cast<size_t>(color));
  const std::string_view modeText = kLedModeTexts.at(static_cast<size_t>(mode));
  LOG(Debug, "(../feedback/src/components/ledcontrol:58) LED set to [{} | {}]", colorText,
      modeText);

  bool ok = true;
  if (force) {
    LOG(Debug, "(../feedback/src/components/ledcontrol:69) Forcing all LEDs off");
    SwitchOff(ELedColor::ERed);
    SwitchOff(ELedColor::EGreen);
    SwitchOff(ELedColor::EBlue);
  } else if (color != mColor) {
    ok = SwitchOff(mColor);
  } else if (mode == mMode) {
    LOG(Debug,
        "(../feedback/src/components/ledcontrol:62) LED type and mode identical, skipping "
        "SetMainLed");
    return true;
  }

  mColor = color;
  mMode = mode;
  ok = ok && ApplyBrightness(mBrightness);
  if (ok) {
    const std::optional<ModeAction> action = ActionOf(mode);
    if (!action) {
      LOG(Warning, "(../feedback/src/components/ledcontrol:128) Unsupported led mode {}",
          static_cast<int>(mode));
      return false;
    }
    ok = OnEachChannel(color, action->sourceLine, action->show);
  }
  if (!force) {
    mReports.push_back({LedStateText({color, mode}), std::chrono::system_clock::now()});
  }
  return ok;
}

bool CLedControl::ApplyBrightness(uint8_t percent) {
  TraceEntry<CLedControl>("SetBrightness");
  mBrightness = percent;
  int maximum = std::max(percent, mFloor) * 10;
  int minimum = 0;
  if (mMode == ELedMode::EPulsating) {
    maximum = std::max(maximum, kPulsatingLeastMaximum);
    minimum = kPulsatingMinimum;
  }
  return std::ranges::all_of(mChannels.at(mColor), [&](const auto& led) {
    return led->SetMaxBrightness(static_cast<uint16_t>(maximum)) &&
           led->SetMinBrightness(static_cast<uint16_t>(minimum));
  });
}

bool CLedControl::SwitchOff(ELedColor color) {
  return OnEachChannel(color, kOff.sourceLine, kOff.show);
}

bool CLedControl::OnEachChannel(ELedColor color, int sourceLine, const Action& action) {
  const auto channels = mChannels.find(color);
  if (channels == mChannels.end()) {
    LOG(Warning, "(../feedback/src/components/ledcontrol:{}) Unsupported led color: {}", sourceLine,
        static_cast<int>(color));
    return false;
  }
  return std::ranges::all_of(channels->second, [&](const auto& led) { return action(*led); });
}

void CLedControl::SendReports() {
  std::unique_lock lock(mMutex);
  if (mSending) {
    return;
  }
  mSending = true;
  try {
    while (!mReports.empty()) {
      const Report report = std::move(mReports.front());
      mReports.pop_front();
      lock.unlock();
      Send(report.value, report.time);
      lock.lock();
    }
  } catch (...) {
    lock.lock();
    mSending = false;
    throw;
  }
  mSending = false;
}
