#include <fmt/format.h>

#include <algorithm>
#include <system_error>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/names.h"

namespace {

constexpr std::chrono::seconds kAliveLimit{15};  // a message comes every 4 s
constexpr double kToneClock = 1'193'180;         // Hz

std::string Describe(const SWrite& write) {
  const auto device = std::ranges::find(kStatusLightDevices, write.device);
  const auto channel = static_cast<std::size_t>(device - kStatusLightDevices.begin());
  auto text = fmt::format("{} {} \"{}\"", Channels()[channel], write.attribute, write.text);
  if (write.error != 0) {
    text += fmt::format(", refused: {}", std::generic_category().message(write.error));
  }
  return text;
}

struct SBeep {
  STone on;
  STone off;
  std::size_t next;  // the place behind it
};

// The first whole one from the mark on.
std::optional<SBeep> FindBeep(const std::vector<STone>& tones, std::size_t mark) {
  const auto sounds = [](const STone& tone) { return tone.divisor != 0; };
  const auto on =
      std::find_if(tones.begin() + static_cast<std::ptrdiff_t>(mark), tones.end(), sounds);
  const auto off = std::find_if_not(on, tones.end(), sounds);
  if (off == tones.end()) return std::nullopt;
  return SBeep{*on, *off, static_cast<std::size_t>(off - tones.begin()) + 1};
}

}  // namespace

void CCharger::ExpectState(int state, Limit within) {
  Expect(DaemonStateName(state), within, [&] {
    const auto& last = mProcesses.LastState();
    return last ? SSeen{DaemonStateName(last->value), last->time} : SSeen{"no report", mBegin};
  });
}

void CCharger::ExpectAlive() {
  const auto before = mProcesses.AliveMessages();
  if (!mProcesses.Await([&] { return mProcesses.AliveMessages() > before; }, kAliveLimit)) {
    throw CStepFailure(fmt::format("expected: one more alive message\nseen:     none in {} s",
                                   kAliveLimit.count()));
  }
}

void CCharger::ExpectLamp(const SLamp& lamp, Limit within) {
  Expect(LampWords(lamp), within, [&] {
    Watch();
    return mLamp;
  });
}

void CCharger::ExpectBrightness(int percent, Limit within) {
  Expect(Percent(percent), within, [&] {
    Watch();
    return mBrightness;
  });
}

void CCharger::ExpectDisplay(int percent, Limit within) {
  Expect(Percent(percent), within, [&] {
    const auto& last = mProcesses.Display();
    return last ? SSeen{Percent(last->value), last->time} : SSeen{"nothing set", mBegin};
  });
}

void CCharger::ExpectSignal(int identifier, const std::string& text, Limit within) {
  Expect(text, within, [&] {
    const auto last = mProcesses.LastSignal(identifier);
    return last ? SSeen{last->value, last->time} : SSeen{"no such signal", mBegin};
  });
}

void CCharger::ExpectAttribute(const std::string& device, const std::string& attribute,
                               const std::string& text) {
  Expect(text, std::nullopt, [&] {
    const auto value = mHardware.Attribute(DevicePath(device), attribute);
    return SSeen{value.value_or("no such attribute"), std::chrono::steady_clock::now()};
  });
}

std::string CCharger::ExpectBeep() {
  const auto find = [this] { return FindBeep(mHardware.Tone().Tones(), mToneMark); };
  mProcesses.Await([&] { return find().has_value(); }, kLimit);
  const auto beep = find();
  if (!beep) {
    const auto tones = mHardware.Tone().Tones();
    throw CStepFailure(
        fmt::format("expected: a beep\nseen:     {}",
                    tones.empty() || tones.back().divisor == 0
                        ? "no tone"
                        : "a tone that does not end, since " + When(tones.back().time)));
  }
  mToneMark = beep->next;
  return fmt::format(
      "{:.0f} Hz for {} ms", kToneClock / beep->on.divisor,
      std::chrono::round<std::chrono::milliseconds>(beep->off.time - beep->on.time).count());
}

void CCharger::ExpectNoBeep() {
  Settle();
  const auto tones = mHardware.Tone().Tones();
  for (auto index = mToneMark; index < tones.size(); ++index) {
    if (tones[index].divisor == 0) continue;
    throw CStepFailure(
        fmt::format("expected: no beep\nseen:     a tone at {}", When(tones[index].time)));
  }
}

void CCharger::ExpectWrite(const std::string& channel, const std::string& attribute,
                           const std::string& text) {
  const auto& history = mHardware.LampWrites();
  mProcesses.Await([&] { return history.End() > mMark; }, kLimit);
  const auto writes = history.Since(mMark);
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
  Settle();
  const auto writes = mHardware.LampWrites().Since(mMark);
  if (writes.empty()) return;
  throw CStepFailure(
      fmt::format("expected: nothing written\nseen:     {} at {}{}", Describe(writes.front()),
                  When(writes.front().time),
                  writes.size() > 1 ? fmt::format(", and {} more", writes.size() - 1) : ""));
}

void CCharger::Expect(const std::string& expected, Limit within,
                      const std::function<SSeen()>& look) {
  const auto now = std::chrono::steady_clock::now();
  const auto latest = within ? mChangeBegin + *within : now + kLimit;
  mProcesses.Await([&] { return look().words == expected; },
                   std::chrono::ceil<std::chrono::milliseconds>(latest - now));
  const auto seen = look();
  if (seen.words == expected && (!within || seen.since <= latest)) return;
  throw CStepFailure(fmt::format("expected: {}{}\nseen:     {}, since {}", expected,
                                 within ? ", at " + When(latest) + " at the latest" : "",
                                 seen.words, When(seen.since)));
}

std::string CCharger::When(TimePoint time) const {
  return fmt::format("{:.3f} s", std::chrono::duration<double>(time - mBegin).count());
}
