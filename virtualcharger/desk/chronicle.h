// Puts what the bench shows into the timeline, and tells the tones one by one.
#pragma once

#include <set>

#include "virtualcharger/desk/timeline.h"
#include "virtualcharger/scenario/bench.h"

// Threads: one.
class CChronicle {
 public:
  CChronicle(const CBench& bench, const CPageClock& clock, CTimeline& timeline)
      : mBench(bench), mClock(clock), mTimeline(timeline) {}

  // Takes in what changed since the last look.
  void Look();

  // The "tone" messages of the changes since the last time.
  std::vector<Json::Value> TakeTones();

 private:
  void LookAtLamp();
  void LookAtDaemon();
  void LookAtPeers();
  void LookAtErrors();
  void LookAtTones();

  const CBench& mBench;
  const CPageClock& mClock;
  CTimeline& mTimeline;
  std::set<int> mErrors;       // that diagnostics has told of
  CToneFile::Mark mTones = 0;  // up to which they were looked at
  std::vector<Json::Value> mNewTones;
};
