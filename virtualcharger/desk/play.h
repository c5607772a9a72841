// A scenario that is played on the desk's charger, with the waiting of scenarios.
#pragma once

#include <json/json.h>

#include <exception>
#include <functional>
#include <string>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/player.h"

// Threads: one.
class CPlay {
 public:
  CPlay(CBench& bench, CInterrupt& interrupt) : mBench(bench), mInterrupt(interrupt) {}

  struct SPlayed {
    std::string name;
    SScenario scenario;   // without errors
    std::string store{};  // that the charger begins with; empty for a new one's
  };

  bool IsPlaying() const { return mCharger != nullptr; }

  // Renews the charger and does the steps; returns at their end, at a failure, which is kept, or
  // when it was stopped. Throws CInterrupted. The watch is called every few ms and tells each step
  // that begins.
  void Play(const SPlayed& played, const std::function<void()>& watch,
            const std::function<void(const std::string& step)>& tell);

  // From the watch.
  void Stop() { mStopped = true; }

  // Of the last one; empty where it came out as expected.
  const std::string& Failure() const { return mFailure; }

  // The "play" part of the state.
  Json::Value State() const;
  // The same while this one cannot begin yet.
  static Json::Value Awaited(const SPlayed& played);

 private:
  void DoSteps(const SScenario& scenario, CCharger& charger,
               const std::function<void(const std::string& step)>& tell);

  CBench& mBench;
  CInterrupt& mInterrupt;
  const CPlayer* mPlayer = nullptr;    // while it plays
  const CCharger* mCharger = nullptr;  // while it plays
  bool mStopped = false;
  std::string mScenario;
  int mLine = 0;
  std::string mText;
  std::string mFailure;
};
