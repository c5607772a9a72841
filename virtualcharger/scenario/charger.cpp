#include "virtualcharger/scenario/charger.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "platform/kvconfig/kvconfig.h"
#include "utils/signalcatalogue.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/scenario/names.h"

namespace {

// The lamp of a daemon that is not enabled.
const SLamp kDisabled{"Yellow", "On"};

// No daemon knows it, so that it is taken and changes nothing.
constexpr int kNoEvent = 1'000'000;

std::uint32_t Brightest(const SChannelLight& light) {
  std::uint32_t level = light.pattern.empty() ? light.level : 0;
  for (const auto& step : light.pattern) level = std::max(level, light.Shown(step.brightness));
  return level;
}

std::string BrightnessWords(const CStatusLight& status) {
  std::optional<std::uint32_t> lit;
  for (const auto& channel : status.Channels()) {
    const auto light = channel->Light();
    if (Brightest(light) == 0) continue;
    if (lit && *lit != light.maximum) return "uneven";
    lit = light.maximum;
  }
  return Percent(lit.value_or(0) / 10.0);
}

std::string Note(const std::string& peer, const std::string& outcome) {
  if (outcome == kOutcomeOk) return {};
  if (outcome == kOutcomeNobody) {
    return "nobody is subscribed to " + peer + "; the next subscriber is told";
  }
  if (outcome == kOutcomeLate) return "the daemon has not replied in time";
  return "the daemon's reply: " + outcome;
}

}  // namespace

CCharger::CCharger(const CProcesses::SSettings& processes,
                   const CChargerHardware::SSettings& hardware, CInterrupt& interrupt)
    : mHardware(hardware), mProcesses(processes, interrupt, [this] { Watch(); }) {
  KvConfig::SetStore(mProcesses.Root().Store());
}

void CCharger::Start() {
  if (const auto failure = mHardware.Start()) throw CCannotRun(*failure);
  mProcesses.Start();
  ExpectLamp(kDisabled, std::nullopt);
}

void CCharger::Stop() {
  mHardware.Faults().ClearAll();
  mProcesses.Stop();
  CheckSilence();
}

SView CCharger::View() const {
  SView view{};
  view.time = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - mBegin);
  const auto& status = mHardware.Light();
  view.lamp = status.Describe();
  view.brightness = BrightnessWords(status);
  for (std::size_t channel = 0; channel < view.patterns.size(); ++channel) {
    const auto light = status.Channels()[channel]->Light();
    view.levels[channel] = Brightest(light);
    view.patterns[channel] = PatternText(light.pattern);
    std::erase(view.patterns[channel], '\n');
  }
  if (const auto& state = mProcesses.LastState()) view.state = DaemonStateName(state->value);
  if (const auto& display = mProcesses.Display()) view.display = Percent(display->value);
  if (const auto signal = mProcesses.LastSignal(Signals::LedState.identifier)) {
    view.ledState = signal->value;
  }
  bool silent = true;
  for (const auto& tone : mHardware.Tone().Tones()) {
    if (silent && tone.divisor != 0) ++view.beeps;
    silent = tone.divisor == 0;
  }
  return view;
}

void CCharger::Request(ERequest request, bool accepted) {
  const auto& reports = mProcesses.StateReports();
  const auto before = reports.size();
  Ask(request == ERequest::Enable ? "enable" : "disable", accepted);
  const auto* const expected = "the daemon reports the state that follows";
  const auto seen = [] { return std::string("no report"); };
  if (accepted && !Await(
                      expected, seen, [&] { return reports.size() > before; }, kLimit)) {
    Fail(expected, seen());
  }
}

void CCharger::Trigger(int event, bool accepted) {
  Ask(fmt::format("event {}", event), accepted);
}

std::string CCharger::SetConnector(int state) {
  return Tell(kSessionManager, fmt::format("connector {}", state));
}

std::string CCharger::SetError(int identifier, bool on) {
  return Tell(kDiagnostics, fmt::format("error {} {}", identifier, on ? "on" : "off"));
}

void CCharger::SetLight(double lux) {
  BeginChange();
  mHardware.Sensor().SetLux(lux);
}

void CCharger::SetStored(const std::string& key, const Json::Value& value) {
  BeginChange();
  KvConfig::Write(StoreSection(key), key, value);
}

void CCharger::SetMeter(bool accepts) {
  BeginChange();
  mProcesses.Tell(kMeter, accepts ? "accept" : "refuse");
}

void CCharger::Mark() {
  mMark = mHardware.LampWrites().End();
  mToneMark = mHardware.Tone().Tones().size();
  mReportMark = mProcesses.StateReports().size();
  mProcesses.DaemonLog().Read(false);
  mProcesses.DaemonLog().ForgetAll();
}

void CCharger::Control(EProcessAction action, const std::string& process) {
  BeginChange();
  mProcesses.Control(action, process);
  if (action == EProcessAction::Stop && process == kDaemon) CheckSilence();
}

void CCharger::SetFault(const std::string& device, const std::string& attribute,
                        const SFault& fault) {
  BeginChange();
  mHardware.Faults().Set(DevicePath(device), attribute, fault);
}

void CCharger::Heal() {
  BeginChange();
  mHardware.Faults().ClearAll();
}

void CCharger::Wait(std::chrono::milliseconds time) {
  mProcesses.Await([] { return false; }, time);
}

void CCharger::Watch() {
  LookAtLamp();
  if (mWatcher) mWatcher();
}

void CCharger::LookAtLamp() {
  const auto watch = [](SSeen& last, std::string words) {
    if (words != last.words) last = {std::move(words), std::chrono::steady_clock::now()};
  };
  watch(mLamp, LampWords(mHardware.Light().Describe()));
  watch(mBrightness, BrightnessWords(mHardware.Light()));
}

std::optional<CCharger::SWaiting> CCharger::Waiting() const {
  return mAwaited ? std::optional(SWaiting{mAwaited->words, mAwaited->seen()}) : std::nullopt;
}

void CCharger::BeginChange() {
  LookAtLamp();
  mChangeBegin = std::chrono::steady_clock::now();
}

// What has begun in the daemon has ended when this returns: it takes one event after the other.
void CCharger::Settle() {
  if (!mProcesses.Runs(kDaemon) || !mProcesses.Runs(kBoardController)) return;
  mProcesses.Tell(kBoardController, fmt::format("event {}", kNoEvent));
}

void CCharger::CheckSilence() const {
  const auto tones = mHardware.Tone().Tones();
  if (!tones.empty() && tones.back().divisor != 0) {
    throw CStepFailure("the daemon has ended, but the tone is still on");
  }
}

std::string CCharger::Tell(const std::string& peer, const std::string& command) {
  BeginChange();
  const auto outcome = mProcesses.Tell(peer, command);
  if (outcome == kOutcomeNobody || outcome == kOutcomeLate) {
    mUnanswered[peer] = command;
  } else {
    mUnanswered.erase(peer);
  }
  return Note(peer, outcome);
}

void CCharger::Ask(const std::string& question, bool accepted) {
  BeginChange();
  const auto outcome = mProcesses.Tell(kBoardController, question);
  if (outcome == kOutcomeOk ? accepted : !accepted && outcome.starts_with(kOutcomeRefused)) return;
  Fail(accepted ? "accepted" : "rejected", outcome == kOutcomeOk ? "accepted" : outcome);
}

std::string LampWords(const SLamp& lamp) {
  auto words = lamp.colour + (lamp.colour.empty() ? "" : " ") + lamp.mode;
  std::transform(words.begin(), words.end(), words.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return words;
}

std::string Percent(double value) {
  return fmt::format("{:g}%", value);
}
