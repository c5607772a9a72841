#include "virtualcharger/desk/chronicle.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "virtualcharger/desk/picture.h"
#include "virtualcharger/scenario/names.h"
#include "virtualcharger/scenario/steptable.h"

void CChronicle::Look() {
  LookAtLamp();
  LookAtDaemon();
  LookAtPeers();
  LookAtErrors();
  LookAtTones();
  const auto& processes = mBench.Processes();
  const auto& connector = processes.Connector();
  mTimeline.Set("connector", connector.time, ConnectorStateName(connector.value));
  mTimeline.Set("light", std::chrono::steady_clock::now(), mBench.Hardware().Sensor().Lux());
  if (const auto& display = processes.Display()) {
    mTimeline.Set("display", display->time, display->value);
  }
}

std::vector<Json::Value> CChronicle::TakeTones() {
  return std::exchange(mNewTones, {});
}

void CChronicle::LookAtLamp() {
  const auto view = mBench.View();
  const auto& brightness = mBench.Brightness();
  Json::Value lamp;
  lamp["colour"] = view.lamp.colour;
  lamp["mode"] = view.lamp.mode;
  lamp["percent"] = view.brightness;
  mTimeline.Set("lamp", std::max(mBench.Lamp().since, brightness.since), lamp);
  const double percent = std::atof(brightness.words.c_str());  // 0 for "uneven"
  mTimeline.Set("brightness", brightness.since, percent);
}

void CChronicle::LookAtDaemon() {
  const auto& processes = mBench.Processes();
  const auto& status = processes.Status(kDaemon);
  const auto& state = processes.LastState();
  mTimeline.Set("daemon", status.since, StatusName(status));
  mTimeline.Set("lifecycle", state ? state->time : status.since,
                state ? DaemonStateName(state->value) : "");
}

// Which do not run, and how that is; nothing where all do.
void CChronicle::LookAtPeers() {
  std::string words;
  auto since = mClock.Begin();
  for (const auto& name : ProcessNames()) {
    const auto& status = mBench.Processes().Status(name);
    if (name == kDaemon) continue;
    since = std::max(since, status.since);
    const auto how = StatusName(status);
    if (how != "running") words += fmt::format("{}{} {}", words.empty() ? "" : ", ", name, how);
  }
  mTimeline.Set("peers", since, words);
}

void CChronicle::LookAtErrors() {
  const auto& signals = mBench.Processes().Signals();
  for (const auto& [identifier, last] : signals) {
    if (identifier < kFirstError || identifier > kLastWarning) continue;
    mTimeline.SetError(identifier, last.time, last.value == "true");
    mErrors.insert(identifier);
  }
  // A charger that begins anew knows nothing of them.
  std::erase_if(mErrors, [&](int identifier) {
    if (signals.contains(identifier)) return false;
    mTimeline.SetError(identifier, std::chrono::steady_clock::now(), false);
    return true;
  });
}

void CChronicle::LookAtTones() {
  for (const auto& tone : mBench.Hardware().Tone().Since(mTones)) {
    mTones = tone.end;
    mTimeline.Set("tone", tone.time, Hertz(tone));
    auto message = mClock.Message("tone");
    message["t"] = mClock(tone.time);
    message["hz"] = Hertz(tone);
    mNewTones.push_back(std::move(message));
  }
}
