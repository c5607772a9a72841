// The way through a scenario's steps, with what is repeated.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "virtualcharger/scenario/scenario.h"

// Threads: one. The scenario must live longer.
class CPlayer {
 public:
  // Does a step and returns its note.
  using Doer = std::function<std::string(const StepAction&)>;

  CPlayer(const SScenario& scenario, Doer doer) : mScenario(scenario), mDoer(std::move(doer)) {}

  // The step that comes next; null at the end.
  const SStep* Step() const;

  // Does that step and goes on to the one behind it. Returns a note for people, mostly empty.
  // Throws what the step throws, and stays at it then.
  std::string Do();

  // Where it is: "round 2 of 3", of repeats in one another the outermost first; empty outside.
  std::string Round() const;

 private:
  struct SRepeat {
    std::size_t begin;  // the place of its first step
    int round;          // from 1
    int rounds;
  };

  const SScenario& mScenario;
  const Doer mDoer;
  std::size_t mNext = 0;
  std::vector<SRepeat> mRepeats;
};
