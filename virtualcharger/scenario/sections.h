// The sections of a scenario, each begun by a "say", as test cases.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "virtualcharger/scenario/junit.h"
#include "virtualcharger/scenario/scenario.h"

// A section that is repeated is one case. Before the first and behind the last one stand the
// charger's own start and end.
//
// Threads: one.
class CSections {
 public:
  CSections(const std::string& file, const SScenario& scenario);

  // The step comes next; null: the charger's end. Before the first call it is at the start.
  void Enter(const SStep* step);

  // Where it stands is not passed for this reason.
  void Break(EVerdict verdict, const std::string& text, const std::string& output);
  // Nothing could be played.
  void SkipAll(const std::string& text);

  // At the end: with what was not reached as skipped.
  STestSuite Suite();

 private:
  void TakeTime();

  STestSuite mSuite;
  std::size_t mCurrent = 0;
  std::size_t mReached = 0;
  std::chrono::steady_clock::time_point mSince = std::chrono::steady_clock::now();
};
