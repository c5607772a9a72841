// What the page's clients ask of the desk.
#include <fmt/format.h>

#include "virtualcharger/desk/desk.h"
#include "virtualcharger/desk/prelude.h"

void CDesk::Read(const CInbox::SLetter& letter) {
  if (letter.hello) {
    Greet(letter.client, letter.mayWrite);
    return;
  }
  const auto& type = letter.message["type"];
  if (type == "step") {
    BeginStep(letter);
    return;
  }
  if (type == "play") {
    BeginPlay(letter);
    return;
  }
  SUnderWay asked{letter.client, letter.message["id"], nullptr, {}};
  if (type == "stop-play") {
    StopPlay(asked);
  } else if (type == "bring-back") {
    BeginWayBack(asked);
  } else if (type == "record") {
    Record(asked, letter.message["on"]);
  } else {
    Tell(asked, false,
         R"(a message's "type" must be "step", "play", "stop-play", "bring-back" or "record")");
  }
}

void CDesk::StopPlay(const SUnderWay& asked) {
  if (mPlayRequest) {
    Tell(mPlayRequest->asked, false, "stopped before it began");
    mPlayRequest.reset();
    mNews = true;
    Tell(asked, true, "");
    return;
  }
  const bool plays = mPlay.IsPlaying();
  mPlay.Stop();
  Tell(asked, plays, plays ? "" : "no scenario is being played");
}

void CDesk::Record(const SUnderWay& asked, const Json::Value& on) {
  const auto now = std::chrono::steady_clock::now();
  if (!on.isBool()) {
    Tell(asked, false, fmt::format("\"on\" must be true or false, not {}", Compact(on)));
    return;
  }
  if (on.asBool() && mPlay.IsPlaying()) {
    Tell(asked, false, "a scenario is being played; a recording is of what a person does");
    return;
  }
  if (on.asBool()) {
    mRecorder.Begin(now, Prelude(mBench, mNewSettings, mStore.settings), Shown());
  } else {
    mRecorder.Show(now, Shown());
    mRecorder.End(now);
  }
  mNews = true;
  Tell(asked, true, "");
}

CRecorder::SShown CDesk::Shown() const {
  const auto view = mBench.View();
  const auto& display = mBench.Processes().Display();
  const auto tone = mBench.Hardware().Tone().Last();
  const bool sounds = tone && tone->divisor != 0;
  return {mBench.Lamp().words, view.state, display ? std::optional(display->value) : std::nullopt,
          view.beeps - (sounds ? 1 : 0)};
}

void CDesk::BeginPlay(const CInbox::SLetter& letter) {
  const SUnderWay asked{letter.client, letter.message["id"], nullptr, {}};
  const auto& name = letter.message["scenario"];
  const auto* entry = mLibrary.Find(name.isString() ? name.asString() : "");
  if (entry == nullptr) {
    Tell(asked, false, fmt::format("there is no scenario {}", Compact(name)));
    return;
  }
  auto scenario = ReadScenario(entry->path);
  if (!scenario.errors.empty()) {
    Tell(asked, false, scenario.errors.front());
    return;
  }
  BeginPlay({asked, {entry->name, std::move(scenario)}, false});
}

void CDesk::BeginWayBack(const SUnderWay& asked) {
  if (mKept.IsThere()) {
    BeginPlay({asked, mKept.WayBack(), true});
  } else {
    Tell(asked, false, "no scenario has taken your charger away");
  }
}

void CDesk::BeginPlay(SPlayRequest request) {
  if (mRecorder.IsOn()) {
    Tell(request.asked, false, "a recording is on, of what a person does; end it first");
  } else if (mPlay.IsPlaying() || mPlayRequest) {
    Tell(request.asked, false, "a scenario is being played; stop it first");
  } else {
    mPlayRequest = std::move(request);
    mNews = true;
  }
}

void CDesk::BeginStep(const CInbox::SLetter& letter) {
  SUnderWay step{letter.client, letter.message["id"], nullptr, {}};
  const auto& line = letter.message["line"];
  try {
    const auto words = SplitWords(line.isString() ? line.asString() : "");
    if (words.empty()) throw CParseError("the message has no \"line\" with a step");
    const auto action = ParseStep(words);
    if (words.front() == "repeat" || words.front() == "end") {
      throw CStepFailure("only a scenario repeats steps: put them into one and play that");
    }
    const auto* change = std::get_if<Change>(&action);
    const auto now = std::chrono::steady_clock::now();
    mTimeline.AddStep(now, line.asString());
    if (!mPlay.IsPlaying()) mKept.Touch();
    mRecorder.Show(now, Shown());
    if (mRecorder.IsOn()) step.recorded = mRecorder.Step(now, line.asString());
    if (change == nullptr) {
      throw CStepFailure(
          "this step waits or looks, which is for scenarios: put it into one and play that");
    }
    step.deed = (*change)(mBench);
  } catch (const std::exception& error) {
    Tell(step, false, error.what());
    return;
  }
  if (GoOn(step)) mSteps.push_back(std::move(step));
}
