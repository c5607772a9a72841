// Plays a pattern as the kernel's pattern trigger does: unequal neighbours fade in steps of 50 ms,
// equal neighbours hold, and every wait is rounded up to whole timer ticks plus one.
//
// Immutable after construction, so it may be read from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "platform/worker/steadyclock.h"
#include "virtualcharger/hardware/pattern.h"

// One level of light, held.
struct SLightSegment {
  ISteadyClock::TimePoint start;
  std::chrono::nanoseconds duration;
  std::uint32_t level;
};

class CPatternPlayer {
 public:
  // At least two steps; hz is the kernel's timer frequency, above 0.
  CPatternPlayer(Pattern pattern, ISteadyClock::TimePoint start, unsigned hz);

  const Pattern& Steps() const { return mPattern; }

  // Times before the start count as the start.
  std::uint32_t LevelAt(ISteadyClock::TimePoint time) const;

  // When the trigger sets the LED's brightness the next time, if only to the same level again.
  ISteadyClock::TimePoint NextTick(ISteadyClock::TimePoint time) const;

  // The interval [from, to) without gaps, neighbours with different levels. Begins at the pattern's
  // start if that is later than "from".
  std::vector<SLightSegment> Segments(ISteadyClock::TimePoint from,
                                      ISteadyClock::TimePoint to) const;

 private:
  using Duration = std::chrono::nanoseconds;

  // The stay at one step: a single wait, or a fade of several.
  struct SStay {
    Duration begin;
    Duration wait;
    std::size_t step;
  };
  struct STick {
    ISteadyClock::TimePoint end;
    std::uint32_t level;
  };

  Duration Wait(std::uint32_t milliseconds) const;
  std::uint32_t LevelOf(std::size_t step, std::int64_t waits) const;
  STick TickAt(ISteadyClock::TimePoint time) const;

  const Pattern mPattern;
  const ISteadyClock::TimePoint mStart;
  const unsigned mHz;
  // One way through the pattern until a step comes up again; from there on it repeats. The skipped
  // steps of zero duration can make the repeated part differ from the first way through.
  std::vector<SStay> mStays;
  Duration mLoopBegin{};
  Duration mLoopEnd{};
};
