#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <utility>

#include "virtualcharger/hardware/patternplayer.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

const ISteadyClock::TimePoint kStart{std::chrono::hours(5)};

// The trigger's timer function, step by step as the kernel runs it.
class CReferenceTrigger {
 public:
  CReferenceTrigger(Pattern pattern, unsigned hz) : mPattern(std::move(pattern)), mHz(hz) {}

  // Shows a level and returns how long until it is called again.
  nanoseconds Fire(std::uint32_t& level) {
    for (;;) {
      const auto& current = mPattern[mCurrent];
      const auto& next = mPattern[(mCurrent + 1) % mPattern.size()];
      if (current.brightness == next.brightness) {
        level = current.brightness;
        if (next.duration == 0) Advance();
        Advance();
        return Wait(current.duration);
      }
      if (mTime > current.duration) {
        Advance();
        continue;
      }
      level = current.brightness;
      if (mTime != 0 && current.duration >= 50) {
        const auto size = next.brightness > current.brightness
                              ? next.brightness - current.brightness
                              : current.brightness - next.brightness;
        const auto part = size * mTime / current.duration;
        level = next.brightness > current.brightness ? level + part : level - part;
      }
      mTime += 50;
      return Wait(50);
    }
  }

 private:
  void Advance() {
    mCurrent = (mCurrent + 1) % mPattern.size();
    mTime = 0;
  }

  nanoseconds Wait(std::uint32_t time) const {
    const unsigned jiffies = (time * mHz + 999) / 1000 + 1;
    return nanoseconds(std::int64_t{jiffies} * 1'000'000'000 / mHz);
  }

  Pattern mPattern;
  unsigned mHz;
  std::size_t mCurrent = 0;
  std::uint32_t mTime = 0;
};

TEST(APatternPlayer, ShowsWhatTheKernelsTimerShowsForAnyPattern) {
  std::mt19937 random(20240917);
  const std::uint32_t levels[] = {0, 0, 1, 500, 1000, 1000};
  const std::uint32_t durations[] = {0, 0, 1, 49, 50, 51, 120, 333};
  for (int round = 0; round < 400; ++round) {
    Pattern pattern(2 + random() % 6);
    for (auto& step : pattern) step = {levels[random() % 6], durations[random() % 8]};
    const unsigned hz = round % 2 == 0 ? 250 : 100;
    const CPatternPlayer player(pattern, kStart, hz);
    CReferenceTrigger reference(pattern, hz);

    auto time = kStart;
    for (int tick = 0; tick < 60; ++tick) {
      std::uint32_t level = 0;
      const auto wait = reference.Fire(level);
      ASSERT_EQ(player.LevelAt(time), level) << PatternText(pattern) << "tick " << tick;
      ASSERT_EQ(player.LevelAt(time + wait - nanoseconds(1)), level) << PatternText(pattern);
      ASSERT_EQ(player.NextTick(time), time + wait) << PatternText(pattern);
      time += wait;
    }
  }
}

TEST(APatternPlayer, GivesSegmentsThatCoverTheIntervalAndAgreeWithItsLevels) {
  for (const auto* text : {"1000 2500 0 2500 ", "1000 167 1000 0 0 167 0 0 ", "1000 0 1000 0",
                           "1000 20 0 20 500 0", "1000 250 1000 0 0 250 0 0 0 4500 0 0 "}) {
    const CPatternPlayer player(*ParsePattern(text, 1000), kStart, 250);
    for (const auto offset : {milliseconds(0), milliseconds(1234), milliseconds(3'600'007)}) {
      const auto from = kStart + offset;
      const auto to = from + milliseconds(7777);
      auto next = from;
      std::optional<std::uint32_t> before;
      for (const auto& [start, duration, level] : player.Segments(from, to)) {
        ASSERT_EQ(start, next) << text;
        ASSERT_GT(duration, nanoseconds::zero()) << text;
        ASSERT_NE(level, std::exchange(before, level)) << text;
        for (const auto moment : {start, start + duration / 2, start + duration - nanoseconds(1)}) {
          ASSERT_EQ(player.LevelAt(moment), level) << text;
        }
        next = start + duration;
      }
      ASSERT_EQ(next, to) << text;
    }
  }
}

}  // namespace
