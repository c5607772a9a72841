#include "virtualcharger/scenario/bench.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "platform/ipc/genericcontrol.pb.h"
#include "platform/kvconfig/kvconfig.h"
#include "utils/signalcatalogue.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/scenario/names.h"

namespace {

// For what only a fault can delay.
constexpr std::chrono::seconds kLimit{5};

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

}  // namespace

CBench::CBench(const CProcesses::SSettings& processes, const CChargerHardware::SSettings& hardware)
    : mHardware(hardware), mProcesses(processes) {
  KvConfig::SetStore(mProcesses.Root().Store());
}

std::optional<std::string> CBench::StartHardware() {
  auto failure = mHardware.Start();
  if (failure) mReported.emplace(mHardware);
  SpareTheConsole();
  return failure;
}

void CBench::Renew(const std::string& store) {
  mProcesses.Forget();
  if (store.empty()) {
    mProcesses.Root().WriteStore();
  } else {
    mProcesses.Root().WriteStore(store);
  }
  SpareTheConsole();
  mHardware.Sensor().SetLux(0);
  mHardware.DarkenLamp();
}

// The daemon would take this machine's own console for its beeper.
void CBench::SpareTheConsole() {
  if (mReported && access("/dev/tty0", F_OK) == 0) SetStored("HwHasBuzzer", false);
}

void CBench::Look() {
  mProcesses.Look();
  const auto daemon = mProcesses.Status(kDaemon).state;
  if (daemon == EProcessState::Stopped || daemon == EProcessState::Dead) mLogLevel = kOwnLogLevel;
  if (mReported) mReported->Show(mProcesses);
  const auto writes = mHardware.LampWrites().Since(mLooked);
  mLooked += writes.size();
  const auto changed = writes.empty() ? std::chrono::steady_clock::now() : writes.back().time;
  const auto watch = [&](SSeen& last, std::string words) {
    if (words != last.words) last = {std::move(words), changed};
  };
  watch(mLamp, LampWords(mHardware.Light().Describe()));
  watch(mBrightness, BrightnessWords(mHardware.Light()));
}

SView CBench::View() const {
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
  view.beeps = mHardware.Tone().Beeps();
  return view;
}

Deed CBench::Stop() {
  mHardware.Faults().ClearAll();
  return Then(mProcesses.StopAll(), [this](const std::string&) {
    CheckSilence();
    return Done();
  });
}

Deed CBench::Request(ERequest request, bool accepted) {
  const auto reports = mProcesses.StateReports().End();
  auto verdict = Ask(request == ERequest::Enable ? "enable" : "disable", accepted);
  if (!accepted) return verdict;
  return Then(std::move(verdict), [this, reports](const std::string&) {
    return Until([this, reports] { return mProcesses.StateReports().End() > reports; }, kLimit,
                 "expected: the daemon reports the state that follows\nseen:     no report");
  });
}

Deed CBench::Trigger(int event, bool accepted) {
  return Ask(fmt::format("event {}", event), accepted);
}

Deed CBench::Settle() {
  if (!mProcesses.Runs(kDaemon) || !mProcesses.Runs(kBoardController)) return Done();
  return mProcesses.Tell(kBoardController, fmt::format("event {}", kNoEvent));
}

Deed CBench::SetConnector(int state) {
  return Tell(kSessionManager, fmt::format("connector {}", state));
}

Deed CBench::SetError(int identifier, bool on) {
  return Tell(kDiagnostics, fmt::format("error {} {}", identifier, on ? "on" : "off"));
}

Deed CBench::SetMeter(bool accepts) {
  return Then(mProcesses.Tell(kMeter, accepts ? "accept" : "refuse"),
              [](const std::string&) { return Done(); });
}

Deed CBench::SetLogLevel(Log::ELogLevel level) {
  return Then(Ask(fmt::format("log-level {}", static_cast<int>(level)), true),
              [=, this](const std::string&) {
                mLogLevel = level;
                return Done();
              });
}

