#include "virtualcharger/scenario/charger.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <system_error>

#include "utils/signalcatalogue.h"
#include "virtualcharger/hardware/devicetree.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/scenario/names.h"

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kLimit = 5s;  // for what only a fault can delay
constexpr int kLedState = Signals::LedState.identifier;

const SLamp kReady{"Green", "On"};

std::string ChannelOf(std::string_view device) {
  const auto found = std::find(kStatusLightDevices.begin(), kStatusLightDevices.end(), device);
  return Channels()[static_cast<std::size_t>(found - kStatusLightDevices.begin())];
}

std::string DeviceOf(const std::string& channel) {
  if (channel.empty()) return {};
  const auto found = std::find(Channels().begin(), Channels().end(), channel);
  return std::string(kStatusLightDevices[static_cast<std::size_t>(found - Channels().begin())]);
}

std::uint32_t Brightest(const SChannelLight& light) {
  std::uint32_t level = light.pattern.empty() ? light.level : 0;
  for (const auto& step : light.pattern) level = std::max(level, light.Shown(step.brightness));
  return level;
}

std::string Describe(const SWrite& write) {
  auto text = fmt::format("{} {} \"{}\"", ChannelOf(write.device), write.attribute, write.text);
  if (write.error != 0) {
    text += fmt::format(", refused: {}", std::generic_category().message(write.error));
  }
  return text;
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

CCharger::CCharger(const CProcesses::SSettings& settings, unsigned hz, CInterrupt& interrupt)
    : mFaults(std::make_shared<CFaults>(SystemSteadyClock())),
      mHistory(std::make_shared<CWriteHistory>(SystemSteadyClock())),
      mLight(SystemSteadyClock(), hz),
      mProcesses(settings, interrupt, [this] { Watch(); }) {}

void CCharger::Start() {
  auto failure = EnterPrivateNamespace();
  if (!failure) {
    mHardware.emplace(CFuseServer::Trees{
        {kLedsBinding.source, std::make_shared<CDeviceTree>(mLight.Devices(), mFaults, mHistory)}});
    failure = mHardware->Start({kLedsBinding});
  }
  if (failure) throw CCannotRun(*failure);
  mProcesses.Start();
  ExpectLamp(kReady, std::nullopt);
  ExpectSignal(kLedState, "Green/On", std::nullopt);
}

void CCharger::Stop() {
  mFaults->ClearAll();
  mProcesses.Stop();
}

SView CCharger::View() const {
  SView view{};
  view.time = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - mBegin);
  view.lamp = mLight.Describe();
  for (std::size_t channel = 0; channel < view.patterns.size(); ++channel) {
    const auto light = mLight.Channels()[channel]->Light();
    view.levels[channel] = Brightest(light);
    view.patterns[channel] = PatternText(light.pattern);
    std::erase(view.patterns[channel], '\n');
  }
  if (const auto signal = mProcesses.LastSignal(kLedState)) view.ledState = signal->text;
  return view;
}

std::string CCharger::SetConnector(int state) {
  return Tell("session-manager", fmt::format("connector {}", state));
}

std::string CCharger::SetError(int identifier, bool on) {
  return Tell("diagnostics", fmt::format("error {} {}", identifier, on ? "on" : "off"));
}

void CCharger::ExpectLamp(const SLamp& lamp, Limit within) {
  Expect("lamp " + LampWords(lamp), within, [&] {
    Watch();
    return SSince{mLamp == lamp, "lamp " + LampWords(mLamp), mLampSince};
  });
}

void CCharger::ExpectSignal(int identifier, const std::string& text, Limit within) {
  Expect(text, within, [&] {
    const auto last = mProcesses.LastSignal(identifier);
    return last ? SSince{last->text == text, last->text, last->time}
                : SSince{false, "no such signal", mBegin};
  });
}

void CCharger::ExpectWrite(const std::string& channel, const std::string& attribute,
                           const std::string& text) {
  mProcesses.Await([&] { return mHistory->End() > mMark; }, kLimit);
  const auto writes = mHistory->Since(mMark);
  const auto expected = fmt::format("{} {} \"{}\"", channel, attribute, text);
  if (!writes.empty() && Describe(writes.front()) == expected) {
    ++mMark;
    return;
  }
  throw CStepFailure(fmt::format(
      "expected: {}\nseen:     {}", expected,
      writes.empty() ? "no further write"
                     : fmt::format("{} at {}", Describe(writes.front()), When(writes[0].time))));
}

void CCharger::ExpectNoWrite() {
  for (const auto& [peer, command] : mUnanswered) {
    throw CStepFailure(
        fmt::format("expected: nothing written\nseen:     no reply to \"{}\" of {}, so that it may "
                    "still be on its way",
                    command, peer));
  }
  const auto writes = mHistory->Since(mMark);
  if (writes.empty()) return;
  throw CStepFailure(
      fmt::format("expected: nothing written\nseen:     {} at {}{}", Describe(writes.front()),
                  When(writes.front().time),
                  writes.size() > 1 ? fmt::format(", and {} more", writes.size() - 1) : ""));
}

void CCharger::Mark() {
  mMark = mHistory->End();
}

void CCharger::Control(EProcessAction action, const std::string& process) {
  BeginChange();
  mProcesses.Control(action, process);
}

void CCharger::SetFault(const std::string& channel, const std::string& attribute,
                        const SFault& fault) {
  BeginChange();
  mFaults->Set(DeviceOf(channel), attribute, fault);
}

void CCharger::Heal() {
  BeginChange();
  mFaults->ClearAll();
}

void CCharger::Wait(std::chrono::milliseconds time) {
  mProcesses.Await([] { return false; }, time);
}

void CCharger::Watch() {
  auto lamp = mLight.Describe();
  if (lamp == mLamp) return;
  mLamp = std::move(lamp);
  mLampSince = std::chrono::steady_clock::now();
}

void CCharger::BeginChange() {
  Watch();
  mChangeBegin = std::chrono::steady_clock::now();
}

void CCharger::Expect(const std::string& expected, Limit within,
                      const std::function<SSince()>& look) {
  const auto now = std::chrono::steady_clock::now();
  const auto latest = within ? mChangeBegin + *within : now + kLimit;
  mProcesses.Await([&] { return look().asExpected; },
                   std::chrono::ceil<std::chrono::milliseconds>(latest - now));
  const auto seen = look();
  if (seen.asExpected && (!within || seen.time <= latest)) return;
  throw CStepFailure(fmt::format("expected: {}{}\nseen:     {}, since {}", expected,
                                 within ? ", at " + When(latest) + " at the latest" : "",
                                 seen.words, When(seen.time)));
}

std::string CCharger::Tell(const std::string& peer, const std::string& command) {
  BeginChange();
  const auto note = Note(peer, mProcesses.Tell(peer, command));
  if (note.empty()) {
    mUnanswered.erase(peer);
  } else {
    mUnanswered[peer] = command;
  }
  return note;
}

std::string CCharger::When(TimePoint time) const {
  return fmt::format("{:.3f} s", std::chrono::duration<double>(time - mBegin).count());
}

std::string LampWords(const SLamp& lamp) {
  auto words = lamp.colour + (lamp.colour.empty() ? "" : " ") + lamp.mode;
  std::transform(words.begin(), words.end(), words.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return words;
}
