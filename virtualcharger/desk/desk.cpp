#include "virtualcharger/desk/desk.h"

#include <poll.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <utility>

#include "virtualcharger/desk/picture.h"
#include "virtualcharger/desk/vocabulary.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kInterval = 40ms;        // between two publications
constexpr auto kGlance = 50ms;          // between two looks while a step goes on
constexpr auto kRecording = 100ms;      // between two looks at what stays
constexpr auto kRecordingTold = 500ms;  // between two tellings of it
constexpr auto kSettled = 10ms;         // after the last write to the lamp: the daemon writes on

// Exists from now on, so that it can be watched.
std::string MadeFile(std::string path) {
  std::ofstream(path, std::ios::app).flush();
  return path;
}

}  // namespace

CDesk::CDesk(SDeskSettings settings, CBench& bench, CInterrupt& interrupt, const CLibrary& library,
             const CDeskRegistry& registry, std::shared_ptr<CInbox> inbox)
    : mSettings(std::move(settings)),
      mBench(bench),
      mInterrupt(interrupt),
      mLibrary(library),
      mClock(bench.Begin()),
      mInbox(std::move(inbox)),
      mPlay(bench, interrupt),
      mTimeline(mClock),
      mChronicle(bench, mClock, mTimeline),
      mLamp(bench.Hardware().Light(), bench.Hardware().LampWrites(), mClock),
      mOthers(registry, mFiles),
      mStoreFolder(mFiles.Add(bench.Processes().Root().StoreFolder())),
      mRunFolder(bench.Processes().Root()),
      mStore(ReadStorePicture(bench.Processes().Root().Store())),
      mNewSettings(mStore.settings),
      mKept(bench, mNewSettings),
      mLog(MadeFile(bench.Processes().Root().Log("feedback")), mClock,
           bench.Processes().Root().IsKept()),
      mMessages(mClock),
      mServer({mSettings.port, bench.Begin()}, *mInbox) {
  mFiles.Add(bench.Processes().Root().Path());
  mBench.Processes().HearOtherEvents([this](const std::string& peer, const std::string& kind,
                                            std::int64_t number, const std::string& text) {
    if (kind == "message") mMessages.Take(peer, number, text);
  });
}

void CDesk::Run() {
  try {
    Live();
  } catch (const CInterrupted&) {
    mBench.Processes().TakeDeath();  // it was shown
    CCharger(mBench, mInterrupt).Stop();
  }
}

void CDesk::Live() {
  mSteps.push_back({0, {}, mBench.Processes().StartAll(), {}});
  for (;;) {
    mInterrupt.Check();
    mBench.Look();
    Turn();
    if (mPlayRequest && mSteps.empty()) Play();
    Wait();
  }
}

void CDesk::Turn() {
  std::erase_if(mSteps, [this](SUnderWay& step) { return !GoOn(step); });
  for (const auto& letter : mInbox->Take()) Read(letter);
  const auto changed = mFiles.Take();
  if (changed.contains(mStoreFolder)) {
    auto store = ReadStorePicture(mBench.Processes().Root().Store());
    // As for the daemon the last good values stay.
    if (!store.error.empty()) store.settings = mStore.settings;
    mStore = std::move(store);
  }
  const auto now = std::chrono::steady_clock::now();
  mOthers.Look(changed, now);
  if (now - mPublished < kInterval) return;
  if (IsInMotion() && now - mPublished < 2 * kInterval) return;
  Publish();
}

// The steps wait in here, and the desk goes on meanwhile.
void CDesk::Play() {
  const auto request = *std::exchange(mPlayRequest, std::nullopt);
  const auto watch = [this] {
    mNews = true;
    Turn();
  };
  if (!request.back) mKept.Keep(mStore.settings);
  mPlay.Play(request.played, watch, [this](const std::string& step) {
    mTimeline.AddStep(std::chrono::steady_clock::now(), step);
  });
  auto failure = mPlay.Failure();
  try {
    if (request.back && failure.empty()) mKept.Return();
  } catch (const std::runtime_error& error) {
    failure = error.what();
  }
  mKept.Leave();
  Publish();  // who is told of the end has seen it
  Tell(request.asked, failure.empty(), failure);
}

void CDesk::Wait() {
  auto inputs = mBench.Processes().Inputs();
  for (const int descriptor :
       {mInterrupt.Descriptor(), mInbox->Descriptor(), mFiles.Descriptor()}) {
    inputs.push_back({descriptor, POLLIN, 0});
  }
  if (poll(inputs.data(), inputs.size(), Timeout()) > 0) mNews = true;
}

int CDesk::Timeout() const {
  const auto since =
      std::chrono::ceil<std::chrono::milliseconds>(std::chrono::steady_clock::now() - mPublished);
  std::optional<std::chrono::milliseconds> timeout;
  const auto within = [&](std::chrono::milliseconds time) {
    timeout = std::min(timeout.value_or(time), std::max(time, 0ms));
  };
  if (mRecorder.IsOn()) within(kRecording - since);
  if (mServer.Clients() > 0) within(CLampMessage::kRefresh - since);
  if (!mSteps.empty()) within(kGlance);
  if (mNews) within(since < kInterval ? kInterval - since : kSettled);
  return timeout ? static_cast<int>(timeout->count()) : -1;
}