Deed CBench::Control(EProcessAction action, const std::string& process) {
  auto control = mProcesses.Control(action, process);
  if (action != EProcessAction::Stop || process != kDaemon) return control;
  return Then(std::move(control), [this](const std::string&) {
    CheckSilence();
    return Done();
  });
}

Deed CBench::SetLight(double lux) {
  CheckHardware();
  mHardware.Sensor().SetLux(lux);
  return Done();
}

Deed CBench::SetStored(const std::string& key, const Json::Value& value) {
  KvConfig::Write(StoreSection(key), key, value);
  return Done();
}

Deed CBench::SetFault(const std::string& device, const std::string& attribute,
                      const SFault& fault) {
  CheckHardware();
  mHardware.Faults().Set(DevicePath(device), attribute, fault);
  return Done();
}

Deed CBench::Heal(const std::string& device, const std::string& attribute) {
  CheckHardware();
  if (mHardware.Faults().Clear(DevicePath(device), attribute)) return Done();
  throw CStepFailure(fmt::format("no fault was set at {} {}; \"heal\" alone ends all faults",
                                 device.empty() ? "all" : device,
                                 attribute.empty() ? "all" : attribute));
}

Deed CBench::HealAll() {
  CheckHardware();
  mHardware.Faults().ClearAll();
  return Done();
}

Deed CBench::Ask(const std::string& question, bool accepted) {
  return Then(mProcesses.Tell(kBoardController, question), [=, this](const std::string& outcome) {
    if (outcome == kOutcomeOk ? accepted : !accepted && outcome.starts_with(kOutcomeRefused)) {
      return Done();
    }
    throw CStepFailure(fmt::format("expected: {}\nseen:     {}", accepted ? "accepted" : "rejected",
                                   outcome == kOutcomeOk ? "accepted" : Reply(outcome)));
  });
}

// A refusal says in which state the daemon is, and what leads out of it.
std::string CBench::Reply(const std::string& outcome) const {
  if (!outcome.starts_with(kOutcomeRefused)) return outcome;
  auto text = outcome.substr(0, outcome.find_last_not_of(' ') + 1);
  const auto& state = mProcesses.LastState();
  if (!state) return text;
  text += "; the daemon is " + DaemonStateName(state->value);
  if (state->value == ipc::EStateUninitialized) text += ": \"disable\" first";
  if (state->value == ipc::EStateDisabled) text += ": \"enable\" first";
  return text;
}

std::string CBench::Note(const std::string& peer, const std::string& outcome) const {
  if (outcome == kOutcomeOk) return {};
  if (outcome == kOutcomeNobody) {
    return "nobody is subscribed to " + peer + "; the next subscriber is told";
  }
  if (outcome == kOutcomeLate) return "the daemon has not replied in time";
  return "the daemon's reply: " + Reply(outcome);
}

Deed CBench::Tell(const std::string& peer, const std::string& command) {
  return Then(mProcesses.Tell(peer, command), [=, this](const std::string& outcome) {
    if (outcome == kOutcomeNobody || outcome == kOutcomeLate) {
      mUnanswered[peer] = command;
    } else {
      mUnanswered.erase(peer);
    }
    return Done(Note(peer, outcome));
  });
}

void CBench::CheckHardware() const {
  if (HasHardware()) return;
  throw CStepFailure("nothing would come of it: this machine gives no virtual hardware");
}

void CBench::CheckSilence() const {
  const auto tone = mHardware.Tone().Last();
  if (tone && tone->divisor != 0) {
    throw CStepFailure("the daemon has ended, but the tone is still on");
  }
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

bool IsOfSettling(std::string_view line) {
  return line.find("Feedback event triggered: Unknown[") != std::string_view::npos ||
         line.find("Unknown feedback event type received") != std::string_view::npos;
}
