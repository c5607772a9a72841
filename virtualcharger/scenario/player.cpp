#include "virtualcharger/scenario/player.h"

#include <fmt/format.h>

const SStep* CPlayer::Step() const {
  return mNext < mScenario.steps.size() ? &mScenario.steps[mNext] : nullptr;
}

std::string CPlayer::Do() {
  const auto& step = mScenario.steps.at(mNext);
  auto note = mDoer(step.action);
  ++mNext;
  if (step.rounds > 0) {
    mRepeats.push_back({mNext, 1, step.rounds});
    return Round();
  }
  if (!step.endsRepeat) return note;
  auto& repeat = mRepeats.back();
  if (repeat.round == repeat.rounds) {
    mRepeats.pop_back();
    return {};
  }
  ++repeat.round;
  mNext = repeat.begin;
  return Round();
}

std::string CPlayer::Round() const {
  std::string text;
  for (const auto& [begin, round, rounds] : mRepeats) {
    text += fmt::format("{}round {} of {}", text.empty() ? "" : ", ", round, rounds);
  }
  return text;
}