// False when it has ended.
bool CDesk::GoOn(SUnderWay& step) {
  try {
    const auto note = step.deed();
    if (note) Tell(step, true, *note);
    return !note;
  } catch (const std::exception& failure) {
    Tell(step, false, failure.what());
    return false;
  }
}

void CDesk::Tell(const SUnderWay& step, bool ok, const std::string& text) {
  if (step.recorded) mRecorder.Ended(*step.recorded, ok, text);
  if (step.client == 0) return;  // what the desk does by itself is seen in its state
  auto message = mClock.Message("done");
  message["id"] = step.id;
  message["ok"] = ok;
  message["text"] = text;
  mServer.Send(step.client, Compact(message));
}

// The lamp's channels are written one after the other.
bool CDesk::IsInMotion() const {
  const auto& writes = mBench.Hardware().LampWrites();
  const auto last = writes.Since(writes.End() - std::min<CWriteHistory::Mark>(writes.End(), 1));
  return !last.empty() && std::chrono::steady_clock::now() - last.back().time < kSettled;
}

void CDesk::Publish() {
  mNews = false;
  mPublished = std::chrono::steady_clock::now();
  LookForTrouble();
  mChronicle.Look();
  mRecorder.Show(mPublished, Shown());
  if (const auto lamp = mLamp.Next(mPublished)) mServer.Publish(Compact(*lamp));
  for (const auto& tone : mChronicle.TakeTones()) mServer.Publish(Compact(tone));
  PublishTokens();
  auto state = State();
  const auto text = Compact(state);
  if (text != mState) {
    mState = text;
    state["type"] = "state";
    state["now"] = mClock(mPublished);
    mServer.Publish(Compact(state), CPageServer::EWaiting::Replace);
  }
  PublishRecording();
  PublishRows("timeline", mTimeline.TakeNew());
  PublishRows("messages", mMessages.TakeNew());
  PublishRows("log", mLog.TakeNew());
}

void CDesk::PublishTokens() {
  auto tokens = mOthers.Tokens();
  if (tokens == mTokens) return;
  mTokens = std::move(tokens);
  auto message = mClock.Message("tokens");
  message["tokens"] = mTokens;
  mServer.PublishToWriters(Compact(message));
}

// On the terminal, too: the page may be closed.
void CDesk::LookForTrouble() {
  auto trouble = mRunFolder.Trouble();
  if (trouble == mTrouble) return;
  mTrouble = std::move(trouble);
  // Not by a call that throws where nobody can be told.
  if (!mTrouble.empty()) std::fputs(("virtual-charger: " + mTrouble + '\n').c_str(), stderr);
}

// It can be long, so that not every word of it is told at once.
void CDesk::PublishRecording() {
  if (mRecorder.IsOn() && mPublished - mRecordingTold < kRecordingTold) return;
  auto text = mRecorder.Text();
  if (text == mRecording) return;
  mRecordingTold = mPublished;
  mRecording = std::move(text);
  auto message = mClock.Message("recording");
  message["text"] = mRecording;
  mServer.Publish(Compact(message));
}

void CDesk::PublishRows(const char* type, Json::Value rows) {
  if (rows.empty()) return;
  auto message = mClock.Message(type);
  message["rows"] = std::move(rows);
  mServer.Publish(Compact(message));
}

Json::Value CDesk::State() const {
  auto state = Picture(mBench, mClock);
  state["settings"] = mStore.settings;
  state["storeError"] = mStore.error;
  state["trouble"] = mTrouble;
  state["others"] = mOthers.Addresses();
  state["play"] = mPlayRequest ? CPlay::Awaited(mPlayRequest->played) : mPlay.State();
  state["play"]["back"] = mKept.IsThere();
  state["recording"]["on"] = mRecorder.IsOn();
  state["recording"]["full"] = mRecorder.IsFull();
  return state;
}

void CDesk::Greet(CInbox::ClientId client, bool mayWrite) {
  Publish();  // what the others get must not come again after the whole picture
  auto hello = mClock.Message("hello");
  hello["name"] = mSettings.name;
  hello["token"] = mayWrite;
  hello["hardware"] = mSettings.remedy.empty();
  hello["remedy"] = mSettings.remedy;
  hello["url"] = mServer.Address();
  const auto age = std::chrono::steady_clock::now() - mBench.Begin();
  const auto begin = std::chrono::system_clock::now() -
                     std::chrono::duration_cast<std::chrono::system_clock::duration>(age);
  hello["begin"] = Utc(begin);
  if (mayWrite) hello["tokens"] = mTokens;
  hello["words"] = Vocabulary(mLibrary);
  hello["timeline"] = mTimeline.Rows();
  hello["messages"] = mMessages.Rows();
  hello["log"] = mLog.Rows();
  hello["recording"]["text"] = mRecording;
  hello["state"] = State();
  hello["lamp"] = mLamp.From(std::chrono::steady_clock::now());
  mServer.Greet(client, Compact(hello));
}
