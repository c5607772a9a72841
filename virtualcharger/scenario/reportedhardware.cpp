#include "virtualcharger/scenario/reportedhardware.h"

#include "utils/signalcatalogue.h"

namespace {

// What the daemon shows before it reports it for the first time: that it is not enabled.
constexpr auto kUnreported = "Yellow/On";

constexpr unsigned kTone = 4000;  // Hz, about the buzzer's

std::string Last(const CProcesses& processes, int identifier) {
  const auto last = processes.LastSignal(identifier);
  return last ? last->value : "";
}

// Of "Blue/Pulsating".
SLamp LampOf(const std::string& ledState) {
  const auto slash = ledState.find('/');
  if (slash == std::string::npos) return {"", "Off"};
  return {ledState.substr(0, slash), ledState.substr(slash + 1)};
}

}  // namespace

void CReportedHardware::Show(const CProcesses& processes) {
  auto ledState = Last(processes, Signals::LedState.identifier);
  if (ledState.empty() && processes.LastState()) ledState = kUnreported;
  const int percent = processes.Display() ? processes.Display()->value : mPercent;
  if (ledState != mLedState || percent != mPercent) {
    mHardware.ShowLamp(LampOf(ledState), percent);
    mLedState = ledState;
    mPercent = percent;
  }
  const auto buzzerState = Last(processes, Signals::BuzzerState.identifier);
  if (buzzerState != mBuzzerState) {
    mHardware.Sound(buzzerState == "true" ? kTone : 0);
    mBuzzerState = buzzerState;
  }
}
