#include "virtualcharger/hardware/patternplayer.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr std::uint32_t kFadeInterval = 50;

bool IsSteady(const Pattern& pattern) {
  return std::all_of(pattern.begin(), pattern.end(), [&](const SPatternStep& step) {
    return step.brightness == pattern.front().brightness;
  });
}

}  // namespace

CPatternPlayer::CPatternPlayer(Pattern pattern, ISteadyClock::TimePoint start, unsigned hz)
    : mPattern(std::move(pattern)), mStart(start), mHz(hz) {
  const auto next = [this](std::size_t step) { return (step + 1) % mPattern.size(); };
  std::vector<std::optional<Duration>> begins(mPattern.size());
  std::size_t step = 0;
  while (!begins[step]) {
    begins[step] = mLoopEnd;
    const auto& [brightness, duration] = mPattern[step];
    const auto& following = mPattern[next(step)];
    if (brightness == following.brightness) {
      mStays.push_back({mLoopEnd, Wait(duration), step});
      mLoopEnd += Wait(duration);
      step = following.duration == 0 ? next(next(step)) : next(step);
    } else {
      mStays.push_back({mLoopEnd, Wait(kFadeInterval), step});
      mLoopEnd += Wait(kFadeInterval) * (duration / kFadeInterval + 1);
      step = next(step);
    }
  }
  mLoopBegin = *begins[step];
}

CPatternPlayer::Duration CPatternPlayer::Wait(std::uint32_t milliseconds) const {
  const auto ticks = (std::uint64_t{milliseconds} * mHz + 999) / 1000 + 1;
  const Duration second = std::chrono::seconds(1);
  return second * (ticks / mHz) + second * (ticks % mHz) / mHz;
}

std::uint32_t CPatternPlayer::LevelOf(std::size_t step, std::int64_t waits) const {
  const auto& [brightness, duration] = mPattern[step];
  if (waits == 0) return brightness;
  const std::int64_t target = mPattern[(step + 1) % mPattern.size()].brightness;
  const std::int64_t difference = target - brightness;
  return static_cast<std::uint32_t>(brightness + difference * waits * kFadeInterval / duration);
}

CPatternPlayer::STick CPatternPlayer::TickAt(ISteadyClock::TimePoint time) const {
  auto elapsed = std::max(Duration::zero(), Duration(time - mStart));
  Duration earlierLoops{};
  if (elapsed >= mLoopEnd) {
    const auto loop = mLoopEnd - mLoopBegin;
    earlierLoops = (elapsed - mLoopBegin) / loop * loop;
    elapsed -= earlierLoops;
  }
  const auto stay = std::prev(std::upper_bound(
      mStays.begin(), mStays.end(), elapsed,
      [](Duration moment, const SStay& candidate) { return moment < candidate.begin; }));
  const auto waits = (elapsed - stay->begin) / stay->wait;
  return {mStart + earlierLoops + stay->begin + stay->wait * (waits + 1),
          LevelOf(stay->step, waits)};
}

std::uint32_t CPatternPlayer::LevelAt(ISteadyClock::TimePoint time) const {
  return TickAt(time).level;
}

ISteadyClock::TimePoint CPatternPlayer::NextTick(ISteadyClock::TimePoint time) const {
  return TickAt(time).end;
}

std::vector<SLightSegment> CPatternPlayer::Segments(ISteadyClock::TimePoint from,
                                                    ISteadyClock::TimePoint to) const {
  std::vector<SLightSegment> segments;
  from = std::max(from, mStart);
  if (from < to && IsSteady(mPattern)) return {{from, to - from, mPattern.front().brightness}};
  while (from < to) {
    const auto tick = TickAt(from);
    const auto end = std::min(tick.end, to);
    if (segments.empty() || segments.back().level != tick.level) {
      segments.push_back({from, {}, tick.level});
    }
    segments.back().duration += end - from;
    from = end;
  }
  return segments;
}
