// The light of the lamp's three channels over time, as the page draws it.
#pragma once

#include <optional>

#include "virtualcharger/desk/messages.h"
#include "virtualcharger/hardware/statuslight.h"

// When the lamp must be told anew, and from when on.
//
// Threads: one.
class CLampMessage {
 public:
  using TimePoint = ISteadyClock::TimePoint;

  static constexpr std::chrono::seconds kAhead{5};
  static constexpr std::chrono::seconds kRefresh{2};

  CLampMessage(const CStatusLight& light, const CWriteHistory& writes, const CPageClock& clock)
      : mLight(light), mWrites(writes), mClock(clock) {}

  // The message, if something was written since the last one or its time is over.
  std::optional<Json::Value> Next(TimePoint now);

  // What is shown from a moment on that is not before the last write.
  Json::Value From(TimePoint from) const;

 private:
  const CStatusLight& mLight;
  const CWriteHistory& mWrites;
  const CPageClock& mClock;
  CWriteHistory::Mark mTold = 0;
  std::optional<TimePoint> mLast;
};
