#include "virtualcharger/desk/recorder.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto kLampStays = 300ms;
constexpr auto kDisplayStays = 1s;
constexpr auto kExpectationWaits = 3s;  // by itself, and has some time left
constexpr auto kMargin = 1s;
constexpr auto kShortestWait = 100ms;

std::string DisplayText(const std::optional<int>& display) {
  return display ? std::to_string(*display) : "";
}

std::string Wait(std::chrono::steady_clock::duration time) {
  const auto tenths = std::chrono::round<std::chrono::duration<long, std::deci>>(time);
  return fmt::format("wait {}ms\n", tenths.count() * 100);
}

}  // namespace

void CRecorder::Begin(TimePoint now, std::vector<std::string> before, const SShown& shown) {
  mOn = true;
  mBegin = now;
  mBefore = std::move(before);
  mLines.clear();
  mLamp = {shown.lamp, now, shown.lamp};
  mState = {shown.state, now, shown.state};
  mDisplay = {DisplayText(shown.display), now, DisplayText(shown.display)};
  mBeeps = shown.beeps;
}

void CRecorder::End(TimePoint now) {
  if (!mOn) return;
  WriteLamp(now, true);
  mOn = false;
}

std::size_t CRecorder::Step(TimePoint now, const std::string& line) {
  WriteLamp(now, true);
  const auto place = mLines.size();
  Add(now, line, false);
  return place;
}

void CRecorder::Ended(std::size_t place, bool ok, const std::string& text) {
  if (ok || place >= mLines.size()) return;
  auto& line = mLines[place].text;
  if (text.find("refused") != std::string::npos) {
    line += " rejected";
  } else {
    auto reason = text;
    std::ranges::replace(reason, '\n', ' ');
    line = fmt::format("# {}: {}", line, reason);
  }
}

void CRecorder::Show(TimePoint now, const SShown& shown) {
  if (!mOn) return;
  WriteLamp(now, false);
  Look(mState, now, shown.state);
  Write(mState, "expect state", true);
  Look(mLamp, now, shown.lamp);
  Look(mDisplay, now, DisplayText(shown.display));
  for (; mBeeps < shown.beeps; ++mBeeps) Add(now, "expect beep", true);
}

std::string CRecorder::Text() const {
  std::string text;
  for (const auto& step : mBefore) text += step + '\n';
  auto last = mBegin;
  bool expected = true;
  for (const auto& line : mLines) {
    const auto gap = line.time - last;
    if (line.expectation && gap > kExpectationWaits) text += Wait(gap - kMargin);
    if (!line.expectation && !expected && gap >= kShortestWait) text += Wait(gap);
    text += line.text + '\n';
    last = line.time;
    expected = line.expectation;
  }
  return text;
}

void CRecorder::Add(TimePoint time, const std::string& text, bool expectation) {
  if (!mOn) return;
  mLines.push_back({time, text, expectation});
  if (mLines.size() < kMostLines) return;
  mLines.push_back(
      {time, fmt::format("# {} lines: the recording has ended by itself", kMostLines), true});
  mOn = false;
}

void CRecorder::Look(SValue& value, TimePoint now, const std::string& shown) {
  if (shown != value.shown) {
    value.shown = shown;
    value.since = now;
  }
}

void CRecorder::Write(SValue& value, const std::string& step, bool when) {
  if (!when || value.shown == value.written || value.shown.empty()) return;
  value.written = value.shown;
  Add(value.since, step + ' ' + value.shown, true);
}

void CRecorder::WriteLamp(TimePoint now, bool last) {
  // No scenario has a word for mixed light, and a dark moment is the way from one light to another.
  const bool stays = now - mLamp.since >= kLampStays;
  Write(
      mLamp, "expect lamp",
      (stays || (last && mLamp.shown != "off")) && mLamp.shown.find("mixed") == std::string::npos);
  Write(mDisplay, "expect display", now - mDisplay.since >= kDisplayStays);
}
