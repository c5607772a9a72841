#include "virtualcharger/scenario/charger.h"

#include <poll.h>

#include <utility>

namespace {

// The lamp of a daemon that is not enabled.
const SLamp kDisabled{"Yellow", "On"};

constexpr std::chrono::milliseconds kGlance{5};  // between two looks

}  // namespace

CCharger::CCharger(CBench& bench, CInterrupt& interrupt) : mBench(bench), mInterrupt(interrupt) {}

void CCharger::Start() {
  if (const auto failure = mBench.StartHardware()) throw CCannotRun(*failure);
  Begin();
}

void CCharger::Begin() {
  Await(mBench.Processes().StartAll());
  ExpectLamp(kDisabled, std::nullopt);
}

void CCharger::Stop() {
  Await(mBench.Stop());
}

void CCharger::Renew(const std::string& store) {
  mBench.Processes().TakeDeath();  // of another time
  Await(mBench.Stop());
  mBench.Renew(store);
  Mark();
  if (store.empty()) {
    Begin();
  } else {
    Await(mBench.Processes().StartAll());  // the lamp is as the store says
  }
}

std::string CCharger::Do(const StepAction& step) {
  if (const auto* look = std::get_if<Observation>(&step)) return (*look)(*this);
  mBench.Look();
  mChangeBegin = std::chrono::steady_clock::now();
  return Await(std::get<Change>(step)(mBench));
}

void CCharger::Mark() {
  mMark = mBench.Hardware().LampWrites().End();
  mToneMark = mBench.Hardware().Tone().End();
  mReportMark = mBench.Processes().StateReports().End();
  mBench.Processes().DaemonLog().Read(false);
  mBench.Processes().DaemonLog().ForgetAll();
}

void CCharger::Wait(std::chrono::milliseconds time) {
  Await([] { return false; }, time);
}

std::optional<CCharger::SWaiting> CCharger::Waiting() const {
  return mAwaited ? std::optional(SWaiting{mAwaited->words, mAwaited->seen()}) : std::nullopt;
}

std::string CCharger::Await(const Deed& deed) {
  for (;;) {
    Look();
    if (const auto note = deed()) {
      Look();  // what the daemon sent to another peer before it replied has come by now
      return *note;
    }
    Pause();
  }
}

bool CCharger::Await(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    // The time first: what holds at the limit is in time.
    const bool over = std::chrono::steady_clock::now() >= end;
    Look();
    if (condition()) return true;
    if (over) return false;
    Pause();
  }
}

void CCharger::Look() {
  mInterrupt.Check();
  mBench.Look();
  if (mWatcher) mWatcher();
}

void CCharger::Pause() {
  if (const auto death = mBench.Processes().TakeDeath()) throw CStepFailure(*death);
  auto inputs = mBench.Processes().Inputs();
  inputs.push_back({mInterrupt.Descriptor(), POLLIN, 0});
  poll(inputs.data(), inputs.size(), static_cast<int>(kGlance.count()));
}
