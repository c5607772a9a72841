#include "virtualcharger/desk/keptcharger.h"

#include <fmt/ranges.h>

#include <utility>

#include "virtualcharger/desk/prelude.h"

void CKeptCharger::Keep(const Json::Value& settings) {
  auto store = Store();
  if (mKept && !mTouched && store.text == mLeft) return;
  const bool valid = store.error.empty();
  // A daemon cannot begin with a store that it cannot read, but it goes on with one.
  const auto& reached = valid ? mNewSettings : settings;
  mKept = {StepsTo(mBench, mNewSettings, reached), std::move(store.text), valid};
}

void CKeptCharger::Leave() {
  mLeft = Store().text;
  mTouched = false;
}

CPlay::SPlayed CKeptCharger::WayBack() const {
  constexpr auto name = "bring-back";
  return {name, ParseScenario(name, fmt::format("{}\n", fmt::join(mKept->steps, "\n"))),
          mKept->valid ? mKept->store : ""};
}

void CKeptCharger::Return() {
  if (!mKept->valid && !mKept->store.empty()) mBench.Processes().Root().WriteStore(mKept->store);
  mKept.reset();
}

SStorePicture CKeptCharger::Store() const {
  return ReadStorePicture(mBench.Processes().Root().Store());
}
