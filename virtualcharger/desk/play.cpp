#include "virtualcharger/desk/play.h"

#include <fmt/format.h>

#include <memory>

namespace {

Json::Value Picture(const std::string& scenario, int line, const std::string& text) {
  Json::Value state;
  state["scenario"] = scenario;
  state["line"] = line;
  state["text"] = text;
  state["waiting"] = "";
  state["failed"] = "";
  state["stopped"] = false;
  return state;
}

class CStopped : public std::exception {};

constexpr auto kStopped = "stopped";

// Set while something lives.
template <typename Thing>
auto Shown(const Thing*& place, const Thing& thing) {
  place = &thing;
  const auto clear = [&place](const Thing*) { place = nullptr; };
  return std::unique_ptr<const Thing, decltype(clear)>(&thing, clear);
}

}  // namespace

void CPlay::Play(const SPlayed& played, const std::function<void()>& watch,
                 const std::function<void(const std::string& step)>& tell) {
  mScenario = played.name;
  mLine = 0;
  mText = "the charger begins anew";
  mFailure.clear();
  mStopped = false;
  CCharger charger(mBench, mInterrupt);
  const auto shownCharger = Shown<CCharger>(mCharger, charger);
  const auto stopOrGoOn = [&] {
    watch();
    if (mStopped) throw CStopped();
  };
  charger.SetWatcher(watch);
  try {
    charger.Renew(played.store);  // to its end: half a charger is none
    charger.SetWatcher(stopOrGoOn);
    stopOrGoOn();
    DoSteps(played.scenario, charger, tell);
  } catch (const CStopped&) {
    mFailure = kStopped;
  } catch (const CInterrupted&) {
    throw;
  } catch (const std::exception& failure) {
    mFailure = failure.what();
  }
}

void CPlay::DoSteps(const SScenario& scenario, CCharger& charger,
                    const std::function<void(const std::string& step)>& tell) {
  CPlayer player(scenario, [&](const StepAction& action) { return charger.Do(action); });
  const auto shownPlayer = Shown<CPlayer>(mPlayer, player);
  while (const auto* step = player.Step()) {
    mLine = step->line;
    mText = step->text;
    tell(step->text);
    mInterrupt.Check();  // few steps wait, and rounds can be many
    player.Do();
  }
}

Json::Value CPlay::Awaited(const SPlayed& played) {
  auto state = Picture(played.name, 0, "begins when the steps before have ended");
  state["done"] = false;
  return state;
}

Json::Value CPlay::State() const {
  auto state = Picture(mScenario, mLine, mText);
  if (mPlayer != nullptr && !mPlayer->Round().empty()) {
    state["text"] = fmt::format("{} ({})", mText, mPlayer->Round());
  }
  const auto waiting = mCharger == nullptr ? std::nullopt : mCharger->Waiting();
  if (waiting) state["waiting"] = fmt::format("{}: seen {}", waiting->awaited, waiting->seen);
  state["failed"] = mStopped ? "" : mFailure;
  state["stopped"] = mStopped;
  state["done"] = !mScenario.empty() && !IsPlaying();
  return state;
}
