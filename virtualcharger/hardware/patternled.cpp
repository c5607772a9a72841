#include "virtualcharger/hardware/patternled.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

namespace {

constexpr std::uint32_t kFullScale = 1000;

std::string_view WithoutLineEnd(std::string_view text) {
  if (!text.empty() && text.back() == '\n') text.remove_suffix(1);
  return text;
}

// 0 or an errno value, by the rules of the kernel's kstrtoul in base 10.
int ParseNumber(std::string_view text, std::uint64_t& number) {
  text = WithoutLineEnd(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) return EINVAL;
  return error == std::errc::result_out_of_range ? ERANGE : 0;
}

int WriteLimit(std::string_view text, std::uint32_t& limit) {
  std::uint64_t number = 0;
  if (ParseNumber(text, number) != 0 || number > kFullScale) return EINVAL;
  limit = static_cast<std::uint32_t>(number);
  return 0;
}

std::string Line(std::uint32_t number) {
  return std::to_string(number) + '\n';
}

}  // namespace

std::uint32_t SChannelLight::Shown(std::uint32_t patternLevel) const {
  const auto range = std::int64_t{maximum} - minimum;
  return static_cast<std::uint32_t>(minimum + patternLevel * range / kFullScale);
}

CPatternLed::CPatternLed(std::shared_ptr<ISteadyClock> clock, unsigned hz,
                         std::uint32_t maxBrightness)
    : mClock(std::move(clock)), mHz(hz), mMaxBrightness(maxBrightness) {}

std::vector<SAttribute> CPatternLed::Attributes() const {
  const std::lock_guard lock(mMutex);
  std::vector<SAttribute> attributes{
      {"brightness", true, 0}, {"max_brightness", false, 0}, {"trigger", true, 0}};
  if (mTriggered) {
    attributes.push_back({"pattern", true, mGeneration});
    attributes.push_back({"max_pattern_brightness", true, mGeneration});
    attributes.push_back({"min_pattern_brightness", true, mGeneration});
  }
  return attributes;
}

int CPatternLed::Read(std::string_view attribute, std::string& text) {
  const std::lock_guard lock(mMutex);
  auto value = Value(attribute);
  if (!value) return ENOENT;
  text = std::move(*value);
  return 0;
}

std::optional<std::string> CPatternLed::Value(std::string_view attribute) const {
  if (attribute == "brightness") return Line(LightNow().level);
  if (attribute == "max_brightness") return Line(mMaxBrightness);
  if (attribute == "trigger") return mTriggered ? "none [pattern]\n" : "[none] pattern\n";
  if (!mTriggered) return std::nullopt;
  if (attribute == "pattern") return mPlayer ? PatternText(mPlayer->Steps()) : "";
  if (attribute == "max_pattern_brightness") return Line(mMaximum);
  if (attribute == "min_pattern_brightness") return Line(mMinimum);
  return std::nullopt;
}

int CPatternLed::Write(std::string_view attribute, std::string_view text) {
  const std::lock_guard lock(mMutex);
  if (text.empty()) return 0;
  if (attribute == "brightness") return WriteBrightness(text);
  if (attribute == "max_brightness") return EACCES;
  if (attribute == "trigger") return WriteTrigger(text);
  if (!mTriggered) return ENOENT;
  if (attribute == "pattern") return WritePattern(text);
  if (attribute == "max_pattern_brightness") return WriteLimit(text, mMaximum);
  if (attribute == "min_pattern_brightness") return WriteLimit(text, mMinimum);
  return ENOENT;
}

SChannelLight CPatternLed::Light() const {
  const std::lock_guard lock(mMutex);
  return LightNow();
}

std::vector<SLightSegment> CPatternLed::Segments(ISteadyClock::TimePoint from,
                                                 ISteadyClock::TimePoint to) const {
  const std::lock_guard lock(mMutex);
  const auto heldUntil = mPlayer ? std::min(mHeldUntil, to) : to;
  std::vector<SLightSegment> segments;
  if (from < heldUntil) {
    segments.push_back({from, heldUntil - from, mHeldLevel});
    from = heldUntil;
  }
  if (mPlayer) {
    const auto light = LightNow();
    for (auto segment : mPlayer->Segments(from, to)) {
      segment.level = light.Shown(segment.level);
      segments.push_back(segment);
    }
  }
  return segments;
}

int CPatternLed::WriteTrigger(std::string_view text) {
  const auto name = WithoutLineEnd(text);
  if (name != "none" && name != "pattern") return EINVAL;
  RemoveTrigger();
  mTriggered = name == "pattern";
  return 0;
}

int CPatternLed::WriteBrightness(std::string_view text) {
  std::uint64_t brightness = 0;
  if (const int error = ParseNumber(text, brightness); error != 0) return error;
  if (brightness == 0) RemoveTrigger();
  mHeldLevel = static_cast<std::uint32_t>(std::min<std::uint64_t>(brightness, mMaxBrightness));
  if (mPlayer) mHeldUntil = mPlayer->NextTick(mClock->Now());
  return 0;
}

int CPatternLed::WritePattern(std::string_view text) {
  // The kernel stops what is playing before it looks at the text, so that a refused text leaves the
  // light frozen.
  mHeldLevel = LightNow().level;
  mPlayer.reset();
  auto pattern = ParsePattern(text, mMaxBrightness);
  if (!pattern) return EINVAL;
  if (!pattern->empty()) {
    const auto now = mClock->Now();
    mPlayer.emplace(std::move(*pattern), now, mHz);
    mHeldUntil = now;
  }
  return 0;
}

void CPatternLed::RemoveTrigger() {
  mTriggered = false;
  ++mGeneration;
  mPlayer.reset();
  mHeldLevel = 0;
  mMinimum = 0;
  mMaximum = kFullScale;
}

SChannelLight CPatternLed::LightNow() const {
  SChannelLight light{{}, mMinimum, mMaximum, mHeldLevel};
  if (mPlayer) {
    const auto now = mClock->Now();
    light.pattern = mPlayer->Steps();
    if (now >= mHeldUntil) light.level = light.Shown(mPlayer->LevelAt(now));
  }
  return light;
}
