#include "virtualcharger/scenario/sections.h"

#include <algorithm>

namespace {

constexpr std::string_view kSay = "say ";

}  // namespace

CSections::CSections(const std::string& file, const SScenario& scenario)
    : mSuite{file, {{"the charger starts"}}} {
  for (const auto& step : scenario.steps) {
    if (!step.text.starts_with(kSay)) continue;
    mSuite.cases.push_back({step.text.substr(kSay.size()), step.line});
  }
  mSuite.cases.push_back({"the charger ends"});
}

void CSections::Enter(const SStep* step) {
  TakeTime();
  if (step == nullptr) {
    mCurrent = mSuite.cases.size() - 1;
  } else if (step->text.starts_with(kSay)) {
    const auto found = std::ranges::find(mSuite.cases, step->line, &STestCase::line);
    mCurrent = static_cast<std::size_t>(found - mSuite.cases.begin());
  }
  mReached = std::max(mReached, mCurrent);
}

void CSections::Break(EVerdict verdict, const std::string& text, const std::string& output) {
  auto& current = mSuite.cases.at(mCurrent);
  current.verdict = verdict;
  current.text = text;
  current.output = output;
}

void CSections::SkipAll(const std::string& text) {
  for (auto& test : mSuite.cases) {
    test.verdict = EVerdict::Skipped;
    test.text = text;
  }
  mReached = mSuite.cases.size();
}

STestSuite CSections::Suite() {
  TakeTime();
  for (auto place = mReached + 1; place < mSuite.cases.size(); ++place) {
    mSuite.cases[place].verdict = EVerdict::Skipped;
    mSuite.cases[place].text = "not reached";
  }
  return mSuite;
}

void CSections::TakeTime() {
  const auto now = std::chrono::steady_clock::now();
  mSuite.cases.at(mCurrent).seconds += std::chrono::duration<double>(now - mSince).count();
  mSince = now;
}
