// What the charger shows and tells now.
#include <fmt/format.h>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/names.h"

namespace {

constexpr std::chrono::seconds kAliveLimit{15};  // a message comes every 4 s

}  // namespace

void CCharger::ExpectState(int state, Limit within) {
  Expect(DaemonStateName(state), within, [&] {
    const auto& last = mBench.Processes().LastState();
    return last ? SSeen{DaemonStateName(last->value), last->time}
                : SSeen{"no report", mBench.Begin()};
  });
}

void CCharger::ExpectAlive() {
  const auto before = mBench.Processes().AliveMessages().value;
  const auto begin = std::chrono::steady_clock::now();
  const auto* const expected = "one more alive message";
  const auto seen = [&] { return "none since " + When(begin); };
  if (!Await(
          expected, seen, [&] { return mBench.Processes().AliveMessages().value > before; },
          kAliveLimit)) {
    Fail(expected, seen());
  }
}

void CCharger::ExpectLamp(const SLamp& lamp, Limit within) {
  Expect(LampWords(lamp), within, [&] { return mBench.Lamp(); });
}

void CCharger::ExpectBrightness(int percent, Limit within) {
  Expect(Percent(percent), within, [&] { return mBench.Brightness(); });
}

void CCharger::ExpectDisplay(int percent, Limit within) {
  Expect(Percent(percent), within, [&] {
    const auto& last = mBench.Processes().Display();
    return last ? SSeen{Percent(last->value), last->time} : SSeen{"nothing set", mBench.Begin()};
  });
}

void CCharger::ExpectSignal(int identifier, const std::string& text, Limit within) {
  Expect(text, within, [&] {
    const auto last = mBench.Processes().LastSignal(identifier);
    return last ? SSeen{last->value, last->time} : SSeen{"no such signal", mBench.Begin()};
  });
}

void CCharger::ExpectAttribute(const std::string& device, const std::string& attribute,
                               const std::string& text) {
  SSeen seen{"", {}};
  Expect(text, std::nullopt, [&] {
    const auto value =
        mBench.Hardware().Attribute(DevicePath(device), attribute).value_or("no such attribute");
    if (value != seen.words) seen = {value, std::chrono::steady_clock::now()};
    return seen;
  });
}

void CCharger::Expect(const std::string& expected, Limit within,
                      const std::function<SSeen()>& look) {
  const auto limit = LimitOf(within);
  auto last = look();
  const auto seen = [&] { return fmt::format("{}, since {}", last.words, When(last.since)); };
  const auto isSo = [&] {
    last = look();
    return last.words == expected;
  };
  const bool came = Await(expected + limit.words, seen, isSo, limit.Rest());
  if (!came || (within && last.since > limit.latest)) Fail(expected + limit.words, seen());
}

bool CCharger::Await(const std::string& awaited, const std::function<std::string()>& seen,
                     const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  struct SClear {
    std::optional<SAwaited>& awaited;
    ~SClear() { awaited.reset(); }
  };
  mAwaited = {awaited, seen};
  const SClear clear{mAwaited};
  return Await(condition, limit);
}

CCharger::SLimit CCharger::LimitOf(Limit within) const {
  if (!within) return {std::chrono::steady_clock::now() + kLimit, ""};
  const auto latest = mChangeBegin + *within;
  return {latest, ", at " + When(latest) + " at the latest"};
}

std::chrono::milliseconds CCharger::SLimit::Rest() const {
  return std::chrono::ceil<std::chrono::milliseconds>(latest - std::chrono::steady_clock::now());
}

void CCharger::Fail(const std::string& expected, const std::string& seen) {
  throw CStepFailure(fmt::format("expected: {}\nseen:     {}", expected, seen));
}

std::string CCharger::When(TimePoint time) const {
  return fmt::format("{:.3f} s", std::chrono::duration<double>(time - mBench.Begin()).count());
}
