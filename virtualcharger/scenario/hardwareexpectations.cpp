// What came from the daemon to the hardware since the mark, one after the other.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <system_error>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/names.h"

namespace {

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

  long Hz() const { return std::lround(kToneClock / on.divisor); }
  std::chrono::milliseconds Length() const {
    return std::chrono::round<std::chrono::milliseconds>(off.time - on.time);
  }
};

bool Sounds(const STone& tone) {
  return tone.divisor != 0;
}

// The first whole one.
std::optional<SBeep> FindBeep(const std::vector<STone>& tones) {
  const auto on = std::ranges::find_if(tones, Sounds);
  const auto off = std::find_if_not(on, tones.end(), Sounds);
  return off == tones.end() ? std::nullopt : std::optional(SBeep{*on, *off});
}

std::string Describe(const SBeep& beep) {
  return fmt::format("{} Hz for {} ms", beep.Hz(), beep.Length().count());
}

std::string Describe(const SBeepBounds& bounds) {
  std::string text = "a beep";
  if (bounds.hz) text += fmt::format(" of {} Hz", *bounds.hz);
  if (bounds.length) {
    text += fmt::format(" for {} ms to {} ms", bounds.length->first.count(),
                        bounds.length->second.count());
  }
  return text;
}

bool IsWithin(const SBeepBounds& bounds, const SBeep& beep) {
  if (bounds.hz && beep.Hz() != *bounds.hz) return false;
  return !bounds.length ||
         (beep.Length() >= bounds.length->first && beep.Length() <= bounds.length->second);
}

}  // namespace

std::string CCharger::ExpectBeep(const SBeepBounds& bounds) {
  const auto find = [this] { return FindBeep(mBench.Hardware().Tone().Since(mToneMark)); };
  const auto expected = Describe(bounds);
  const auto seen = [&]() -> std::string {
    const auto last = mBench.Hardware().Tone().Last();
    if (!last || !Sounds(*last)) return "no tone";
    return "a tone that does not end, since " + When(last->time);
  };
  if (!Await(
          expected, seen, [&] { return find().has_value(); }, kLimit))
    Fail(expected, seen());
  const auto beep = *find();
  if (!IsWithin(bounds, beep)) Fail(expected, Describe(beep) + ", since " + When(beep.on.time));
  mToneMark = beep.off.end;
  return Describe(beep);
}

void CCharger::ExpectNoBeep() {
  Await(mBench.Settle());
  for (const auto& tone : mBench.Hardware().Tone().Since(mToneMark)) {
    if (Sounds(tone)) Fail("no beep", "a tone at " + When(tone.time));
  }
}

void CCharger::ExpectWrite(const std::string& channel, const std::string& attribute,
                           const std::string& text) {
  const auto& history = mBench.Hardware().LampWrites();
  const auto expected = fmt::format("{} {} \"{}\"", channel, attribute, text);
  const auto seen = [&]() -> std::string {
    const auto writes = history.Since(mMark);
    return writes.empty() ? "no further write"
                          : fmt::format("{} at {}", Describe(writes[0]), When(writes[0].time));
  };
  const bool came = Await(
      expected, seen, [&] { return history.End() > mMark; }, kLimit);
  if (!came || Describe(history.Since(mMark).front()) != expected) Fail(expected, seen());
  ++mMark;
}

void CCharger::ExpectNoWrite() {
  constexpr auto expected = "nothing written";
  for (const auto& [peer, command] : mBench.Unanswered()) {
    Fail(expected, fmt::format("no reply to \"{}\" of {}, so that it may still be on its way",
                               command, peer));
  }
  Await(mBench.Settle());
  const auto writes = mBench.Hardware().LampWrites().Since(mMark);
  if (writes.empty()) return;
  Fail(expected,
       fmt::format("{} at {}{}", Describe(writes.front()), When(writes.front().time),
                   writes.size() > 1 ? fmt::format(", and {} more", writes.size() - 1) : ""));
}
